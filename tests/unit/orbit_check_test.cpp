#include "cl/orbit_check.h"

#include <gtest/gtest.h>

#include <optional>

#include "support/triangle.h"

namespace kestro {

namespace {

// A check of g from its refined partition.
struct checked {
  explicit checked(const graph_ptr &g) : g_(g.get()) {
    colouring_init(&c_, g_, &work_);
    cells_.fill(g_);
    check_.emplace(&c_, g_, cells_, &work_);
    alike = check_->run();
  }
  std::vector<int> leaf_triangle() const {
    return triangle(g_, {check_->leaf().begin(), check_->leaf().end()});
  }
  int rows() const { return check_->rows_set_apart(); }

  bool alike;

private:
  const graph *g_;
  colouring c_;
  label_cells cells_;
  refinement_work work_;
  std::optional<orbit_check> check_; // of what is refined by then
};

} // namespace

TEST(OrbitCheck, PathsOfAVertexTransitiveGraphAreAlike) {
  for (const graph_ptr &g : {ring_graph(7), complete_graph(6), path_graph(2)})
    EXPECT_TRUE(checked(g).alike) << g->vs;
}

TEST(OrbitCheck, PathsFromRingsOfTwoLengthsAreNot) {
  const graph_ptr g =
      make_graph({0, 0, 0, 0, 0, 0, 0},
                 {{0, 1}, {1, 2}, {2, 0}, {3, 4}, {4, 5}, {5, 6}, {6, 3}});
  test_rng rng(1);
  for (int copy = 0; copy < 20; copy++)
    EXPECT_FALSE(
        checked(relabelled(g.get(), random_permutation(rng, 7))).alike);
}

TEST(OrbitCheck, LeafShowsOneMatrixForAllCopies) {
  const graph_ptr g = ring_graph(6);
  const std::vector<int> expected = checked(g).leaf_triangle();
  test_rng rng(1);
  for (int copy = 0; copy < 20; copy++) {
    const graph_ptr copied = relabelled(g.get(), random_permutation(rng, 6));
    const checked other(copied);
    EXPECT_TRUE(other.alike);
    EXPECT_EQ(other.leaf_triangle(), expected);
  }
}

TEST(OrbitCheck, RowsEndWithTheVertexSetApartLast) {
  // One vertex, then one of its neighbours, tell all of a ring apart.
  EXPECT_EQ(checked(ring_graph(7)).rows(), 2);
  EXPECT_EQ(checked(complete_graph(4)).rows(), 3);
}

} // namespace kestro
