// Support: which transactions contain a candidate.
#pragma once

#include "base/xmalloc.h"
#include "cl/graph_profiles.h"
#include "mining/embeddings.h"
#include "mining/sg_set.h"

namespace kestro {

// Gives every candidate, for a bound on its transactions, those common to all
// its parents in prev, and frees candidates whose bound is below minsup; the
// rest stays, sorted.  Works on jobs threads, with the same result for any
// number of them.
void sg_filter_candidates_by_support(sg_set *cand, const sg_set *prev,
                                     const ksstack *transactions, int minsup,
                                     int jobs = 1);

// Counts candidates over transactions; what the searches need to know of these
// is worked out once.
class support_counter {
public:
  // Borrows transactions, a graph list; count_all works on jobs threads, with
  // the same result for any number of them.
  support_counter(const ksstack *transactions, int jobs);

  // Counts every record of a sorted set, whose tid is a bound before and exact
  // afterwards, and frees those below minsup; prev holds their parents.  Rows
  // of embeddings are given to those for which there is room.
  void count_all(sg_set *cand, const sg_set *prev, int minsup);

private:
  int jobs_;
  graph_profiles profiles_;
  embedding_budget budget_; // with no rows taken
};

} // namespace kestro
