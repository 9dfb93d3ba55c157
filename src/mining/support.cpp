// Support counting in two steps: a bound by TID lists, then exact tests.
//
// A transaction that contains a pattern contains all its parents, so the
// intersection of their TID lists bounds its support at the cost of one pass
// over the lists.  Only the transactions of the bound are searched for an
// embedding; the first success fixes the order in which later searches match
// the pattern's vertices.

#include "mining/support.h"

#include "base/error.h"
#include "base/xmalloc.h"
#include "cl/subgraph_isomorphism.h"
#include "graph/graph_list.h"
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

int sg_count_support(subgraph *sg, const ksstack *transactions) {
  const size_t vs = static_cast<size_t>(sg->g->vs);
  xvector<int> map(vs);
  xvector<int> order(vs);
  ksstack_ptr tids(ksstack_new(1, static_cast<int>(sizeof(int))));
  int matches = 0;
  for (int i = 0; i < sg_tid_size(sg); i++) {
    const int tid = sg_tid_at(sg, i);
    const graph *t = graph_list_at(transactions, tid);
    if (sg->g->es > t->es || sg->g->vs > t->vs)
      continue;
    const int found = matches == 0 ? graph_find_isomorphism_and_order(
                                         sg->g, t, map.data(), order.data())
                                   : graph_find_isomorphism_by_order(
                                         sg->g, t, map.data(), order.data());
    if (!found)
      continue;
    matches++;
    ksstack_push(&tid, tids.get());
  }
  ksstack_free(sg->tid);
  sg->tid = tids.release();
  return matches;
}

static void register_children(const sg_set *level, sg_set *prev) {
  for (int j = 0; j < sg_set_size(level); j++) {
    const subgraph *sg = sg_set_get(level, j);
    for (int i = 0; i < sg_parent_size(sg); i++)
      sg_add_child(sg_set_get(prev, sg_parent_at(sg, i)->pid), j);
  }
}

sg_set *sg_count_frequents(sg_set *cand, sg_set *prev,
                           const ksstack *transactions, int minsup) {
  sg_set_ptr consumed(cand);
  const int k = sg_set_get(prev, 0)->g->es / 2 + 1;
  sg_set_ptr level(sg_set_create());
  for (sg_ptr &sg : take_records(cand)) {
    const int support = sg_count_support(sg.get(), transactions);
    if (support < minsup) {
      sg.reset();
      continue;
    }
    sg->count = support;
    sg_set_push(level.get(), std::move(sg));
  }
  sg_set_sort(level.get());
  KESTRO_STRUCTURE(sg_set_check(level.get()));
  register_children(level.get(), prev);
  stats_set(stats_frequent, k, sg_set_size(level.get()));
  return level.release();
}

} // namespace kestro
