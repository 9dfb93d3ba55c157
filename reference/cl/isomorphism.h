// Isomorphism searches without shortcuts: for one mapping, choosing an order of
// g1's vertices or following one, and for all.
#pragma once

#include <cstdint>

#include "base/ksstack.h"
#include "reference/cl/isomorphism_steps.h"

namespace kestro {

// Maps u at this depth and all further vertices, each time going on with the
// first unmapped neighbour of the lowest mapped vertex that has one: 1 with the
// mapping in map and the order chosen in order, or 0.  g1 must be connected,
// but for what is fixed.
int isomorphism_and_order(const isomorphism_work *work, int u, int depth);

// The same along the given order, in which the fixed vertices come first; fixed
// vertices at depth and behind it are passed by.
int isomorphism_by_order(const isomorphism_work *work, int depth);

// Pushes every mapping that extends the fixed part, g1->vs ints each, in
// lexicographic order along the given order.  Ends with the free part of map
// cleared.
void all_isomorphisms(const isomorphism_work *work, int depth, ksstack *maps);

// The edge check from the neighbour lists, without a matrix; compares the ends'
// labels too.
int graph_check_edges_by_lists(const graph *g1, const graph *g2, const int *map,
                               int u, int w);

// Steps of these searches on this thread so far.
uint64_t graph_isomorphism_searches();

} // namespace kestro
