#include "mining/transaction_counter.h"

#include <vector>

#include <gtest/gtest.h>

#include "graph/graph_list.h"
#include "mining/candidates.h"
#include "mining/first_levels.h"
#include "reference/mining/subgraph.h"
#include "support/graphs.h"

namespace kestro {
namespace {

// Two triangles, a star of three rays and a path of three edges, labels all
// alike: the three graphs of three edges are the candidates of size 3, all
// with the two-edge path as their only parent.
class TransactionCounter : public testing::Test {
protected:
  TransactionCounter() : transactions(graph_list_new()) {
    graph_list_push(ring_graph(3), transactions.get());
    graph_list_push(star_graph(4), transactions.get());
    graph_list_push(ring_graph(3), transactions.get());
    graph_list_push(path_graph(4), transactions.get());
    level1.reset(sg_frequent_edges(transactions.get(), 1, 1, 1));
    level2.reset(
        sg_frequent_double_edges(level1.get(), transactions.get(), 1, 1, 1));
    sg_register_children(level2.get(), level1.get());
    candidates = sg_generate_candidates(level2.get(), level1.get()).candidates;
  }

  static std::vector<int> tids(const subgraph *sg) {
    std::vector<int> list;
    for (int i = 0; i < sg_tid_size(sg); i++)
      list.push_back(sg_tid_at(sg, i));
    return list;
  }
  // Of the pattern of three edges and vs vertices, if that is one only.
  static std::vector<int> tids_of_triangle(const sg_set *set) {
    for (int i = 0; i < sg_set_size(set); i++)
      if (sg_set_get(set, i)->g->vs == 3)
        return tids(sg_set_get(set, i));
    return {};
  }

  static void expect_same(const sg_set *a, const sg_set *b) {
    ASSERT_EQ(sg_set_size(a), sg_set_size(b));
    for (int i = 0; i < sg_set_size(a); i++) {
      const subgraph *x = sg_set_get(a, i);
      const subgraph *y = sg_set_get(b, i);
      EXPECT_EQ(sg_compare(x, y), 0);
      EXPECT_EQ(x->count, y->count);
      EXPECT_EQ(tids(x), tids(y));
      EXPECT_EQ(sg_pid_size(x), sg_pid_size(y));
    }
  }

  graph_list_ptr transactions;
  sg_set_ptr level1;
  sg_set_ptr level2;
  sg_set_ptr candidates;
};

} // namespace

TEST_F(TransactionCounter, BoundIsTheParentsTransactions) {
  ASSERT_EQ(sg_set_size(candidates.get()), 3);
  transaction_counter(transactions.get(), 1, 1, 4, 1)
      .bound(candidates.get(), level2.get());
  ASSERT_EQ(sg_set_size(candidates.get()), 3);
  for (int i = 0; i < 3; i++)
    EXPECT_EQ(tids(sg_set_get(candidates.get(), i)),
              (std::vector<int>{0, 1, 2, 3}));
}

TEST_F(TransactionCounter, BoundDropsWhatItExcludes) {
  transaction_counter(transactions.get(), 1, 1, 5, 1)
      .bound(candidates.get(), level2.get());
  EXPECT_EQ(sg_set_size(candidates.get()), 0);
}

TEST_F(TransactionCounter, CountKeepsFrequentOnesWithExactTids) {
  transaction_counter counter(transactions.get(), 1, 1, 2, 2);
  counter.bound(candidates.get(), level2.get());
  counter.count(candidates.get(), level2.get());
  ASSERT_EQ(sg_set_size(candidates.get()), 1);
  EXPECT_EQ(sg_set_get(candidates.get(), 0)->count, 2);
  EXPECT_EQ(tids_of_triangle(candidates.get()), (std::vector<int>{0, 2}));
}

TEST_F(TransactionCounter, CountAtOneKeepsEveryOccurringCandidate) {
  transaction_counter counter(transactions.get(), 1, 1, 1, 2);
  counter.bound(candidates.get(), level2.get());
  counter.count(candidates.get(), level2.get());
  ASSERT_EQ(sg_set_size(candidates.get()), 3);
  std::vector<int> supports;
  for (int i = 0; i < 3; i++)
    supports.push_back(sg_support(sg_set_get(candidates.get(), i)));
  std::sort(supports.begin(), supports.end());
  EXPECT_EQ(supports, (std::vector<int>{1, 1, 2}));
  EXPECT_EQ(tids_of_triangle(candidates.get()), (std::vector<int>{0, 2}));
}

TEST_F(TransactionCounter, CountFreesOnlyTidsAndRowsOfTheLevelBelow) {
  transaction_counter counter(transactions.get(), 1, 1, 1, 2);
  counter.bound(candidates.get(), level2.get());
  counter.count(candidates.get(), level2.get());
  const subgraph *path = sg_set_get(level2.get(), 0);
  EXPECT_EQ(sg_child_size(path), 0);
  EXPECT_EQ(path->tid, nullptr);
  EXPECT_EQ(path->rows, nullptr);
  EXPECT_EQ(path->count, 4);
  EXPECT_GT(sg_parent_size(path), 0);
}

TEST_F(TransactionCounter, FirstLevelsAreTheFrequentOnes) {
  graph_list_push(make_graph({0, 1}, {{0, 1, 1}}), transactions.get());
  for (const int minsup : {1, 2, 5}) {
    transaction_counter counter(transactions.get(), 2, 2, minsup, 1);
    const sg_set_ptr edges = counter.edges();
    const sg_set_ptr expected(
        sg_frequent_edges(transactions.get(), minsup, 2, 2));
    expect_same(edges.get(), expected.get());
    const sg_set_ptr paths = counter.double_edges(edges.get());
    const sg_set_ptr expected_paths(sg_frequent_double_edges(
        expected.get(), transactions.get(), minsup, 2, 2));
    expect_same(paths.get(), expected_paths.get());
    EXPECT_EQ(sg_set_size(edges.get()), minsup == 1 ? 2 : minsup == 2);
    for (int i = 0; i < sg_set_size(edges.get()); i++)
      EXPECT_EQ(sg_child_size(sg_set_get(edges.get(), i)), 0);
  }
}

TEST_F(TransactionCounter, CountMayEndWithAnEmptyLevel) {
  transaction_counter counter(transactions.get(), 1, 1, 3, 2);
  counter.bound(candidates.get(), level2.get());
  counter.count(candidates.get(), level2.get());
  EXPECT_EQ(sg_set_size(candidates.get()), 0);
}

} // namespace kestro
