// Counting against the naive matcher, on 100,000 pairs of a pattern and a
// transaction.  Rows of embeddings are taken away from some patterns at random,
// as happens where their memory runs out, so that every way of finding a
// candidate is taken: one edge more than either parent, and a search.

#include "mining/support.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <set>
#include <utility>

#include "mining/candidates.h"
#include "mining/embeddings.h"
#include "mining/first_levels.h"
#include "reference/mining/subgraph.h"
#include "support/count_level.h"
#include "support/records.h"

namespace kestro {

namespace {

constexpr int vlabels = 4;
constexpr int elabels = 2;
constexpr int largest_size = 4;

using ints = std::vector<int>;

graph_list_ptr random_transactions(test_rng &rng) {
  graph_list_ptr list(graph_list_new());
  const int count = 4 + random_below(rng, 8);
  for (int tid = 0; tid < count; tid++)
    graph_list_push(random_graph(rng, {6, 3 + random_below(rng, 4), vlabels,
                                       elabels, true}),
                    list.get());
  return list;
}

ints naive_tids(const graph *g, const graph_list *transactions) {
  ints tids;
  for (int tid = 0; tid < transactions->count; tid++)
    if (!naive_maps(g, graph_list_at(transactions, tid)).empty())
      tids.push_back(tid);
  return tids;
}

bool rows_place(const subgraph *sg, const graph_list *transactions) {
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

// What the levels came to.
struct pair_counts {
  long long pairs = 0; // of a pattern and a transaction, compared
  int with_rows = 0;
  int without_rows = 0;
};

void check_level(const sg_set *level, const graph_list *transactions,
                 pair_counts *counts) {
  for (int id = 0; id < sg_set_size(level); id++) {
    const subgraph *sg = sg_set_get(level, id);
    const ints expected = naive_tids(sg->g, transactions);
    ASSERT_EQ(ids_of(sg->tid), expected);
    ASSERT_EQ(sg->count, static_cast<int>(expected.size()));
    counts->pairs += transactions->count;
    ASSERT_TRUE(sg->rows);
    ASSERT_TRUE(rows_place(sg, transactions));
  }
}

void take_rows_away(const sg_set *level, test_rng &rng, pair_counts *counts) {
  for (int id = 0; id < sg_set_size(level); id++) {
    subgraph *sg = sg_set_get(level, id);
    if (random_below(rng, 3) > 0) {
      counts->with_rows++;
      continue;
    }
    ksstack_free(std::exchange(sg->rows, nullptr));
    counts->without_rows++;
  }
}

// Mines the levels up to the largest size with that minimum support, each
// against the matcher.  A candidate that was dropped must occur too rarely.
void mine(const graph_list *transactions, int minsup, test_rng &rng,
          pair_counts *counts) {
  sg_set_ptr cores(sg_frequent_edges(transactions, minsup, elabels, vlabels));
  if (sg_set_size(cores.get()) == 0)
    return;
  sg_set_ptr level(sg_frequent_double_edges(cores.get(), transactions, minsup,
                                            elabels, vlabels));
  sg_register_children(level.get(), cores.get());
  check_level(level.get(), transactions, counts);
  for (int size = 3; size <= largest_size && sg_set_size(level.get()) > 0;
       size++) {
    take_rows_away(level.get(), rng, counts);
    sg_set_ptr cand =
        sg_generate_candidates(level.get(), cores.get()).candidates;
    int frequent = 0;
    for (int id = 0; id < sg_set_size(cand.get()); id++)
      frequent +=
          static_cast<int>(
              naive_tids(sg_set_get(cand.get(), id)->g, transactions).size()) >=
          minsup;
    sg_filter_candidates_by_support(cand.get(), level.get(), transactions,
                                    minsup);
    sg_set_ptr next(
        count_level(cand.release(), level.get(), transactions, minsup));
    ASSERT_EQ(sg_set_size(next.get()), frequent);
    check_level(next.get(), transactions, counts);
    cores = std::move(level);
    level = std::move(next);
  }
}

class CountingWithRows : public testing::TestWithParam<int> {};

} // namespace

TEST_P(CountingWithRows, IsExactWhoeverHasRows) {
  pair_counts counts;
  for (int i = 0; counts.pairs < 25000; i++) {
    const auto seed = static_cast<unsigned>(GetParam() * 1000 + i);
    SCOPED_TRACE("seed " + std::to_string(seed));
    test_rng rng(seed);
    const graph_list_ptr transactions = random_transactions(rng);
    mine(transactions.get(), 1 + random_below(rng, 3), rng, &counts);
    if (HasFailure())
      break;
  }
  printf("%lld pairs, rows of %d patterns, none of %d\n", counts.pairs,
         counts.with_rows, counts.without_rows);
  EXPECT_GE(counts.pairs, 25000);
  EXPECT_GT(counts.with_rows, 100);
  EXPECT_GT(counts.without_rows, 100);
}

INSTANTIATE_TEST_SUITE_P(Seeds, CountingWithRows, testing::Range(0, 4));

} // namespace kestro
