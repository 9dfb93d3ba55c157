// Colour refinement: splitting the parts of an adjmat by what sets their
// vertices apart.
#pragma once

#include "reference/cl/adjmat.h"

namespace kestro::stepwise {

// The two sort orders, as differences of the first unequal key.
// Edges: label, then the neighbour's part.
int compare_edges(const cl_edge *x, const cl_edge *y);
// Vertices: part, degree (higher first), label, then the neighbour lists entry
// by entry as edges.  The lists must be sorted.
int compare_vertices(const cl_vertex *a, const cl_vertex *b);

// Puts every neighbour list and then the vertices into order, and perm and
// iperm with them; to follow every change of the vertices' part fields.  Both
// sorts are stable: which of two equal vertices comes first is part of the
// canonical form.
void cl_sort_vertices(adjmat *m);

// Splits parts until the vertices of each part are equal in compare_vertices.
// Parts are numbered in that order; a split never merges or reorders them.
// Leaves m sorted; part fields, part and parts hold the result.
void cl_refine(adjmat *m);

} // namespace kestro::stepwise
