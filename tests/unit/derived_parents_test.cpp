#include "mining/derived_parents.h"

#include <algorithm>
#include <optional>

#include <gtest/gtest.h>

#include "support/mined_levels.h"
#include "support/plain_generation.h"
#include "support/records.h"

namespace kestro {

using ints = std::vector<int>;

// The first two levels of a database, with minimum support 1, and one candidate
// after the other in the order its pattern's vertices have.
class DerivedParents : public testing::Test {
protected:
  template <class... Graph> void mine(Graph... graphs) {
    database = database_of(std::move(graphs)...);
    levels = first_two_levels(database.get(), 1, 3, 6);
    prepare();
  }
  // Goes on to patterns of three edges.
  void go_up_once() {
    go_up(&levels, candidates_of(levels), database.get(), 1);
    prepare();
  }
  void prepare() {
    links.emplace(links_of(levels));
    table.emplace(levels.children.get(), &*links);
    derived.emplace(levels.children.get(), &*table);
  }
  int id_of(const graph_ptr &g) const {
    return sg_set_find(levels.children.get(), canonical_record(g).get());
  }
  const graph *graph_of(int id) const {
    return sg_set_get(levels.children.get(), id)->g;
  }

  // Looks the parents of x up and takes the candidate's order; false when it is
  // refused.
  bool look_up(const extension &x) {
    const graph *g = graph_of(x.pattern);
    ints vlabels = vlabels_of(g);
    std::vector<test_edge> edges = edges_of(g);
    edges.push_back({x.from, x.to == -1 ? g->vs : x.to, x.elabel});
    if (x.to == -1)
      vlabels.push_back(x.vlabel);
    cand = make_graph(vlabels, edges);
    if (!derived->look_up(x))
      return false;
    derived->take_order(cand.get());
    return true;
  }

  // The parent found without the edge u-w, whose map must lead there; -1 when
  // none is known.
  int parent_without(int u, int w) const {
    const removable_edge edge = {u, w, graph_edge_index(cand.get(), u, w)};
    ints memory(sg_parent_bytes(cand->vs) / sizeof(int));
    auto *entry = reinterpret_cast<sg_parent *>(memory.data());
    entry->vs = static_cast<int16_t>(cand->vs);
    const bool found = derived->find(edge, entry);
    EXPECT_EQ(derived->knows(edge), found);
    if (!found)
      return -1;
    EXPECT_TRUE(
        is_map_onto_rest(cand.get(), u, w, graph_of(entry->pid), entry));
    return entry->pid;
  }

  graph_list_ptr database;
  two_levels levels;
  std::optional<core_links> links;
  std::optional<child_table> table;
  std::optional<derived_parents> derived;
  graph_ptr cand;
};

static graph_ptr labelled_path(const ints &vlabels) {
  std::vector<test_edge> edges;
  for (int i = 1; i < static_cast<int>(vlabels.size()); i++)
    edges.push_back({i - 1, i});
  return make_graph(vlabels, edges);
}

// The vertex of a pattern that has this label.
static int vertex_labelled(const graph *g, int vlabel) {
  return static_cast<int>(std::find(g->vlabel, g->vlabel + g->vs, vlabel) -
                          g->vlabel);
}

TEST_F(DerivedParents, PendantAtALeafTellsBothEnds) {
  mine(labelled_path({0, 1, 2, 3}));
  const int b = id_of(labelled_path({0, 1, 2}));
  const graph *g = graph_of(b);
  const int leaf = vertex_labelled(g, 2);
  const int other = vertex_labelled(g, 0);
  const int centre = vertex_labelled(g, 1);
  ASSERT_TRUE(look_up(pendant_extension(b, leaf, 0, 3)));
  EXPECT_EQ(parent_without(leaf, g->vs), b); // its own edge
  EXPECT_EQ(parent_without(std::min(centre, other), std::max(centre, other)),
            id_of(labelled_path({1, 2, 3})));
  // The edge in the middle holds the candidate together.
  EXPECT_TRUE(derived->knows_all());
}

TEST_F(DerivedParents, PendantOfAnInfrequentPartIsRefused) {
  mine(labelled_path({0, 1, 2}));
  const int b = id_of(labelled_path({0, 1, 2}));
  const graph *g = graph_of(b);
  EXPECT_FALSE(look_up(pendant_extension(b, vertex_labelled(g, 2), 0, 1)));
  EXPECT_FALSE(look_up(pendant_extension(b, vertex_labelled(g, 1), 0, 5)));
}

TEST_F(DerivedParents, ClosingBetweenTwoLeavesKeepsEitherOfThem) {
  mine(make_graph({0, 1, 2}, {{0, 1}, {1, 2}, {0, 2}}));
  const int b = id_of(labelled_path({0, 1, 2}));
  const graph *g = graph_of(b);
  const int u = vertex_labelled(g, 0);
  const int w = vertex_labelled(g, 2);
  const int centre = vertex_labelled(g, 1);
  ASSERT_TRUE(look_up(closing_extension(b, u, w, 0)));
  EXPECT_EQ(parent_without(std::min(u, w), std::max(u, w)), b);
  EXPECT_EQ(parent_without(std::min(u, centre), std::max(u, centre)),
            id_of(labelled_path({0, 2, 1})));
  EXPECT_EQ(parent_without(std::min(w, centre), std::max(w, centre)),
            id_of(labelled_path({1, 0, 2})));
}

TEST_F(DerivedParents, ClosingBetweenTwoLeavesWithoutAPathIsRefused) {
  // No path 0-2-1.
  mine(labelled_path({0, 1, 2}), labelled_path({1, 0, 2}));
  const int b = id_of(labelled_path({0, 1, 2}));
  const graph *g = graph_of(b);
  EXPECT_FALSE(look_up(
      closing_extension(b, vertex_labelled(g, 0), vertex_labelled(g, 2), 0)));
}

TEST_F(DerivedParents, BridgeOnTheNewCycleIsNotTold) {
  // The path 0-1-2-3 closed to a ring: without its middle edge it falls apart,
  // the ring does not.
  mine(make_graph({0, 1, 2, 3}, {{0, 1}, {1, 2}, {2, 3}, {0, 3}}));
  go_up_once();
  const int b = id_of(labelled_path({0, 1, 2, 3}));
  ASSERT_NE(b, -1);
  const graph *g = graph_of(b);
  const auto at = [&](int vlabel) { return vertex_labelled(g, vlabel); };
  const auto parent_between = [&](int x, int y) {
    return parent_without(std::min(at(x), at(y)), std::max(at(x), at(y)));
  };
  ASSERT_TRUE(look_up(closing_extension(b, at(0), at(3), 0)));
  EXPECT_EQ(parent_between(0, 3), b);
  EXPECT_EQ(parent_between(0, 1), id_of(labelled_path({1, 2, 3, 0})));
  EXPECT_EQ(parent_between(2, 3), id_of(labelled_path({3, 0, 1, 2})));
  EXPECT_EQ(parent_between(1, 2), -1);
  EXPECT_FALSE(derived->knows_all());
}

TEST_F(DerivedParents, LeafThatTheNewEdgeClosesAtIsKept) {
  // A star of centre 1 and leaves 0, 2, 3; 0-2 closed.  Without 1-0 the leaf
  // labelled 0 hangs on 2.
  mine(make_graph({0, 1, 2, 3}, {{0, 1}, {1, 2}, {1, 3}, {0, 2}}));
  go_up_once();
  const int b = id_of(make_graph({1, 0, 2, 3}, {{0, 1}, {0, 2}, {0, 3}}));
  ASSERT_NE(b, -1);
  const graph *g = graph_of(b);
  const auto at = [&](int vlabel) { return vertex_labelled(g, vlabel); };
  const auto parent_between = [&](int x, int y) {
    return parent_without(std::min(at(x), at(y)), std::max(at(x), at(y)));
  };
  ASSERT_TRUE(look_up(closing_extension(b, at(0), at(2), 0)));
  EXPECT_EQ(parent_between(1, 0), id_of(labelled_path({0, 2, 1, 3})));
  EXPECT_EQ(parent_between(1, 2), id_of(labelled_path({2, 0, 1, 3})));
  EXPECT_EQ(parent_between(1, 3),
            id_of(make_graph({0, 1, 2}, {{0, 1}, {1, 2}, {0, 2}})));
  EXPECT_EQ(parent_between(0, 2), b);
}

TEST_F(DerivedParents, SymmetricCoresAreFoundWhateverEndTheEdgeIsAt) {
  mine(path_graph(5));
  go_up_once();
  const int b = id_of(path_graph(4));
  ASSERT_NE(b, -1);
  const graph *g = graph_of(b);
  int leaves = 0;
  for (int u = 0; u < g->vs; u++) {
    if (g->v[u + 1] - g->v[u] != 1)
      continue;
    leaves++;
    ASSERT_TRUE(look_up(pendant_extension(b, u, 0, 0)));
    EXPECT_EQ(parent_without(u, g->vs), b);
    for (int w = 0; w < g->vs; w++)
      if (w != u && g->v[w + 1] - g->v[w] == 1) {
        const int hub = g->e[g->v[w]];
        EXPECT_EQ(parent_without(std::min(w, hub), std::max(w, hub)), b);
      }
  }
  EXPECT_EQ(leaves, 2);
}

TEST_F(DerivedParents, PatternThatMayNotBeInvariantIsNotTold) {
  mine(labelled_path({0, 1, 2, 3}));
  const int b = id_of(labelled_path({0, 1, 2}));
  const graph *g = graph_of(b);
  const int leaf = vertex_labelled(g, 2);
  sg_set_get(levels.children.get(), b)->invariant = false;
  prepare();
  ASSERT_TRUE(look_up(pendant_extension(b, leaf, 0, 3)));
  EXPECT_EQ(parent_without(leaf, g->vs), -1);
  EXPECT_FALSE(derived->knows_all());
}

TEST_F(DerivedParents, PartOfACoreThatMayNotBeInvariantIsNoReasonToRefuse) {
  mine(labelled_path({0, 1, 2}));
  const int b = id_of(labelled_path({0, 1, 2}));
  const graph *g = graph_of(b);
  for (int p = 0; p < sg_set_size(levels.cores.get()); p++)
    sg_set_get(levels.cores.get(), p)->invariant = false;
  prepare();
  const int leaf = vertex_labelled(g, 2);
  const int centre = vertex_labelled(g, 1);
  const int other = vertex_labelled(g, 0);
  ASSERT_TRUE(look_up(pendant_extension(b, leaf, 0, 1)));
  EXPECT_EQ(parent_without(std::min(centre, other), std::max(centre, other)),
            -1);
}

} // namespace kestro
