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

constexpr key_space<edge_key> few_edges = {3, 7};
constexpr key_space<edge_key> many_edges = {100, 2000};
// The first places of three centres, with 4, 0 and 2 arms.
constexpr size_t few_firsts[] = {0, 10, 10, 13};
constexpr key_space<path_key> few_paths = {few_firsts, 3};

edge_key draw(const key_space<edge_key> &space, std::mt19937 &random) {
  const auto below = [&](int n) {
    return static_cast<int>(random() % static_cast<unsigned>(n));
  };
  return {below(space.nvl), below(space.nvl), below(space.nel)};
}
path_key draw(const key_space<path_key> &, std::mt19937 &random) {
  const int b = static_cast<int>(random() % 6);
  if (b >= 4)
    return {2, static_cast<int>(random() % static_cast<unsigned>(b - 3)),
            b - 4};
  return {0, static_cast<int>(random() % static_cast<unsigned>(b + 1)), b};
}

std::array<int, 3> numbers(const edge_key &k) { return {k.from, k.to, k.e}; }
std::array<int, 3> numbers(const path_key &k) { return {k.centre, k.a, k.b}; }

// Counts random keys in a table and in a map, and compares after each; then
// gives them other numbers and meets them once more.
template <class Key>
void compare_with_map(const key_space<Key> &space, size_t limit) {
  std::mt19937 random(17);
  label_table<Key> table(space, limit);
  ASSERT_EQ(table.is_dense(), limit == always_dense);
  std::map<std::array<int, 3>, std::set<int>> tids;
  xvector<Key> keys;
  for (int i = 0; i < 20000; i++) {
    const int tid = i / 5;
    const Key key = draw(space, random);
    std::set<int> &seen = tids[numbers(key)];
    ASSERT_EQ(table.number_of(key), static_cast<int>(seen.size())) << i;
    if (seen.empty())
      keys.push_back(key);
    seen.insert(tid);
    table.count_once(key, tid);
    ASSERT_EQ(table.number_of(key), static_cast<int>(seen.size())) << i;
    ASSERT_EQ(table.keys().size(), keys.size()) << i;
  }
  EXPECT_TRUE(table.keys() == keys);
  for (size_t i = 0; i < keys.size(); i++)
    table.set_number(keys[i], static_cast<int>(i % 3));
  for (const int tid : {0, 5})
    for (const bool again : {false, true})
      for (size_t i = 0; i < keys.size(); i++)
        ASSERT_EQ(table.number_once(keys[i], tid),
                  again ? 0 : static_cast<int>(i % 3));
}

} // namespace

TEST(LabelTable, DenseTableCountsAsAMapDoes) {
  compare_with_map(few_edges, always_dense);
  compare_with_map(few_paths, always_dense);
}

TEST(LabelTable, SparseTableCountsAsAMapDoes) {
  compare_with_map(few_edges, never_dense);
  compare_with_map(few_paths, never_dense);
  compare_with_map(many_edges, never_dense);
}

TEST(LabelTable, TransactionCountsOnceUntilAnotherIsCounted) {
  for (const size_t limit : {always_dense, never_dense}) {
    edge_table table({2, 2}, limit);
    const edge_key key = {0, 1, 1};
    for (const int tid : {0, 0, 3, 3, 3, 4})
      table.count_once(key, tid);
    EXPECT_EQ(table.number_of(key), 3);
    EXPECT_EQ(table.number_of({1, 0, 1}), 0);
    EXPECT_EQ(table.keys().size(), 1u);
  }
}

TEST(LabelTable, NumberComesOncePerTransactionFromTheFirstOn) {
  for (const size_t limit : {always_dense, never_dense}) {
    edge_table table({2, 2}, limit);
    const edge_key key = {0, 1, 1};
    table.count_once(key, 0);
    table.set_number(key, 8);
    EXPECT_EQ(table.number_of(key), 8);
    std::vector<int> met;
    for (const int tid : {0, 0, 3, 3, 4})
      met.push_back(table.number_once(key, tid));
    EXPECT_EQ(met, (std::vector<int>{8, 0, 8, 0, 8}));
  }
}

TEST(LabelTable, NoLabelsMakeNoKeys) {
  EXPECT_TRUE(edge_table({0, 0}, always_dense).keys().empty());
  constexpr size_t no_path = 0;
  EXPECT_TRUE(path_table({&no_path, 0}, always_dense).keys().empty());
}

TEST(LabelTable, PlacesOfASpaceAreItsOwn) {
  std::set<size_t> places;
  for (int from = 0; from < 7; from++)
    for (int to = 0; to < 7; to++)
      for (int e = 0; e < 3; e++)
        places.insert(few_edges.place({from, to, e}));
  EXPECT_EQ(places.size(), few_edges.places());
  EXPECT_EQ(*places.rbegin(), few_edges.places() - 1);
  places.clear();
  const int arms[] = {4, 0, 2};
  for (int centre = 0; centre < 3; centre++)
    for (int b = 0; b < arms[centre]; b++)
      for (int a = 0; a <= b; a++)
        places.insert(few_paths.place({centre, a, b}));
  EXPECT_EQ(places.size(), few_paths.places());
  EXPECT_EQ(*places.rbegin(), few_paths.places() - 1);
}

TEST(LabelTable, DenseWhileItFitsTheLimit) {
  // 10 * 10 * 3 counters of eight bytes.
  EXPECT_TRUE(edge_table({3, 10}, 2400).is_dense());
  EXPECT_FALSE(edge_table({3, 10}, 2399).is_dense());
  EXPECT_TRUE(path_table(few_paths, 13 * 8).is_dense());
  EXPECT_FALSE(path_table(few_paths, 13 * 8 - 1).is_dense());
}

TEST(LabelTable, LimitFollowsTheTransactionsWithinBounds) {
  const graph_list_ptr graphs(graph_list_new());
  EXPECT_EQ(counters_limit(graphs.get()), size_t{64} << 10);
  graph_list_push(graph_ptr(graph_create(1 << 16, 3)), graphs.get());
  EXPECT_EQ(counters_limit(graphs.get()), graph_size(1 << 16, 3) / 2);
  graph_list_push(graph_ptr(graph_create(1 << 23, 3)), graphs.get());
  EXPECT_EQ(counters_limit(graphs.get()), size_t{32} << 20);
}

TEST(LabelTable, ProductsBeyondSizeTAreNotDense) {
  constexpr int most = 2147483646;
  EXPECT_EQ((key_space<edge_key>{most + 1, most + 1}.places()), SIZE_MAX);
  edge_table table({most + 1, most + 1}, always_dense);
  ASSERT_FALSE(table.is_dense());
  table.count_once({most, most, most}, 0);
  EXPECT_EQ(table.number_of({most, most, most}), 1);
  EXPECT_EQ(table.keys().size(), 1u);
}

} // namespace kestro
