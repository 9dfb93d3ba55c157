// Counting with rows of embeddings against the naive matcher, on databases so
// small that the memory for rows runs out in the middle of a level.

#include "mining/support.h"

#include <gtest/gtest.h>

#include <set>

#include "mining/candidates.h"
#include "mining/embeddings.h"
#include "mining/first_levels.h"
#include "mining/statistics.h"
#include "support/records.h"

namespace kestro {

namespace {

constexpr int vlabels = 4;
constexpr int elabels = 2;
constexpr int largest_size = 4;

using ints = std::vector<int>;

graph_list_ptr random_transactions(test_rng &rng) {
  graph_list_ptr list(graph_list_new());
  const int count = 1 + random_below(rng, 3);
  for (int tid = 0; tid < count; tid++)
    graph_list_push(random_graph(rng, {7, 3 + random_below(rng, 4), vlabels,
                                       elabels, true}),
                    list.get());
  return list;
}

ints naive_tids(const graph *g, const ksstack *transactions) {
  ints tids;
  for (int tid = 0; tid < transactions->count; tid++)
    if (!naive_maps(g, graph_list_at(transactions, tid)).empty())
      tids.push_back(tid);
  return tids;
}

bool rows_place(const subgraph *sg, const ksstack *transactions) {
  if (sg->rows->count != sg_tid_size(sg))
    return false;
  for (int i = 0; i < sg->rows->count; i++) {
    const ints row(sg_row<uint8_t>(sg, i), sg_row<uint8_t>(sg, i) + sg->g->vs);
    if (std::set<int>(row.begin(), row.end()).size() != row.size() ||
        !is_mapping(sg->g, graph_list_at(transactions, sg_tid_at(sg, i)), row))
      return false;
  }
  return true;
}

// What the levels of one database came to.
struct row_counts {
  int with_rows = 0;
  int without_rows = 0;
  int used_up = 0; // levels that have records of both kinds
};

void check_level(const sg_set *level, const ksstack *transactions,
                 row_counts *counts) {
  int with_rows = 0;
  for (int id = 0; id < sg_set_size(level); id++) {
    const subgraph *sg = sg_set_get(level, id);
    const ints expected = naive_tids(sg->g, transactions);
    ASSERT_EQ(ids_of(sg->tid), expected);
    ASSERT_EQ(sg->count, static_cast<int>(expected.size()));
    if (!sg->rows)
      continue;
    ASSERT_TRUE(rows_place(sg, transactions));
    with_rows++;
  }
  const int without_rows = sg_set_size(level) - with_rows;
  counts->with_rows += with_rows;
  counts->without_rows += without_rows;
  counts->used_up += with_rows > 0 && without_rows > 0;
}

// Mines the levels up to the largest size with a support of one, each against
// the matcher.  A candidate that was dropped must occur nowhere.
void mine(const ksstack *transactions, row_counts *counts) {
  sg_set_ptr cores(sg_frequent_edges(transactions, 1, elabels, vlabels));
  sg_set_ptr level(
      sg_frequent_double_edges(cores.get(), transactions, 1, elabels, vlabels));
  check_level(level.get(), transactions, counts);
  for (int size = 3; size <= largest_size && sg_set_size(level.get()) > 0;
       size++) {
    sg_set_ptr cand(sg_generate_candidates(level.get(), cores.get()));
    int occurring = 0;
    for (int id = 0; id < sg_set_size(cand.get()); id++)
      occurring +=
          !naive_tids(sg_set_get(cand.get(), id)->g, transactions).empty();
    sg_filter_candidates_by_support(cand.get(), level.get(), transactions, 1);
    sg_set_ptr next(
        sg_count_frequents(cand.release(), level.get(), transactions, 1));
    ASSERT_EQ(sg_set_size(next.get()), occurring);
    check_level(next.get(), transactions, counts);
    cores = std::move(level);
    level = std::move(next);
  }
}

class CountingWithRows : public testing::TestWithParam<int> {
protected:
  void SetUp() override { stats_init(); }
  void TearDown() override { stats_free(); }
};

} // namespace

TEST_P(CountingWithRows, IsExactWhenTheirMemoryRunsOut) {
  row_counts counts;
  for (int i = 0; i < 10; i++) {
    const auto seed = static_cast<unsigned>(GetParam() * 10 + i);
    SCOPED_TRACE("seed " + std::to_string(seed));
    test_rng rng(seed);
    const graph_list_ptr transactions = random_transactions(rng);
    mine(transactions.get(), &counts);
    if (HasFailure())
      break;
  }
  EXPECT_GT(counts.with_rows, 100);
  EXPECT_GT(counts.without_rows, 100);
  EXPECT_GT(counts.used_up, 5);
}

INSTANTIATE_TEST_SUITE_P(Seeds, CountingWithRows, testing::Range(0, 4));

} // namespace kestro
