// Candidate generation: size k from the frequent patterns of sizes k-1 and k-2.
#pragma once

#include <span>

#include "base/interruption.h"
#include "base/parallel.h"
#include "cl/canonical.h"
#include "mining/core_links.h"
#include "mining/derived_parents.h"
#include "mining/pattern_groups.h"
#include "mining/registration.h"
#include "mining/seen_extensions.h"
#include "mining/sg_set.h"

namespace kestro {

struct generation_options {
  int jobs = 1; // threads; the candidates are the same for any number of them
  int stabilizer_threshold = labeller::default_threshold;
  form kind = form::prescribed;       // of the candidates' graphs
  const interruption *stop = nullptr; // ends it by throwing interrupted
  work_watcher *watcher = nullptr;    // hears of the cores as they are joined
  chunk_pool *chunks = nullptr;       // memory for candidates; outlives them
};

// The candidates of one size: a sorted set of records with canonical graph,
// parents and no support.
struct generation {
  sg_set_ptr candidates;
  int order_dependent = 0;    // of them: forms that may depend on the order in
                              // which the graph's vertices came
  registration_counts counts; // of what was joined, on all threads together
};

// Generates size k.  children is the level k-1, not empty, and cores the level
// k-2; the children's kept parents say which of them share a core.
generation sg_generate_candidates(const sg_set *children, const sg_set *cores,
                                  const generation_options &options = {});
// The same from what joins read of the cores.
generation sg_generate_candidates(const sg_set *children,
                                  const core_links &cores,
                                  const generation_options &options = {});

// A child of the core that is joined: what its joins read, in one place.
struct joined_child {
  int id;
  const graph *g;
  edge_place place; // in the core, of the edge that the core lacks
  int elabel;       // of that edge
  int outside;      // the vertex that the core lacks, -1 for none
  int vlabel;       // of that vertex
  size_t from_core; // where its vertices by those of the core begin, in the
                    // context
};

// A candidate to be offered, found on that child of the core.
struct pending_offer {
  seen_extensions::key key;
  size_t child;
};

// What joining works on while one size is generated.
class join_context {
public:
  // All is borrowed: the level k-1, the level k-2, where candidates go, and
  // what all workers have seen, of which this is the one with that number.
  join_context(const sg_set *children, const core_links *cores,
               registration *registry, seen_extensions *seen, int worker = 0,
               const interruption *stop = nullptr);

  // Joins all children of a core with one another.  Cores come in ascending
  // order.
  void join_children_of(int core);

  // Joins the patterns a and b of level k-1, which may be the same, through one
  // core: ea and eb are their parent entries for it, places those in the core
  // to which its automorphisms bring the edge that ea tells of.
  void join(int a, int b, const sg_parent *ea, const sg_parent *eb,
            std::span<const edge_place> places);

  const sg_set *children() const { return patterns_; }

  interruption_poll poll; // a step is one place of an edge

private:
  void add_child(int id, const sg_parent *entry);
  void collect(const joined_child &a, size_t b,
               std::span<const edge_place> places);
  void close(size_t b, int u, int w, int elabel);
  void add_offer(const extension &x, size_t child);
  void offer_all(bool with_groups);
  void mark_seen(const subgraph *accepted);
  void mark_images(const extension &x, const pattern_group &group);
  pattern_group group_of_child(size_t i);

  const sg_set *patterns_;
  const core_links *cores_;
  registration *registry_;
  seen_extensions *seen_;
  int worker_;
  xvector<joined_child> child_; // of the core
  xvector<int16_t> from_core_;  // of all children, see joined_child
  pattern_groups groups_;       // by child of the core
  xvector<pending_offer> offers_;
  xvector<seen_extensions::key> marks_;
  orbit_walk orbit_;  // of a place in the core
  orbit_walk images_; // of a place in a child
};

// Joins a and b as join_context::join does.
void sg_join(int a, int b, const sg_parent *ea, const sg_parent *eb,
             std::span<const edge_place> places, join_context *context);

// Where the edge that a parent entry tells of lies in that parent.
edge_place sg_place_in_core(const sg_parent *entry);

} // namespace kestro
