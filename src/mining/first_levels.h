// The first two levels of the search, counted directly over all transactions.
#pragma once

#include "graph/graph_list.h"
#include "mining/sg_set.h"

namespace kestro {

// The frequent one-edge patterns: a new sorted set whose records carry graph,
// count and TID list.  nel and nvl are the numbers of edge and vertex labels;
// minsup is at least 1.  Throws interrupted when stop, which may be null, says
// so.
sg_set *sg_frequent_edges(const graph_list *transactions, int minsup, int nel,
                          int nvl, const interruption *stop = nullptr);

// The frequent two-edge patterns, with their parents in level1 too.
sg_set *sg_frequent_double_edges(const sg_set *level1,
                                 const graph_list *transactions, int minsup,
                                 int nel, int nvl,
                                 const interruption *stop = nullptr);

// New records, without counts: the edge la-lb (in either order) labelled e; the
// path va-vc-vb whose edges are labelled ea at va and eb at vb.
subgraph *sg_create_edge(int la, int lb, int e);
subgraph *sg_create_double_edge(int ea, int eb, int va, int vb, int vc);

// Writes the path above into the graph of a three-vertex record, in canonical
// form, with its key: vertex 0 is the centre, the smaller end comes first.
void sg_set_double_edge_graph(int ea, int eb, int va, int vb, int vc,
                              subgraph *sg);

// Offers a two-edge record its one or two parents in level1, and adds their ids
// to its pid set.
void setup_double_edge_subgraph_parent_info(subgraph *sg, const sg_set *level1);

} // namespace kestro
