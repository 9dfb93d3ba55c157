#include "reference/graph/parts.h"

#include <vector>

#include <gtest/gtest.h>

#include "graph/connectivity.h"
#include "reference/graph/connectivity.h"
#include "support/fatal.h"
#include "support/graphs.h"

namespace kestro {

// A list with its graphs by index.
struct listed_graphs {
  graph_list_ptr graphs;

  explicit listed_graphs(graph_list *list) : graphs(list) {}

  int count() const { return graphs->count; }
  graph *operator[](int i) const {
    return ksstack_get<graph *>(graphs.get(), i);
  }
};

template <class... Graph> static listed_graphs list_of(Graph... graphs) {
  listed_graphs list(graph_list_new());
  (graph_list_push(std::move(graphs), list.graphs.get()), ...);
  return list;
}

static std::vector<int> vids_of(const graph *g) {
  return std::vector<int>(g->vid, g->vid + g->vs);
}

// Slots are 0: 0-1, 1: 1-0, 2: 1-2, 3: 2-1; edge labels 3 and 4; vids 10 ...
static graph_ptr labelled_path() {
  graph_ptr g = make_graph({5, 6, 7}, {{0, 1, 3}, {1, 2, 4}});
  for (int i = 0; i < 3; i++)
    g->vid[i] = 10 + i;
  g->key = 1;
  return g;
}

// A path 0-2-5, an edge 1-4 and a lone vertex 3.
static graph_ptr three_pieces() {
  graph_ptr g =
      make_graph({20, 21, 22, 23, 24, 25}, {{0, 2, 1}, {2, 5, 2}, {1, 4, 3}});
  for (int i = 0; i < 6; i++)
    g->vid[i] = 10 * i;
  g->key = 1;
  return g;
}

static graph_list *split(const graph_ptr &g) {
  std::vector<int> comp(static_cast<size_t>(g->vs));
  const int c = graph_connected_components(g.get(), comp.data());
  return split_components(g.get(), c, comp.data());
}

TEST(SplitComponents, MakesAGraphOfEveryComponent) {
  const graph_ptr g = three_pieces();
  const listed_graphs list(split(g));
  ASSERT_EQ(list.count(), 3);
  EXPECT_TRUE(same_structure(
      list[0], make_graph({20, 22, 25}, {{0, 1, 1}, {1, 2, 2}}).get()));
  EXPECT_TRUE(same_structure(list[1], make_graph({21, 24}, {{0, 1, 3}}).get()));
  EXPECT_TRUE(same_structure(list[2], make_graph({23}, {}).get()));
}

TEST(SplitComponents, KeepsVidsAndClearsTheKey) {
  const listed_graphs list(split(three_pieces()));
  EXPECT_EQ(vids_of(list[0]), (std::vector<int>{0, 20, 50}));
  EXPECT_EQ(vids_of(list[1]), (std::vector<int>{10, 40}));
  EXPECT_EQ(vids_of(list[2]), std::vector<int>{30});
  for (int i = 0; i < 3; i++)
    EXPECT_EQ(list[i]->key, 0u);
}

TEST(SplitComponents, StackHasCapacityOneHundredAndTwentyEight) {
  const listed_graphs list(split(three_pieces()));
  EXPECT_EQ(list.graphs->capacity, 128);
  EXPECT_EQ(list.graphs->element_size, static_cast<int>(sizeof(graph *)));
}

TEST(SplitComponents, OfAConnectedGraphIsItsCopy) {
  const graph_ptr g = complete_graph(4);
  const listed_graphs list(split(g));
  ASSERT_EQ(list.count(), 1);
  EXPECT_NE(list[0], g.get());
  EXPECT_TRUE(same_structure(list[0], g.get()));
}

TEST(SplitComponentsDeathTest, EveryComponentMustHaveAVertex) {
  const graph_ptr g = path_graph(2);
  const int comp[] = {0, 0};
  EXPECT_DEATH(split_components(g.get(), 2, comp),
               "Assertion `c_vs\\[i\\] > 0' failed");
}

static graph_ptr removed(const graph_ptr &g, const std::vector<int> &keep) {
  return graph_ptr(graph_remove_edges(g.get(), keep.data()));
}

TEST(RemoveEdges, NothingKeptIsNull) {
  EXPECT_EQ(removed(labelled_path(), {0, 0, 0, 0}), nullptr);
}

TEST(RemoveEdges, EverythingKeptIsACopyWithKeyZero) {
  const graph_ptr g = labelled_path();
  const graph_ptr rest = removed(g, {1, 1, 1, 1});
  EXPECT_TRUE(same_structure(rest.get(), g.get()));
  EXPECT_EQ(vids_of(rest.get()), (std::vector<int>{10, 11, 12}));
  EXPECT_EQ(rest->key, 0u);
}

TEST(RemoveEdges, VerticesWithoutSlotsGoAndTheRestIsRenumbered) {
  const graph_ptr rest = removed(labelled_path(), {0, 0, 1, 1});
  EXPECT_TRUE(
      same_structure(rest.get(), make_graph({6, 7}, {{0, 1, 4}}).get()));
  EXPECT_EQ(vids_of(rest.get()), (std::vector<int>{11, 12}));
}

TEST(RemoveEdges, AnyNonZeroValueKeeps) {
  const graph_ptr rest = removed(labelled_path(), {-1, 7, 0, 0});
  EXPECT_TRUE(
      same_structure(rest.get(), make_graph({5, 6}, {{0, 1, 3}}).get()));
}

TEST(RemoveEdges, MayLeaveSeveralComponents) {
  // Slots of the path 0-1-2-3: 01 | 10 12 | 21 23 | 32.
  const graph_ptr rest = removed(path_graph(4), {1, 1, 0, 0, 1, 1});
  EXPECT_TRUE(same_structure(rest.get(),
                             make_graph({0, 0, 0, 0}, {{0, 1}, {2, 3}}).get()));
}

TEST(RemoveEdges, OneSlotOfAnEdgeIsAWrongEdgeRemoval) {
  for (const std::vector<int> &keep :
       {std::vector<int>{1, 0, 0, 0}, std::vector<int>{0, 0, 0, 1}})
    EXPECT_EQ(fatal_text([&] { removed(labelled_path(), keep); }),
              "graph.c:N: wrong edge removal\n");
}

TEST(RemoveEdges, AgreesWithBuildingFromTheKeptEdges) {
  for (unsigned seed = 0; seed < 100; seed++) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    test_rng rng(seed);
    const graph_ptr g =
        random_graph(rng, {.vs = 2 + random_below(rng, 8), .extra_edges = 6});
    std::vector<int> keep(static_cast<size_t>(g->es), 0);
    std::vector<int> index(static_cast<size_t>(g->vs), -1);
    std::vector<test_edge> kept;
    for (const test_edge &edge : edges_of(g.get())) {
      if (random_below(rng, 2))
        continue;
      kept.push_back(edge);
      for (const auto &[u, w] :
           {std::pair(edge.u, edge.w), std::pair(edge.w, edge.u)}) {
        keep[static_cast<size_t>(graph_edge_index(g.get(), u, w))] = 1;
        index[static_cast<size_t>(u)] = 0;
      }
    }
    std::vector<int> vlabels;
    for (int i = 0; i < g->vs; i++) {
      if (index[static_cast<size_t>(i)] == -1)
        continue;
      index[static_cast<size_t>(i)] = static_cast<int>(vlabels.size());
      vlabels.push_back(g->vlabel[i]);
    }
    for (test_edge &edge : kept)
      edge = {index[static_cast<size_t>(edge.u)],
              index[static_cast<size_t>(edge.w)], edge.label};
    const graph_ptr rest = removed(g, keep);
    ASSERT_EQ(rest == nullptr, kept.empty());
    if (rest) {
      EXPECT_TRUE(same_structure(rest.get(), make_graph(vlabels, kept).get()));
    }
  }
}

TEST(FilterBySlots, KeepsReplacesAndDropsInOrder) {
  listed_graphs list =
      list_of(labelled_path(), ring_graph(3), labelled_path(), path_graph(2));
  const graph *whole = list[0];
  const graph *last = list[3];
  const int all[] = {1, 1, 1, 1};
  const int none[6] = {};
  const int some[] = {1, 1, 0, 0};
  const int *const keep[] = {all, none, some, all};
  graph_filter_by_slots(list.graphs.get(), keep);
  ASSERT_EQ(list.count(), 3);
  EXPECT_EQ(list[0], whole); // not even copied
  EXPECT_EQ(list[0]->key, 1u);
  EXPECT_TRUE(same_structure(list[1], make_graph({5, 6}, {{0, 1, 3}}).get()));
  EXPECT_EQ(list[2], last);
}

TEST(FilterBySlots, OfAnEmptyListIsEmpty) {
  listed_graphs list = list_of();
  graph_filter_by_slots(list.graphs.get(), nullptr);
  EXPECT_EQ(list.count(), 0);
}

TEST(FilterBySlots, WrongEdgeRemovalLeaksNothing) {
  listed_graphs list = list_of(labelled_path(), labelled_path());
  const int all[] = {1, 1, 1, 1};
  const int half[] = {1, 0, 0, 0};
  const int *const keep[] = {all, half};
  EXPECT_EQ(fatal_text([&] { graph_filter_by_slots(list.graphs.get(), keep); }),
            "graph.c:N: wrong edge removal\n");
}

TEST(SplitAll, ReplacesGraphsByComponentsWithoutLoneVertices) {
  listed_graphs list = list_of(path_graph(3), three_pieces(),
                               make_graph({8}, {}), path_graph(2));
  graph_split_all(list.graphs.get());
  ASSERT_EQ(list.count(), 4);
  EXPECT_TRUE(same_structure(list[0], path_graph(3).get()));
  EXPECT_EQ(vlabels_of(list[1]), (std::vector<int>{20, 22, 25}));
  EXPECT_EQ(vlabels_of(list[2]), (std::vector<int>{21, 24}));
  EXPECT_TRUE(same_structure(list[3], path_graph(2).get()));
}

TEST(SplitAll, DropsGraphsWithoutVertices) {
  listed_graphs list = list_of(make_graph({}, {}), make_graph({1, 2}, {}));
  graph_split_all(list.graphs.get());
  EXPECT_EQ(list.count(), 0);
}

} // namespace kestro
