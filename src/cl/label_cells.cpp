// The matrix behind the comparison of arrangements: one row per vertex, so that
// a row of an arrangement is read from one row of the matrix.

#include "cl/label_cells.h"

namespace kestro {

void label_cells::fill(const graph *g) {
  for (const size_t cell : filled_)
    cells_[cell] = 0;
  filled_.clear();
  first_.clear();
  vs_ = g->vs;
  if (cells_.size() < index(vs_) * index(vs_))
    cells_.resize(index(vs_) * index(vs_), 0);
  for (int u = 0; u < g->vs; u++) {
    first_.push_back(filled_.size());
    for (int j = g->v[u]; j < g->v[u + 1]; j++) {
      filled_.push_back(index(u) * index(vs_) + index(g->e[j]));
      cells_[filled_.back()] = g->elabel[j] + 1;
    }
  }
  first_.push_back(filled_.size());
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
  const size_t first = first_[index(u)];
  const size_t end = first_[index(u) + 1];
  if (first_[index(w) + 1] - first_[index(w)] != end - first)
    return false;
  // With equally many neighbours, all of w's are among u's if u's are w's.
  const int *row_w = row(w);
  for (size_t i = first; i < end; i++) {
    const size_t x = filled_[i] - index(u) * index(vs_);
    if (x != index(w) && row_w[x] != cells_[filled_[i]])
      return false;
  }
  return true;
}

} // namespace kestro
