// A part of a connected graph has at most as many independent cycles.  Suppose
// that it has as many and is connected, too.  Then it has every edge that lies
// on a cycle: without one, the graph has a cycle less.  Being connected, it has
// the ways between cycles as well, each of which is the only one.  These and
// the cycles are what is left of either graph when leaves are taken away.

#include "cl/cycle_core.h"

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
  met_[index(u)] = 1;
  for (size_t i = 0; i < queue_.size(); i++) {
    const int w = queue_[i];
    slots += degree_[index(w)];
    for (int j = g->v[w]; j < g->v[w + 1]; j++) {
      const size_t x = index(g->e[j]);
      if (met_[x] || degree_[x] == 0)
        continue;
      met_[x] = 1;
      queue_.push_back(g->e[j]);
    }
  }
  const int vertices = static_cast<int>(queue_.size());
  cycle_core core = {slots / 2 - vertices + 1, vertices};
  if (core.cycles == 1)
    core.lengths = length_bit(vertices);
  else if (core.cycles <= cycle_lengths_finder::most_cycles)
    core.lengths = lengths_.find(g, queue_, degree_);
  else
    core.has_all = false;
  return core;
}

cycle_core cycle_core_finder::find(const graph *g) {
  take_leaves(g);
  met_.assign(index(g->vs), 0);
  cycle_core most;
  for (int u = 0; u < g->vs; u++) {
    if (degree_[index(u)] == 0 || met_[index(u)])
      continue;
    const cycle_core core = find_from(g, u);
    if (core.cycles > most.cycles) {
      most.cycles = core.cycles;
      most.vertices = core.vertices;
    } else if (core.cycles == most.cycles && core.vertices != most.vertices) {
      most.vertices = -1;
    }
    most.lengths |= core.lengths;
    most.has_all &= core.has_all;
  }
  return most;
}

} // namespace kestro
