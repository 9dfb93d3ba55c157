// What an arrangement of a graph shows, as the searches compare it.
#pragma once

#include "support/graphs.h"

namespace kestro {

// The strict lower triangle, row by row, as an arrangement shows it.
inline std::vector<int> triangle(const graph *g,
                                 const std::vector<int> &order) {
  std::vector<int> cells;
  for (size_t i = 0; i < order.size(); i++)
    for (size_t j = 0; j < i; j++) {
      int cell = 0;
      for (int k = g->v[order[i]]; k < g->v[order[i] + 1]; k++)
        if (g->e[k] == order[j])
          cell = g->elabel[k] + 1;
      cells.push_back(cell);
    }
  return cells;
}

} // namespace kestro
