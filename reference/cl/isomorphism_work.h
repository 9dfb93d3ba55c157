// What every isomorphism call starts and ends with: the label matrix and the
// work arrays.
#pragma once

#include "base/xmalloc.h"
#include "reference/cl/isomorphism_steps.h"

namespace kestro {

// The label matrix and the work arrays, which only grow.  Serves one call at a
// time.
class isomorphism_arrays {
public:
  // The label matrix: rows of at least n cells, all -1 between calls.  A larger
  // n than ever before frees it and allocates anew.
  int **label_matrix(int n);

private:
  friend class isomorphism_call;
  void grow_matrix(int n);

  xptr<int *> matrix_; // capacity rows, followed by their cells
  int capacity_ = 0;   // vertices the matrix was built for
  xvector<int> ints1_; // four arrays by g1 vertex
  xvector<int> ints2_; // two arrays by g2 vertex
};

// The work of one call, from the size check to the cleared label matrix.
class isomorphism_call {
public:
  // Dies with "g1 must be smaller than g2" when g1 has more enabled vertices
  // than g2 has vertices.  Searches write map and order, which may be null for
  // arrays among those borrowed.  No vertex is active.
  isomorphism_call(isomorphism_arrays *arrays, const graph *g1, const graph *g2,
                   int *map = nullptr, int *order = nullptr);
  // Sets g2's cells of the label matrix back to -1, however the call ends.
  ~isomorphism_call();
  isomorphism_call(const isomorphism_call &) = delete;
  isomorphism_call &operator=(const isomorphism_call &) = delete;

  isomorphism_work work;
};

} // namespace kestro
