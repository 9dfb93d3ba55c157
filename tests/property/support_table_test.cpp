// The level loop with a table of supports in place of transactions: all that
// the loop makes of a database follows from the supports of its patterns.

#include <algorithm>
#include <climits>
#include <string>

#include <gtest/gtest.h>

#include "base/file_text.h"
#include "graph/label_set.h"
#include "graph/transactions.h"
#include "mining/level_loop.h"
#include "mining/support_table.h"
#include "mining/transaction_counter.h"
#include "support/mined_levels.h"
#include "support/plain_generation.h"
#include "support/random_database.h"
#include "support/records.h"

namespace kestro {

namespace {

constexpr int database_count = 100;
constexpr int edge_limit = 9; // of a transaction

struct mined_pattern {
  graph_form form;
  int count;
  std::vector<int> pids;
  std::vector<plain_parent> kept; // u and v as the entries have them
  bool operator==(const mined_pattern &) const = default;
};

// All that a run comes to; levels by size, the patterns of each by id.
struct mined_levels {
  std::vector<std::vector<mined_pattern>> levels;
  std::vector<std::vector<graph_form>> candidates; // by size, from 3 on
  std::vector<int> candidate_counts;               // by size, as counted
  std::vector<int> frequent_counts;
  int last = 0;
  bool operator==(const mined_levels &) const = default;
};

mined_pattern pattern_of(const subgraph *sg) {
  mined_pattern pattern = {form_as_is(sg->g), sg->count, {}, {}};
  for (int i = 0; i < sg_pid_size(sg); i++)
    pattern.pids.push_back(sg_pid_at(sg, i));
  for (int i = 0; i < sg_kept_size(sg); i++) {
    const sg_parent *entry = sg_kept_at(sg, i);
    pattern.kept.push_back({entry->pid, entry->u, entry->v});
  }
  return pattern;
}

// Patterns with their supports.
struct known_patterns {
  graph_list_ptr graphs{graph_list_new()};
  std::vector<int> supports;
};

// Takes down a run, and what a table has to know for the same one.
class scribe : public level_receiver {
public:
  void candidates(const sg_set *set) override {
    std::vector<graph_form> forms;
    for (int i = 0; i < sg_set_size(set); i++)
      forms.push_back(form_as_is(sg_set_get(set, i)->g));
    mined.candidates.push_back(std::move(forms));
  }
  bool level(const sg_set *set) override {
    sg_set_check(set);
    std::vector<mined_pattern> patterns;
    for (int i = 0; i < sg_set_size(set); i++)
      patterns.push_back(pattern_of(sg_set_get(set, i)));
    mined.levels.push_back(std::move(patterns));
    for (int i = 0; i < sg_set_size(set); i++) {
      const subgraph *sg = sg_set_get(set, i);
      graph_list_push(graph_ptr(graph_copy(sg->g)), known.graphs.get());
      known.supports.push_back(sg->count);
      with_tids |= sg_tid_size(sg) > 0;
    }
    return true;
  }
  void advanced(const progress &) override {}

  mined_levels mined;
  known_patterns known;
  bool with_tids = false;
};

scribe mine(candidate_counter *counter, int jobs = 1) {
  scribe notes;
  statistics stats;
  stats_init(&stats);
  const mining_run run = {1,      INT_MAX, {jobs, 5, form::exact},
                          &notes, counter, &stats};
  notes.mined.last = mine_levels(&run).last;
  for (int size = 0; size <= notes.mined.last; size++) {
    notes.mined.candidate_counts.push_back(
        stats_get(&stats, stats_candidates, size));
    notes.mined.frequent_counts.push_back(
        stats_get(&stats, stats_frequent, size));
  }
  return notes;
}

// The first difference between the two counters, empty if there is none.
// *levels, if asked for, is how many were compared.
std::string difference(const graph_list *transactions, int edge_labels,
                       int vertex_labels, int minsup, size_t *levels) {
  transaction_counter with_transactions(transactions, edge_labels,
                                        vertex_labels, minsup, 1);
  const scribe teacher = mine(&with_transactions);
  const mined_levels &expected = teacher.mined;
  support_table with_table(teacher.known.graphs.get(), teacher.known.supports,
                           minsup, 1);
  const scribe pupil = mine(&with_table);
  const mined_levels &mined = pupil.mined;
  if (pupil.with_tids)
    return "TID lists from nowhere";
  support_table with_threads(teacher.known.graphs.get(), teacher.known.supports,
                             minsup, 3);
  if (mine(&with_threads, 3).mined != mined)
    return "another result on several threads";
  if (levels)
    *levels = expected.levels.size();
  if (mined.candidates != expected.candidates)
    return "other candidates";
  if (mined.levels.size() != expected.levels.size())
    return "another number of levels";
  for (size_t k = 0; k < expected.levels.size(); k++)
    if (mined.levels[k] != expected.levels[k])
      return "another level " + std::to_string(k + 1);
  if (mined.candidate_counts != expected.candidate_counts ||
      mined.frequent_counts != expected.frequent_counts)
    return "other numbers by size";
  return mined == expected ? "" : "another last size";
}

std::string difference(const std::vector<plain_graph> &database, int minsup,
                       size_t *levels = nullptr) {
  const numbered_database db = number(database);
  return difference(db.transactions.get(), db.edge_labels, db.vertex_labels,
                    minsup, levels);
}

std::string shrunk(uint64_t seed, std::vector<plain_graph> database,
                   int minsup) {
  database = shrink_database(database, [&](const auto &smaller) {
    return !difference(smaller, minsup).empty();
  });
  return "seed " + std::to_string(seed) + ", minimum support " +
         std::to_string(minsup) + ": " + difference(database, minsup) +
         "\nin the database\n" + database_text(database, text_style{});
}

} // namespace

TEST(SupportTable, DrivesTheSearchAsTransactionsDo) {
  size_t all_levels = 0;
  for (uint64_t seed = 0; seed < database_count; seed++) {
    dice chance(seed);
    const std::vector<plain_graph> database =
        random_database(&chance, edge_limit);
    const int minsup =
        chance.between(1, std::max(2, static_cast<int>(database.size()) / 3));
    size_t levels = 0;
    if (!difference(database, minsup, &levels).empty())
      ADD_FAILURE() << shrunk(seed, database, minsup);
    all_levels += levels;
  }
  EXPECT_GT(all_levels, 3U * database_count);
}

TEST(SupportTable, DrivesTheSearchOfTheExample) {
  const label_set_ptr ls(label_set_create());
  const file_text text = read_file(KESTRO_EXAMPLE);
  label_set_build(text, ls.get());
  const graph_list_ptr transactions(graph_read_transactions(text, ls.get()));
  for (const int per_cent : {20, 50}) {
    size_t levels = 0;
    EXPECT_EQ(difference(transactions.get(), label_set_edge_labels(ls.get()),
                         label_set_vertex_labels(ls.get()),
                         transactions->count * per_cent / 100, &levels),
              "");
    EXPECT_GT(levels, 3U);
  }
}

TEST(SupportTable, WithoutPatternsNothingIsFrequent) {
  const graph_list_ptr none(graph_list_new());
  support_table empty(none.get(), {}, 1, 1);
  EXPECT_EQ(empty.largest(), 0);
  EXPECT_EQ(empty.frequent(1), 0);
  const mined_levels mined = mine(&empty).mined;
  EXPECT_TRUE(mined.levels.empty());
  EXPECT_EQ(mined.last, 0);
}

} // namespace kestro
