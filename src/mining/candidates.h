// Candidate generation: size k from the frequent patterns of sizes k-1 and k-2.
#pragma once

#include <numeric>

#include "cl/canonical.h"
#include "mining/automorphisms.h"
#include "mining/derived_parents.h"
#include "mining/registration.h"
#include "mining/sg_set.h"

namespace kestro {

struct generation_options {
  int jobs = 1; // threads; the candidates are the same for any number of them
  int stabilizer_threshold = labeller::default_threshold;
};

// The candidates of one size: a sorted set of records with canonical graph,
// parents and no support.
struct generation {
  sg_set_ptr candidates;
  registration_counts counts; // of what was joined, on all threads together
};

// Generates size k.  children is the level k-1, not empty, cores the level k-2,
// whose child lists say which children share a core.
generation sg_generate_candidates(const sg_set *children, const sg_set *cores,
                                  const generation_options &options = {});

// Memory that joins of patterns of some number of edges use one after another.
struct join_work {
  explicit join_work(int edges)
      : without_edge(graph_create(2 * edges, edges + 1)),
        core_to_b(static_cast<size_t>(edges) + 1),
        map(static_cast<size_t>(edges) + 1),
        identity(static_cast<size_t>(edges) + 1) {
    std::iota(identity.begin(), identity.end(), 0);
  }

  graph_ptr without_edge;     // a pattern with one edge disabled
  const sg_parent *gone = {}; // the entry that tells which; null at first
  xvector<int> core_to_b;     // by vertex of a core
  xvector<int> map;           // by vertex of a pattern
  xvector<int> identity;      // the only automorphism of rigid cores
};

// What joining works on while one size is generated.
struct join_context {
  const sg_set *children; // level k-1
  const sg_set *cores;    // level k-2
  automorphism_cache *automorphisms;
  extension_set *made; // joins that need no further look
  subgraph *scratch;   // room for a candidate
  join_work *work;
  registration *registry; // with derived
};

// Joins the patterns a and b of level k-1 through their core with id p, which
// is among the kept parents of both; a and b may be the same.
void sg_join_pair(int a, int b, int p, const join_context *context);
// One join through the core that both entries, of a and of b, lead to: along
// each of its automorphisms, the first of which is that entry of the cache, -1
// for a rigid core, at most two candidates.
void sg_join(int a, int b, const sg_parent *ea, const sg_parent *eb,
             int automorphism, const join_context *context);

// For each vertex of the pattern that ea belongs to, the vertex of eb's pattern
// that it meets through the automorphism perm of their core of n vertices; -1
// for the one outside the core.
void setup_map(const sg_parent *ea, const sg_parent *eb, const int *perm, int n,
               int *map);

} // namespace kestro
