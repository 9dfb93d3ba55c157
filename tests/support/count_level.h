// Counting one level as the product does.
#pragma once

#include "mining/support.h"
#include "reference/mining/subgraph.h"

namespace kestro {

// The frequent ones among the candidates, counted and registered as children of
// their kept parents in prev.  Consumes cand.
inline sg_set *count_level(sg_set *cand, sg_set *prev,
                           const graph_list *transactions, int minsup) {
  sg_set_ptr level(cand);
  support_counter(transactions, 1).count_all(cand, prev, minsup);
  sg_register_children(cand, prev);
  return level.release();
}

} // namespace kestro
