// A cheap test before the closure test: a sub-pattern of a candidate whose
// label no pattern of the level below has is not in that level.
#pragma once

#include <cstdint>

#include "base/interruption.h"
#include "base/xmalloc.h"
#include "graph/removable_edges.h"
#include "mining/sg_set.h"

namespace kestro {

// Labels that isomorphic graphs share: sums over hashes of each vertex's
// surroundings.
class closure_filter {
public:
  // prev is the level below.  Throws interrupted when stop, which may be null,
  // says so.
  explicit closure_filter(const sg_set *prev,
                          const interruption *stop = nullptr);

  // The label of a graph, and of one without one of its removable edges.
  uint64_t label(const graph *g);
  uint64_t label_without(const graph *g, const removable_edge &edge);
  // Whether some pattern of the level has that label.
  bool contains(uint64_t label) const;

private:
  xvector<uint64_t> labels_; // sorted
  xvector<uint64_t> colour_; // by vertex
  xvector<uint64_t> next_;   // by vertex
};

} // namespace kestro
