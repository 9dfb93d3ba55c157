// The edges that can be taken out of a graph without splitting it.
#pragma once

#include "base/xmalloc.h"
#include "graph/graph.h"

namespace kestro {

// An edge u-w of a graph, u < w, without which it stays connected (an end left
// alone goes with it).
struct removable_edge {
  int u;
  int w;
  int slot; // of w in u's list
};

// Finds the removable edges of connected graphs without marks.
class removable_edges {
public:
  // g's, by u, then w; valid until the next call.
  const xvector<removable_edge> &of(const graph *g);

private:
  void visit(int u, int from);
  bool is_bridge(int u, int w) const;

  const graph *g_ = nullptr;
  xvector<int> number_; // by vertex, depth-first, 0 when not met
  xvector<int> low_;    // by vertex, the lowest number its subtree reaches
  int count_ = 0;
  xvector<removable_edge> edges_;
};

} // namespace kestro
