// Refinement that looks only at what its last pass has changed.
#pragma once

#include "cl/colouring.h"

namespace kestro {

// Refines c until nothing tells the vertices of a cell apart, as whole passes
// over all open cells would, with the same cells in the same order.  changed
// lists vertices: those of new cells, of which the vertices outside have not
// been told yet.  Before these cells were split off, nothing told the vertices
// of a cell apart; of the cells that one has been split into, one may be left
// out of changed.  A pass costs the neighbours of what changed in the one
// before.  Takes changed's contents.
void refine_changes(colouring *c, const graph *g, xvector<int> *changed,
                    refinement_work *work);

} // namespace kestro
