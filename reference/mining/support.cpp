// Support by counting, for every transaction, the parents that occur in it, and
// by one isomorphism search per transaction of the bound.
//
// The first transaction that contains the pattern settles the order in which
// its vertices are matched in the rest.

#include "reference/mining/support.h"

#include <utility>

#include "base/error.h"
#include "base/xmalloc.h"
#include "graph/graph_list.h"
#include "mining/parents.h"
#include "reference/cl/subgraph_isomorphism.h"
#include "reference/mining/subgraph.h"

namespace kestro {

void sg_intersect_parent_tids(subgraph *sg, const sg_set *prev,
                              const graph_list *transactions) {
  if (sg->parents_room == 0)
    die("subgraph.c", "null pid\n");
  const int parents = sg_pid_size(sg);
  xvector<int> counts(static_cast<size_t>(transactions->count), 0);
  for (int i = 0; i < parents; i++) {
    const subgraph *parent = sg_set_get(prev, sg_pid_at(sg, i));
    for (int j = 0; j < sg_tid_size(parent); j++)
      counts[static_cast<size_t>(sg_tid_at(parent, j))]++;
  }
  for (int tid = 0; parents > 0 && tid < transactions->count; tid++) {
    const int count = counts[static_cast<size_t>(tid)];
    if (count > parents)
      die("subgraph.c", "something wrong\n");
    if (count == parents)
      sg_append_tid(sg, tid);
  }
}

int sg_count_support(subgraph *sg, const sg_set *,
                     const graph_list *transactions) {
  const graph *g = sg->g;
  xvector<int> map(static_cast<size_t>(g->vs));
  xvector<int> order(map.size());
  const ksstack_ptr bound(std::exchange(sg->tid, nullptr));
  sg->tid = ksstack_new(1, static_cast<int>(sizeof(int)));
  int matches = 0;
  for (int i = 0; bound && i < bound->count; i++) {
    const int tid = ksstack_get<int>(bound.get(), i);
    const graph *t = graph_list_at(transactions, tid);
    if (g->es > t->es || g->vs > t->vs)
      continue;
    const int found =
        matches == 0
            ? graph_find_isomorphism_and_order(g, t, map.data(), order.data())
            : graph_find_isomorphism_by_order(g, t, map.data(), order.data());
    if (!found)
      continue;
    matches++;
    sg_append_tid(sg, tid);
  }
  return matches;
}

sg_set *sg_count_frequents(sg_set *cand, sg_set *prev,
                           const graph_list *transactions, int minsup) {
  const sg_set_ptr candidates(cand);
  sg_set_ptr level(sg_set_create());
  level->blocks = std::move(cand->blocks);
  for (int i = 0; i < sg_set_size(cand); i++) {
    subgraph *&place = ksstack_array<subgraph *>(cand)[i];
    sg_ptr sg(std::exchange(place, nullptr));
    sg->count = sg_count_support(sg.get(), prev, transactions);
    if (sg->count >= minsup)
      sg_set_push(level.get(), std::move(sg));
  }
  sg_set_sort(level.get());
  sg_register_children(level.get(), prev);
  return level.release();
}

} // namespace kestro
