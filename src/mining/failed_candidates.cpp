// Failed candidates in a table over an arena.
//
// A candidate that failed is usually generated again, through other cores and
// automorphisms; one look-up then spares the test of all its sub-patterns.

#include "mining/failed_candidates.h"

namespace kestro {

void failed_candidates::insert(const subgraph *sg) {
  void *memory = copies_.take(sg_size(sg->g->es, sg->g->vs));
  table_.insert(sg_light_copy(sg, memory));
}

} // namespace kestro
