// A part of a connected graph has at most as many independent cycles.  Suppose
// that it has as many and is connected, too.  Then it has every edge that lies
// on a cycle: without one, the graph has a cycle less.  Being connected, it has
// the ways between cycles as well, each of which is the only one.  These and
// the cycles are what is left of either graph when leaves are taken away.

#include "cl/cycle_core.h"

#include <utility>

namespace kestro {

static size_t index(int i) { return static_cast<size_t>(i); }

// Takes leaves away until there are none.
void cycle_core_finder::take_leaves(const graph *g) {
  degree_.clear();
  queue_.clear();
  for (int u = 0; u < g->vs; u++) {
    degree_.push_back(g->v[u + 1] - g->v[u]);
    if (degree_.back() == 1)
      queue_.push_back(u);
  }
  for (size_t i = 0; i < queue_.size(); i++) {
    const int u = queue_[i];
    degree_[index(u)] = 0;
    for (int j = g->v[u]; j < g->v[u + 1]; j++)
      if (degree_[index(g->e[j])] > 0 && --degree_[index(g->e[j])] == 1)
        queue_.push_back(g->e[j]);
  }
}

// That of the component of u, which is in the core.
cycle_core cycle_core_finder::find_from(const graph *g, int u) {
  int slots = 0; // between vertices of the core
  queue_.assign(1, u);
  slots += std::exchange(degree_[index(u)], 0);
  for (size_t i = 0; i < queue_.size(); i++)
    for (int j = g->v[queue_[i]]; j < g->v[queue_[i] + 1]; j++) {
      int &degree = degree_[index(g->e[j])];
      if (degree == 0)
        continue; // met already, or outside
      slots += std::exchange(degree, 0);
      queue_.push_back(g->e[j]);
    }
  const int vertices = static_cast<int>(queue_.size());
  return {slots / 2 - vertices + 1, vertices};
}

cycle_core cycle_core_finder::find(const graph *g) {
  take_leaves(g);
  cycle_core most;
  for (int u = 0; u < g->vs; u++) {
    if (degree_[index(u)] == 0)
      continue;
    const cycle_core core = find_from(g, u);
    if (core.cycles > most.cycles)
      most = core;
    else if (core.cycles == most.cycles && core.vertices != most.vertices)
      most.vertices = -1;
  }
  return most;
}

} // namespace kestro
