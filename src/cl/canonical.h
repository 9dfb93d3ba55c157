// Canonical labelling: one vertex order for all isomorphic graphs.
#pragma once

#include "graph/graph.h"

namespace kestro {

// The size, exclusive, of the largest cell up to which refined graphs are
// searched exhaustively; at or above it the individualising search runs.  Read
// at every call; 5 at first.  Belongs to the calling thread.
void cl_set_stabilizer_threshold(int n);
int cl_get_stabilizer_threshold();

// Reorders the vertices of g, which has no marks, in place into canonical
// order, vid along with them, sets its key and returns it.  Costs a few passes
// over the edges when refinement tells all vertices apart; else a search.
uint32_t cl_canonicalize_graph(graph *g);

// Whether the graph canonicalised last by this thread has one form whatever the
// order its vertices came in.  False for some graphs in which many vertices
// look alike: there the search can end differently.
bool cl_form_is_invariant();
// Whether refinement alone told all vertices of that graph apart, so that it
// has no automorphism but the identity.
bool cl_form_is_rigid();

// Frees what canonical labelling keeps for this thread.
void cl_free_work_area();

} // namespace kestro
