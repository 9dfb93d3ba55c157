// Joining two patterns that share a core into a candidate with one edge more:
// the plain way, which the tests compare graph/extend.h with.
#pragma once

#include "graph/graph.h"

namespace kestro {

// Every function here takes
//   g1      the graph of one pattern, with its extra edge u-w disabled in place
//   g2      the graph of the other one, without marks
//   map     for each vertex of g1 the vertex of g2 that the core sends it to,
//           -1 for the one vertex, at most, that lies outside the core
//   result  a graph laid out with room for g2->es + 2 slots and g2->vs + 1
//           vertices; its es and vs are set and it is filled.
// and builds g2 plus the extra edge of g1, with that edge's label.  g2's
// vertices keep their indices; a new vertex comes last, with its index as vid.
// The result is 1, or 0 when this join gives no candidate.

// The extra edge brings a vertex of its own, or joins two core vertices.  Dies
// with "something wrong" when es differ or the vertex outside is neither end.
int graph_merge(const graph *g1, const graph *g2, int u, int w, const int *map,
                graph *result);

// The digit in the two names is the number of ends of the extra edge that lie
// in the core.

// A new vertex for g1's vertex x outside the core, joined to the image of y.
void merge_graphs1(const graph *g1, const graph *g2, const int *map, int x,
                   int y, graph *result);

// A new edge between the images of u and w; 0 if g2 has it already.
int merge_graphs2(const graph *g1, const graph *g2, const int *map, int u,
                  int w, graph *result);

// The vertex of g1 outside the core is taken to be the one of g2 outside it, so
// the extra edge closes a cycle; 0 when there is no such pair of vertices,
// their labels differ, or g2 has the edge already.  Dies with "size mismatch"
// when es differ.
int graph_merge_with_loop(const graph *g1, const graph *g2, int u, int w,
                          const int *map, graph *result);

// For each slot of g1, in order, the slot of g2 that map sends it to; all must
// exist.  slots has room for g1->es entries.
void graph_get_mapped_edges(const graph *g1, const graph *g2, const int *map,
                            int *slots);

} // namespace kestro
