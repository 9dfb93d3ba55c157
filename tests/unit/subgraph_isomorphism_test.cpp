#include "reference/cl/subgraph_isomorphism.h"

#include <gtest/gtest.h>

#include <functional>

#include "base/error.h"
#include "graph/edge_marks.h"
#include "reference/cl/isomorphism_calls.h"
#include "reference/graph/edge_marks.h"
#include "support/fatal.h"
#include "support/graphs.h"

namespace kestro {

using maps_list = std::vector<std::vector<int>>;

// The mappings of a stack, which is freed; none for a null stack.
static maps_list taken(ksstack *stack, const graph *g1) {
  const ksstack_ptr maps(stack);
  maps_list result;
  for (int i = 0; maps && i < maps->count; i++) {
    const int *map = static_cast<int *>(ksstack_at(maps.get(), i));
    result.emplace_back(map, map + g1->vs);
  }
  return result;
}

static maps_list sorted(maps_list maps) {
  std::sort(maps.begin(), maps.end());
  return maps;
}

static void expect_clean_matrix(int n) {
  int **matrix = graph_label_matrix(n);
  for (int w = 0; w < n; w++)
    for (int y = 0; y < n; y++)
      ASSERT_EQ(matrix[w][y], -1) << w << " " << y;
}

namespace {

// A pattern and a graph at random, with all mappings found the slow way.
struct random_pair {
  graph_ptr g1;
  graph_ptr g2;
  maps_list expected;
  random_pair(test_rng &rng, int round)
      : g1(random_graph(
            rng, {.vs = 2 + round % 3, .extra_edges = random_below(rng, 3)})),
        g2(random_graph(rng, {.vs = 4 + round % 3,
                              .extra_edges = random_below(rng, 9),
                              .connected = round % 3 != 0})),
        expected(naive_maps(g1.get(), g2.get())) {}
  size_t size() const { return static_cast<size_t>(g1->vs); }
  // Whether map extends the fixed entries to a mapping.
  bool extends(const std::vector<int> &map, const std::vector<int> &fixed,
               const std::vector<int> &active) const {
    for (size_t u = 0; u < map.size(); u++)
      if (active[u] && map[u] != fixed[u])
        return false;
    return std::find(expected.begin(), expected.end(), map) != expected.end();
  }
};

} // namespace

TEST(SubgraphIsomorphism, EveryFindAgreesWithAllInjections) {
  test_rng rng(14);
  int found = 0;
  for (int round = 0; round < 300; round++) {
    const random_pair pair(rng, round);
    const graph *g1 = pair.g1.get();
    const graph *g2 = pair.g2.get();
    const int expected = !pair.expected.empty();
    found += expected;
    const std::vector<int> none(pair.size(), 0);
    std::vector<int> map(pair.size());
    std::vector<int> order(pair.size());
    ASSERT_EQ(graph_find_isomorphism(g1, g2), expected) << round;
    ASSERT_EQ(graph_find_isomorphism_map(g1, g2, map.data()), expected);
    ASSERT_EQ(pair.extends(map, map, none), expected);
    ASSERT_EQ(
        graph_find_isomorphism_and_order(g1, g2, map.data(), order.data()),
        expected);
    ASSERT_EQ(pair.extends(map, map, none), expected);
    order = random_permutation(rng, g1->vs);
    ASSERT_EQ(graph_find_isomorphism_by_order(g1, g2, map.data(), order.data()),
              expected);
    ASSERT_EQ(pair.extends(map, map, none), expected);
    expect_clean_matrix(g2->vs);
  }
  EXPECT_GT(found, 40);
  EXPECT_LT(found, 260);
}

TEST(SubgraphIsomorphism, EveryListingAgreesWithAllInjections) {
  test_rng rng(15);
  for (int round = 0; round < 300; round++) {
    const random_pair pair(rng, round);
    ksstack *stack = graph_all_isomorphisms(pair.g1.get(), pair.g2.get());
    ASSERT_EQ(stack != nullptr, !pair.expected.empty()) << round;
    ASSERT_EQ(sorted(taken(stack, pair.g1.get())), pair.expected) << round;
    expect_clean_matrix(pair.g2->vs);
  }
}

TEST(SubgraphIsomorphism, EveryExtensionAgreesWithAllInjections) {
  test_rng rng(16);
  int found = 0;
  for (int round = 0; round < 400; round++) {
    const random_pair pair(rng, round);
    const graph *g1 = pair.g1.get();
    const graph *g2 = pair.g2.get();
    std::vector<int> active(pair.size(), 0);
    std::vector<int> fixed(pair.size(), -1);
    const int u = random_below(rng, g1->vs);
    const int w = random_below(rng, g2->vs);
    if (g1->vlabel[u] != g2->vlabel[w])
      continue; // what is fixed is taken as it is
    active[static_cast<size_t>(u)] = 1;
    fixed[static_cast<size_t>(u)] = w;
    maps_list expected;
    for (const std::vector<int> &map : pair.expected)
      if (map[static_cast<size_t>(u)] == w)
        expected.push_back(map);
    found += !expected.empty();

    std::vector<int> map = fixed;
    std::vector<int> order(pair.size());
    ASSERT_EQ(graph_extend_isomorphism_and_order(g1, g2, map.data(),
                                                 order.data(), active.data()),
              !expected.empty())
        << round;
    ASSERT_EQ(order.front(), u);
    if (!expected.empty()) {
      ASSERT_TRUE(pair.extends(map, fixed, active)) << round;
      map = fixed;
      ASSERT_EQ(graph_extend_isomorphism_by_order(g1, g2, map.data(),
                                                  order.data(), active.data()),
                1);
      ASSERT_TRUE(pair.extends(map, fixed, active)) << round;
    }
    map = fixed;
    ASSERT_EQ(sorted(taken(graph_isomorphisms_extending(g1, g2, map.data(),
                                                        active.data()),
                           g1)),
              expected)
        << round;
    ASSERT_EQ(map, fixed);
    expect_clean_matrix(g2->vs);
  }
  EXPECT_GT(found, 20);
}

TEST(SubgraphIsomorphism, OrderFoundServesOtherGraphs) {
  const graph_ptr pattern =
      make_graph({0, 1, 2, 3, 4}, {{0, 3}, {1, 3}, {1, 2}, {3, 4}});
  std::vector<int> map(5);
  std::vector<int> order(5);
  EXPECT_EQ(graph_find_isomorphism_and_order(pattern.get(), pattern.get(),
                                             map.data(), order.data()),
            1);
  EXPECT_EQ(order, (std::vector<int>{0, 3, 1, 2, 4}));
  const std::vector<int> to = {4, 2, 0, 1, 3};
  const graph_ptr other = relabelled(pattern.get(), to);
  EXPECT_EQ(graph_find_isomorphism_by_order(pattern.get(), other.get(),
                                            map.data(), order.data()),
            1);
  EXPECT_EQ(map, to);
}

TEST(SubgraphIsomorphism, MappingNeedNotBeInduced) {
  EXPECT_EQ(graph_find_isomorphism(path_graph(3).get(), ring_graph(3).get()),
            1);
  EXPECT_EQ(graph_find_isomorphism(ring_graph(3).get(), path_graph(3).get()),
            0);
}

TEST(SubgraphIsomorphism, AutomorphismsIncludeTheIdentity) {
  const graph_ptr g = ring_graph(5);
  const maps_list maps =
      taken(graph_all_isomorphisms(g.get(), g.get()), g.get());
  EXPECT_EQ(maps.size(), 10u);
  EXPECT_EQ(maps.front(), identity_of(5));
}

TEST(SubgraphIsomorphism, ListingBeginsAtTheLowestFreeVertex) {
  // Vertices 0 and 2 are fixed: the listing starts at position 1, where 2
  // stands, and passes it by.
  const graph_ptr g = complete_graph(4);
  const std::vector<int> active = {1, 0, 1, 0};
  std::vector<int> map = {3, -1, 0, -1};
  EXPECT_EQ(taken(graph_isomorphisms_extending(g.get(), g.get(), map.data(),
                                               active.data()),
                  g.get()),
            (maps_list{{3, 1, 0, 2}, {3, 2, 0, 1}}));
}

TEST(SubgraphIsomorphism, FixedVerticesBeginTheOrder) {
  const graph_ptr g = path_graph(4);
  const std::vector<int> active = {0, 0, 1, 1};
  std::vector<int> map = {-1, -1, 1, 0};
  std::vector<int> order(4);
  EXPECT_EQ(graph_extend_isomorphism_and_order(g.get(), g.get(), map.data(),
                                               order.data(), active.data()),
            1);
  EXPECT_EQ(order, (std::vector<int>{2, 3, 0, 1}));
}

TEST(SubgraphIsomorphism, ByOrderAllVerticesMayBeFixed) {
  const graph_ptr g = path_graph(3);
  const std::vector<int> active(3, 1);
  const std::vector<int> order = {0, 1, 2};
  std::vector<int> map = {2, 1, 0};
  EXPECT_EQ(graph_extend_isomorphism_by_order(g.get(), g.get(), map.data(),
                                              order.data(), active.data()),
            1);
  EXPECT_EQ(map, (std::vector<int>{2, 1, 0}));
}

TEST(SubgraphIsomorphism, ChoosingAnOrderNeedsAFreeVertex) {
  const graph_ptr g = path_graph(2);
  const std::vector<int> active(2, 1);
  std::vector<int> map = {0, 1};
  EXPECT_THROW(
      graph_isomorphisms_extending(g.get(), g.get(), map.data(), active.data()),
      check_failure);
  expect_clean_matrix(2);
}

TEST(SubgraphIsomorphism, FailedCheckLeavesTheMatrixClean) {
  const graph_ptr g1 = make_graph({0, 0, 0, 0}, {{0, 1}, {2, 3}});
  const graph_ptr g2 = complete_graph(5);
  EXPECT_THROW(graph_find_isomorphism(g1.get(), g2.get()), check_failure);
  expect_clean_matrix(5);
  EXPECT_THROW(graph_all_isomorphisms(g1.get(), g2.get()), check_failure);
  expect_clean_matrix(5);
}

TEST(SubgraphIsomorphism, LargerPatternDiesEvenWhereTheSearchIsTrivial) {
  const graph_ptr g1 = make_graph({1, 1, 1}, {{0, 1}, {1, 2}});
  const graph_ptr g2 = path_graph(2); // no label in common
  const graph *a = g1.get();
  const graph *b = g2.get();
  int map[3] = {-1, -1, -1};
  int order[3] = {0, 1, 2};
  const int active[3] = {0, 0, 0};
  const std::vector<std::function<void()>> calls = {
      [&] { graph_find_isomorphism(a, b); },
      [&] { graph_find_isomorphism_map(a, b, map); },
      [&] { graph_find_isomorphism_and_order(a, b, map, order); },
      [&] { graph_extend_isomorphism_and_order(a, b, map, order, active); },
      [&] { graph_find_isomorphism_by_order(a, b, map, order); },
      [&] { graph_extend_isomorphism_by_order(a, b, map, order, active); },
      [&] { graph_isomorphisms_extending(a, b, map, active); },
      [&] { graph_all_isomorphisms(a, b); }};
  const uint64_t before = graph_isomorphism_calls();
  for (const auto &call : calls)
    EXPECT_EQ(fatal_text(call),
              "isomorphism.c:N: g1 must be smaller than g2\n");
  EXPECT_EQ(graph_isomorphism_calls() - before, 8u);
}

TEST(SubgraphIsomorphism, LargerGraphGrowsTheMatrixSmallerReusesIt) {
  graph_free_label_matrix();
  const graph_ptr edge = path_graph(2);
  EXPECT_EQ(graph_find_isomorphism(edge.get(), path_graph(4).get()), 1);
  EXPECT_EQ(graph_find_isomorphism(edge.get(), path_graph(30).get()), 1);
  int **const matrix = graph_label_matrix(30);
  EXPECT_EQ(graph_find_isomorphism(edge.get(), path_graph(3).get()), 1);
  EXPECT_EQ(graph_label_matrix(3), matrix);
  expect_clean_matrix(30);
}

TEST(SubgraphIsomorphism, NothingFoundIsZeroOrNull) {
  const graph_ptr g1 = make_graph({0, 0}, {{0, 1, 8}});
  const graph_ptr g2 = complete_graph(3);
  EXPECT_EQ(graph_find_isomorphism(g1.get(), g2.get()), 0);
  EXPECT_EQ(graph_all_isomorphisms(g1.get(), g2.get()), nullptr);
  expect_clean_matrix(3);
}

TEST(SubgraphIsomorphism, DisabledEdgeOfThePatternIsNotRequired) {
  const graph_ptr g1 = ring_graph(4);
  const graph_ptr g2 = path_graph(4);
  EXPECT_EQ(graph_find_isomorphism(g1.get(), g2.get()), 0);
  ASSERT_EQ(graph_disable_edge_between(g1.get(), 1, 2), 1);
  EXPECT_EQ(graph_find_isomorphism(g1.get(), g2.get()), 1);
}

} // namespace kestro
