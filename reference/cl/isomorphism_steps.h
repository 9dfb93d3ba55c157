// The steps of backtracking searches that map a pattern g1 vertex by vertex
// into a graph g2 such that labels and edges agree.  A mapping need not be
// induced: g2 may have more edges between the images.
//
// Disabled slots of g1 are passed over; g2 must be without marks.
#pragma once

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
};

// Where a search starts.
struct isomorphism_start {
  int depth;  // vertices fixed in advance
  int vertex; // the lowest vertex that is free, -1 if none is
};

// Sets the counts and used to the fixed vertices, whose map entries must be
// given, clears the rest of map, and writes g2's edges into the label matrix.
isomorphism_start setup_isomorphism_work_area(const isomorphism_work *work);

// Whether u, of that active degree, may be mapped to w.
bool isomorphism_candidate(const isomorphism_work *work, int u, int degree,
                           int w, int depth);
// Maps u to w, or unmaps it, and updates the neighbours' counts.
void isomorphism_map_vertex(const isomorphism_work *work, int u, int w);
void isomorphism_unmap_vertex(const isomorphism_work *work, int u);

// 1 if every edge from u to a mapped vertex is one of w with the same label.
int graph_check_edges_by_matrix(const isomorphism_work *work, int u, int w);
} // namespace kestro
