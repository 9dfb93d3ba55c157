#include "driver/transaction_counter.h"

#include <vector>

#include <gtest/gtest.h>

#include "graph/graph_list.h"
#include "mining/candidates.h"
#include "mining/first_levels.h"
#include "mining/statistics.h"
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
    stats_init();
    level1.reset(sg_frequent_edges(transactions.get(), 1, 1, 1));
    level2.reset(
        sg_frequent_double_edges(level1.get(), transactions.get(), 1, 1, 1));
    candidates.reset(sg_generate_candidates(level2.get(), level1.get()));
  }
  ~TransactionCounter() override { stats_free(); }

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

  graph_list_ptr transactions;
  sg_set_ptr level1;
  sg_set_ptr level2;
  sg_set_ptr candidates;
};

} // namespace

TEST_F(TransactionCounter, FilterBoundsByTheParentsTransactions) {
  ASSERT_EQ(sg_set_size(candidates.get()), 3);
  transaction_counter(transactions.get(), 4, 1)
      .filter(candidates.get(), level2.get());
  ASSERT_EQ(sg_set_size(candidates.get()), 3);
  for (int i = 0; i < 3; i++)
    EXPECT_EQ(tids(sg_set_get(candidates.get(), i)),
              (std::vector<int>{0, 1, 2, 3}));
}

TEST_F(TransactionCounter, FilterDropsWhatTheBoundExcludes) {
  transaction_counter(transactions.get(), 5, 1)
      .filter(candidates.get(), level2.get());
  EXPECT_EQ(sg_set_size(candidates.get()), 0);
}

TEST_F(TransactionCounter, CountKeepsFrequentOnesWithExactTids) {
  transaction_counter counter(transactions.get(), 2, 2);
  counter.filter(candidates.get(), level2.get());
  const sg_set_ptr frequent(counter.count(candidates.release(), level2.get()));
  ASSERT_EQ(sg_set_size(frequent.get()), 1);
  EXPECT_EQ(sg_set_get(frequent.get(), 0)->count, 2);
  EXPECT_EQ(tids_of_triangle(frequent.get()), (std::vector<int>{0, 2}));
  EXPECT_EQ(stats_get(stats_frequent, 3), 1);
}

TEST_F(TransactionCounter, CountAtOneKeepsEveryOccurringCandidate) {
  transaction_counter counter(transactions.get(), 1, 2);
  counter.filter(candidates.get(), level2.get());
  const sg_set_ptr frequent(counter.count(candidates.release(), level2.get()));
  ASSERT_EQ(sg_set_size(frequent.get()), 3);
  std::vector<int> supports;
  for (int i = 0; i < 3; i++)
    supports.push_back(sg_support(sg_set_get(frequent.get(), i)));
  std::sort(supports.begin(), supports.end());
  EXPECT_EQ(supports, (std::vector<int>{1, 1, 2}));
  EXPECT_EQ(tids_of_triangle(frequent.get()), (std::vector<int>{0, 2}));
}

TEST_F(TransactionCounter, CountRegistersChildren) {
  transaction_counter counter(transactions.get(), 1, 2);
  counter.filter(candidates.get(), level2.get());
  const sg_set_ptr frequent(counter.count(candidates.release(), level2.get()));
  const subgraph *path = sg_set_get(level2.get(), 0);
  ASSERT_EQ(sg_child_size(path), 3);
  for (int i = 0; i < 3; i++)
    EXPECT_EQ(sg_child_at(path, i), i);
}

TEST_F(TransactionCounter, CountMayEndWithAnEmptyLevel) {
  transaction_counter counter(transactions.get(), 3, 2);
  counter.filter(candidates.get(), level2.get());
  const sg_set_ptr frequent(counter.count(candidates.release(), level2.get()));
  EXPECT_EQ(sg_set_size(frequent.get()), 0);
  EXPECT_EQ(stats_get(stats_frequent, 3), 0);
}

} // namespace kestro
