// A cheap test before the closure test: a sub-pattern of a candidate whose
// label no pattern of the level below has is not in that level.
#pragma once

#include <cstdint>
#include <optional>

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

// The same filter, made once it pays.  Look-ups leave few candidates with an
// infrequent part on most levels, where the labels of the whole level would
// cost more than the forms that they spare.
class late_closure_filter {
public:
  // Borrows prev, the level below, and stop, which may be null.
  explicit late_closure_filter(const sg_set *prev,
                               const interruption *stop = nullptr)
      : prev_(prev), stop_(stop) {}

  // False when g without one of its removable edges is certainly not in the
  // level.  Throws interrupted when stop says so.
  bool may_contain(const graph *g, const removable_edge &edge);
  // Tells that a form was made in vain: it was not in the level.
  void note_miss() { misses_++; }

private:
  const sg_set *prev_;
  const interruption *stop_;
  int misses_ = 0;
  std::optional<closure_filter> filter_;
};

} // namespace kestro
