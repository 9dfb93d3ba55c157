// A canonical order that is one for every graph.
#pragma once

#include "cl/colouring.h"
#include "cl/label_cells.h"

namespace kestro {

// Puts the vertices of c, as colouring_init leaves it, into an order of which
// the arrays of g depend on g alone, not on the order its vertices came in:
// - where every cell is smaller than threshold, the best arrangement;
// - else the best leaf of the individualisation tree, in which the vertices of
//   the first open cell are set apart.
// The arrays are those of search_exhaustively and search_by_stabilizer wherever
// these return true.
void search_exactly(colouring *c, const graph *g, const label_cells &cells,
                    int threshold, refinement_work *work);

} // namespace kestro
