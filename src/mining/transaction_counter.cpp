// The level loop's counter over transactions in memory.

#include "mining/transaction_counter.h"

#include "mining/first_levels.h"

namespace kestro {

sg_set_ptr transaction_counter::edges() {
  return sg_set_ptr(sg_frequent_edges(transactions_, minsup_, edge_labels_,
                                      vertex_labels_, stop_));
}

sg_set_ptr transaction_counter::double_edges(const sg_set *edges) {
  return sg_set_ptr(sg_frequent_double_edges(
      edges, transactions_, minsup_, edge_labels_, vertex_labels_, stop_));
}

void transaction_counter::bound(sg_set *cand, const sg_set *prev,
                                work_watcher *watcher) {
  sg_filter_candidates_by_support(cand, prev, transactions_, minsup_, jobs_,
                                  stop_, watcher);
}

void transaction_counter::count(sg_set *cand, const sg_set *prev,
                                work_watcher *watcher) {
  if (!counter_)
    counter_.emplace(transactions_, jobs_, stop_);
  counter_->count_all(cand, prev, minsup_, watcher);
}

} // namespace kestro
