#include "mining/label_table.h"

#include <set>

#include <gtest/gtest.h>

#include "support/fatal.h"

namespace kestro {

TEST(LabelTable, EdgeCellsAreZeroAndApart) {
  edge_table table(3, 4);
  std::set<int *> cells;
  for (int la = 0; la < 4; la++)
    for (int lb = 0; lb < 4; lb++)
      for (int e = 0; e < 3; e++) {
        EXPECT_EQ(table.at(la, lb, e), 0);
        cells.insert(&table.at(la, lb, e));
      }
  EXPECT_EQ(cells.size(), 4u * 4u * 3u);
  EXPECT_EQ(*cells.rbegin() - *cells.begin(), 4 * 4 * 3 - 1);
}

TEST(LabelTable, DoubleEdgeCellsAreZeroAndApart) {
  double_edge_table table(3, 2);
  std::set<int *> cells;
  for (int va = 0; va < 2; va++)
    for (int vb = 0; vb < 2; vb++)
      for (int vc = 0; vc < 2; vc++)
        for (int ea = 0; ea < 3; ea++)
          for (int eb = 0; eb < 3; eb++) {
            EXPECT_EQ(table.at(va, vb, vc, ea, eb), 0);
            cells.insert(&table.at(va, vb, vc, ea, eb));
          }
  EXPECT_EQ(cells.size(), 8u * 9u);
  EXPECT_EQ(*cells.rbegin() - *cells.begin(), 8 * 9 - 1);
}

TEST(LabelTable, CellsKeepWhatIsCounted) {
  edge_table table(2, 2);
  table.at(0, 1, 1) += 5;
  table.at(1, 1, 0)++;
  EXPECT_EQ(table.at(0, 1, 1), 5);
  EXPECT_EQ(table.at(1, 1, 0), 1);
  EXPECT_EQ(table.at(0, 1, 0), 0);
}

TEST(LabelTable, NoLabelsMakeNoCells) {
  EXPECT_NO_THROW(edge_table(0, 0));
  EXPECT_NO_THROW(double_edge_table(0, 5));
}

TEST(LabelTableFatal, SizeThatNoMemoryHolds) {
  EXPECT_EQ(fatal_text([] { double_edge_table(1000000, 1000000); }),
            "xmalloc.c:N: not enough memory\n");
  EXPECT_EQ(fatal_text([] { edge_table(2000000000, 2000000000); }),
            "xmalloc.c:N: not enough memory\n");
}

} // namespace kestro
