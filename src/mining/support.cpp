// Support counting in two steps: a bound by TID lists, then exact tests.
//
// A transaction that contains a pattern contains all its parents, so the
// intersection of their TID lists bounds its support at the cost of one pass
// over the lists.  In each transaction of the bound the candidate's one edge
// more is tried where a kept parent was found; a search, compiled once per
// candidate, follows only where that fails.

#include "mining/support.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "base/error.h"
#include "base/xmalloc.h"
#include "cl/search_plan.h"
#include "graph/graph_list.h"
#include "mining/embeddings.h"
#include "mining/links.h"
#include "mining/parents.h"
#include "mining/statistics.h"

namespace kestro {

void sg_intersect_parent_tids(subgraph *sg, const sg_set *prev,
                              const ksstack *transactions) {
  if (!sg->pid)
    die("subgraph.c", "null pid\n");
  const int n = sg_pid_size(sg);
  xvector<int> counters(static_cast<size_t>(transactions->count), 0);
  for (int i = 0; i < n; i++) {
    const subgraph *parent = sg_set_get(prev, sg_pid_at(sg, i));
    for (int j = 0; j < sg_tid_size(parent); j++)
      counters[static_cast<size_t>(sg_tid_at(parent, j))]++;
  }
  if (n == 0)
    return;
  for (int tid = 0; tid < transactions->count; tid++) {
    const int counter = counters[static_cast<size_t>(tid)];
    if (counter == n)
      sg_append_tid(sg, tid);
    else if (counter > n)
      die("subgraph.c", "something wrong\n");
  }
}

// Moves the records of a set out of it, in order.
static xvector<sg_ptr> take_records(sg_set *s) {
  xvector<sg_ptr> records(static_cast<size_t>(sg_set_size(s)));
  for (size_t i = 0; i < records.size(); i++)
    records[i].reset(sg_set_get(s, static_cast<int>(i)));
  sg_set_clear(s);
  return records;
}

void sg_filter_candidates_by_support(sg_set *cand, const sg_set *prev,
                                     const ksstack *transactions, int minsup) {
  const int old = sg_set_size(cand);
  for (sg_ptr &sg : take_records(cand)) {
    sg_intersect_parent_tids(sg.get(), prev, transactions);
    if (sg_support(sg.get()) >= minsup)
      sg_set_insert(cand, std::move(sg));
    else
      sg.reset();
  }
  assert(old >= sg_set_size(cand));
}

namespace {

// Walks one parent's transactions in step with the candidate's.
struct parent_cursor {
  const subgraph *parent;
  edge_placement placement;
  int at = 0; // position in the parent's tid

  // The index of the parent's row for transaction tid, which its list holds.
  int row_index(int tid) {
    const int *tids = ksstack_array<int>(parent->tid);
    while (at < parent->tid->count && tids[at] < tid)
      at++;
    assert(at < parent->tid->count && tids[at] == tid);
    return at;
  }
};

// Looks for one candidate in transaction after transaction.
class occurrence_finder {
public:
  occurrence_finder(const subgraph *sg, const sg_set *prev,
                    const graph_profiles &profiles)
      : sg_(sg), profiles_(profiles), image_(static_cast<size_t>(sg->g->vs)) {
    for (int i = 0; i < sg_parent_size(sg); i++) {
      const sg_parent *entry = sg_parent_at(sg, i);
      const subgraph *parent = sg_set_get(prev, entry->pid);
      if (parent->rows)
        cursors_.push_back({parent, edge_placement(sg, entry)});
    }
  }

  // Whether the candidate occurs in transaction t; where, is written to row
  // unless that is null.
  template <class Image> bool find(const graph *t, int tid, Image *row) {
    for (parent_cursor &cursor : cursors_) {
      const int i = cursor.row_index(tid);
      if (cursor.placement.extend(sg_row<Image>(cursor.parent, i), t, row))
        return true;
    }
    if (!plan_)
      plan_ = search_plan::rarest_first(sg_->g, profiles_);
    if (!plan_->find(t, profiles_.of(tid), image_.data()))
      return false;
    std::copy(image_.begin(), image_.end(), row);
    return true;
  }

private:
  const subgraph *sg_;
  const graph_profiles &profiles_;
  std::optional<search_plan> plan_; // made when first needed
  xvector<parent_cursor> cursors_;
  xvector<int> image_;
};

} // namespace

// Turns sg's bound into its exact tid; rows go to sg's stack for them, if any.
template <class Image>
static int count_support(subgraph *sg, const sg_set *prev,
                         const ksstack *transactions,
                         const graph_profiles &profiles) {
  occurrence_finder finder(sg, prev, profiles);
  xvector<Image> row(static_cast<size_t>(sg->g->vs));
  int matches = 0;
  int *tids = ksstack_array<int>(sg->tid);
  for (int i = 0; i < sg_tid_size(sg); i++) {
    const int tid = tids[i];
    const graph *t = graph_list_at(transactions, tid);
    if (sg->g->es > t->es || sg->g->vs > t->vs ||
        !finder.find(t, tid, row.data()))
      continue;
    tids[matches++] = tid;
    if (sg->rows)
      ksstack_push(row.data(), sg->rows);
  }
  sg->tid->count = matches;
  return matches;
}

support_counter::support_counter(const ksstack *transactions)
    : transactions_(transactions), profiles_(transactions),
      budget_(transactions) {}

int support_counter::count(subgraph *sg, const sg_set *prev) {
  return budget_.image_bytes() == 1
             ? count_support<uint8_t>(sg, prev, transactions_, profiles_)
             : count_support<uint16_t>(sg, prev, transactions_, profiles_);
}

int sg_count_support(subgraph *sg, const sg_set *prev,
                     const ksstack *transactions) {
  return support_counter(transactions).count(sg, prev);
}

// Frees what only the next size needs.
static void free_rows_and_links(sg_set *level) {
  for (int i = 0; i < sg_set_size(level); i++) {
    subgraph *sg = sg_set_get(level, i);
    ksstack_free(std::exchange(sg->rows, nullptr));
    sg_free_links(sg);
  }
}

sg_set *support_counter::count_frequents(sg_set *cand, sg_set *prev,
                                         int minsup) {
  sg_set_ptr consumed(cand);
  const int k = sg_set_get(prev, 0)->g->es / 2 + 1;
  sg_set_ptr level(sg_set_create());
  embedding_budget budget = budget_;
  for (int i = 0; i < sg_set_size(prev); i++) {
    budget.add_pattern();
    budget.charge(sg_set_get(prev, i));
  }
  for (sg_ptr &sg : take_records(cand)) {
    budget.add_pattern();
    sg->rows = budget.take_rows(sg.get(), sg_tid_size(sg.get()));
    const int support = count(sg.get(), prev);
    if (support < minsup) {
      budget.give_back(sg.get());
      budget.remove_pattern();
      sg.reset();
      continue;
    }
    sg->count = support;
    sg_set_push(level.get(), std::move(sg));
  }
  free_rows_and_links(prev);
  sg_set_sort(level.get());
  KESTRO_STRUCTURE(sg_set_check(level.get()));
  sg_register_children(level.get(), prev);
  stats_set(stats_frequent, k, sg_set_size(level.get()));
  return level.release();
}

sg_set *sg_count_frequents(sg_set *cand, sg_set *prev,
                           const ksstack *transactions, int minsup) {
  return support_counter(transactions).count_frequents(cand, prev, minsup);
}

} // namespace kestro
