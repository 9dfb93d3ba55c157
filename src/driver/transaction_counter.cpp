// The level loop's counter: the two steps of support counting.

#include "driver/transaction_counter.h"

namespace kestro {

void transaction_counter::filter(sg_set *cand, const sg_set *prev) {
  sg_filter_candidates_by_support(cand, prev, transactions_, minsup_, jobs_);
}

sg_set *transaction_counter::count(sg_set *cand, sg_set *prev) {
  return counter_.count_frequents(cand, prev, minsup_);
}

} // namespace kestro
