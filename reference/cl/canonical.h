// Canonical labelling step by step, every search carried out as it is defined:
// the reference that the product's engine is compared with.
#pragma once

#include <cstdint>

#include "reference/cl/adjmat.h"

namespace kestro::stepwise {

// The part size from which on the stabilizer search replaces the exhaustive
// one; 5 at first.  Held per thread.
void cl_set_stabilizer_threshold(int n);
int cl_get_stabilizer_threshold();

// Puts the vertices of g, a graph without marks, into canonical order in place,
// vid along with them: vid[i] is the vertex that came to position i.  Stores
// the new key in g and returns it.
uint32_t cl_canonicalize_graph(graph *g);

// The same for a filled adjmat, of which perm, iperm and the parts change.
void cl_canonicalize_adjmat(adjmat *m);

// Frees the adjmat that is kept from one graph to the next on this thread.
void cl_free_work_area();

} // namespace kestro::stepwise
