#include "reference/graph/merge.h"

#include <gtest/gtest.h>

#include "graph/edge_marks.h"
#include "reference/graph/edge_marks.h"
#include "reference/graph/graph.h"
#include "support/fatal.h"
#include "support/graphs.h"

namespace kestro {

// One join: pattern g1 with its extra edge u-w, pattern g2, and the map between
// them.  The result has room for one edge and one vertex more than g2.
struct join {
  graph_ptr g1;
  graph_ptr g2;
  int u;
  int w;
  std::vector<int> map;
  graph_ptr result;

  join(graph_ptr a, graph_ptr b, int from, int to, std::vector<int> m)
      : g1(std::move(a)), g2(std::move(b)), u(from), w(to), map(std::move(m)),
        result(graph_create(g2->es + 2, g2->vs + 1)) {
    EXPECT_TRUE(graph_disable_edge_between(g1.get(), u, w));
  }

  int merge() {
    return graph_merge(g1.get(), g2.get(), u, w, map.data(), result.get());
  }
  int merge_with_loop() {
    return graph_merge_with_loop(g1.get(), g2.get(), u, w, map.data(),
                                 result.get());
  }
  bool gives(const graph_ptr &expected) const {
    graph_check(result.get());
    return same_structure(result.get(), expected.get());
  }
};

// The core is an edge 0-1; A and B both hang a vertex on it.  A's new vertex 2
// (label 7) is at core vertex 0, by an edge labelled 5; B's new vertex 2 is at
// core vertex 1.
static join two_paths(int label_of_b = 8) {
  return join(make_graph({1, 2, 7}, {{0, 1, 3}, {0, 2, 5}}),
              make_graph({1, 2, label_of_b}, {{0, 1, 3}, {1, 2, 6}}), 0, 2,
              {0, 1, -1});
}

TEST(Merge, VertexOutsideTheCoreComesLastWithOneSlot) {
  join j = two_paths();
  EXPECT_EQ(j.merge(), 1);
  EXPECT_TRUE(
      j.gives(make_graph({1, 2, 8, 7}, {{0, 1, 3}, {1, 2, 6}, {0, 3, 5}})));
  EXPECT_EQ(j.result->v[4] - j.result->v[3], 1);
}

TEST(Merge, EndsOfTheExtraEdgeComeInEitherOrder) {
  join j = two_paths();
  std::swap(j.u, j.w);
  EXPECT_EQ(j.merge(), 1);
  EXPECT_TRUE(
      j.gives(make_graph({1, 2, 8, 7}, {{0, 1, 3}, {1, 2, 6}, {0, 3, 5}})));
}

TEST(Merge, VertexOutsideTheCoreMayBeTheFirst) {
  join j(make_graph({7, 1, 2}, {{0, 1, 5}, {1, 2, 3}}),
         make_graph({1, 2, 8}, {{0, 1, 3}, {1, 2, 6}}), 0, 1, {-1, 0, 1});
  EXPECT_EQ(j.merge(), 1);
  EXPECT_TRUE(
      j.gives(make_graph({1, 2, 8, 7}, {{0, 1, 3}, {1, 2, 6}, {0, 3, 5}})));
}

TEST(Merge, OldVerticesKeepTheirIdsNewOneHasItsIndex) {
  join j = two_paths();
  for (int i = 0; i < 3; i++)
    j.g2->vid[i] = 20 + i;
  j.merge();
  EXPECT_EQ(std::vector<int>(j.result->vid, j.result->vid + 4),
            (std::vector<int>{20, 21, 22, 3}));
}

TEST(Merge, NewVertexFollowsThoseOfASmallerPattern) {
  // B closes the path 0-1-2 to a ring, so it has a vertex less than A.
  join j(make_graph({1, 2, 3, 7}, {{0, 1}, {1, 2}, {2, 3, 5}}),
         make_graph({1, 2, 3}, {{0, 1}, {1, 2}, {0, 2, 6}}), 2, 3,
         {0, 1, 2, -1});
  EXPECT_EQ(j.merge(), 1);
  EXPECT_TRUE(j.gives(
      make_graph({1, 2, 3, 7}, {{0, 1}, {1, 2}, {0, 2, 6}, {2, 3, 5}})));
  EXPECT_EQ(j.result->vid[3], 3);
}

// The core is a path 0-1-2-3 of three edges; both patterns close it to a ring
// with a chord somewhere: A joins 0-3 by an edge labelled 5.
static join chord(test_edge extra_of_b) {
  return join(make_graph({1, 2, 3, 4}, {{0, 1}, {1, 2}, {2, 3}, {0, 3, 5}}),
              make_graph({1, 2, 3, 4}, {{0, 1}, {1, 2}, {2, 3}, extra_of_b}), 0,
              3, {0, 1, 2, 3});
}

TEST(Merge, EdgeBetweenCoreVerticesAddsNoVertex) {
  join j = chord({0, 2, 6});
  EXPECT_EQ(j.merge(), 1);
  EXPECT_TRUE(j.gives(make_graph(
      {1, 2, 3, 4}, {{0, 1}, {1, 2}, {2, 3}, {0, 2, 6}, {0, 3, 5}})));
}

TEST(Merge, EdgeThatTheOtherPatternHasGivesNoCandidate) {
  EXPECT_EQ(chord({0, 3, 5}).merge(), 0);
}

TEST(Merge, EdgeThatTheOtherPatternHasWithAnotherLabelGivesNone) {
  EXPECT_EQ(chord({0, 3, 6}).merge(), 0);
}

TEST(Merge, EdgeFollowsTheMap) {
  // The reversed core: 0-1-2-3 of A is 3-2-1-0 of B, labels alike.
  join j(make_graph({1, 1, 1, 1}, {{0, 1}, {1, 2}, {2, 3}, {0, 2, 5}}),
         make_graph({1, 1, 1, 1}, {{0, 1}, {1, 2}, {2, 3}, {0, 2, 5}}), 0, 2,
         {3, 2, 1, 0});
  EXPECT_EQ(j.merge(), 1);
  EXPECT_TRUE(j.gives(make_graph(
      {1, 1, 1, 1}, {{0, 1}, {1, 2}, {2, 3}, {0, 2, 5}, {1, 3, 5}})));
}

TEST(Merge, SlotGoesToTheFrontOfLargerNeighbours) {
  // 3 has neighbours 1 and 2: the new neighbour 0 comes first; 0 has neighbours
  // 1 and 2: the new neighbour 3 comes last.
  const std::vector<test_edge> core = {{0, 1}, {0, 2}, {1, 3}, {2, 3}};
  std::vector<test_edge> a = core;
  a.push_back({0, 3, 9});
  std::vector<test_edge> b = core;
  b.push_back({1, 2, 8});
  join j(make_graph({0, 0, 0, 0}, a), make_graph({0, 0, 0, 0}, b), 0, 3,
         {0, 1, 2, 3});
  EXPECT_EQ(j.merge(), 1);
  const graph *g = j.result.get();
  EXPECT_EQ(g->e[g->v[3]], 0);
  EXPECT_EQ(g->elabel[g->v[3]], 9);
  EXPECT_EQ(g->e[g->v[1] - 1], 3);
  EXPECT_EQ(g->elabel[g->v[1] - 1], 9);
  graph_check(g);
}

TEST(Merge, SlotGoesBetweenSmallerAndLargerNeighbours) {
  // A star around 1; 1 gets no slot, 0-4 and its mirror end up around it.
  const std::vector<test_edge> core = {{0, 1}, {1, 2}, {2, 3}, {2, 4}};
  std::vector<test_edge> a = core;
  a.push_back({1, 3, 9});
  std::vector<test_edge> b = core;
  b.push_back({1, 4, 8});
  join j(make_graph({0, 0, 0, 0, 0}, a), make_graph({0, 0, 0, 0, 0}, b), 1, 3,
         {0, 1, 2, 3, 4});
  EXPECT_EQ(j.merge(), 1);
  const graph *g = j.result.get();
  EXPECT_EQ(std::vector<int>(g->e + g->v[1], g->e + g->v[2]),
            (std::vector<int>{0, 2, 3, 4}));
  EXPECT_EQ(std::vector<int>(g->elabel + g->v[1], g->elabel + g->v[2]),
            (std::vector<int>{0, 0, 9, 8}));
}

TEST(Merge, LabelIsReadPastAMarkedRangeEnd) {
  // The lone end 2 is disabled, so the range of 1 ends at a marked offset.
  join j(make_graph({1, 2, 7}, {{0, 1, 3}, {1, 2, 5}}),
         make_graph({1, 2, 8}, {{0, 1, 3}, {0, 2, 6}}), 1, 2, {0, 1, -1});
  EXPECT_EQ(j.merge(), 1);
  EXPECT_TRUE(
      j.gives(make_graph({1, 2, 8, 7}, {{0, 1, 3}, {0, 2, 6}, {1, 3, 5}})));
}

TEST(Merge, InputsStayAsTheyAre) {
  join j = two_paths();
  const graph_ptr a(graph_copy(j.g1.get()));
  const graph_ptr b(graph_copy(j.g2.get()));
  j.merge();
  EXPECT_TRUE(same_structure(j.g1.get(), a.get()));
  EXPECT_TRUE(same_structure(j.g2.get(), b.get()));
}

TEST(MergeFatal, SlotCountsDiffer) {
  join j(path_graph(4), path_graph(3), 0, 1, {-1, 0, 1, 2});
  EXPECT_EQ(fatal_text([&] { j.merge(); }), "graph.c:N: something wrong\n");
}

TEST(MergeFatal, VertexOutsideIsNoEndOfTheExtraEdge) {
  join j = two_paths();
  j.map = {0, -1, 1};
  EXPECT_EQ(fatal_text([&] { j.merge(); }), "graph.c:N: something wrong\n");
}

TEST(MergeDeath, NoDisabledSlotForANewVertex) {
  join j = two_paths();
  graph_enable_edge_between(j.g1.get(), 0, 2);
  EXPECT_DEATH(j.merge(), "Assertion `el != -1' failed");
}

TEST(MergeDeath, NoDisabledSlotForANewEdge) {
  join j = chord({0, 2, 6});
  graph_enable_edge_between(j.g1.get(), 0, 3);
  EXPECT_DEATH(j.merge(), "Assertion `i < end' failed");
}

TEST(MergeDeath, EdgeToAVertexThatTheOtherPatternLacks) {
  join j = chord({0, 2, 6});
  j.map[3] = 9;
  EXPECT_DEATH(j.merge(), "Assertion `!flag_p && !flag_q' failed");
}

TEST(MergeWithLoop, EqualLabelsCloseACycle) {
  join j = two_paths(7);
  EXPECT_EQ(j.merge_with_loop(), 1);
  EXPECT_TRUE(
      j.gives(make_graph({1, 2, 7}, {{0, 1, 3}, {1, 2, 6}, {0, 2, 5}})));
}

TEST(MergeWithLoop, EndsOfTheExtraEdgeComeInEitherOrder) {
  join j = two_paths(7);
  std::swap(j.u, j.w);
  EXPECT_EQ(j.merge_with_loop(), 1);
  EXPECT_TRUE(
      j.gives(make_graph({1, 2, 7}, {{0, 1, 3}, {1, 2, 6}, {0, 2, 5}})));
}

TEST(MergeWithLoop, NewNeighbourIsLetInAtItsPlace) {
  // B's extra vertex is 0, so it is in front of all others' neighbours.
  join j(make_graph({1, 2, 7}, {{0, 1, 3}, {0, 2, 5}}),
         make_graph({7, 2, 1}, {{0, 1, 6}, {1, 2, 3}}), 0, 2, {2, 1, -1});
  EXPECT_EQ(j.merge_with_loop(), 1);
  EXPECT_TRUE(
      j.gives(make_graph({7, 2, 1}, {{0, 1, 6}, {1, 2, 3}, {0, 2, 5}})));
}

TEST(MergeWithLoop, IdsStay) {
  join j = two_paths(7);
  j.g2->vid[2] = 55;
  j.merge_with_loop();
  EXPECT_EQ(std::vector<int>(j.result->vid, j.result->vid + 3),
            (std::vector<int>{0, 1, 55}));
}

TEST(MergeWithLoop, DifferentLabelsGiveNone) {
  EXPECT_EQ(two_paths(8).merge_with_loop(), 0);
}

TEST(MergeWithLoop, SameCoreVertexGivesNone) {
  join j(make_graph({1, 2, 7}, {{0, 1, 3}, {0, 2, 5}}),
         make_graph({1, 2, 7}, {{0, 1, 3}, {0, 2, 5}}), 0, 2, {0, 1, -1});
  EXPECT_EQ(j.merge_with_loop(), 0);
}

TEST(MergeWithLoop, WithoutAVertexOutsideTheCoreGivesNone) {
  EXPECT_EQ(chord({0, 2, 6}).merge_with_loop(), 0);
}

TEST(MergeWithLoop, WithoutAnExtraVertexInTheOtherPatternGivesNone) {
  // A hangs 3 on the path 0-1-2, B closes the path to a triangle.
  join j(make_graph({0, 0, 0, 0}, {{0, 1}, {1, 2}, {2, 3}}), complete_graph(3),
         2, 3, {0, 1, 2, -1});
  EXPECT_EQ(j.merge_with_loop(), 0);
}

TEST(MergeWithLoopFatal, SlotCountsDiffer) {
  join j(path_graph(4), path_graph(3), 0, 1, {-1, 0, 1, 2});
  EXPECT_EQ(fatal_text([&] { j.merge_with_loop(); }),
            "graph.c:N: size mismatch\n");
}

TEST(MergeWithLoopDeath, ExtraVertexOfTheOtherPatternIsNoLeaf) {
  join j(path_graph(4), ring_graph(3), 2, 3, {0, 1, -1, -1});
  EXPECT_DEATH(j.merge_with_loop(),
               "Assertion `graph_vertex_degree\\(g2, w\\) == 1' failed");
}

TEST(MergeWithLoopFatal, ExtraVertexOfTheOtherPatternHasAMarkedSlot) {
  join j(path_graph(4), ring_graph(3), 2, 3, {0, 1, -1, -1});
  ASSERT_TRUE(graph_disable_edge_between(j.g2.get(), 0, 2));
  EXPECT_EQ(fatal_text([&] { j.merge_with_loop(); }),
            "graph.c:N: something wrong\n");
}

TEST(MergeWithLoopDeath, NoDisabledSlot) {
  join j = two_paths(7);
  graph_enable_edge_between(j.g1.get(), 0, 2);
  EXPECT_DEATH(j.merge_with_loop(), "Assertion `i < end' failed");
}

TEST(MergeWithLoopDeath, EdgeToAVertexThatTheOtherPatternLacks) {
  join j = two_paths(7);
  j.map[0] = 9; // which leaves vertex 0 as the one outside
  j.g2->vlabel[0] = 7;
  EXPECT_DEATH(j.merge_with_loop(), "Assertion `!flag_q && !flag_w' failed");
}

TEST(MappedEdges, SlotsOfTheImageInSlotOrder) {
  // e of g1: 1 | 0 2 | 1; of g2: 1 2 3 | 0 | 0 | 0.  1 goes to the centre.
  const graph_ptr g1 = path_graph(3);
  const graph_ptr g2 = star_graph(4);
  const int map[] = {3, 0, 1};
  std::vector<int> slots(4, -1);
  graph_get_mapped_edges(g1.get(), g2.get(), map, slots.data());
  // 0-1 is 3-0: slot 5; 1-0 is 0-3: slot 2; 1-2 is 0-1: slot 0; 2-1 is 1-0: 3.
  EXPECT_EQ(slots, (std::vector<int>{5, 2, 0, 3}));
}

TEST(MappedEdgesDeath, EdgeWithoutAnImage) {
  const graph_ptr g1 = path_graph(3);
  const graph_ptr g2 = star_graph(4);
  const int map[] = {0, 1, 2};
  int slots[4];
  EXPECT_DEATH(graph_get_mapped_edges(g1.get(), g2.get(), map, slots),
               "Assertion `k < g2->v\\[u \\+ 1\\]' failed");
}

TEST(MappedEdgesDeath, SlotsAreNotAsManyAsTold) {
  const graph_ptr g1 = path_graph(3);
  const int map[] = {0, 1, 2};
  int slots[4];
  g1->es = 2;
  EXPECT_DEATH(graph_get_mapped_edges(g1.get(), g1.get(), map, slots),
               "Assertion `es == g1->es' failed");
}

} // namespace kestro
