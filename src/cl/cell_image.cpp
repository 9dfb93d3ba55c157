// Two vertices that automorphisms exchange mostly take along few others, so the
// most likely image is the one that moves least.

#include "cl/cell_image.h"

namespace kestro {

static int end_of(const colouring &c, int first) {
  return c.cell_end[static_cast<size_t>(first)];
}

bool have_equal_cells(const colouring &a, const colouring &b) {
  if (a.cells != b.cells)
    return false;
  const int vs = static_cast<int>(a.order.size());
  for (int first = 0; first < vs; first = end_of(a, first))
    if (end_of(a, first) != end_of(b, first))
      return false;
  return true;
}

void match_cells(const colouring &a, const colouring &b, xvector<int> *image) {
  const int vs = static_cast<int>(a.order.size());
  const auto at = [](const xvector<int> &ints, int i) {
    return ints[static_cast<size_t>(i)];
  };
  for (int first = 0, end; first < vs; first = end) {
    end = end_of(a, first);
    int next = first; // in b's cell
    for (int i = first; i < end; i++) {
      const int u = at(a.order, i);
      if (at(b.colour, u) == first) {
        (*image)[static_cast<size_t>(u)] = u;
        continue;
      }
      while (at(a.colour, at(b.order, next)) == first)
        next++;
      (*image)[static_cast<size_t>(u)] = at(b.order, next++);
    }
  }
}

} // namespace kestro
