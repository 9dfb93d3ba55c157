// Whether and how a graph g1 occurs in a graph g2, by plain searches: the tests
// compare the search plan and the automorphisms of src/ with them.
//
// g1's edges are required in g2 with equal labels; g2 may have more.  Every
// function dies with "g1 must be smaller than g2" when g1 has more enabled
// vertices than g2 has vertices.  Those that choose their order need a
// connected g1 with a free vertex.
#pragma once

#include "base/ksstack.h"
#include "reference/cl/isomorphism_calls.h"

namespace kestro {

// 1 if g1 occurs in g2, else 0; with a mapping in map (g1->vs ints), and with
// the order in which its vertices were matched in order (g1->vs ints).
int graph_find_isomorphism(const graph *g1, const graph *g2);
int graph_find_isomorphism_map(const graph *g1, const graph *g2, int *map);
int graph_find_isomorphism_and_order(const graph *g1, const graph *g2, int *map,
                                     int *order);
// The same along the order found by an earlier search of g1.
int graph_find_isomorphism_by_order(const graph *g1, const graph *g2, int *map,
                                    const int *order);

// The same with the vertices marked 1 in active fixed to their map entries.
// The order begins with the fixed vertices in ascending number.
int graph_extend_isomorphism_and_order(const graph *g1, const graph *g2,
                                       int *map, int *order, const int *active);
int graph_extend_isomorphism_by_order(const graph *g1, const graph *g2,
                                      int *map, const int *order,
                                      const int *active);

// A new stack of every mapping that extends the fixed vertices, or of every
// mapping: g1->vs ints each, in the order of the search; null if there is none.
// The caller frees it.  The free entries of map end as -1 if there was one.
ksstack *graph_isomorphisms_extending(const graph *g1, const graph *g2,
                                      int *map, const int *active);
ksstack *graph_all_isomorphisms(const graph *g1, const graph *g2);

} // namespace kestro
