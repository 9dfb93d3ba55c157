// Choosing the canonical order where refinement leaves vertices alike.
#pragma once

#include "cl/colouring.h"
#include "cl/label_cells.h"

namespace kestro {

// Puts the vertices of every cell of c into the best arrangement there is.
void search_greatest(colouring *c, const graph *g, const label_cells &cells,
                     interruption_poll *poll);

// The same, except that vertices without edges have some cells left as they
// came.  Returns false when relabelled copies of g may end with other arrays.
bool search_exhaustively(colouring *c, const graph *g, const label_cells &cells,
                         interruption_poll *poll);

// Puts the vertices into the arrangement at which the individualising search
// ends: it sets the vertices of the first open cell apart one after another,
// cuts a branch whose prefix is below that of the arrangement taken last, at
// first the incoming one, and takes every leaf it reaches.  Returns whether
// every relabelled copy of g would end with the same arrays.  The steps that
// were carried out are added to *calls.
bool search_by_stabilizer(colouring *c, const graph *g,
                          const label_cells &cells, refinement_work *work,
                          uint64_t *calls);

} // namespace kestro
