// Support: which transactions contain a candidate.
#pragma once

#include "base/parallel.h"
#include "base/xmalloc.h"
#include "cl/graph_profiles.h"
#include "mining/embeddings.h"
#include "mining/sg_set.h"

namespace kestro {

// Appends to sg's tid the transactions common to all its parents in prev.
void sg_intersect_parent_tids(subgraph *sg, const sg_set *prev,
                              const ksstack *transactions);

// Gives every candidate that bound on its transactions and frees those whose
// bound is below minsup; the rest stays, sorted.  Works on jobs threads, with
// the same result for any number of them.  Throws interrupted, with cand empty,
// when stop, which may be null, says so.
void sg_filter_candidates_by_support(sg_set *cand, const sg_set *prev,
                                     const ksstack *transactions, int minsup,
                                     int jobs = 1,
                                     const interruption *stop = nullptr,
                                     work_watcher *watcher = nullptr);

// Counts candidates over transactions; what the searches need to know of these
// is worked out once.
class support_counter {
public:
  // Borrows transactions, a graph list; count_all works on jobs threads, with
  // the same result for any number of them.  Whatever takes long, this
  // included, throws interrupted when stop, which may be null, says so.
  support_counter(const ksstack *transactions, int jobs,
                  const interruption *stop = nullptr);

  // The exact support of sg, whose tid is a bound before and exact afterwards;
  // prev holds its parents.  Rows of embeddings are filled where sg has been
  // given an empty stack for them.  A support below minsup may come out even
  // lower, with as many of its transactions missing from tid.
  int count(subgraph *sg, const sg_set *prev, int minsup) const;

  // The same for every record of a sorted set; frees those below minsup, and
  // all of them when it throws.
  void count_all(sg_set *cand, const sg_set *prev, int minsup,
                 work_watcher *watcher = nullptr);

private:
  int jobs_;
  const interruption *stop_;
  graph_profiles profiles_;
  embedding_budget budget_; // with no rows taken
};

// The same for one call.
int sg_count_support(subgraph *sg, const sg_set *prev,
                     const ksstack *transactions);
// The frequent ones among the candidates: a sorted set of records with exact
// TID lists and counts, registered as children of their kept parents in prev.
// Consumes cand.
sg_set *sg_count_frequents(sg_set *cand, sg_set *prev,
                           const ksstack *transactions, int minsup);

} // namespace kestro
