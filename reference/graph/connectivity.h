// Connectedness and connected components.
#pragma once

#include "graph/graph.h"

namespace kestro {

// 1 if all enabled vertices are reachable from the first of them through
// enabled slots, else 0.  There must be an enabled vertex.
int graph_is_connected(const graph *g);

// The number of components; comp[i] is the component of vertex i.  Components
// are numbered in the order of their smallest vertices.  For graphs without
// marks, with at least one vertex.
int graph_connected_components(const graph *g, int *comp);

} // namespace kestro
