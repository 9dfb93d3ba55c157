// How much of a graph lies on cycles and between them.
#pragma once

#include "base/xmalloc.h"
#include "cl/cycle_lengths.h"
#include "graph/graph.h"

namespace kestro {

// Of a connected graph: how many independent cycles it has, and how many
// vertices are left when leaves are taken away until there are none.  Of any
// graph: that of its components with most independent cycles; vertices is -1
// when that number differs among them.
struct cycle_core {
  int cycles = 0;
  int vertices = 0;
  cycle_lengths lengths = 0; // of cycles in any component
  bool has_all = true;       // they are the lengths of all cycles

  // Whether a connected graph of that core may be a part of one of this.
  bool may_hold(const cycle_core &part) const {
    if (has_all && (part.lengths & ~lengths) != 0)
      return false;
    return part.cycles < cycles ||
           (part.cycles == cycles &&
            (vertices == -1 || part.vertices == vertices));
  }
};

// Finds the cores of graphs, one after another.
class cycle_core_finder {
public:
  // That of g, which has no marks.  Costs its edges.
  cycle_core find(const graph *g);

private:
  void take_leaves(const graph *g);
  cycle_core find_from(const graph *g, int u);

  xvector<int> degree_; // by vertex, what is left
  xvector<char> met_;   // by vertex
  xvector<int> queue_;  // vertices
  cycle_lengths_finder lengths_;
};

} // namespace kestro
