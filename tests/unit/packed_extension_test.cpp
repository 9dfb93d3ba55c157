#include "mining/packed_extension.h"

#include <algorithm>
#include <bit>
#include <climits>
#include <unordered_map>
#include <vector>

#include <gtest/gtest.h>

namespace kestro {
namespace {

using ints = std::vector<int>;

// Numbers around 0, around a half and around the last one, n - 1.
ints around(int n) {
  ints numbers;
  for (const int i : {0, 1, n / 2 - 1, n / 2, n / 2 + 1, n - 2, n - 1})
    if (i >= 0 && i < n)
      numbers.push_back(i);
  std::sort(numbers.begin(), numbers.end());
  numbers.erase(std::unique(numbers.begin(), numbers.end()), numbers.end());
  return numbers;
}

// Labels around the largest one that fits into so many bits.
ints labels_around(int bits) {
  ints labels = {0, 1, INT_MAX};
  if (bits < 31)
    for (const int label : {(1 << bits) - 2, (1 << bits) - 1, 1 << bits})
      if (label > 1)
        labels.push_back(label);
  return labels;
}

int bits_of(int n) { return static_cast<int>(std::bit_width(unsigned(n))); }

// What two labels have of a word.
int label_bits(int patterns, int vertices) {
  return (64 - bits_of(patterns) - 2 * bits_of(vertices)) / 2;
}

bool fits(int number, int bits) { return bits >= 31 || number >> bits == 0; }

// The extensions of a level at the borders of what it holds.
template <class Visit>
void visit_borders(int patterns, int vertices, Visit visit) {
  const ints labels = labels_around(label_bits(patterns, vertices));
  for (const int pattern : around(patterns))
    for (const int u : around(vertices))
      for (const int elabel : labels) {
        for (const int vlabel : labels)
          visit(pendant_extension(pattern, u, elabel, vlabel));
        for (const int w : around(vertices))
          if (u < w)
            visit(closing_extension(pattern, u, w, elabel));
      }
}

const ints level_sizes = {1,           2,       3,       1023,          1024,
                          1025,        1 << 20, 1 << 24, (1 << 30) - 1, 1 << 30,
                          INT_MAX - 1, INT_MAX};
const ints vertex_counts = {2,   3,   4,   7,   8,     9,     15,    16,
                            127, 128, 255, 256, 16383, 16384, 32766, 32767};

} // namespace

TEST(PackedExtension, OneWordIsOfOneExtension) {
  for (const int patterns : level_sizes)
    for (const int vertices : vertex_counts) {
      const extension_packing packing(patterns, vertices);
      std::unordered_map<uint64_t, extension> met;
      visit_borders(patterns, vertices, [&](const extension &x) {
        const uint64_t word = packing.word_of(x);
        if (word == 0)
          return;
        ASSERT_EQ(met.try_emplace(word, x).first->second, x);
        ASSERT_EQ(packing.pattern_of(word), x.pattern);
      });
      EXPECT_GT(met.size(), 0u);
    }
}

TEST(PackedExtension, OnlyLargeLabelsHaveNone) {
  for (const int patterns : level_sizes)
    for (const int vertices : vertex_counts) {
      const extension_packing packing(patterns, vertices);
      const int bits = label_bits(patterns, vertices);
      visit_borders(patterns, vertices, [&](const extension &x) {
        // No vertex label is a 0, so the largest number is of none.
        const bool fit = fits(x.elabel, bits) && x.vlabel != INT_MAX &&
                         fits(x.vlabel + 1, bits);
        ASSERT_EQ(packing.word_of(x) != 0, fit)
            << patterns << ' ' << vertices << ' ' << x.elabel << ' '
            << x.vlabel;
      });
    }
}

TEST(PackedExtension, EveryOneOfASmallLevelHasItsOwnWord) {
  constexpr int patterns = 5;
  constexpr int vertices = 6;
  constexpr int labels = 4;
  const extension_packing packing(patterns, vertices);
  std::unordered_map<uint64_t, extension> met;
  int n = 0;
  const auto add = [&](const extension &x) {
    n++;
    met.emplace(packing.word_of(x), x);
  };
  for (int pattern = 0; pattern < patterns; pattern++)
    for (int u = 0; u < vertices; u++)
      for (int elabel = 0; elabel < labels; elabel++) {
        for (int vlabel = 0; vlabel < labels; vlabel++)
          add(pendant_extension(pattern, u, elabel, vlabel));
        for (int w = u + 1; w < vertices; w++)
          add(closing_extension(pattern, u, w, elabel));
      }
  EXPECT_EQ(met.size(), static_cast<size_t>(n));
  EXPECT_EQ(met.count(0), 0u);
}

// An extension of a pattern with more vertices than was said.
TEST(PackedExtension, VerticesThatDoNotFitHaveNone) {
  const extension_packing packing(10, 7); // three bits for each
  EXPECT_NE(packing.word_of(pendant_extension(9, 7, 0, 0)), 0u);
  EXPECT_EQ(packing.word_of(pendant_extension(9, 8, 0, 0)), 0u);
  EXPECT_NE(packing.word_of(closing_extension(9, 0, 6, 0)), 0u);
  EXPECT_EQ(packing.word_of(closing_extension(9, 0, 7, 0)), 0u);
  EXPECT_EQ(packing.word_of(pendant_extension(9, INT16_MAX, 0, 0)), 0u);
}

} // namespace kestro
