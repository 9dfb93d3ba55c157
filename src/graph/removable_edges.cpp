// Which edges a graph can do without.
//
// An edge is removable when one end is a leaf or when it lies on a cycle.  One
// depth-first walk finds the cycles: an edge lies on none when nothing below it
// reaches back above it.

#include "graph/removable_edges.h"

#include <algorithm>

namespace kestro {

// Numbers the vertices that u leads to, depth first, and finds the lowest
// number reachable past each tree edge.
void removable_edges::visit(int u, int from) {
  const size_t a = static_cast<size_t>(u);
  number_[a] = low_[a] = ++count_;
  for (int j = g_->v[u]; j < g_->v[u + 1]; j++) {
    const int w = g_->e[j];
    const size_t b = static_cast<size_t>(w);
    if (w == from)
      continue;
    if (number_[b] == 0) {
      visit(w, u);
      low_[a] = std::min(low_[a], low_[b]);
    } else {
      low_[a] = std::min(low_[a], number_[b]);
    }
  }
}

// Whether the graph falls apart without the edge u-w.
bool removable_edges::is_bridge(int u, int w) const {
  const size_t a = static_cast<size_t>(u);
  const size_t b = static_cast<size_t>(w);
  return number_[a] < number_[b] ? low_[b] > number_[a] : low_[a] > number_[b];
}

const xvector<removable_edge> &removable_edges::of(const graph *g) {
  g_ = g;
  count_ = 0;
  number_.assign(static_cast<size_t>(g->vs), 0);
  low_.assign(static_cast<size_t>(g->vs), 0);
  edges_.clear();
  const bool is_tree = g->es / 2 < g->vs; // then all edges are bridges
  if (!is_tree)
    visit(0, -1);
  for (int u = 0; u < g->vs; u++) {
    for (int j = g->v[u]; j < g->v[u + 1]; j++) {
      const int w = g->e[j];
      if (w < u)
        continue;
      const bool leaf_u = g->v[u + 1] - g->v[u] == 1;
      const bool leaf_w = g->v[w + 1] - g->v[w] == 1;
      if (leaf_u != leaf_w || (!is_tree && !leaf_u && !is_bridge(u, w)))
        edges_.push_back({u, w, j});
    }
  }
  return edges_;
}

} // namespace kestro
