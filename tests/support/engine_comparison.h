// The canonical labelling of the product against the one carried out step by
// step.
#pragma once

#include <string>

#include "support/graph_families.h"

namespace kestro {

// What comparing graphs has come to.
struct comparison_counts {
  uint64_t compared = 0;
  uint64_t skipped = 0;     // the reference passed its limit of leaves
  uint64_t variant = 0;     // compared, and the form is not called invariant
  uint64_t other_order = 0; // equal arrays by another automorphism
};

// Seven thresholds that take turns with the seed.
int threshold_of_seed(uint64_t seed);

// The first difference between the engines for g under a threshold, or "".
// Equal are e, v, elabel, vlabel and key; vid may differ by an automorphism of
// g.  Where the form is called invariant, five shuffled copies must come to the
// same arrays.
std::string engine_difference(const graph *g, int threshold,
                              uint64_t leaf_limit, comparison_counts *counts);

// The same for the graph of a seed; a difference is shrunk and told in full.
std::string engine_difference_of(const drawn_graph &drawn, uint64_t seed,
                                 int threshold, uint64_t leaf_limit,
                                 comparison_counts *counts);

} // namespace kestro
