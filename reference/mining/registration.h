// Registration of a candidate that comes as a graph, without look-ups.
#pragma once

#include "mining/registration.h"

namespace kestro {

// Brings cand into canonical form; unless an equal candidate was met before,
// tests downward closure: every connected graph that is cand less one edge must
// be in the level below.  If so cand's parents are set and a copy is accepted
// and returned, else a light copy goes to failed and null is returned.  Of to
// the level, the labeller, the counts and both sets are used.
const subgraph *sg_register_candidate(subgraph *cand, registration *to);

} // namespace kestro
