// Finding the vertex of an id.
#pragma once

#include <cstdint>

#include "base/open_table.h"
#include "graph/graph.h"

namespace kestro {

// The positions of a graph's vids.  Keeps its memory from graph to graph.
class vertex_ids {
public:
  // Borrows g, whose vids stay as they are until the last look-up.
  void collect(const graph *g);

  // First vertex whose vid is id; dies, listing all vids, when there is
  // none.
  int find(int id) const {
    if (in_order_ && id >= 0 && id < g_->vs)
      return id;
    if (in_order_)
      graph_die_of_vid(g_, id);
    return find_hashed(id);
  }

private:
  struct slot {
    int id = 0;
    int vertex = -1; // in a free slot

    bool in_use() const { return vertex != -1; }
    uint64_t hash() const { return hash_of(id); }
  };

  static uint64_t hash_of(int id) {
    return mixed(0, static_cast<uint32_t>(id));
  }
  int find_hashed(int id) const;

  const graph *g_ = nullptr;
  bool in_order_ = true; // every vid is its vertex
  open_table<slot> table_;
};

} // namespace kestro
