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

// Finds the removable edges of connected graphs without marks.
class edge_finder {
public:
  // g's, by u, then w; valid until the next call.
  const xvector<removable_edge> &removable_edges(const graph *g);

private:
  void visit(int u, int from);
  bool is_bridge(int u, int w) const;

  const graph *g_ = nullptr;
  xvector<int> number_; // by vertex, depth-first, 0 when not met
  xvector<int> low_;    // by vertex, the lowest number its subtree reaches
  int count_ = 0;
  xvector<removable_edge> edges_;
};

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
