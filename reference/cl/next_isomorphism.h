// Mappings one at a time.
#pragma once

#include "base/interruption.h"
#include "reference/cl/isomorphism_work.h"

namespace kestro {

// The mapping of g1 into g2 that follows map in lexicographic order of
// (map[order[0]], map[order[1]], ...): 1 with it in map, or 0, with map all -1,
// when there is none left.  A map of all -1 starts afresh.  order holds every
// vertex of g1.
//
// map should be all -1 or a mapping, at most one vertex of which is unmapped;
// else "irregular reentry" is printed on standard error, and the search goes on
// from what is mapped.  Dies like every isomorphism call when g1 is larger than
// g2.  poll, which may be null, has a step for each dead end.
int graph_next_isomorphism(isomorphism_arrays *arrays, const graph *g1,
                           const graph *g2, const int *order, int *map,
                           interruption_poll *poll = nullptr);

} // namespace kestro
