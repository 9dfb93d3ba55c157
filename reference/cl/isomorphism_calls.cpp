// What the isomorphism calls of a thread share.

#include "reference/cl/isomorphism_calls.h"

#include "reference/cl/next_isomorphism.h"

namespace kestro {

static thread_local isomorphism_arrays shared;
static thread_local uint64_t calls = 0;

int **graph_label_matrix(int n) { return shared.label_matrix(n); }

void graph_free_label_matrix() { shared = isomorphism_arrays(); }

uint64_t graph_isomorphism_calls() { return calls; }

// A call is counted even if it dies.
static isomorphism_arrays *counted_arrays() {
  calls++;
  return &shared;
}

shared_call::shared_call(const graph *g1, const graph *g2, int *map, int *order)
    : isomorphism_call(counted_arrays(), g1, g2, map, order) {}

int graph_next_isomorphism(const graph *g1, const graph *g2, const int *order,
                           int *map) {
  return graph_next_isomorphism(counted_arrays(), g1, g2, order, map);
}

} // namespace kestro
