// Looking vertices up by id.
//
// Nearly all files number their vertices from 0, so that an id is the vertex;
// one pass finds out.  Any others go into a hash table, in the order of the
// vertices, so that the first one with an id is the one found.

#include "graph/vertex_ids.h"

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
  table_.clear(static_cast<size_t>(g->vs));
  for (int i = 0; i < g->vs; i++)
    table_.insert({g->vid[i], i},
                  [&](const slot &s) { return s.id == g->vid[i]; });
}

int vertex_ids::find_hashed(int id) const {
  const slot &found =
      table_.look_up(hash_of(id), [&](const slot &s) { return s.id == id; });
  if (!found.in_use())
    graph_die_of_vid(g_, id);
  return found.vertex;
}

} // namespace kestro
