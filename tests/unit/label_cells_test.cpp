#include "cl/label_cells.h"

#include <gtest/gtest.h>

#include "support/graphs.h"

namespace kestro {

using ints = std::vector<int>;

TEST(LabelCells, HoldLabelsPlusOneBothWays) {
  const graph_ptr g = make_graph({0, 0, 0}, {{0, 1, 4}, {1, 2, 0}});
  label_cells cells;
  cells.fill(g.get());
  const ints expected[] = {{0, 5, 0}, {5, 0, 1}, {0, 1, 0}};
  for (int u = 0; u < 3; u++)
    EXPECT_EQ(ints(cells.row(u), cells.row(u) + 3),
              expected[static_cast<size_t>(u)]);
}

TEST(LabelCells, FillForgetsTheGraphBefore) {
  label_cells cells;
  cells.fill(complete_graph(5).get());
  cells.fill(path_graph(2).get());
  EXPECT_EQ(ints(cells.row(0), cells.row(0) + 2), (ints{0, 1}));
  EXPECT_EQ(ints(cells.row(1), cells.row(1) + 2), (ints{1, 0}));
}

static label_cells cells_of(const graph_ptr &g) {
  label_cells cells;
  cells.fill(g.get());
  return cells;
}

TEST(LabelCells, RowsCompareByTheirFirstDifference) {
  const label_cells cells =
      cells_of(make_graph({0, 0, 0}, {{0, 1, 4}, {1, 2}}));
  const ints strong_first = {0, 1, 2}; // 5; 0 1
  const ints weak_first = {1, 2, 0};   // 1; 5 0
  const auto compare = [&](const ints &a, const ints &b, int from, int to) {
    return cells.compare_rows(a.data(), b.data(), from, to);
  };
  EXPECT_GT(compare(strong_first, weak_first, 0, 3), 0);
  EXPECT_LT(compare(weak_first, strong_first, 0, 2), 0);
  EXPECT_LT(compare(strong_first, weak_first, 2, 3), 0);
  EXPECT_EQ(compare(strong_first, weak_first, 0, 1), 0);
  EXPECT_EQ(compare(strong_first, strong_first, 0, 3), 0);
}

TEST(LabelCells, TwinsSeeTheSameLabels) {
  const label_cells cells =
      cells_of(make_graph({0, 0, 0, 0}, {{0, 1}, {0, 2}, {0, 3, 1}, {1, 2}}));
  EXPECT_TRUE(cells.are_twins(1, 2)); // whether joined or not
  EXPECT_FALSE(cells.are_twins(1, 3));
}

} // namespace kestro
