// A graph and one edge more.
#pragma once

#include "graph/graph.h"

namespace kestro {

// Fills result, which is laid out with room for g->es + 2 slots and g->vs + 1
// vertices, with g plus an edge between its vertices from and to, which has
// none yet; g's vertices keep their numbers.  Costs one pass over g.
void graph_extend_between(const graph *g, int from, int to, int elabel,
                          graph *result);

// The same with an edge from a vertex of g to a new one, which comes last, with
// its number as vid.
void graph_extend_to_new(const graph *g, int from, int elabel, int vlabel,
                         graph *result);

} // namespace kestro
