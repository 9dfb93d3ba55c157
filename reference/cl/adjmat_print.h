// Showing an adjmat to a developer.
#pragma once

#include <cstdio>

#include "reference/cl/adjmat.h"

namespace kestro {

// Columns that hold every number of m: the digits of the largest magnitude,
// plus 1 if any number is negative.
int cl_print_width(const adjmat *m);

// Debug print: perm and part, then a table of the vertices and the cells in the
// order of the positions, each line ending in the vertex's neighbours as
// label->part(position).
void cl_print_adjmat(const adjmat *m, FILE *out);

// Debug print of a graph: its key, then the adjmat that it fills.
void cl_print_graph(const graph *g, FILE *out);

} // namespace kestro
