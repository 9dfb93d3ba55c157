#include "mining/statistics.h"

#include <climits>
#include <thread>

#include <gtest/gtest.h>

#include "support/fatal.h"

namespace kestro {

class Statistics : public testing::Test {
protected:
  void SetUp() override { stats_init(); }
  void TearDown() override { stats_free(); }
};

TEST_F(Statistics, SizesZeroTo127StartAtZero) {
  for (const int kind : {stats_candidates, stats_frequent})
    for (int size = 0; size < 128; size++)
      EXPECT_EQ(stats_get(kind, size), 0);
}

TEST_F(Statistics, NegativeSizesAreNotCounted) {
  stats_set(stats_frequent, -3, 5);
  stats_increment(stats_frequent, -1);
  EXPECT_EQ(stats_get(stats_frequent, -3), 0);
  EXPECT_EQ(stats_total(stats_frequent, -10, 10), 0);
}

TEST_F(Statistics, SizeBeyondEveryTableIsNotEnoughMemory) {
  EXPECT_EQ(fatal_text([] { stats_set(stats_frequent, INT_MAX, 1); }),
            "xmalloc.c:N: not enough memory\n");
}

TEST_F(Statistics, KindsAreZeroAndOne) {
  EXPECT_EQ(stats_candidates, 0);
  EXPECT_EQ(stats_frequent, 1);
}

TEST_F(Statistics, SetAndGetByKindAndSize) {
  stats_set(stats_candidates, 3, 30);
  stats_set(stats_frequent, 3, 7);
  EXPECT_EQ(stats_get(stats_candidates, 3), 30);
  EXPECT_EQ(stats_get(stats_frequent, 3), 7);
  EXPECT_EQ(stats_get(stats_frequent, 2), 0);
  stats_set(stats_frequent, 3, 1);
  EXPECT_EQ(stats_get(stats_frequent, 3), 1);
}

TEST_F(Statistics, SetBeyondTheEndFillsWithZeros) {
  stats_set(stats_frequent, 200, 5);
  EXPECT_EQ(stats_get(stats_frequent, 200), 5);
  for (const int size : {127, 128, 199})
    EXPECT_EQ(stats_get(stats_frequent, size), 0);
  EXPECT_EQ(stats_largest(stats_frequent), 200);
}

TEST_F(Statistics, SizesOutsideTheTableReadAsZero) {
  EXPECT_EQ(stats_get(stats_frequent, 128), 0);
  EXPECT_EQ(stats_get(stats_frequent, 2147483647), 0);
  EXPECT_EQ(stats_get(stats_frequent, -1), 0);
}

TEST_F(Statistics, IncrementAddsOneAndMakesRoom) {
  stats_increment(stats_frequent, 2);
  stats_increment(stats_frequent, 2);
  stats_increment(stats_frequent, 130);
  EXPECT_EQ(stats_get(stats_frequent, 2), 2);
  EXPECT_EQ(stats_get(stats_frequent, 130), 1);
  EXPECT_EQ(stats_get(stats_candidates, 2), 0);
}

TEST_F(Statistics, ResetZeroesBothKindsAndAllSizes) {
  stats_set(stats_candidates, 4, 9);
  stats_set(stats_frequent, 300, 9);
  stats_reset();
  EXPECT_EQ(stats_largest(stats_candidates), 0);
  EXPECT_EQ(stats_largest(stats_frequent), 0);
  EXPECT_EQ(stats_get(stats_frequent, 300), 0);
}

TEST_F(Statistics, InitStartsAnew) {
  stats_set(stats_frequent, 5, 1);
  stats_init();
  EXPECT_EQ(stats_get(stats_frequent, 5), 0);
}

TEST_F(Statistics, TotalSumsTheSizesInclusive) {
  for (int size = 1; size <= 5; size++)
    stats_set(stats_frequent, size, 10 * size);
  EXPECT_EQ(stats_total(stats_frequent, 1, 5), 150);
  EXPECT_EQ(stats_total(stats_frequent, 2, 4), 90);
  EXPECT_EQ(stats_total(stats_frequent, 5, 5), 50);
  EXPECT_EQ(stats_total(stats_candidates, 1, 5), 0);
}

TEST_F(Statistics, TotalIsBoundedByTheLargestSize) {
  stats_set(stats_frequent, 3, 4);
  EXPECT_EQ(stats_total(stats_frequent, 1, 2147483647), 4);
  EXPECT_EQ(stats_total(stats_frequent, 4, 2147483647), 0);
}

TEST_F(Statistics, TotalOfAnEmptyRangeIsZero) {
  stats_set(stats_frequent, 3, 4);
  EXPECT_EQ(stats_total(stats_frequent, 3, 2), 0);
}

TEST_F(Statistics, TotalOfAnEmptyTableIsZero) {
  EXPECT_EQ(stats_total(stats_candidates, 0, 100), 0);
}

TEST_F(Statistics, TotalFromANegativeSizeStartsAtZero) {
  stats_set(stats_frequent, 0, 1);
  stats_set(stats_frequent, 1, 2);
  EXPECT_EQ(stats_total(stats_frequent, -5, 1), 3);
}

TEST_F(Statistics, LargestSkipsTheZerosBehindIt) {
  EXPECT_EQ(stats_largest(stats_frequent), 0);
  stats_set(stats_frequent, 2, 1);
  stats_set(stats_frequent, 6, 0);
  EXPECT_EQ(stats_largest(stats_frequent), 2);
}

TEST_F(Statistics, ThreadsHaveTheirOwnTable) {
  stats_set(stats_frequent, 1, 3);
  int seen = -1;
  std::thread([&] {
    stats_init();
    stats_set(stats_frequent, 2, 8);
    seen = stats_get(stats_frequent, 1);
    stats_free();
  }).join();
  EXPECT_EQ(seen, 0);
  EXPECT_EQ(stats_get(stats_frequent, 1), 3);
  EXPECT_EQ(stats_get(stats_frequent, 2), 0);
}

TEST(StatisticsDeath, UseBeforeInit) {
  EXPECT_DEATH(stats_get(stats_frequent, 1), "Assertion .* failed");
}

} // namespace kestro
