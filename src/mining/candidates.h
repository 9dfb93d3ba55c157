// Candidate generation: size k from the frequent patterns of sizes k-1 and k-2.
#pragma once

#include <numeric>

#include "base/interruption.h"
#include "base/parallel.h"
#include "cl/canonical.h"
#include "mining/automorphisms.h"
#include "mining/derived_parents.h"
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
  join_context(const sg_set *patterns, const sg_set *below,
               automorphism_cache *cache, registration *to,
               const interruption *stop = nullptr)
      : children(patterns), cores(below), automorphisms(cache), registry(to),
        seen(stop), poll(stop, 2048) {
    const int edges = sg_set_get(children, 0)->g->es / 2;
    core_to_b.resize(static_cast<size_t>(edges) + 1);
    identity.resize(static_cast<size_t>(edges) + 1);
    std::iota(identity.begin(), identity.end(), 0);
  }

  const sg_set *children; // level k-1
  const sg_set *cores;    // level k-2
  automorphism_cache *automorphisms;
  registration *registry;
  extension_set seen;     // extensions that need not be offered again
  xvector<int> core_to_b; // by vertex of a core
  xvector<int> identity;  // the only automorphism of rigid cores
  interruption_poll poll; // a step is one place of an edge
};

// Joins the patterns a and b of level k-1, which may be the same, through one
// core: ea and eb are their parent entries for it.  Each automorphism of the
// core gives at most two candidates.  automorphism is the cache's first entry
// of the core, -1 for a rigid core.
void sg_join(int a, int b, const sg_parent *ea, const sg_parent *eb,
             int automorphism, join_context *context);

} // namespace kestro
