#include "graph/compacted.h"

#include <gtest/gtest.h>

#include "graph/edge_marks.h"
#include "reference/graph/edge_marks.h"
#include "reference/graph/graph.h"
#include "support/graphs.h"

namespace kestro {

// The copy of g without what is disabled, in a graph as large as g.
static graph_ptr compacted(const graph_ptr &g) {
  graph_ptr out(graph_create(g->es, g->vs));
  graph_copy_compacted(g.get(), out.get());
  return out;
}

static std::vector<int> vids_of(const graph_ptr &g) {
  return std::vector<int>(g->vid, g->vid + g->vs);
}

TEST(GraphCopyCompacted, WithoutMarksIsACopyWithItsKey) {
  const graph_ptr g = make_graph({5, 6, 7}, {{0, 1, 3}, {1, 2, 4}, {0, 2, 9}});
  g->key = 0xabcd;
  const graph_ptr out = compacted(g);
  EXPECT_TRUE(same_structure(out.get(), g.get()));
  EXPECT_EQ(vids_of(out), (std::vector<int>{0, 1, 2}));
  EXPECT_EQ(out->key, 0xabcdu);
}

TEST(GraphCopyCompacted, EdgeOfARingGoesVerticesStay) {
  const graph_ptr g = make_graph({0, 1, 2}, {{0, 1, 7}, {1, 2, 8}, {0, 2, 9}});
  ASSERT_TRUE(graph_disable_edge_between(g.get(), 0, 2));
  EXPECT_TRUE(same_structure(
      compacted(g).get(), make_graph({0, 1, 2}, {{0, 1, 7}, {1, 2, 8}}).get()));
}

TEST(GraphCopyCompacted, FirstVertexGoesAndTheOthersMoveDown) {
  const graph_ptr g = make_graph({5, 6, 7}, {{0, 1, 3}, {1, 2, 4}});
  ASSERT_TRUE(graph_disable_edge_between(g.get(), 0, 1));
  const graph_ptr out = compacted(g);
  EXPECT_TRUE(same_structure(out.get(), make_graph({6, 7}, {{0, 1, 4}}).get()));
  EXPECT_EQ(vids_of(out), (std::vector<int>{1, 2}));
}

TEST(GraphCopyCompacted, MiddleIndexGoes) {
  // 1 is an end of the path 1-0-2.
  const graph_ptr g = make_graph({5, 6, 7}, {{0, 1, 3}, {0, 2, 4}});
  ASSERT_TRUE(graph_disable_edge_between(g.get(), 0, 1));
  const graph_ptr out = compacted(g);
  EXPECT_TRUE(same_structure(out.get(), make_graph({5, 7}, {{0, 1, 4}}).get()));
  EXPECT_EQ(vids_of(out), (std::vector<int>{0, 2}));
}

TEST(GraphCopyCompacted, LastVertexGoes) {
  const graph_ptr g = make_graph({5, 6, 7}, {{0, 1, 3}, {1, 2, 4}});
  ASSERT_TRUE(graph_disable_edge_between(g.get(), 2, 1));
  EXPECT_TRUE(same_structure(compacted(g).get(),
                             make_graph({5, 6}, {{0, 1, 3}}).get()));
}

TEST(GraphCopyCompacted, IdsAreCopiedNotRenumbered) {
  const graph_ptr g = make_graph({5, 6, 7}, {{0, 1, 3}, {1, 2, 4}});
  for (int i = 0; i < 3; i++)
    g->vid[i] = 40 + i;
  ASSERT_TRUE(graph_disable_edge_between(g.get(), 0, 1));
  EXPECT_EQ(vids_of(compacted(g)), (std::vector<int>{41, 42}));
}

TEST(GraphCopyCompacted, LeavesTheOriginalAndItsMarks) {
  const graph_ptr g = path_graph(4);
  ASSERT_TRUE(graph_disable_edge_between(g.get(), 0, 1));
  const graph_ptr before(graph_copy(g.get()));
  compacted(g);
  EXPECT_TRUE(same_structure(g.get(), before.get()));
}

TEST(GraphCopyCompacted, EveryDeletionFromRandomGraphs) {
  for (unsigned seed = 0; seed < 30; seed++) {
    test_rng rng(seed);
    const graph_ptr g = random_graph(rng, {6, 3, 3, 3, true});
    const std::vector<test_edge> all = edges_of(g.get());
    for (const test_edge &gone : all) {
      if (!graph_disable_edge_between(g.get(), gone.u, gone.w))
        continue;
      const graph_ptr out = compacted(g);
      graph_enable_edge_between(g.get(), gone.u, gone.w);
      graph_check(out.get());
      ASSERT_EQ(out->es, g->es - 2) << "seed " << seed;
      for (const test_edge &left : edges_of(out.get())) {
        const int u = out->vid[left.u];
        const int w = out->vid[left.w];
        EXPECT_FALSE(u == gone.u && w == gone.w) << "seed " << seed;
        EXPECT_EQ(graph_edge_label(g.get(), u, w), left.label);
        EXPECT_EQ(out->vlabel[left.u], g->vlabel[u]);
      }
    }
  }
}

} // namespace kestro
