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

TEST(CycleCore, HoldsPartsWithFewerCyclesOrTheSameCore) {
  const cycle_core core = {2, 7};
  EXPECT_TRUE(core.may_hold({0, 0}));
  EXPECT_TRUE(core.may_hold({1, 9}));
  EXPECT_TRUE(core.may_hold({2, 7}));
  EXPECT_FALSE(core.may_hold({2, 6}));
  EXPECT_FALSE(core.may_hold({2, 8}));
  EXPECT_FALSE(core.may_hold({3, 7}));
  const cycle_core open = {2, -1};
  EXPECT_TRUE(open.may_hold({2, 8}));
  EXPECT_FALSE(open.may_hold({3, 8}));
}

} // namespace kestro
