// A walk over a graph in breadth-first order.
#pragma once

#include "graph/graph.h"

namespace kestro {

// Fills order with the vertices in breadth-first order from vertex 0,
// neighbours in list order; returns how many that reaches, vs of them where g
// is connected.  Raw.  Panics with "something wrong" should more than vs
// vertices be queued.
int graph_bfs_order(const graph *g, int *order);

} // namespace kestro
