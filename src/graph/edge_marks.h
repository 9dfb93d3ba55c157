// Taking one edge out of a graph in place, and putting it back: how mining
// forms the sub-graphs that lack one edge.
#pragma once

#include "graph/graph.h"

namespace kestro {

// Disables the edge u-w, and an end left with no other enabled edge, without
// asking whether the rest is connected.  u-w must be an edge of a graph in
// which neither is marked.
void graph_mark_edge_between(graph *g, int u, int w);
// Undoes that.
void graph_enable_edge_between(graph *g, int u, int w);

} // namespace kestro
