// What becomes of a freshly joined candidate.
#pragma once

#include <utility>

#include "cl/canonical.h"
#include "mining/candidate_set.h"
#include "mining/closure.h"
#include "mining/derived_parents.h"
#include "mining/failed_candidates.h"
#include "mining/parent_images.h"
#include "mining/sg_set.h"

namespace kestro {

// What happened to candidates.
struct registration_counts {
  long long attempts = 0;
  long long already_rejected = 0; // equal to one that failed before
  long long duplicates = 0;       // equal to one that was accepted before
  long long newly_rejected = 0;
  long long accepted = 0;

  registration_counts &operator+=(const registration_counts &more) {
    attempts += more.attempts;
    already_rejected += more.already_rejected;
    duplicates += more.duplicates;
    newly_rejected += more.newly_rejected;
    accepted += more.accepted;
    return *this;
  }
};

// What candidates of one size are tested against, and where they go.
struct registration {
  // level is the one below.  known only saves work and may be null; it is of no
  // use for candidates that come as a graph.  When stop, which may be null,
  // says so, this and the offers below throw interrupted; the labeller looks at
  // a stop of its own.
  explicit registration(const sg_set *level, labeller labels = labeller(),
                        derived_parents *known = nullptr,
                        const interruption *stop = nullptr)
      : prev(level), derived(known), forms(std::move(labels)), accepted(stop),
        failed(stop), filter(level, stop), images(stop) {}

  const sg_set *prev;
  derived_parents *derived;
  labeller forms;
  registration_counts counts;
  bool invariant_outcome = false; // of the candidate offered last: isomorphic
                                  // ones fare as it did
  candidate_set accepted;
  failed_candidates failed;
  late_closure_filter filter;
  removable_edges edges;
  parent_images images;
  sg_ptr scratch;      // room for a candidate, null at first
  sg_ptr rest;         // room for a candidate without an edge, null at first
  xvector<int> memory; // room for a parent entry
};

// Offers the candidate that is x's pattern, one of the level below, plus x's
// edge.  Unless look-ups show that it has an infrequent part, builds and
// registers it.  Returns the accepted copy or null.
const subgraph *sg_offer_extension(const extension &x, registration *to);

} // namespace kestro
