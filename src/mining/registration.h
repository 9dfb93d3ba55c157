// What becomes of a freshly joined candidate.
#pragma once

#include "mining/closure.h"
#include "mining/failed_candidates.h"
#include "mining/sg_set.h"

namespace kestro {

// What happened to the candidates registered by this thread since the last
// generation began.
struct registration_counts {
  long long attempts;
  long long already_rejected; // equal to one that failed before
  long long duplicates;       // equal to one that was accepted before
  long long newly_rejected;
  long long accepted;
};
registration_counts *sg_registration_counts();

// Brings cand into canonical form; unless an equal candidate was met before,
// tests downward closure: every connected graph that is cand less one edge must
// be in prev, the previous level.  If so cand's parents are set and a copy goes
// to its place in out, else a light copy goes to failed.  The filter, made of
// prev, only saves work.
void sg_register_candidate(subgraph *cand, failed_candidates *failed,
                           sg_set *out, const sg_set *prev,
                           closure_filter *filter = nullptr);

} // namespace kestro
