// The backtracking engine that maps a pattern g1 vertex by vertex into a graph
// g2 such that labels and edges agree.  A mapping need not be induced: g2 may
// have more edges between the images.
//
// Disabled slots of g1 are passed over; g2 must be without marks.
#pragma once

#include <cstdint>

#include "base/ksstack.h"
#include "graph/graph.h"

namespace kestro {

// One search: its graphs and the arrays it works on, all borrowed.
struct isomorphism_work {
  const graph *g1;    // the pattern
  const graph *g2;    // the graph it is looked for in
  int **label_matrix; // cell (w, y): label of g2's edge w-y, -1 for none
  int *mapped_nbrs1;  // g1->vs counts of slots that lead to mapped vertices
  int *mapped_nbrs2;  // g2->vs counts of slots that lead to used vertices
  int *used;          // g2->vs: 1 for images of mapped vertices
  int *active;        // g1->vs: 1 for vertices fixed in advance
  int *map;           // g1->vs: the image of each vertex, or -1
  int *order;         // g1->vs: the vertex matched at each depth, or -1
  int *twins;         // g1->vs: for a free leaf, the first of its twins
  int *last_twin;     // g1->vs: by first twin, the largest image so far, or -1
};

// Where a search starts.
struct isomorphism_start {
  int depth;  // vertices fixed in advance
  int vertex; // the lowest vertex that is free, -1 if none is
};

// Sets the counts and used to the fixed vertices, whose map entries must be
// given, clears the rest of map, and writes g2's edges into the label matrix.
isomorphism_start setup_isomorphism_work_area(const isomorphism_work *work);

// Maps u at this depth and all further vertices, each time going on with the
// first unmapped neighbour of the lowest mapped vertex that has one: 1 with the
// mapping in map and the order chosen in order, or 0.  g1 must be connected,
// but for what is fixed.
int isomorphism_and_order(const isomorphism_work *work, int u, int depth);

// The same along the given order, in which the fixed vertices come first; fixed
// vertices at depth and behind it are passed by.
int isomorphism_by_order(const isomorphism_work *work, int depth);

// Pushes every mapping that extends the fixed part, g1->vs ints each, in
// lexicographic order along the given order.  Ends with the free part of map
// cleared.
void all_isomorphisms(const isomorphism_work *work, int depth, ksstack *maps);

// The steps the searches are made of.

// Whether u, of that active degree, may be mapped to w.
bool isomorphism_candidate(const isomorphism_work *work, int u, int degree,
                           int w, int depth);
// Maps u to w, or unmaps it, and tells the neighbours' counts.
void isomorphism_map_vertex(const isomorphism_work *work, int u, int w);
void isomorphism_unmap_vertex(const isomorphism_work *work, int u);

// 1 if every edge from u to a mapped vertex is one of w with the same label.
int graph_check_edges_by_matrix(const isomorphism_work *work, int u, int w);
// The same from the neighbour lists; compares the ends' labels too.
int graph_check_edges_by_lists(const graph *g1, const graph *g2, const int *map,
                               int u, int w);

// Calls on this thread so far.
struct isomorphism_counters {
  uint64_t searches = 0;    // steps of the searches
  uint64_t edge_checks = 0; // edge checks of either form
};
isomorphism_counters graph_isomorphism_counters();

} // namespace kestro
