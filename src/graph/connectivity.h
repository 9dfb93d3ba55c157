// A walk over a graph in breadth-first order.
#pragma once

#include "graph/graph.h"

namespace kestro {

// Fills order[vs] with the vertices in breadth-first order from vertex 0,
// neighbours in list order.  Raw; g must be connected.  Panics with "something
// wrong" should more than vs vertices be queued.
void graph_bfs_order(const graph *g, int *order);

} // namespace kestro
