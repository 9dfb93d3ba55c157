#include "cl/cell_image.h"

#include <gtest/gtest.h>

#include "support/graphs.h"

namespace kestro {

using ints = std::vector<int>;

// The colouring of a graph with these vertices set apart.
static colouring coloured(const graph_ptr &g, const ints &apart) {
  colouring c;
  refinement_work work;
  colouring_init(&c, g.get(), &work);
  for (const int u : apart)
    colouring_individualise(&c, g.get(), u, &work);
  return c;
}

static ints matched(const colouring &a, const colouring &b) {
  xvector<int> image(a.order.size());
  match_cells(a, b, &image);
  return ints(image.begin(), image.end());
}

TEST(CellImage, CellsAreEqualWhereTheyEndAlike) {
  const graph_ptr ring = ring_graph(6);
  EXPECT_TRUE(have_equal_cells(coloured(ring, {}), coloured(ring, {})));
  EXPECT_TRUE(have_equal_cells(coloured(ring, {0}), coloured(ring, {4})));
  EXPECT_FALSE(have_equal_cells(coloured(ring, {}), coloured(ring, {4})));
  EXPECT_FALSE(have_equal_cells(coloured(ring, {0, 1}), coloured(ring, {4})));
  // Three cells each, of one, two and three vertices in another order.
  EXPECT_FALSE(
      have_equal_cells(coloured(make_graph({0, 1, 1, 2, 2, 2}, {}), {}),
                       coloured(make_graph({0, 1, 1, 1, 2, 2}, {}), {})));
}

TEST(CellImage, VerticesOfBothCellsStay) {
  const graph_ptr star = star_graph(6);
  EXPECT_EQ(matched(coloured(star, {2}), coloured(star, {4})),
            (ints{0, 1, 4, 3, 2, 5}));
  EXPECT_EQ(matched(coloured(star, {2, 3}), coloured(star, {3, 5})),
            (ints{0, 1, 3, 5, 4, 2}));
}

TEST(CellImage, OthersGoInTheirOrder) {
  const graph_ptr ring = ring_graph(6);
  // Neighbours of 0 are 1 and 5, of 3 they are 2 and 4.
  EXPECT_EQ(matched(coloured(ring, {0}), coloured(ring, {3})),
            (ints{3, 2, 1, 0, 5, 4}));
}

TEST(CellImage, OfAColouringWithItselfIsTheIdentity) {
  const graph_ptr ring = ring_graph(5);
  EXPECT_EQ(matched(coloured(ring, {1}), coloured(ring, {1})), identity_of(5));
}

} // namespace kestro
