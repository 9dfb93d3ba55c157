// Taking one edge out of a graph in place where the rest stays connected.
#pragma once

#include "graph/edge_marks.h"

namespace kestro {

// Disables the edge u-w, and an end left with no other enabled edge, if the
// rest stays connected: returns 1.  Returns 0, with every mark as before, when
// it is the only enabled edge or its removal splits the graph.
// u-w must be an edge of a graph in which neither is marked.
int graph_disable_edge_between(graph *g, int u, int w);
// Disables the edge of slot x and stores its ends in *u and *w; 0 as above or
// when x is no slot of g.
int graph_disable_edge(graph *g, int x, int *u, int *w);

} // namespace kestro
