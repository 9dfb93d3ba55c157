#include "cl/cycle_core.h"

#include <gtest/gtest.h>

#include "support/graphs.h"

namespace kestro {

static cycle_core core_of(const graph_ptr &g) {
  cycle_core_finder finder;
  finder.find(complete_graph(6).get()); // must leave nothing behind
  return finder.find(g.get());
}

static void expect_core(const graph_ptr &g, int cycles, int vertices) {
  const cycle_core core = core_of(g);
  EXPECT_EQ(core.cycles, cycles);
  EXPECT_EQ(core.vertices, vertices);
}

TEST(CycleCore, OfTreesIsEmpty) {
  expect_core(make_graph({0}, {}), 0, 0);
  expect_core(path_graph(2), 0, 0);
  expect_core(path_graph(6), 0, 0);
  expect_core(star_graph(6), 0, 0);
  expect_core(make_graph({0, 0, 0}, {{0, 1}}), 0, 0);
}

TEST(CycleCore, IsTheRing) {
  expect_core(ring_graph(3), 1, 3);
  expect_core(ring_graph(8), 1, 8);
  // With a path of two edges on it.
  expect_core(
      make_graph({0, 0, 0, 0, 0}, {{0, 1}, {1, 2}, {0, 2}, {2, 3}, {3, 4}}), 1,
      3);
}

TEST(CycleCore, HasTheWayBetweenRings) {
  // Two triangles, a path of two edges between them, and a leaf on that.
  expect_core(make_graph({0, 0, 0, 0, 0, 0, 0, 0}, {{0, 1},
                                                    {1, 2},
                                                    {0, 2},
                                                    {2, 3},
                                                    {3, 4},
                                                    {4, 5},
                                                    {5, 6},
                                                    {4, 6},
                                                    {3, 7}}),
              2, 7);
}

TEST(CycleCore, CountsIndependentCycles) {
  expect_core(complete_graph(4), 3, 4);
  expect_core(complete_graph(5), 6, 5);
}

TEST(CycleCore, IsThatOfTheComponentWithMostCycles) {
  std::vector<test_edge> edges = edges_of(ring_graph(4).get());
  for (const test_edge &edge : edges_of(complete_graph(4).get()))
    edges.push_back({edge.u + 4, edge.w + 4});
  expect_core(make_graph(std::vector<int>(8, 0), edges), 3, 4);
}

// The graphs side by side.
static graph_ptr beside(const std::vector<graph_ptr> &parts) {
  std::vector<test_edge> edges;
  int vertices = 0;
  for (const graph_ptr &part : parts) {
    for (const test_edge &edge : edges_of(part.get()))
      edges.push_back({edge.u + vertices, edge.w + vertices});
    vertices += part->vs;
  }
  return make_graph(std::vector<int>(static_cast<size_t>(vertices), 0), edges);
}

TEST(CycleCore, IsOpenWhereComponentsDiffer) {
  std::vector<graph_ptr> rings;
  rings.push_back(ring_graph(4));
  rings.push_back(ring_graph(3));
  expect_core(beside(rings), 1, -1);
  rings.push_back(complete_graph(4)); // three cycles
  expect_core(beside(rings), 3, 4);
}

TEST(CycleCore, IsThatOfEqualComponents) {
  std::vector<graph_ptr> rings;
  rings.push_back(ring_graph(4));
  rings.push_back(ring_graph(4));
  rings.push_back(path_graph(2));
  expect_core(beside(rings), 1, 4);
}

static cycle_lengths bits(const std::vector<int> &lengths) {
  cycle_lengths set = 0;
  for (const int n : lengths)
    set |= length_bit(n);
  return set;
}

static void expect_lengths(const graph_ptr &g,
                           const std::vector<int> &lengths) {
  const cycle_core core = core_of(g);
  EXPECT_EQ(core.lengths, bits(lengths));
  EXPECT_TRUE(core.has_all);
}

// A ring with further edges.
static graph_ptr ring_with(int vs, const std::vector<test_edge> &more) {
  std::vector<test_edge> edges = edges_of(ring_graph(vs).get());
  edges.insert(edges.end(), more.begin(), more.end());
  int largest = vs - 1;
  for (const test_edge &edge : more)
    largest = std::max({largest, edge.u, edge.w});
  return make_graph(std::vector<int>(static_cast<size_t>(largest) + 1, 0),
                    edges);
}

TEST(CycleLengths, OfTreesAreNone) {
  expect_lengths(path_graph(5), {});
  expect_lengths(star_graph(4), {});
}

TEST(CycleLengths, OfARing) {
  expect_lengths(ring_graph(3), {3});
  expect_lengths(ring_graph(6), {6});
  expect_lengths(ring_with(6, {{0, 6}, {6, 7}}), {6}); // with a tail
}

TEST(CycleLengths, OfFusedRings) {
  expect_lengths(ring_with(10, {{0, 5}}), {6, 10});       // two rings of six
  expect_lengths(ring_with(9, {{0, 4}}), {5, 6, 9});      // five and six
  expect_lengths(ring_with(4, {{0, 2}}), {3, 4});         // two triangles
  expect_lengths(ring_with(6, {{0, 6}, {3, 6}}), {5, 6}); // a bridge
}

TEST(CycleLengths, OfRingsThatShareAVertex) {
  expect_lengths(ring_with(5, {{0, 5}, {5, 6}, {6, 0}}), {3, 5});
}

TEST(CycleLengths, OfRingsOnAWay) {
  expect_lengths(ring_with(5, {{0, 5}, {5, 6}, {6, 7}, {7, 8}, {8, 5}}),
                 {4, 5});
}

TEST(CycleLengths, OfSeveralComponents) {
  std::vector<graph_ptr> parts;
  parts.push_back(ring_graph(7));
  parts.push_back(complete_graph(4));
  parts.push_back(path_graph(3));
  expect_lengths(beside(parts), {3, 4, 7});
}

TEST(CycleLengths, OfSmallCompleteGraphsAreAll) {
  expect_lengths(complete_graph(4), {3, 4});
  expect_lengths(complete_graph(5), {3, 4, 5});
}

TEST(CycleLengths, OfManyCyclesAreLeftOpen) {
  EXPECT_FALSE(core_of(complete_graph(6)).has_all);
  std::vector<graph_ptr> parts;
  parts.push_back(complete_graph(6));
  parts.push_back(ring_graph(9));
  const cycle_core core = core_of(beside(parts));
  EXPECT_FALSE(core.has_all);
  EXPECT_EQ(core.lengths, bits({9}));
}

TEST(CycleLengths, FromSixtyThreeOnAreOne) {
  expect_lengths(ring_graph(62), {62});
  expect_lengths(ring_graph(63), {63});
  expect_lengths(ring_graph(100), {63});
  expect_lengths(ring_with(200, {{0, 100}}), {63});
}

TEST(CycleCore, HoldsPartsOfItsLengths) {
  const cycle_core fused = core_of(ring_with(10, {{0, 5}}));
  EXPECT_TRUE(fused.may_hold(core_of(path_graph(8))));
  EXPECT_TRUE(fused.may_hold(core_of(ring_graph(6))));
  EXPECT_TRUE(fused.may_hold(core_of(ring_graph(10))));
  EXPECT_FALSE(fused.may_hold(core_of(ring_graph(5))));
  EXPECT_FALSE(core_of(ring_graph(70)).may_hold(core_of(ring_graph(62))));
  // Of a clique of six not all lengths are known.
  EXPECT_TRUE(core_of(complete_graph(6)).may_hold(core_of(ring_graph(7))));
}

TEST(CycleCore, HoldsPartsWithFewerCyclesOrTheSameCore) {
  const cycle_core core = {2, 7, bits({3, 4}), true};
  EXPECT_TRUE(core.may_hold({0, 0, 0, true}));
  EXPECT_TRUE(core.may_hold({1, 9, bits({4}), true}));
  EXPECT_TRUE(core.may_hold({2, 7, 0, true}));
  EXPECT_FALSE(core.may_hold({2, 6, 0, true}));
  EXPECT_FALSE(core.may_hold({2, 8, 0, true}));
  EXPECT_FALSE(core.may_hold({3, 7, 0, true}));
  const cycle_core open = {2, -1, 0, true};
  EXPECT_TRUE(open.may_hold({2, 8, 0, true}));
  EXPECT_FALSE(open.may_hold({3, 8, 0, true}));
}

} // namespace kestro
