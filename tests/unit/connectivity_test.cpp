#include "graph/connectivity.h"

#include <algorithm>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "reference/graph/connectivity.h"
#include "support/graphs.h"

namespace kestro {

static std::vector<int> bfs_order(const graph_ptr &g) {
  std::vector<int> order(static_cast<size_t>(g->vs), -1);
  graph_bfs_order(g.get(), order.data());
  return order;
}

TEST(BfsOrder, TakesNeighboursInListOrderFromVertexZero) {
  // 0 - 3, 4; 3 - 1; 4 - 1, 2.
  const graph_ptr g =
      make_graph({0, 0, 0, 0, 0}, {{0, 3}, {0, 4}, {3, 1}, {4, 1}, {4, 2}});
  EXPECT_EQ(bfs_order(g), (std::vector<int>{0, 3, 4, 1, 2}));
}

TEST(BfsOrder, OfAPathAndARing) {
  EXPECT_EQ(bfs_order(path_graph(4)), (std::vector<int>{0, 1, 2, 3}));
  EXPECT_EQ(bfs_order(ring_graph(5)), (std::vector<int>{0, 1, 4, 2, 3}));
}

TEST(BfsOrder, OfOneVertex) {
  EXPECT_EQ(bfs_order(make_graph({9}, {})), std::vector<int>{0});
}

TEST(BfsOrder, OfNoVertexIsNothing) {
  EXPECT_EQ(bfs_order(make_graph({}, {})), std::vector<int>{});
}

TEST(IsConnected, OneVertexIs) {
  EXPECT_EQ(graph_is_connected(make_graph({9}, {}).get()), 1);
}

TEST(IsConnected, TwoPiecesAreNot) {
  EXPECT_EQ(graph_is_connected(make_graph({0, 0}, {}).get()), 0);
  EXPECT_EQ(
      graph_is_connected(make_graph({0, 0, 0, 0}, {{0, 2}, {1, 3}}).get()), 0);
}

TEST(IsConnected, IsolatedLastVertexCounts) {
  const graph_ptr g = make_graph({0, 0, 0}, {{0, 1}});
  EXPECT_EQ(graph_is_connected(g.get()), 0);
}

TEST(IsConnected, DisabledVertexDoesNotCount) {
  const graph_ptr g = make_graph({0, 0, 0}, {{0, 1}});
  graph_toggle(&g->v[2]);
  EXPECT_EQ(graph_is_connected(g.get()), 1);
}

TEST(IsConnected, StartsAtTheFirstEnabledVertex) {
  const graph_ptr g = make_graph({0, 0, 0}, {{1, 2}});
  EXPECT_EQ(graph_is_connected(g.get()), 0);
  graph_toggle(&g->v[0]);
  EXPECT_EQ(graph_is_connected(g.get()), 1);
}

TEST(IsConnected, DisabledSlotsAreNotFollowed) {
  const graph_ptr g = path_graph(3); // e = 1 | 0 2 | 1
  graph_toggle(&g->e[2]);
  graph_toggle(&g->e[3]);
  EXPECT_EQ(graph_is_connected(g.get()), 0);
}

TEST(IsConnected, EndsOfRangesAreReadThroughMarks) {
  const graph_ptr g = star_graph(3); // e = 1 2 | 0 | 0
  graph_toggle(&g->e[0]);            // 0-1 and vertex 1 off: v[1] ends the
  graph_toggle(&g->e[2]);            // list of 0, which leads on to 2
  graph_toggle(&g->v[1]);
  EXPECT_EQ(graph_is_connected(g.get()), 1);
}

TEST(IsConnected, LongPathNeedsNoCallDepth) {
  EXPECT_EQ(graph_is_connected(path_graph(100000).get()), 1);
}

TEST(IsConnectedDeathTest, SomeVertexMustBeEnabled) {
  const graph_ptr g = make_graph({9}, {});
  graph_toggle(&g->v[0]);
  EXPECT_DEATH(graph_is_connected(g.get()), "Assertion `first < g->vs' failed");
}

// Components by repeated renaming, numbered in the order of their smallest
// vertices.
static std::vector<int> slow_components(const graph *g) {
  std::vector<int> smallest = identity_of(g->vs);
  for (int round = 0; round < g->vs; round++)
    for (const test_edge &edge : edges_of(g)) {
      int &a = smallest[static_cast<size_t>(edge.u)];
      int &b = smallest[static_cast<size_t>(edge.w)];
      a = b = std::min(a, b);
    }
  std::vector<int> roots = smallest;
  std::sort(roots.begin(), roots.end());
  roots.erase(std::unique(roots.begin(), roots.end()), roots.end());
  for (int &root : smallest)
    root = static_cast<int>(std::find(roots.begin(), roots.end(), root) -
                            roots.begin());
  return smallest;
}

static std::vector<int> components(const graph_ptr &g, int *count) {
  std::vector<int> comp(static_cast<size_t>(g->vs), -1);
  *count = graph_connected_components(g.get(), comp.data());
  return comp;
}

TEST(ConnectedComponents, AreNumberedBySmallestVertex) {
  const graph_ptr g = make_graph({0, 0, 0, 0, 0, 0}, {{0, 5}, {1, 3}, {3, 4}});
  int count = 0;
  EXPECT_EQ(components(g, &count), (std::vector<int>{0, 1, 2, 1, 1, 0}));
  EXPECT_EQ(count, 3);
}

TEST(ConnectedComponents, OfAConnectedGraphIsOne) {
  int count = 0;
  EXPECT_EQ(components(ring_graph(5), &count), std::vector<int>(5, 0));
  EXPECT_EQ(count, 1);
}

TEST(ConnectedComponents, IsolatedVerticesAreComponents) {
  int count = 0;
  EXPECT_EQ(components(make_graph({0, 0, 0}, {}), &count),
            (std::vector<int>{0, 1, 2}));
  EXPECT_EQ(count, 3);
}

TEST(ConnectedComponents, AgreeWithTheSlowVersion) {
  for (unsigned seed = 0; seed < 200; seed++) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    test_rng rng(seed);
    const graph_ptr g = random_graph(rng, {.vs = 1 + random_below(rng, 12),
                                           .extra_edges = random_below(rng, 12),
                                           .connected = false});
    const std::vector<int> expected = slow_components(g.get());
    int count = 0;
    EXPECT_EQ(components(g, &count), expected);
    EXPECT_EQ(count, 1 + *std::max_element(expected.begin(), expected.end()));
    EXPECT_EQ(graph_is_connected(g.get()), count == 1);
  }
}

TEST(ConnectedComponentsDeathTest, MarkedVertexFailsTheAssertion) {
  const graph_ptr g = path_graph(3);
  graph_toggle(&g->e[2]);
  graph_toggle(&g->e[3]);
  graph_toggle(&g->v[2]);
  int comp[3];
  EXPECT_DEATH(graph_connected_components(g.get(), comp),
               "Assertion `j < g->vs' failed");
}

} // namespace kestro
