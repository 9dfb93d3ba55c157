// Support: which transactions contain a candidate.
#pragma once

#include "base/parallel.h"
#include "base/xmalloc.h"
#include "cl/graph_profiles.h"
#include "graph/graph_list.h"
#include "mining/edge_slots.h"
#include "mining/embeddings.h"
#include "mining/sg_set.h"

namespace kestro {

// Sets every candidate's tid to a bound, the transactions common to all its
// parents in prev, and frees candidates whose bound is below minsup; the rest
// stays, sorted.  Works on jobs threads, with the same result for any
// number of them.  Throws interrupted, with cand empty, when stop, which may be
// null, says so.
void sg_filter_candidates_by_support(sg_set *cand, const sg_set *prev,
                                     const graph_list *transactions, int minsup,
                                     int jobs = 1,
                                     const interruption *stop = nullptr,
                                     work_watcher *watcher = nullptr);

// Counts candidates over transactions.  What is read of these, their profiles
// and slots, is laid out once.
class support_counter {
public:
  // Borrows transactions; count_all works on jobs threads, with the same result
  // for any number of them.  Both throw interrupted when stop, which may be
  // null, says so.
  support_counter(const graph_list *transactions, int jobs,
                  const interruption *stop = nullptr);

  // Counts every record of a sorted set, whose tid is a bound before and exact
  // afterwards, and frees those below minsup, all of them when it throws; prev
  // holds their parents, whose rows and TID lists it frees on the way.  Records
  // get rows of embeddings as far as the budget lasts.
  void count_all(sg_set *cand, const sg_set *prev, int minsup,
                 work_watcher *watcher = nullptr);

private:
  int jobs_;
  const interruption *stop_;
  graph_profiles profiles_;
  edge_slots slots_;
  embedding_budget budget_; // with no rows taken
};

} // namespace kestro
