// Support: which transactions contain a candidate.
#pragma once

#include "base/parallel.h"
#include "base/xmalloc.h"
#include "cl/graph_profiles.h"
#include "mining/embeddings.h"
#include "mining/sg_set.h"

namespace kestro {

// Gives every candidate, for a bound on its transactions, those common to all
// its parents in prev, and frees candidates whose bound is below minsup; the
// rest stays, sorted.  Works on jobs threads, with the same result for any
// number of them.  Throws interrupted, with cand empty, when stop, which may be
// null, says so.
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

  // Counts every record of a sorted set, whose tid is a bound before and exact
  // afterwards, and frees those below minsup, all of them when it throws; prev
  // holds their parents.  Rows of embeddings are given to those for which there
  // is room.
  void count_all(sg_set *cand, const sg_set *prev, int minsup,
                 work_watcher *watcher = nullptr);

private:
  int jobs_;
  const interruption *stop_;
  graph_profiles profiles_;
  embedding_budget budget_; // with no rows taken
};

} // namespace kestro
