#include "mining/label_table.h"

#include <array>
#include <map>
#include <random>
#include <set>

#include <gtest/gtest.h>

namespace kestro {
namespace {

constexpr size_t always_dense = SIZE_MAX / 2;
constexpr size_t never_dense = 0;

edge_key key_of(const edge_key &, const std::array<int, 5> &x) {
  return {x[0], x[1], x[3]};
}
path_key key_of(const path_key &, const std::array<int, 5> &x) {
  return {x[0], x[1], x[2], x[3], x[4]};
}

// Counts random keys in a table and in a map, and compares after each.
template <class Key> void compare_with_map(int nel, int nvl, size_t limit) {
  std::mt19937 random(17);
  label_table<Key> table(nel, nvl, limit);
  std::map<std::array<int, 5>, std::set<int>> tids;
  const auto below = [&](int n) {
    return static_cast<int>(random() % static_cast<unsigned>(n));
  };
  xvector<Key> keys;
  for (int i = 0; i < 20000; i++) {
    const int tid = i / 5;
    std::array<int, 5> x = {below(nvl), below(nvl), below(nvl), below(nel),
                            below(nel)};
    const Key key = key_of(Key(), x);
    if (std::is_same_v<Key, edge_key>)
      x[2] = x[4] = 0;
    if (tids[x].empty())
      keys.push_back(key);
    tids[x].insert(tid);
    table.count_once(key, tid);
    ASSERT_EQ(table.count_of(key), static_cast<int>(tids[x].size())) << i;
    ASSERT_EQ(table.keys().size(), keys.size()) << i;
  }
  EXPECT_TRUE(table.keys() == keys);
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

TEST(LabelTable, TransactionCountsOnceUntilAnotherIsCounted) {
  for (const size_t limit : {always_dense, never_dense}) {
    edge_table table(2, 2, limit);
    const edge_key key = {0, 1, 1};
    for (const int tid : {0, 0, 3, 3, 3, 4})
      table.count_once(key, tid);
    EXPECT_EQ(table.count_of(key), 3);
    table.count_of(key) = 8;
    EXPECT_EQ(table.count_of(key), 8);
    EXPECT_EQ(table.keys().size(), 1u);
  }
}

TEST(LabelTable, NoLabelsMakeNoKeys) {
  EXPECT_TRUE(edge_table(0, 0).keys().empty());
  EXPECT_TRUE(path_table(0, 5).keys().empty());
}

TEST(LabelTable, DenseWhileBothTablesFitTheLimit) {
  // 10 * 10 * 3 cells of eight bytes for edges, 10 * 10 * 10 * 3 * 3 for paths.
  EXPECT_TRUE(is_dense<edge_key>(3, 10, 2400));
  EXPECT_FALSE(is_dense<edge_key>(3, 10, 2399));
  EXPECT_TRUE(is_dense<path_key>(3, 10, 74400));
  EXPECT_FALSE(is_dense<path_key>(3, 10, 74399));
  EXPECT_FALSE(is_dense<path_key>(3, 10, 2399));
}

TEST(LabelTable, LimitIsSixtyFourMebibytes) {
  EXPECT_TRUE(is_dense<edge_key>(8, 1024, dense_tables_limit));
  EXPECT_FALSE(is_dense<edge_key>(9, 1024, dense_tables_limit));
}

TEST(LabelTable, ProductsBeyondSizeTAreNotDense) {
  EXPECT_FALSE(is_dense<edge_key>(2000000000, 2000000000, SIZE_MAX - 1));
  EXPECT_FALSE(is_dense<path_key>(1000000, 1000000, SIZE_MAX - 1));
  constexpr int most = 2147483646;
  path_table table(most + 1, most + 1);
  table.count_once({most, most, most, most, most}, 0);
  EXPECT_EQ(table.count_of({most, most, most, most, most}), 1);
  EXPECT_EQ(table.keys().size(), 1u);
}

} // namespace kestro
