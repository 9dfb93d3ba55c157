// Downward closure by a cheap label: can every connected sub-pattern of a
// candidate be in the level below?
#pragma once

#include <cstdint>

#include "base/xmalloc.h"
#include "mining/sg_set.h"

namespace kestro {

// An edge u-w of a graph, u < w, without which it stays connected (an end left
// alone goes with it).
struct removable_edge {
  int u;
  int w;
  int slot; // of w in u's list
};

// The removable edges of a connected graph without marks, by u, then w.
void find_removable_edges(const graph *g, xvector<removable_edge> *edges);

// Labels that isomorphic graphs share: sums over hashes of each vertex's
// surroundings.
class closure_filter {
public:
  // prev is the level below.
  explicit closure_filter(const sg_set *prev);

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
