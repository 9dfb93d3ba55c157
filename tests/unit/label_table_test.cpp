#include "mining/label_table.h"

#include <array>
#include <map>
#include <random>

#include <gtest/gtest.h>

namespace kestro {
namespace {

constexpr size_t always_dense = SIZE_MAX;
constexpr size_t never_dense = 0;

edge_key key_of(const edge_key &, const std::array<int, 5> &x) {
  return {x[0], x[1], x[3]};
}
path_key key_of(const path_key &, const std::array<int, 5> &x) {
  return {x[0], x[1], x[2], x[3], x[4]};
}

// Counts random keys in a table and in a map, and compares all entries.
template <class Key> void compare_with_map(int nel, int nvl, size_t limit) {
  std::mt19937 random(17);
  label_table<Key> table(nel, nvl, limit);
  std::map<std::array<int, 5>, int> counts;
  const auto below = [&](int n) {
    return static_cast<int>(random() % static_cast<unsigned>(n));
  };
  size_t keys = 0;
  for (int i = 0; i < 20000; i++) {
    std::array<int, 5> x = {below(nvl), below(nvl), below(nvl), below(nel),
                            below(nel)};
    const Key key = key_of(Key(), x);
    if (std::is_same_v<Key, edge_key>)
      x[2] = x[4] = 0;
    keys += counts[x]++ == 0;
    auto &entry = table.at(key);
    entry.last = i;
    ASSERT_EQ(++entry.count, counts[x]) << i;
    ASSERT_TRUE(entry.key == key) << i;
    ASSERT_EQ(table.entries().size(), keys) << i;
  }
}

} // namespace

TEST(LabelTable, DenseTableCountsAsAMapDoes) {
  compare_with_map<edge_key>(3, 7, always_dense);
  compare_with_map<path_key>(3, 4, always_dense);
}

TEST(LabelTable, SparseTableCountsAsAMapDoes) {
  compare_with_map<edge_key>(3, 7, never_dense);
  compare_with_map<path_key>(3, 4, never_dense);
  compare_with_map<edge_key>(100, 2000, never_dense);
  compare_with_map<path_key>(100, 2000, never_dense);
}

TEST(LabelTable, NewEntriesAreZeroAndInTheOrderMet) {
  for (const size_t limit : {always_dense, never_dense}) {
    edge_table table(2, 2, limit);
    table.at({1, 1, 0}).count = 5;
    EXPECT_EQ(table.at({0, 1, 1}).count, 0);
    EXPECT_EQ(table.at({0, 1, 1}).last, 0);
    EXPECT_EQ(table.at({1, 1, 0}).count, 5);
    ASSERT_EQ(table.entries().size(), 2u);
    EXPECT_TRUE(table.entries()[0].key == (edge_key{1, 1, 0}));
    EXPECT_TRUE(table.entries()[1].key == (edge_key{0, 1, 1}));
  }
}

TEST(LabelTable, NoLabelsMakeNoEntries) {
  EXPECT_TRUE(edge_table(0, 0).entries().empty());
  EXPECT_TRUE(path_table(0, 5).entries().empty());
}

TEST(LabelTable, DenseWhileBothTablesFitTheLimit) {
  // 10 * 10 * 3 cells of four bytes for edges, 10 * 10 * 10 * 3 * 3 for paths.
  EXPECT_TRUE(is_dense<edge_key>(3, 10, 1200));
  EXPECT_FALSE(is_dense<edge_key>(3, 10, 1199));
  EXPECT_TRUE(is_dense<path_key>(3, 10, 37200));
  EXPECT_FALSE(is_dense<path_key>(3, 10, 37199));
  EXPECT_FALSE(is_dense<path_key>(3, 10, 1199));
}

TEST(LabelTable, LimitIsSixtyFourMebibytes) {
  EXPECT_TRUE(is_dense<edge_key>(1, 4096, dense_tables_limit));
  EXPECT_FALSE(is_dense<edge_key>(1, 4097, dense_tables_limit));
}

TEST(LabelTable, ProductsBeyondSizeTAreNotDense) {
  EXPECT_FALSE(is_dense<edge_key>(2000000000, 2000000000, SIZE_MAX - 1));
  EXPECT_FALSE(is_dense<path_key>(1000000, 1000000, SIZE_MAX - 1));
  path_table table(2147483647, 2147483647);
  table.at({2147483646, 2147483646, 2147483646, 2147483646, 2147483646}).count =
      7;
  EXPECT_EQ(
      table.at({2147483646, 2147483646, 2147483646, 2147483646, 2147483646})
          .count,
      7);
  EXPECT_EQ(table.entries().size(), 1u);
}

} // namespace kestro
