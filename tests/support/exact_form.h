// A graph in the order that search_exactly gives it, for tests.
#pragma once

#include "cl/exact_search.h"
#include "support/graphs.h"

namespace kestro {

// g with its vertices in exact order under a threshold; vid[i] is the number in
// g of vertex i.
inline graph_ptr exact_form(const graph *g, int threshold) {
  colouring c;
  refinement_work work;
  colouring_init(&c, g, &work);
  label_cells cells;
  cells.fill(g);
  search_exactly(&c, g, cells, threshold, &work);
  std::vector<int> perm(static_cast<size_t>(g->vs), -1);
  for (int i = 0; i < g->vs; i++)
    perm[static_cast<size_t>(c.order[static_cast<size_t>(i)])] = i;
  return relabelled(g, perm);
}

} // namespace kestro
