// The label matrix and the work arrays of the isomorphism searches.
//
// A search reads an edge label of g2 in one step from a matrix that is all -1
// between calls: a call writes the cells of g2's edges and sets the same cells
// back, so neither costs a sweep of the matrix.  Nothing is allocated per call
// once the arrays have grown to the largest graph.

#include "reference/cl/isomorphism_work.h"

#include <algorithm>

#include "base/error.h"

namespace kestro {

void isomorphism_arrays::grow_matrix(int n) {
  matrix_.reset();
  capacity_ = 0;
  static constexpr int most = 1 << 28; // below it, no size exceeds a size_t
  if (n > most)
    die_out_of_memory();
  const size_t side = static_cast<size_t>(n);
  const size_t size = side * sizeof(int *) + side * side * sizeof(int);
  matrix_.reset(static_cast<int **>(xmalloc(size)));
  capacity_ = n;
  int **rows = matrix_.get();
  int *cells = reinterpret_cast<int *>(rows + side);
  std::fill_n(cells, side * side, -1);
  for (size_t w = 0; w < side; w++)
    rows[w] = cells + w * side;
}

int **isomorphism_arrays::label_matrix(int n) {
  if (n > capacity_)
    grow_matrix(n);
  return matrix_.get();
}

// The first of count arrays of n ints each.
static int *grown(xvector<int> *ints, int count, int n) {
  const size_t size = static_cast<size_t>(count) * static_cast<size_t>(n);
  if (ints->size() < size)
    ints->resize(size);
  return ints->data();
}

isomorphism_call::isomorphism_call(isomorphism_arrays *arrays, const graph *g1,
                                   const graph *g2, int *map, int *order) {
  if (graph_active_vertices(g1) > g2->vs)
    die("isomorphism.c", "g1 must be smaller than g2\n");
  int *const by_g1 = grown(&arrays->ints1_, 4, g1->vs);
  int *const by_g2 = grown(&arrays->ints2_, 2, g2->vs);
  const size_t vs1 = static_cast<size_t>(g1->vs);
  work.g1 = g1;
  work.g2 = g2;
  work.label_matrix = arrays->label_matrix(g2->vs);
  work.mapped_nbrs1 = by_g1;
  work.mapped_nbrs2 = by_g2;
  work.used = by_g2 + g2->vs;
  work.map = map ? map : by_g1 + vs1;
  work.order = order ? order : by_g1 + 2 * vs1;
  work.active = by_g1 + 3 * vs1;
  std::fill_n(work.active, g1->vs, 0);
}

isomorphism_call::~isomorphism_call() {
  const graph *g = work.g2;
  for (int w = 0; w < g->vs; w++)
    for (int j = g->v[w]; j < g->v[w + 1]; j++)
      work.label_matrix[w][g->e[j]] = -1;
}

} // namespace kestro
