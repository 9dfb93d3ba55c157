// Looking vertices up by id.
//
// Nearly all files number their vertices from 0, so that an id is the vertex;
// one pass finds out.  Any others go into a hash table with open addressing, in
// the order of the vertices, so that the first one with an id is the one found.

#include "graph/vertex_ids.h"

#include <bit>
#include <cstdint>

namespace kestro {

static bool are_positions(const graph *g) {
  for (int i = 0; i < g->vs; i++)
    if (g->vid[i] != i)
      return false;
  return true;
}

void vertex_ids::collect(const graph *g) {
  g_ = g;
  in_order_ = are_positions(g);
  if (in_order_)
    return;
  slots_.assign(std::bit_ceil(2 * static_cast<size_t>(g->vs)), -1);
  for (int i = 0; i < g->vs; i++) {
    int &vertex = slots_[slot_of(g->vid[i])];
    if (vertex == -1)
      vertex = i;
  }
}

// Where the vertex of an id is, or the free slot where it belongs.
size_t vertex_ids::slot_of(int id) const {
  const size_t mask = slots_.size() - 1;
  const uint64_t hash = static_cast<uint32_t>(id) * 0x9e3779b97f4a7c15;
  size_t i = static_cast<size_t>(hash >> 32) & mask;
  while (slots_[i] != -1 && g_->vid[slots_[i]] != id)
    i = (i + 1) & mask;
  return i;
}

int vertex_ids::find_hashed(int id) const {
  const int vertex = slots_[slot_of(id)];
  if (vertex == -1)
    graph_die_of_vid(g_, id);
  return vertex;
}

} // namespace kestro
