// The isomorphism searches by plain calls: one label matrix and one set of work
// arrays serve all calls of a thread.
#pragma once

#include <cstdint>

#include "reference/cl/isomorphism_work.h"

namespace kestro {

// The label matrix: rows of at least n cells, all -1 between calls.
int **graph_label_matrix(int n);
// Frees the label matrix and the work arrays of this thread.
void graph_free_label_matrix();
// Calls on this thread so far.
uint64_t graph_isomorphism_calls();

// One of these calls.  They cannot be nested.
class shared_call : public isomorphism_call {
public:
  shared_call(const graph *g1, const graph *g2, int *map = nullptr,
              int *order = nullptr);
};

// The next mapping, with the arrays of this thread (cl/next_isomorphism.h).
int graph_next_isomorphism(const graph *g1, const graph *g2, const int *order,
                           int *map);

} // namespace kestro
