// Refinement of small graphs.
#pragma once

#include "cl/colouring.h"

namespace kestro {

// Whether the functions below serve for g: it has few enough vertices, and its
// labels are small.
bool can_refine_small(const graph *g);

// Refines the partition of all vertices of g into one cell, as whole passes do.
void refine_small(colouring *c, const graph *g, refinement_work *work);

// Refines c, from which nothing could be told apart before v was set apart from
// its cell.
void refine_small_from(colouring *c, const graph *g, int v,
                       refinement_work *work);

} // namespace kestro
