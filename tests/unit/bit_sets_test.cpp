#include "base/bit_sets.h"

#include <random>
#include <vector>

#include <gtest/gtest.h>

namespace kestro {
namespace {

using words = std::vector<uint64_t>;

int slow_count(const words &set) {
  int count = 0;
  for (const uint64_t word : set)
    for (int bit = 0; bit < 64; bit++)
      count += static_cast<int>(word >> bit & 1);
  return count;
}

} // namespace

TEST(BitSets, CountsWhatBothHave) {
  std::mt19937_64 random(3);
  for (size_t n = 0; n < 70; n++) {
    words a(n);
    words b(n);
    words common(n);
    for (size_t i = 0; i < n; i++) {
      a[i] = random() | (i % 3 == 0 ? ~uint64_t{0} : 0);
      b[i] = random() & random();
      common[i] = a[i] & b[i];
    }
    words out(n + 1, 7); // one word behind the set
    EXPECT_EQ(and_count(a.data(), b.data(), out.data(), n), slow_count(common));
    EXPECT_EQ(words(out.begin(), out.end() - 1), common);
    EXPECT_EQ(out.back(), 7u);
    EXPECT_EQ(and_count_plain(a.data(), b.data(), out.data(), n),
              slow_count(common));
    EXPECT_EQ(words(out.begin(), out.end() - 1), common);
    EXPECT_EQ(and_count(a.data(), b.data(), a.data(), n), slow_count(common));
    EXPECT_EQ(a, common);
  }
}

TEST(BitSets, FullAndEmptyWordsCount) {
  const words full(3, ~uint64_t{0});
  const words empty(3, 0);
  words out(3);
  EXPECT_EQ(and_count(full.data(), full.data(), out.data(), 3), 192);
  EXPECT_EQ(and_count(full.data(), empty.data(), out.data(), 3), 0);
  EXPECT_EQ(out, empty);
}

} // namespace kestro
