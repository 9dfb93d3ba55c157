// What becomes of a freshly joined candidate.
#pragma once

#include "mining/closure.h"
#include "mining/derived_parents.h"
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

// The same for one whose parts are told without building it.
void sg_reject_candidate();

// Brings cand into canonical form; unless an equal candidate was met before,
// tests downward closure: every connected graph that is cand less one edge must
// be in prev, the previous level.  If so cand's parents and links are set and a
// copy goes to its place in out, else a light copy goes to failed.  Returns that
// copy if accepted, else null.  The filter, made of prev, and derived, started on
// cand, only save work.
const subgraph *sg_register_candidate(subgraph *cand, failed_candidates *failed,
                           sg_set *out, const sg_set *prev,
                           closure_filter *filter = nullptr,
                           derived_parents *derived = nullptr);

} // namespace kestro
