#include "graph/extend.h"

#include <algorithm>
#include <vector>

#include <gtest/gtest.h>

#include "base/xmalloc.h"
#include "graph/edge_marks.h"
#include "reference/graph/merge.h"
#include "support/graphs.h"

namespace kestro {
namespace {

using ints = std::vector<int>;

graph_ptr room_for(const graph *g) {
  return graph_ptr(graph_create(g->es + 2, g->vs + 1));
}

graph_ptr extended_between(const graph_ptr &g, int from, int to, int elabel) {
  graph_ptr result = room_for(g.get());
  graph_extend_between(g.get(), from, to, elabel, result.get());
  return result;
}

graph_ptr extended_to_new(const graph_ptr &g, int from, int elabel,
                          int vlabel) {
  graph_ptr result = room_for(g.get());
  graph_extend_to_new(g.get(), from, elabel, vlabel, result.get());
  return result;
}

void expect_same(const graph *a, const graph *b) {
  EXPECT_TRUE(same_structure(a, b));
  EXPECT_EQ(ints(a->vid, a->vid + a->vs), ints(b->vid, b->vid + b->vs));
  graph_check(a);
}

} // namespace

TEST(Extend, EdgeBetweenTwoVertices) {
  const graph_ptr path = make_graph({7, 8, 9}, {{0, 1, 4}, {1, 2, 5}});
  const graph_ptr ring =
      make_graph({7, 8, 9}, {{0, 1, 4}, {1, 2, 5}, {0, 2, 6}});
  expect_same(extended_between(path, 0, 2, 6).get(), ring.get());
  expect_same(extended_between(path, 2, 0, 6).get(), ring.get());
}

TEST(Extend, EdgeToANewVertex) {
  const graph_ptr edge = make_graph({7, 8}, {{0, 1, 4}});
  expect_same(extended_to_new(edge, 0, 5, 9).get(),
              make_graph({7, 8, 9}, {{0, 1, 4}, {0, 2, 5}}).get());
  expect_same(extended_to_new(edge, 1, 5, 9).get(),
              make_graph({7, 8, 9}, {{0, 1, 4}, {1, 2, 5}}).get());
}

TEST(Extend, RoomIsUsedAgain) {
  graph_ptr result(graph_create(20, 10));
  graph_extend_to_new(complete_graph(4).get(), 0, 0, 0, result.get());
  graph_extend_to_new(path_graph(2).get(), 1, 0, 0, result.get());
  expect_same(result.get(), path_graph(3).get());
}

TEST(ExtendDeath, EdgeThatIsThereAlready) {
  EXPECT_DEATH(extended_between(path_graph(3), 0, 1, 0),
               "Assertion `!graph_has_edge\\(g, from, to\\)' failed");
}

// The same from a list of edges.
static graph_ptr extended_plainly(const graph_ptr &g, const test_edge &edge,
                                  int vlabel) {
  std::vector<test_edge> edges = edges_of(g.get());
  ints vlabels = vlabels_of(g.get());
  if (edge.w == g->vs)
    vlabels.push_back(vlabel);
  edges.push_back(edge);
  graph_ptr result = make_graph(vlabels, edges);
  std::copy_n(g->vid, g->vs, result->vid);
  return result;
}

// At every place, those at the first and the last vertex among them.
TEST(Extend, AgreesWithBuildingFromEdges) {
  test_rng rng(5);
  for (int round = 0; round < 60; round++) {
    const graph_ptr g = random_graph(rng, {.vs = 1 + round % 12,
                                           .extra_edges = round % 7,
                                           .connected = round % 5 != 0});
    const int n = g->vs;
    for (int i = 0; i < n; i++)
      g->vid[i] = random_below(rng, 1000);
    for (int from = 0; from < n; from++) {
      for (int to = 0; to < n; to++)
        if (to != from && !graph_has_edge(g.get(), from, to))
          expect_same(extended_between(g, from, to, 7).get(),
                      extended_plainly(g, {from, to, 7}, 0).get());
      expect_same(extended_to_new(g, from, 8, 9).get(),
                  extended_plainly(g, {from, n, 8}, 9).get());
    }
  }
}

TEST(Extend, VerticesOfAGraphWithoutIdsGetTheirNumbers) {
  const graph_ptr path = path_graph(3);
  path->vid[1] = 70;
  const xptr<void> memory(
      xmalloc(graph_size(path->es, path->vs, graph_ids::own_numbers)));
  graph *pattern =
      graph_init(memory.get(), path->es, path->vs, graph_ids::own_numbers);
  graph_copy_into(path.get(), pattern);
  const graph_ptr longer = room_for(pattern);
  graph_extend_to_new(pattern, 2, 0, 0, longer.get());
  expect_same(longer.get(), path_graph(4).get());
  const graph_ptr closed = room_for(pattern);
  graph_extend_between(pattern, 0, 2, 0, closed.get());
  expect_same(closed.get(), ring_graph(3).get());
}

// Gluing another pattern onto the graph along their common core comes to the
// same.
TEST(Extend, AgreesWithMerging) {
  test_rng rng(11);
  int closed = 0;
  for (int round = 0; round < 500; round++) {
    const graph_ptr g = random_graph(rng, {2 + round % 7, round % 4, 3, 3});
    const int n = g->vs;
    const int from = random_below(rng, n);
    const int to = random_below(rng, n + 1);
    const int label = random_below(rng, 3);
    if (to == from || (to < n && graph_has_edge(g.get(), from, to)))
      continue;
    ints map = identity_of(n);
    std::vector<test_edge> edges = edges_of(g.get());
    ints vlabels = vlabels_of(g.get());
    if (to == n) {
      vlabels.push_back(random_below(rng, 3));
      map.push_back(-1);
    }
    edges.push_back({from, to, label});
    // The other pattern is taken to be g plus the edge.  It has an edge more
    // than merging asks for, which is nothing but a check that both have as
    // many.
    const graph_ptr other = make_graph(vlabels, edges);
    graph_mark_edge_between(other.get(), from, to);
    const graph_ptr merged = room_for(g.get());
    other->es = g->es;
    ASSERT_EQ(
        graph_merge(other.get(), g.get(), from, to, map.data(), merged.get()),
        1);
    other->es += 2;
    const graph_ptr result =
        to == n ? extended_to_new(g, from, label, vlabels.back())
                : extended_between(g, from, to, label);
    expect_same(result.get(), merged.get());
    closed += to < n;
  }
  EXPECT_GT(closed, 50);
}

} // namespace kestro
