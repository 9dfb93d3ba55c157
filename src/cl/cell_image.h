// Whether one colouring looks like an image of another, and by which
// permutation it may be one.
#pragma once

#include "cl/colouring.h"

namespace kestro {

// Whether the cells of both end at the same positions.
bool have_equal_cells(const colouring &a, const colouring &b);

// Writes to image, which has an entry per vertex, the permutation that takes
// every cell of a to the cell of b at the same positions, where the vertices of
// both cells stay and the others go in their order.  Both have equal
// cells.  Where a and b are images of one another the permutation
// often is an automorphism, long before they are discrete.
void match_cells(const colouring &a, const colouring &b, xvector<int> *image);

} // namespace kestro
