// Support, plainly: one candidate after another, each tested against every
// transaction of its bound.
#pragma once

#include "graph/graph_list.h"
#include "mining/sg_set.h"

namespace kestro {

// Appends to sg's tid the transactions common to all its parents in prev.  Dies
// when sg has no set of parents, or a parent names a transaction twice.
void sg_intersect_parent_tids(subgraph *sg, const sg_set *prev,
                              const graph_list *transactions);

// The exact support of sg, whose tid is a bound before and exact afterwards.
int sg_count_support(subgraph *sg, const sg_set *prev,
                     const graph_list *transactions);

// The frequent ones among the candidates: a sorted set of records with exact
// TID lists and counts, registered as children of their kept parents in prev.
// Consumes cand.
sg_set *sg_count_frequents(sg_set *cand, sg_set *prev,
                           const graph_list *transactions, int minsup);

} // namespace kestro
