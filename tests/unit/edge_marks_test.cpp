#include "graph/edge_marks.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "reference/graph/edge_marks.h"
#include "support/graphs.h"

namespace kestro {

// Everything stored in e and v, marks included.
static std::vector<int> stored(const graph_ptr &g) {
  std::vector<int> values(g->e, g->e + g->es);
  values.insert(values.end(), g->v, g->v + g->vs + 1);
  return values;
}

TEST(EdgeMarks, OnlyEdgeIsNotDisabled) {
  const graph_ptr g = path_graph(2);
  const std::vector<int> before = stored(g);
  EXPECT_EQ(graph_disable_edge_between(g.get(), 0, 1), 0);
  EXPECT_EQ(stored(g), before);
}

TEST(EdgeMarks, LastEnabledEdgeIsNotDisabled) {
  const graph_ptr g = path_graph(3);
  ASSERT_EQ(graph_disable_edge_between(g.get(), 0, 1), 1);
  const std::vector<int> before = stored(g);
  EXPECT_EQ(graph_disable_edge_between(g.get(), 1, 2), 0);
  EXPECT_EQ(stored(g), before);
}

TEST(EdgeMarks, BridgeStaysWithEveryMarkAsBefore) {
  const graph_ptr g = path_graph(4);
  const std::vector<int> before = stored(g);
  EXPECT_EQ(graph_disable_edge_between(g.get(), 1, 2), 0);
  EXPECT_EQ(stored(g), before);
}

TEST(EdgeMarks, PendantEdgeTakesItsLeafWithIt) {
  const graph_ptr g = path_graph(3); // e = 1 | 0 2 | 1, v = 0 1 3 4
  EXPECT_EQ(graph_disable_edge_between(g.get(), 1, 2), 1);
  EXPECT_EQ(stored(g), (std::vector<int>{1, 0, ~2, ~1, 0, 1, ~3, 4}));
}

TEST(EdgeMarks, PendantEdgeOfVertexZeroTakesItWithIt) {
  const graph_ptr g = path_graph(3);
  EXPECT_EQ(graph_disable_edge_between(g.get(), 0, 1), 1);
  EXPECT_EQ(stored(g), (std::vector<int>{~1, ~0, 2, 1, ~0, 1, 3, 4}));
}

TEST(EdgeMarks, RingEdgeLeavesBothEnds) {
  const graph_ptr g = ring_graph(3); // e = 1 2 | 0 2 | 0 1
  EXPECT_EQ(graph_disable_edge_between(g.get(), 2, 0), 1);
  EXPECT_EQ(stored(g), (std::vector<int>{1, ~2, 0, 2, ~0, 1, 0, 2, 4, 6}));
}

TEST(EdgeMarks, EnableRestoresEveryMark) {
  for (const auto &[u, w] : {std::pair(0, 1), std::pair(2, 3)}) {
    const graph_ptr g = path_graph(4);
    const std::vector<int> before = stored(g);
    ASSERT_EQ(graph_disable_edge_between(g.get(), u, w), 1);
    graph_enable_edge_between(g.get(), u, w);
    EXPECT_EQ(stored(g), before);
    ASSERT_EQ(graph_disable_edge_between(g.get(), u, w), 1);
    graph_enable_edge_between(g.get(), w, u); // the ends in either order
    EXPECT_EQ(stored(g), before);
  }
}

TEST(EdgeMarks, EnableOfAnEnabledEdgeChangesNothing) {
  const graph_ptr g = ring_graph(4);
  const std::vector<int> before = stored(g);
  graph_enable_edge_between(g.get(), 0, 1);
  EXPECT_EQ(stored(g), before);
}

TEST(EdgeMarks, TwoEdgesDisabledAndEnabledInTurn) {
  const graph_ptr g = complete_graph(4);
  const std::vector<int> before = stored(g);
  ASSERT_EQ(graph_disable_edge_between(g.get(), 0, 1), 1);
  const std::vector<int> one_disabled = stored(g);
  ASSERT_EQ(graph_disable_edge_between(g.get(), 2, 3), 1);
  graph_enable_edge_between(g.get(), 2, 3);
  EXPECT_EQ(stored(g), one_disabled);
  graph_enable_edge_between(g.get(), 0, 1);
  EXPECT_EQ(stored(g), before);
}

// Whether edges, of which none may be left over, form one connected piece;
// vertices without edges do not count.
static bool edges_connected(const std::vector<test_edge> &edges, int vs) {
  std::vector<int> piece = identity_of(vs);
  for (const test_edge &edge : edges) {
    const int from = piece[static_cast<size_t>(edge.u)];
    const int to = piece[static_cast<size_t>(edge.w)];
    std::replace(piece.begin(), piece.end(), from, to);
  }
  for (const test_edge &edge : edges)
    if (piece[static_cast<size_t>(edge.u)] !=
        piece[static_cast<size_t>(edges[0].u)])
      return false;
  return !edges.empty();
}

// Every edge of g in turn: disabled exactly when the other edges hang together.
static void check_every_edge(const graph_ptr &g) {
  const std::vector<int> before = stored(g);
  const std::vector<test_edge> edges = edges_of(g.get());
  for (size_t i = 0; i < edges.size(); i++) {
    std::vector<test_edge> rest = edges;
    rest.erase(rest.begin() + static_cast<ptrdiff_t>(i));
    const int u = edges[i].u;
    const int w = edges[i].w;
    const int leaves = (graph_vertex_degree(g.get(), u) == 1) +
                       (graph_vertex_degree(g.get(), w) == 1);
    const int done = graph_disable_edge_between(g.get(), u, w);
    ASSERT_EQ(done, edges_connected(rest, g->vs)) << u << "-" << w;
    if (done) {
      EXPECT_EQ(graph_active_slots(g.get()), g->es - 2);
      EXPECT_EQ(graph_active_vertices(g.get()), g->vs - leaves);
      graph_enable_edge_between(g.get(), u, w);
    }
    ASSERT_EQ(stored(g), before) << u << "-" << w;
  }
}

TEST(EdgeMarks, DisablesExactlyWhatLeavesTheRestConnected) {
  for (unsigned seed = 0; seed < 100; seed++) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    test_rng rng(seed);
    check_every_edge(random_graph(rng, {.vs = 2 + random_below(rng, 8),
                                        .extra_edges = random_below(rng, 6)}));
  }
}

TEST(EdgeMarks, SlotTellsItsEnds) {
  const graph_ptr g = ring_graph(4); // e = 1 3 | 0 2 | 1 3 | 0 2
  int u = -1;
  int w = -1;
  EXPECT_EQ(graph_disable_edge(g.get(), 5, &u, &w), 1);
  EXPECT_EQ(u, 2);
  EXPECT_EQ(w, 3);
  EXPECT_EQ(g->e[5], ~3);
  EXPECT_EQ(g->e[7], ~2);
}

TEST(EdgeMarks, SlotOfABridgeStoresNoEnds) {
  const graph_ptr g = path_graph(4); // slot 2 is 1-2
  const std::vector<int> before = stored(g);
  int u = -1;
  int w = -1;
  EXPECT_EQ(graph_disable_edge(g.get(), 2, &u, &w), 0);
  EXPECT_EQ(u, -1);
  EXPECT_EQ(w, -1);
  EXPECT_EQ(stored(g), before);
}

TEST(EdgeMarks, SlotOutOfRangeIsNotDisabled) {
  const graph_ptr g = ring_graph(3);
  const std::vector<int> before = stored(g);
  int u = -1;
  int w = -1;
  EXPECT_EQ(graph_disable_edge(g.get(), -1, &u, &w), 0);
  EXPECT_EQ(graph_disable_edge(g.get(), 6, &u, &w), 0);
  EXPECT_EQ(u, -1);
  EXPECT_EQ(stored(g), before);
}

TEST(EdgeMarksDeathTest, EndsMustDiffer) {
  const graph_ptr g = path_graph(3);
  EXPECT_DEATH(graph_disable_edge_between(g.get(), 1, 1),
               "Assertion `u != v' failed");
}

TEST(EdgeMarksDeathTest, FirstEndMustListTheSecond) {
  const graph_ptr g = path_graph(3);
  EXPECT_DEATH(graph_disable_edge_between(g.get(), 0, 2),
               "Assertion `i < g->v\\[u \\+ 1\\]' failed");
}

TEST(EdgeMarks, MarkingDoesNotAskForConnectedness) {
  const graph_ptr g = path_graph(4);
  graph_mark_edge_between(g.get(), 1, 2);
  EXPECT_EQ(graph_active_slots(g.get()), 4);
  EXPECT_EQ(graph_active_vertices(g.get()), 4);
  graph_enable_edge_between(g.get(), 1, 2);
  graph_mark_edge_between(g.get(), 2, 3); // takes the leaf along
  EXPECT_EQ(graph_active_vertices(g.get()), 3);
}

TEST(EdgeMarksDeathTest, SecondEndMustListTheFirst) {
  const graph_ptr g = path_graph(3);
  g->e[1] = 2; // 1 lists 2 twice and 0 no more
  EXPECT_DEATH(graph_disable_edge_between(g.get(), 0, 1),
               "Assertion `i < g->v\\[v \\+ 1\\]' failed");
}

TEST(EdgeMarksDeathTest, SlotMustBelongToAVertex) {
  const graph_ptr g = path_graph(3);
  g->v[0] = 1; // nobody's range holds slot 0
  int u = -1;
  int w = -1;
  EXPECT_DEATH(graph_disable_edge(g.get(), 0, &u, &w),
               "Assertion `x != -1' failed");
}

} // namespace kestro
