#include "base/word_set.h"

#include <set>

#include <gtest/gtest.h>

#include "support/graphs.h"

namespace kestro {

TEST(WordSet, TellsTheFirstOfEqualOnes) {
  word_set set;
  EXPECT_FALSE(set.contains(UINT64_MAX));
  EXPECT_TRUE(set.insert(UINT64_MAX));
  EXPECT_FALSE(set.insert(UINT64_MAX));
  EXPECT_TRUE(set.contains(UINT64_MAX));
  EXPECT_FALSE(set.contains(1));
}

TEST(WordSet, EqualsAStandardSetAlsoAfterSomeWereTakenOut) {
  test_rng rng(12);
  word_set set;
  std::set<uint64_t> expected;
  for (int round = 0; round < 30; round++) {
    // Words that differ in their upper half only, or in their lower one.
    const int shift = round % 2 ? 40 : 0;
    for (int i = 0; i < 400; i++) {
      const uint64_t w = uint64_t{1 + rng() % 2000} << shift;
      set.expect(w);
      ASSERT_EQ(set.contains(w), expected.count(w) == 1);
      ASSERT_EQ(set.insert(w), expected.insert(w).second);
    }
    const uint64_t divisor = 2 + rng() % 5;
    const auto keep = [&](uint64_t w) { return (w >> shift) % divisor != 0; };
    set.keep_only(keep);
    std::erase_if(expected, [&](uint64_t w) { return !keep(w); });
    for (uint64_t n = 1; n <= 2000; n++)
      for (const uint64_t w : {n, n << 40})
        ASSERT_EQ(set.contains(w), expected.count(w) == 1) << w;
  }
}

TEST(WordSet, IsFullBeforeItGrows) {
  word_set set;
  uint64_t added = 0;
  while (!set.is_full())
    set.insert(++added);
  EXPECT_GT(added, 0u);
  set.keep_only([](uint64_t w) { return w == 1; });
  EXPECT_FALSE(set.is_full());
  EXPECT_TRUE(set.contains(1));
  EXPECT_FALSE(set.contains(2));
}

} // namespace kestro
