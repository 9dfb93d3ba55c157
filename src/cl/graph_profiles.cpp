// Profiles of vertices.
//
// A profile has sixteen groups of four bits.  Every edge at a vertex belongs to
// the group that its label and its other end's label are hashed to, and a group
// has as many bits set, from its lowest, as edges belong to it, up to four.  A
// mapping sends the edges at u to as many edges with the same labels at w, so
// each of w's groups has at least the bits of u's.  One instruction compares.

#include "cl/graph_profiles.h"

#include <algorithm>

#include "graph/graph_list.h"

namespace kestro {

static constexpr size_t counters = 4096;

static uint32_t hash_labels(int a, int b) {
  uint32_t h = static_cast<uint32_t>(a) * 0x9e3779b1U;
  h = (h ^ static_cast<uint32_t>(b)) * 0x85ebca77U;
  return h ^ (h >> 15);
}

uint64_t vertex_profile(const graph *g, int u) {
  uint64_t profile = 0;
  for (int j = g->v[u]; j < g->v[u + 1]; j++) {
    const uint32_t group =
        hash_labels(g->elabel[j], g->vlabel[g->e[j]]) >> 3 & 15;
    const uint64_t mask = uint64_t{15} << (4 * group);
    profile |= mask & ((profile << 1) | (uint64_t{1} << (4 * group)));
  }
  return profile;
}

static size_t counter_of(int from, int elabel, int to) {
  return hash_labels(static_cast<int>(hash_labels(from, elabel)), to) %
         counters;
}

graph_profiles::graph_profiles(const ksstack *graphs)
    : frequency_(counters, 0) {
  size_t vertices = 0;
  for (int i = 0; i < graphs->count; i++)
    vertices += static_cast<size_t>(graph_list_at(graphs, i)->vs);
  profiles_.reserve(vertices);
  first_.reserve(static_cast<size_t>(graphs->count));
  for (int i = 0; i < graphs->count; i++) {
    const graph *g = graph_list_at(graphs, i);
    first_.push_back(profiles_.size());
    for (int u = 0; u < g->vs; u++) {
      profiles_.push_back(vertex_profile(g, u));
      for (int j = g->v[u]; j < g->v[u + 1]; j++)
        frequency_[counter_of(g->vlabel[u], g->elabel[j],
                              g->vlabel[g->e[j]])]++;
    }
  }
}

int graph_profiles::frequency(int from, int elabel, int to) const {
  return frequency_[counter_of(from, elabel, to)];
}

} // namespace kestro
