// The matrix behind the comparison of arrangements: one row per vertex, so that
// a row of an arrangement is read from one row of the matrix.

#include "cl/label_cells.h"

namespace kestro {

void label_cells::fill(const graph *g) {
  for (const size_t cell : filled_)
    cells_[cell] = 0;
  filled_.clear();
  vs_ = g->vs;
  if (cells_.size() < index(vs_) * index(vs_))
    cells_.resize(index(vs_) * index(vs_), 0);
  for (int u = 0; u < g->vs; u++)
    for (int j = g->v[u]; j < g->v[u + 1]; j++) {
      filled_.push_back(index(u) * index(vs_) + index(g->e[j]));
      cells_[filled_.back()] = g->elabel[j] + 1;
    }
}

int label_cells::compare_rows(const int *a, const int *b, int from,
                              int to) const {
  for (int i = from; i < to; i++) {
    const int *row_a = row(a[i]);
    const int *row_b = row(b[i]);
    for (int j = 0; j < i; j++)
      if (const int d = row_a[a[j]] - row_b[b[j]])
        return d;
  }
  return 0;
}

bool label_cells::are_twins(int u, int w) const {
  const int *row_u = row(u);
  const int *row_w = row(w);
  for (int x = 0; x < vs_; x++)
    if (x != u && x != w && row_u[x] != row_w[x])
      return false;
  return true;
}

} // namespace kestro
