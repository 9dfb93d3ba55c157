// What every isomorphism call starts and ends with: the shared label matrix
// and the work arrays, kept per thread and only growing.
#pragma once

#include <cstdint>

#include "cl/isomorphism.h"

namespace kestro {

// The label matrix: rows of at least n cells, all -1 between calls.  A larger n
// than ever before frees it and allocates anew.
int **graph_label_matrix(int n);
// Frees the label matrix and the work arrays of this thread.
void graph_free_label_matrix();
// Isomorphism calls on this thread so far.
uint64_t graph_isomorphism_calls();

// The work of one call, from the size check to the cleared label matrix.  Calls
// cannot be nested: the arrays are shared.
class isomorphism_call {
public:
  // Dies with "g1 must be smaller than g2" when g1 has more enabled vertices
  // than g2 has vertices.  Searches write map and order, which may be null for
  // arrays of the call's own.  No vertex is active.
  isomorphism_call(const graph *g1, const graph *g2, int *map = nullptr,
                   int *order = nullptr);
  // Sets g2's cells of the label matrix back to -1, however the call ends.
  ~isomorphism_call();
  isomorphism_call(const isomorphism_call &) = delete;
  isomorphism_call &operator=(const isomorphism_call &) = delete;

  isomorphism_work work;
};

} // namespace kestro
