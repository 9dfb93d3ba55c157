// Connectedness and connected components.
//
// The depth-first walk numbers the entry to and the exit from every vertex with
// one shared counter, so a tree that starts at entry number n and holds t
// vertices exits its root with number n + 2t - 1.  That alone tells whether the
// graph is connected, and where one component ends and the next begins.  The
// walk keeps its own stack, so deep graphs cost memory, not call frames.

#include "reference/graph/connectivity.h"

#include <algorithm>
#include <cassert>

#include "base/xmalloc.h"

namespace kestro {

namespace {

// Entry and exit numbers of a depth-first walk through enabled slots.
class event_walk {
public:
  explicit event_walk(const graph *g)
      : g_(g), vs_(static_cast<size_t>(g->vs)), events_(3 * vs_, -1) {
    for (int i = 0; i < g->vs; i++)
      if (!graph_is_disabled(g->v[i]) && enter(i) == -1)
        walk_from(i);
  }
  int &enter(int u) { return events_[static_cast<size_t>(u)]; }
  int &exit(int u) { return events_[vs_ + static_cast<size_t>(u)]; }

private:
  // Next slot to look at, for the vertices on the way from the root.
  int &next_slot(int u) { return events_[2 * vs_ + static_cast<size_t>(u)]; }

  void walk_from(int root) {
    path_.clear();
    descend(root);
    while (!path_.empty()) {
      const int u = path_.back();
      const int end = graph_unmark(g_->v[u + 1]);
      int &j = next_slot(u);
      while (j < end && (graph_is_disabled(g_->e[j]) || enter(g_->e[j]) != -1))
        j++;
      if (j < end) {
        descend(g_->e[j]);
      } else {
        exit(u) = counter_++;
        path_.pop_back();
      }
    }
  }

  void descend(int u) {
    enter(u) = counter_++;
    next_slot(u) = graph_unmark(g_->v[u]);
    path_.push_back(u);
  }

  const graph *g_;
  size_t vs_;           // vertices, the length of each list in events_
  xvector<int> events_; // entry numbers, exit numbers, next slots
  xvector<int> path_;   // from the root to the vertex being visited
  int counter_ = 0;
};

} // namespace

int graph_is_connected(const graph *g) {
  event_walk walk(g);
  int first = 0;
  while (first < g->vs && graph_is_disabled(g->v[first]))
    first++;
  assert(first < g->vs);
  return walk.exit(first) == 2 * graph_active_vertices(g) - 1;
}

int graph_connected_components(const graph *g, int *comp) {
  assert(g->vs > 0);
  event_walk walk(g);
  xvector<int> bounds = {walk.exit(0)}; // where the components end, ascending
  while (bounds.back() != 2 * g->vs - 1) {
    int j = 0;
    while (j < g->vs && walk.enter(j) != bounds.back() + 1)
      j++;
    assert(j < g->vs);
    bounds.push_back(walk.exit(j));
  }
  for (int i = 0; i < g->vs; i++) {
    const auto end =
        std::lower_bound(bounds.begin(), bounds.end(), walk.exit(i));
    comp[i] = static_cast<int>(end - bounds.begin());
  }
  return static_cast<int>(bounds.size());
}

} // namespace kestro
