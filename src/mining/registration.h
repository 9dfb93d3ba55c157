// What becomes of a freshly joined candidate.
#pragma once

#include "mining/candidate_set.h"
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

// What candidates of one size are tested against, and where they go.
struct registration {
  const sg_set *prev; // the level below
  failed_candidates *failed;
  candidate_set *accepted;
  // These two only save work and may be null: a filter made of prev, and what
  // is known of the candidate's parents, started on it.
  closure_filter *filter = nullptr;
  derived_parents *derived = nullptr;
};

// Brings cand into canonical form; unless an equal candidate was met before,
// tests downward closure: every connected graph that is cand less one edge must
// be in prev.  If so cand's parents and links are set and a copy is accepted,
// else a light copy goes to failed.  Returns the accepted copy or null.
const subgraph *sg_register_candidate(subgraph *cand, const registration *to);

// Counts an attempt for a candidate that was seen to fail before it was built.
void sg_count_rejection();

} // namespace kestro
