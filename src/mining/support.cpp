// Support counting in two steps: a bound by TID lists, then exact tests.
//
// A transaction that contains a pattern contains all its parents, so the
// intersection of their TID lists bounds its support at the cost of one pass
// over the lists.  In each transaction of the bound the candidate's one edge
// more is tried where a kept parent was found; a search, compiled once per
// candidate, follows only where that fails.

#include "mining/support.h"

#include <algorithm>
#include <utility>

#include "base/error.h"
#include "base/xmalloc.h"
#include "cl/search_plan.h"
#include "graph/graph_list.h"
#include "mining/embeddings.h"
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

// Walks one kept parent's transactions in step with the candidate's.
struct parent_cursor {
  const sg_parent *entry;
  const subgraph *parent;
  int at = 0; // position in the parent's tid

  // The parent's row for transaction tid, which its list must hold; null when
  // it has none.
  const row_vertex *row(int tid) {
    if (!parent->rows)
      return nullptr;
    const int *tids = ksstack_array<int>(parent->tid);
    while (at < parent->tid->count && tids[at] < tid)
      at++;
    assert(at < parent->tid->count && tids[at] == tid);
    return sg_row(parent, at);
  }
};

// Looks for one candidate in transaction after transaction.
class occurrence_finder {
public:
  occurrence_finder(const subgraph *sg, const sg_set *prev,
                    const xvector<int> &label_counts)
      : sg_(sg), plan_(search_plan::rarest_first(sg->g, label_counts)),
        map_(static_cast<size_t>(sg->g->vs)),
        row_(static_cast<size_t>(sg->g->vs)) {
    for (int i = 0; i < sg_parent_size(sg); i++) {
      const sg_parent *entry = sg_parent_at(sg, i);
      cursors_.push_back({entry, sg_set_get(prev, entry->pid)});
    }
  }

  // Whether the candidate occurs in transaction t; where, is told by row().
  bool find(const graph *t, int tid) {
    for (parent_cursor &cursor : cursors_) {
      const row_vertex *parent_row = cursor.row(tid);
      if (parent_row &&
          extend_row(sg_, cursor.entry, parent_row, t, row_.data()))
        return true;
    }
    if (!plan_.find(t, map_.data()))
      return false;
    std::copy(map_.begin(), map_.end(), row_.begin());
    return true;
  }
  const row_vertex *row() const { return row_.data(); }

private:
  const subgraph *sg_;
  search_plan plan_;
  xvector<parent_cursor> cursors_;
  xvector<int> map_;
  xvector<row_vertex> row_;
};

} // namespace

static xvector<int> count_vertex_labels(const ksstack *transactions) {
  xvector<int> counts;
  for (int i = 0; i < transactions->count; i++) {
    const graph *t = graph_list_at(transactions, i);
    for (int u = 0; u < t->vs; u++) {
      const size_t label = static_cast<size_t>(t->vlabel[u]);
      if (label >= counts.size())
        counts.resize(label + 1, 0);
      counts[label]++;
    }
  }
  return counts;
}

static int count_support(subgraph *sg, const sg_set *prev,
                         const ksstack *transactions,
                         const xvector<int> &label_counts) {
  occurrence_finder finder(sg, prev, label_counts);
  int matches = 0;
  int *tids = ksstack_array<int>(sg->tid);
  for (int i = 0; i < sg_tid_size(sg); i++) {
    const int tid = tids[i];
    const graph *t = graph_list_at(transactions, tid);
    if (sg->g->es > t->es || sg->g->vs > t->vs || !finder.find(t, tid))
      continue;
    tids[matches++] = tid;
    if (sg->rows)
      ksstack_push(finder.row(), sg->rows);
  }
  sg->tid->count = matches;
  return matches;
}

int sg_count_support(subgraph *sg, const sg_set *prev,
                     const ksstack *transactions) {
  return count_support(sg, prev, transactions,
                       count_vertex_labels(transactions));
}

static void free_rows(sg_set *level) {
  for (int i = 0; i < sg_set_size(level); i++)
    ksstack_free(std::exchange(sg_set_get(level, i)->rows, nullptr));
}

sg_set *sg_count_frequents(sg_set *cand, sg_set *prev,
                           const ksstack *transactions, int minsup) {
  sg_set_ptr consumed(cand);
  const int k = sg_set_get(prev, 0)->g->es / 2 + 1;
  sg_set_ptr level(sg_set_create());
  embedding_budget budget(transactions);
  const xvector<int> label_counts = count_vertex_labels(transactions);
  for (int i = 0; i < sg_set_size(prev); i++)
    budget.charge(sg_set_get(prev, i));
  for (sg_ptr &sg : take_records(cand)) {
    sg->rows = budget.take_rows(sg.get(), sg_tid_size(sg.get()));
    const int support =
        count_support(sg.get(), prev, transactions, label_counts);
    if (support < minsup) {
      budget.give_back(sg.get());
      sg.reset();
      continue;
    }
    sg->count = support;
    sg_set_push(level.get(), std::move(sg));
  }
  free_rows(prev);
  sg_set_sort(level.get());
  KESTRO_STRUCTURE(sg_set_check(level.get()));
  sg_register_children(level.get(), prev);
  stats_set(stats_frequent, k, sg_set_size(level.get()));
  return level.release();
}

} // namespace kestro
