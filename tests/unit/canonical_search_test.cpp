#include "cl/canonical_search.h"

#include <gtest/gtest.h>

#include "support/graphs.h"
#include "support/triangle.h"

namespace kestro {

using ints = std::vector<int>;

namespace {

// What a search is given, and what it makes of it.
struct searched {
  explicit searched(const graph_ptr &g) : g_(g.get()) {
    colouring_init(&c, g_, &work_);
    cells.fill(g_);
  }
  // The incoming arrangement; cells must stay as they are.
  searched &from(const ints &order) {
    c.order.assign(order.begin(), order.end());
    return *this;
  }
  ints exhaustively() {
    search_exhaustively(&c, g_, cells, &work_.poll);
    return order();
  }
  ints by_stabilizer() {
    invariant = search_by_stabilizer(&c, g_, cells, &work_, &steps);
    return order();
  }
  ints order() const { return ints(c.order.begin(), c.order.end()); }

  colouring c;
  label_cells cells;
  bool invariant = false;
  uint64_t steps = 0; // of all searches

private:
  const graph *g_;
  refinement_work work_;
};

} // namespace

// The greatest triangle over all orders that keep every cell in its place.
static ints greatest_triangle(const graph *g, const colouring &c) {
  ints greatest;
  ints perm = identity_of(g->vs);
  do {
    bool fits = true;
    for (int i = 0; i < g->vs && fits; i++) {
      const int first =
          c.colour[static_cast<size_t>(perm[static_cast<size_t>(i)])];
      fits = first <= i && i < c.cell_end[static_cast<size_t>(first)];
    }
    if (fits)
      greatest = std::max(greatest, triangle(g, perm));
  } while (std::next_permutation(perm.begin(), perm.end()));
  return greatest;
}

TEST(ExhaustiveSearch, FindsTheGreatestTriangle) {
  test_rng rng(4);
  for (int round = 0; round < 100; round++) {
    const int vs = 2 + random_below(rng, 5);
    const graph_ptr g = random_graph(rng, {.vs = vs,
                                           .extra_edges = random_below(rng, 6),
                                           .vlabels = 1,
                                           .elabels = 1 + round % 2});
    searched s(g);
    const ints expected = greatest_triangle(g.get(), s.c);
    EXPECT_EQ(triangle(g.get(), s.exhaustively()), expected) << round;
  }
}

TEST(ExhaustiveSearch, RingIsBuiltFromItsFirstVertexOn) {
  // A neighbour of the first vertex comes next, and then, for its row 1 0 is
  // above 0 1, the other one.
  const graph_ptr g =
      make_graph({0, 0, 0, 0}, {{0, 2}, {2, 1}, {1, 3}, {3, 0}});
  EXPECT_EQ(triangle(g.get(), searched(g).exhaustively()),
            (ints{1, 1, 0, 0, 1, 1}));
}

TEST(ExhaustiveSearch, IncomingArrangementStaysWhenNoneIsBetter) {
  const graph_ptr g = complete_graph(4);
  EXPECT_EQ(searched(g).from({2, 0, 3, 1}).exhaustively(), (ints{2, 0, 3, 1}));
}

TEST(ExhaustiveSearch, VerticesStayInTheirCells) {
  const graph_ptr g = path_graph(5); // 2 | 1 3 | 0 4
  const ints order = searched(g).exhaustively();
  EXPECT_EQ(order[0], 2);
  EXPECT_EQ(order[1] + order[2], 1 + 3);
  EXPECT_EQ(order[3] + order[4], 0 + 4);
  // The end of the first arm comes first: rows 1, 1 0, 0 1 0, 0 0 1 0.
  EXPECT_EQ(triangle(g.get(), order), (ints{1, 1, 0, 0, 1, 0, 0, 0, 1, 0}));
}

TEST(ExhaustiveSearch, ManyTwinsCostNoFactorial) {
  // 24! arrangements of the leaves, all alike.
  const graph_ptr g = star_graph(25);
  EXPECT_EQ(triangle(g.get(), searched(g).exhaustively()),
            triangle(g.get(), identity_of(25)));
}

TEST(ExhaustiveSearch, CellPassedOverIsSearchedForTheGreatest) {
  // Position 1 is that of the path's ends, and vertex 1 has no edges.
  const graph_ptr g = make_graph({0, 0, 0, 0}, {{2, 0}, {2, 3}});
  searched s(g);
  interruption_poll poll;
  EXPECT_FALSE(search_exhaustively(&s.c, g.get(), s.cells, &poll));
  searched whole(g);
  search_greatest(&whole.c, g.get(), whole.cells, &poll);
  EXPECT_EQ(triangle(g.get(), whole.order()),
            greatest_triangle(g.get(), whole.c));
}

TEST(ExhaustiveSearch, OfADiscretePartitionChangesNothing) {
  const graph_ptr g = make_graph({1, 0}, {{0, 1}});
  EXPECT_EQ(searched(g).exhaustively(), (ints{1, 0}));
}

TEST(StabilizerSearch, OrbitsNeedNoSteps) {
  for (const graph_ptr &g :
       {complete_graph(3), star_graph(20), ring_graph(12), path_graph(2)}) {
    searched s(g);
    s.by_stabilizer();
    EXPECT_EQ(s.steps, 0u) << g->vs;
  }
}

TEST(StabilizerSearch, TwinsMakeAnInvariantForm) {
  const graph_ptr g = star_graph(8);
  searched s(g);
  const ints order = s.by_stabilizer();
  EXPECT_TRUE(s.invariant);
  EXPECT_EQ(order[0], 0);
  EXPECT_EQ(triangle(g.get(), order), triangle(g.get(), identity_of(8)));
}

TEST(StabilizerSearch, RingEndsWithItsVerticesByDistance) {
  // Set apart 0, then one of its neighbours: rows 1; 1 0; 0 1 0; ... .
  const graph_ptr g = ring_graph(5);
  searched s(g);
  const ints order = s.by_stabilizer();
  // One vertex apart, its neighbours 1 and 4, then those 2 and 3 away.
  const graph_ptr distances =
      make_graph({0, 0, 0, 0, 0}, {{0, 1}, {0, 2}, {1, 3}, {2, 4}, {3, 4}});
  EXPECT_EQ(triangle(g.get(), order),
            triangle(distances.get(), identity_of(5)));
}

// Three vertices joined with three others, a perfect matching with label 1.
static graph_ptr matched_bipartite() {
  std::vector<test_edge> edges;
  for (int u = 0; u < 3; u++)
    for (int w = 3; w < 6; w++)
      edges.push_back({u, w, u + 3 == w});
  return make_graph({0, 0, 0, 0, 0, 0}, edges);
}

TEST(StabilizerSearch, BranchesBelowTheIncomingArrangementAreCut) {
  // With a vertex set apart, one of those joined with it by label 0 comes next:
  // every leaf has the second row 1.  Incoming, the matched vertex comes next;
  // that row is 2, all branches are cut, and the arrangement stays.
  const graph_ptr g = matched_bipartite();
  const ints leaf = searched(g).by_stabilizer();
  const ints leaf_rows = triangle(g.get(), leaf);
  const ints matched_first = {0, 3, 1, 4, 2, 5};
  ASSERT_GT(triangle(g.get(), matched_first), leaf_rows);
  searched s(g);
  s.from(matched_first);
  EXPECT_EQ(s.by_stabilizer(), matched_first);
  EXPECT_FALSE(s.invariant);
}

TEST(StabilizerSearch, FormThatAnotherArrangementCouldCutIsNotInvariant) {
  const graph_ptr g = matched_bipartite();
  searched s(g);
  s.by_stabilizer();
  EXPECT_FALSE(s.invariant);
}

// A ring of three and one of four, which refinement does not tell apart.
static graph_ptr two_rings() {
  return make_graph({0, 0, 0, 0, 0, 0, 0},
                    {{0, 1}, {1, 2}, {2, 0}, {3, 4}, {4, 5}, {5, 6}, {6, 3}});
}

TEST(StabilizerSearch, CellThatIsNoOrbitIsSearchedStepByStep) {
  const graph_ptr g = two_rings();
  searched s(g);
  const ints order = s.by_stabilizer();
  EXPECT_GT(s.steps, 0u);
  EXPECT_FALSE(s.invariant);
  ints sorted = order;
  std::sort(sorted.begin(), sorted.end());
  EXPECT_EQ(sorted, identity_of(7));
}

TEST(StabilizerSearch, StepsAreAddedToTheCounter) {
  const graph_ptr g = two_rings();
  searched once(g);
  once.by_stabilizer();
  ASSERT_GT(once.steps, 0u);
  searched s(g);
  s.steps = 1000;
  s.by_stabilizer();
  EXPECT_EQ(s.steps, 1000 + once.steps);
}

} // namespace kestro
