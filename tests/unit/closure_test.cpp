#include "mining/closure.h"

#include <gtest/gtest.h>

#include "graph/compacted.h"
#include "graph/edge_marks.h"
#include "reference/graph/edge_marks.h"
#include "reference/mining/sg_set.h"
#include "support/graphs.h"
#include "support/records.h"

namespace kestro {

static std::vector<std::pair<int, int>> removable(const graph_ptr &g) {
  removable_edges finder;
  std::vector<std::pair<int, int>> ends;
  for (const removable_edge &edge : finder.of(g.get())) {
    EXPECT_EQ(g->e[edge.slot], edge.w);
    ends.emplace_back(edge.u, edge.w);
  }
  return ends;
}

TEST(Closure, OnlyTheEndEdgesOfAPathCanGo) {
  EXPECT_EQ(removable(path_graph(4)),
            (std::vector<std::pair<int, int>>{{0, 1}, {2, 3}}));
}

TEST(Closure, TheOnlyEdgeCannotGo) {
  EXPECT_TRUE(removable(path_graph(2)).empty());
}

TEST(Closure, EveryEdgeOfARingCanGo) {
  EXPECT_EQ(removable(ring_graph(3)),
            (std::vector<std::pair<int, int>>{{0, 1}, {0, 2}, {1, 2}}));
}

TEST(Closure, ABridgeBetweenRingsCannotGo) {
  const graph_ptr g =
      make_graph({0, 0, 0, 0, 0, 0},
                 {{0, 1}, {1, 2}, {0, 2}, {2, 3}, {3, 4}, {4, 5}, {3, 5}});
  EXPECT_EQ(removable(g).size(), 6u);
  for (const auto &[u, w] : removable(g))
    EXPECT_FALSE(u == 2 && w == 3);
}

TEST(Closure, OfATreeTheEdgesToItsLeavesCanGo) {
  // 1-0-2-3, with 4 and 5 at 3.
  const graph_ptr g =
      make_graph({0, 0, 0, 0, 0, 0}, {{0, 1}, {0, 2}, {2, 3}, {3, 4}, {3, 5}});
  EXPECT_EQ(removable(g),
            (std::vector<std::pair<int, int>>{{0, 1}, {3, 4}, {3, 5}}));
}

TEST(Closure, ALeafOnARingCanGoAndSoCanTheRing) {
  const graph_ptr g =
      make_graph({0, 0, 0, 0}, {{0, 1}, {1, 2}, {0, 2}, {2, 3}});
  EXPECT_EQ(removable(g),
            (std::vector<std::pair<int, int>>{{0, 1}, {0, 2}, {1, 2}, {2, 3}}));
}

TEST(Closure, OneFinderServesGraphsOfAllSizes) {
  removable_edges finder;
  EXPECT_EQ(finder.of(ring_graph(9).get()).size(), 9u);
  EXPECT_EQ(finder.of(path_graph(4).get()).size(), 2u);
  EXPECT_EQ(finder.of(ring_graph(3).get()).size(), 3u);
  EXPECT_EQ(finder.of(path_graph(2).get()).size(), 0u);
  EXPECT_EQ(finder.of(complete_graph(5).get()).size(), 10u);
}

// A random connected graph.
static graph_ptr random_connected(test_rng &rng) {
  const int vs = 2 + random_below(rng, 7);
  std::vector<int> vlabels;
  std::vector<test_edge> edges;
  for (int u = 0; u < vs; u++) {
    vlabels.push_back(random_below(rng, 2));
    for (int w = 0; w < u; w++)
      if (w == u - 1 || random_below(rng, 4) == 0)
        edges.push_back({w, u, random_below(rng, 2)});
  }
  return make_graph(vlabels, edges);
}

TEST(Closure, RemovableEdgesAreThoseThatDisablingAccepts) {
  test_rng rng(11);
  for (int seed = 0; seed < 500; seed++) {
    const graph_ptr g = random_connected(rng);
    std::vector<std::pair<int, int>> accepted;
    for (int u = 0; u < g->vs; u++)
      for (int j = g->v[u]; j < g->v[u + 1]; j++) {
        const int w = g->e[j];
        if (w < u || !graph_disable_edge_between(g.get(), u, w))
          continue;
        graph_enable_edge_between(g.get(), u, w);
        accepted.emplace_back(u, w);
      }
    EXPECT_EQ(removable(g), accepted) << "graph " << seed;
  }
}

TEST(Closure, LabelsOfRelabelledGraphsAreEqual) {
  test_rng rng(12);
  const sg_set_ptr none(sg_set_create());
  closure_filter filter(none.get());
  for (int i = 0; i < 500; i++) {
    const graph_ptr g = random_connected(rng);
    const graph_ptr h = relabelled(g.get(), random_permutation(rng, g->vs));
    EXPECT_EQ(filter.label(g.get()), filter.label(h.get())) << "graph " << i;
  }
}

// A path of 17 vertices, one of which has another label.
static graph_ptr marked_path(int at) {
  std::vector<int> vlabels(17, 0);
  vlabels[static_cast<size_t>(at)] = 1;
  std::vector<test_edge> edges;
  for (int i = 1; i < 17; i++)
    edges.push_back({i - 1, i});
  return make_graph(vlabels, edges);
}

// A vertex halfway sees three steps to either side.
TEST(Closure, LabelTellsWhatIsUpToSixStepsApart) {
  const sg_set_ptr none(sg_set_create());
  closure_filter filter(none.get());
  for (int at = 1; at <= 6; at++) // the nearer end's distance
    EXPECT_NE(filter.label(marked_path(at).get()),
              filter.label(marked_path(8).get()));
}

TEST(Closure, LabelWithoutAnEdgeIsThatOfTheRest) {
  test_rng rng(13);
  const sg_set_ptr none(sg_set_create());
  closure_filter filter(none.get());
  removable_edges finder;
  for (int i = 0; i < 500; i++) {
    const graph_ptr g = random_connected(rng);
    const graph_ptr rest(graph_create(g->es, g->vs));
    for (const removable_edge &edge : finder.of(g.get())) {
      const uint64_t label = filter.label_without(g.get(), edge);
      graph_mark_edge_between(g.get(), edge.u, edge.w);
      graph_copy_compacted(g.get(), rest.get());
      graph_enable_edge_between(g.get(), edge.u, edge.w);
      EXPECT_EQ(label, filter.label(rest.get())) << "graph " << i;
    }
  }
}

TEST(Closure, FilterKnowsTheLabelsOfItsLevelOnly) {
  const sg_set_ptr level(sg_set_create());
  sg_set_insert(level.get(), canonical_record(path_graph(4)));
  sg_set_insert(level.get(), canonical_record(ring_graph(3)));
  closure_filter filter(level.get());
  EXPECT_TRUE(filter.contains(filter.label(path_graph(4).get())));
  EXPECT_TRUE(filter.contains(filter.label(ring_graph(3).get())));
  EXPECT_FALSE(filter.contains(filter.label(star_graph(4).get())));
}

TEST(Closure, LateFilterTellsNothingBeforeItPays) {
  const sg_set_ptr level(sg_set_create());
  sg_set_insert(level.get(), canonical_record(path_graph(4)));
  sg_set_insert(level.get(), canonical_record(ring_graph(3)));
  // Without the edge between its last two leaves a star, without another one a
  // path.
  const graph_ptr g =
      make_graph({0, 0, 0, 0}, {{0, 1}, {0, 2}, {0, 3}, {2, 3}});
  removable_edges finder;
  const xvector<removable_edge> edges = finder.of(g.get());
  late_closure_filter filter(level.get());
  for (const removable_edge &edge : edges)
    EXPECT_TRUE(filter.may_contain(g.get(), edge));
  filter.note_miss(); // one is enough for so small a level
  int refused = 0;
  for (const removable_edge &edge : edges) {
    const bool leaves_a_star = edge.u == 2 && edge.w == 3;
    EXPECT_EQ(filter.may_contain(g.get(), edge), !leaves_a_star)
        << edge.u << '-' << edge.w;
    refused += leaves_a_star;
  }
  EXPECT_EQ(refused, 1);
}

} // namespace kestro
