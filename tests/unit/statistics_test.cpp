#include "mining/statistics.h"

#include <climits>
#include <utility>

#include <gtest/gtest.h>

#include "reference/mining/statistics.h"
#include "support/fatal.h"

namespace kestro {

class Statistics : public testing::Test {
protected:
  void SetUp() override { stats_init(&stats); }

  statistics stats;
};

TEST_F(Statistics, SizesZeroTo127StartAtZero) {
  for (const int kind : {stats_candidates, stats_frequent})
    for (int size = 0; size < 128; size++)
      EXPECT_EQ(stats_get(&stats, kind, size), 0);
}

TEST_F(Statistics, NegativeSizesAreNotCounted) {
  stats_set(&stats, stats_frequent, -3, 5);
  stats_increment(&stats, stats_frequent, -1);
  EXPECT_EQ(stats_get(&stats, stats_frequent, -3), 0);
  EXPECT_EQ(stats_total(&stats, stats_frequent, -10, 10), 0);
}

TEST_F(Statistics, SizeBeyondEveryTableIsNotEnoughMemory) {
  EXPECT_EQ(fatal_text([&] { stats_set(&stats, stats_frequent, INT_MAX, 1); }),
            "xmalloc.c:N: not enough memory\n");
}

TEST_F(Statistics, KindsAreZeroAndOne) {
  EXPECT_EQ(stats_candidates, 0);
  EXPECT_EQ(stats_frequent, 1);
}

TEST_F(Statistics, SetAndGetByKindAndSize) {
  stats_set(&stats, stats_candidates, 3, 30);
  stats_set(&stats, stats_frequent, 3, 7);
  EXPECT_EQ(stats_get(&stats, stats_candidates, 3), 30);
  EXPECT_EQ(stats_get(&stats, stats_frequent, 3), 7);
  EXPECT_EQ(stats_get(&stats, stats_frequent, 2), 0);
  stats_set(&stats, stats_frequent, 3, 1);
  EXPECT_EQ(stats_get(&stats, stats_frequent, 3), 1);
}

TEST_F(Statistics, SetBeyondTheEndFillsWithZeros) {
  stats_set(&stats, stats_frequent, 200, 5);
  EXPECT_EQ(stats_get(&stats, stats_frequent, 200), 5);
  for (const int size : {127, 128, 199})
    EXPECT_EQ(stats_get(&stats, stats_frequent, size), 0);
  EXPECT_EQ(stats_largest(&stats, stats_frequent), 200);
}

TEST_F(Statistics, SizesOutsideTheTableReadAsZero) {
  EXPECT_EQ(stats_get(&stats, stats_frequent, 128), 0);
  EXPECT_EQ(stats_get(&stats, stats_frequent, 2147483647), 0);
  EXPECT_EQ(stats_get(&stats, stats_frequent, -1), 0);
}

TEST_F(Statistics, IncrementAddsOneAndMakesRoom) {
  stats_increment(&stats, stats_frequent, 2);
  stats_increment(&stats, stats_frequent, 2);
  stats_increment(&stats, stats_frequent, 130);
  EXPECT_EQ(stats_get(&stats, stats_frequent, 2), 2);
  EXPECT_EQ(stats_get(&stats, stats_frequent, 130), 1);
  EXPECT_EQ(stats_get(&stats, stats_candidates, 2), 0);
}

TEST_F(Statistics, ResetZeroesBothKindsAndAllSizes) {
  stats_set(&stats, stats_candidates, 4, 9);
  stats_set(&stats, stats_frequent, 300, 9);
  stats_reset(&stats);
  EXPECT_EQ(stats_largest(&stats, stats_candidates), 0);
  EXPECT_EQ(stats_largest(&stats, stats_frequent), 0);
  EXPECT_EQ(stats_get(&stats, stats_frequent, 300), 0);
}

TEST_F(Statistics, InitStartsAnew) {
  stats_set(&stats, stats_frequent, 5, 1);
  stats_init(&stats);
  EXPECT_EQ(stats_get(&stats, stats_frequent, 5), 0);
}

TEST_F(Statistics, TotalSumsTheSizesInclusive) {
  for (int size = 1; size <= 5; size++)
    stats_set(&stats, stats_frequent, size, 10 * size);
  EXPECT_EQ(stats_total(&stats, stats_frequent, 1, 5), 150);
  EXPECT_EQ(stats_total(&stats, stats_frequent, 2, 4), 90);
  EXPECT_EQ(stats_total(&stats, stats_frequent, 5, 5), 50);
  EXPECT_EQ(stats_total(&stats, stats_candidates, 1, 5), 0);
}

TEST_F(Statistics, TotalIsBoundedByTheLargestSize) {
  stats_set(&stats, stats_frequent, 3, 4);
  EXPECT_EQ(stats_total(&stats, stats_frequent, 1, 2147483647), 4);
  EXPECT_EQ(stats_total(&stats, stats_frequent, 4, 2147483647), 0);
}

TEST_F(Statistics, TotalOfAnEmptyRangeIsZero) {
  stats_set(&stats, stats_frequent, 3, 4);
  EXPECT_EQ(stats_total(&stats, stats_frequent, 3, 2), 0);
}

TEST_F(Statistics, TotalOfAnEmptyTableIsZero) {
  EXPECT_EQ(stats_total(&stats, stats_candidates, 0, 100), 0);
}

TEST_F(Statistics, TotalFromANegativeSizeStartsAtZero) {
  stats_set(&stats, stats_frequent, 0, 1);
  stats_set(&stats, stats_frequent, 1, 2);
  EXPECT_EQ(stats_total(&stats, stats_frequent, -5, 1), 3);
}

TEST_F(Statistics, LargestSkipsTheZerosBehindIt) {
  EXPECT_EQ(stats_largest(&stats, stats_frequent), 0);
  stats_set(&stats, stats_frequent, 2, 1);
  stats_set(&stats, stats_frequent, 6, 0);
  EXPECT_EQ(stats_largest(&stats, stats_frequent), 2);
}

TEST_F(Statistics, RunsHaveTheirOwnTable) {
  stats_set(&stats, stats_frequent, 1, 3);
  statistics other;
  stats_init(&other);
  stats_set(&other, stats_frequent, 2, 8);
  EXPECT_EQ(stats_get(&other, stats_frequent, 1), 0);
  stats_reset(&other);
  stats_free(&other);
  EXPECT_EQ(stats_get(&stats, stats_frequent, 1), 3);
  EXPECT_EQ(stats_get(&stats, stats_frequent, 2), 0);
}

TEST_F(Statistics, CopyCountsOnItsOwn) {
  stats_set(&stats, stats_frequent, 1, 3);
  statistics copy = stats;
  stats_increment(&copy, stats_frequent, 1);
  EXPECT_EQ(stats_get(&copy, stats_frequent, 1), 4);
  EXPECT_EQ(stats_get(&stats, stats_frequent, 1), 3);
}

// Before the first stats_init as well as after stats_free.
TEST_F(Statistics, WithoutATableEverySizeReadsAsZero) {
  stats_set(&stats, stats_frequent, 1, 3);
  stats_free(&stats);
  const statistics fresh;
  for (const statistics *s : {&std::as_const(stats), &fresh}) {
    EXPECT_EQ(stats_get(s, stats_frequent, 1), 0);
    EXPECT_EQ(stats_largest(s, stats_frequent), 0);
    EXPECT_EQ(stats_total(s, stats_frequent, 0, 5), 0);
  }
}

TEST_F(Statistics, TableComesWithTheFirstSizeCounted) {
  stats_free(&stats);
  stats_increment(&stats, stats_frequent, 3);
  EXPECT_EQ(stats_get(&stats, stats_frequent, 3), 1);
  EXPECT_EQ(stats_largest(&stats, stats_frequent), 3);
}

} // namespace kestro
