#include "cl/exact_search.h"

#include <gtest/gtest.h>

#include "cl/canonical_search.h"
#include "support/exact_form.h"
#include "support/triangle.h"

namespace kestro {

using ints = std::vector<int>;

namespace {

// A refined graph, and the order search_exactly gives it.
struct refined {
  explicit refined(const graph_ptr &g) : g_(g.get()) {
    colouring_init(&c, g_, &work);
    cells.fill(g_);
  }
  ints search(int threshold) {
    search_exactly(&c, g_, cells, threshold, &work);
    return order();
  }
  ints order() const { return ints(c.order.begin(), c.order.end()); }

  colouring c;
  label_cells cells;
  refinement_work work;

private:
  const graph *g_;
};

} // namespace

// The best triangle among all leaves below c.
static ints best_leaf(const graph *g, const colouring &c,
                      refinement_work *work) {
  if (c.cells == g->vs)
    return triangle(g, ints(c.order.begin(), c.order.end()));
  ints best;
  const int cell = colouring_first_open(&c, 0);
  for (int q = cell; q < c.cell_end[static_cast<size_t>(cell)]; q++) {
    colouring child = c;
    colouring_individualise(&child, g, c.order[static_cast<size_t>(q)], work);
    best = std::max(best, best_leaf(g, child, work));
  }
  return best;
}

static void expect_best_leaf(const graph_ptr &g, int number) {
  refined r(g);
  const ints expected = best_leaf(g.get(), r.c, &r.work);
  EXPECT_EQ(triangle(g.get(), r.search(0)), expected) << number;
}

static void expect_one_form(const graph_ptr &g, int threshold) {
  const graph_ptr form = exact_form(g.get(), threshold);
  test_rng rng(1);
  for (int copy = 0; copy < 20; copy++) {
    const graph_ptr other = relabelled(g.get(), random_permutation(rng, g->vs));
    EXPECT_TRUE(
        same_structure(exact_form(other.get(), threshold).get(), form.get()))
        << g->vs << " vertices, threshold " << threshold;
  }
}

// The ring joins first, .., first + n - 1.
static void add_ring(std::vector<test_edge> *edges, int first, int n) {
  for (int i = 0; i < n; i++)
    edges->push_back({first + i, first + (i + 1) % n});
}

// Copies of a ring of three and one of four around one vertex, the last: no
// refinement tells the rings apart.
static graph_ptr rings_around_a_hub(int copies) {
  std::vector<test_edge> edges;
  for (int i = 0; i < copies; i++) {
    add_ring(&edges, 7 * i, 3);
    add_ring(&edges, 7 * i + 3, 4);
  }
  for (int u = 0; u < 7 * copies; u++)
    edges.push_back({u, 7 * copies});
  return make_graph(ints(static_cast<size_t>(7 * copies + 1), 0), edges);
}

TEST(ExactSearch, SmallCellsTakeTheBestArrangement) {
  const graph_ptr g = ring_graph(4);
  EXPECT_EQ(triangle(g.get(), refined(g).search(5)), (ints{1, 1, 0, 0, 1, 1}));
}

TEST(ExactSearch, ThresholdIsTheFirstSizeThatIsNotSmall) {
  // Best are edges of label 1 first; a vertex set apart comes first with the
  // neighbours of label 0.
  const graph_ptr g =
      make_graph({0, 0, 0, 0}, {{0, 1, 0}, {1, 2, 1}, {2, 3, 0}, {3, 0, 1}});
  const ints best = triangle(g.get(), refined(g).search(5));
  const ints leaf = triangle(g.get(), refined(g).search(4));
  EXPECT_EQ(best[0], 2);
  EXPECT_EQ(leaf[0], 1);
}

TEST(ExactSearch, LoneVerticesLeaveNoCellAsItCame) {
  const graph_ptr g =
      make_graph({0, 0, 0, 0, 0, 0, 0}, {{2, 0}, {2, 3}, {4, 5, 1}, {5, 6, 1}});
  for (const int threshold : {0, 3, 9})
    expect_one_form(g, threshold);
}

TEST(ExactSearch, LeafIsTakenWhateverCameIn) {
  // Three vertices joined with three others, a perfect matching with label 1:
  // the matched vertex first would be better than any leaf.
  std::vector<test_edge> edges;
  for (int u = 0; u < 3; u++)
    for (int w = 3; w < 6; w++)
      edges.push_back({u, w, u + 3 == w});
  const graph_ptr g = make_graph({0, 0, 0, 0, 0, 0}, edges);
  refined r(g);
  r.c.order = {0, 3, 1, 4, 2, 5};
  const ints leaf = triangle(g.get(), r.search(5));
  ASSERT_GT(triangle(g.get(), {0, 3, 1, 4, 2, 5}), leaf);
  expect_best_leaf(g, 0);
  expect_one_form(g, 5);
}

TEST(ExactSearch, CellOfTwoOrbitsGivesTheBestLeaf) {
  std::vector<test_edge> edges;
  add_ring(&edges, 0, 3);
  add_ring(&edges, 3, 4);
  const graph_ptr apart = make_graph(ints(7, 0), edges);
  expect_best_leaf(apart, 0);
  expect_one_form(apart, 5);
  expect_best_leaf(rings_around_a_hub(1), 1);
  expect_one_form(rings_around_a_hub(2), 5);
}

TEST(ExactSearch, BestLeafOfRandomGraphs) {
  test_rng rng(6);
  for (int round = 0; round < 200; round++) {
    const int vs = 2 + random_below(rng, 6);
    const graph_ptr g =
        random_graph(rng, {.vs = vs,
                           .extra_edges = random_below(rng, 2 * vs),
                           .vlabels = 1,
                           .elabels = 1 + round % 2,
                           .connected = round % 4 != 0});
    expect_best_leaf(g, round);
  }
}

TEST(ExactSearch, TrivialGraphsStayAsTheyAre) {
  for (const int threshold : {-1, 0, 1, 2, 5}) {
    EXPECT_EQ(refined(make_graph({}, {})).search(threshold), ints());
    EXPECT_EQ(refined(make_graph({3}, {})).search(threshold), ints{0});
    EXPECT_EQ(refined(make_graph({1, 0}, {{0, 1}})).search(threshold),
              (ints{1, 0}));
  }
}

TEST(ExactSearch, VerticesStayInTheirCells) {
  const graph_ptr g = rings_around_a_hub(1);
  EXPECT_EQ(refined(g).search(5)[0], 7);
}

TEST(ExactSearch, SymmetryCostsNoFactorial) {
  // Twins; orbits; orbits of several kinds at every depth.
  for (const graph_ptr &g : {complete_graph(40), star_graph(40), ring_graph(40),
                             rings_around_a_hub(4)})
    expect_one_form(g, 5);
}

} // namespace kestro
