// Candidate generation: size k from the frequent patterns of sizes k-1 and k-2.
#pragma once

#include <span>

#include "base/interruption.h"
#include "base/parallel.h"
#include "cl/canonical.h"
#include "mining/derived_parents.h"
#include "mining/pattern_groups.h"
#include "mining/registration.h"
#include "mining/sg_set.h"

namespace kestro {

struct generation_options {
  int jobs = 1; // threads; the candidates are the same for any number of them
  int stabilizer_threshold = labeller::default_threshold;
  form kind = form::prescribed;       // of the candidates' graphs
  const interruption *stop = nullptr; // ends it by throwing interrupted
  work_watcher *watcher = nullptr;    // hears of the cores as they are joined
};

// The candidates of one size: a sorted set of records with canonical graph,
// parents and no support.
struct generation {
  sg_set_ptr candidates;
  int order_dependent = 0;    // of them: forms that may depend on the order in
                              // which the graph's vertices came
  registration_counts counts; // of what was joined, on all threads together
};

// Generates size k.  children is the level k-1, not empty, cores the level k-2,
// whose child lists say which children share a core.
generation sg_generate_candidates(const sg_set *children, const sg_set *cores,
                                  const generation_options &options = {});

// What joining works on while one size is generated.
struct join_context {
  join_context(const sg_set *patterns, const sg_set *below, registration *to,
               const interruption *stop = nullptr)
      : children(patterns), cores(below), registry(to), seen(stop),
        poll(stop, 2048) {
    const int edges = sg_set_get(children, 0)->g->es / 2;
    core_to_b.resize(static_cast<size_t>(edges) + 1);
  }

  const sg_set *children; // level k-1
  const sg_set *cores;    // level k-2
  registration *registry;
  extension_set seen;     // extensions that need not be offered again
  orbit_walk orbit;       // of a place in b
  xvector<int> core_to_b; // by vertex of a core
  interruption_poll poll; // a step is one place of an edge
};

// Joins the patterns a and b of level k-1, which may be the same, through one
// core: ea and eb are their parent entries for it.  images are the places in
// the core to which its automorphisms bring the edge that ea tells of; each
// gives at most two candidates.  group_of_b only saves work and may be without
// generators: of the places that it brings onto one another one is offered,
// where it is known that all would fare alike.
void sg_join(int a, int b, const sg_parent *ea, const sg_parent *eb,
             std::span<const edge_place> images,
             const pattern_group &group_of_b, join_context *context);

// Where the edge that a parent entry tells of lies in that parent.
edge_place sg_place_in_core(const sg_parent *entry);

} // namespace kestro
