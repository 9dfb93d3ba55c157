// What a search can know of the graphs it looks into before it starts.
#pragma once

#include <cstdint>

#include "base/ksstack.h"
#include "base/xmalloc.h"
#include "graph/graph.h"

namespace kestro {

// What is around a vertex as sets of bits: a vertex u can be mapped to w only if
// w's profile has all bits of u's.
struct vertex_profile {
  uint64_t edges = 0; // its edges
  uint64_t paths = 0; // the paths of two edges that start at it
  bool covers(const vertex_profile &other) const {
    return ((other.edges & ~edges) | (other.paths & ~paths)) == 0;
  }
};
vertex_profile profile_of(const graph *g, int u);

// The profiles of all vertices of a list of graphs, and how often edges occur
// in them.
class graph_profiles {
public:
  // graphs is a graph list.
  explicit graph_profiles(const ksstack *graphs);

  // By vertex of graph i.
  const vertex_profile *of(int i) const {
    return profiles_.data() + first_[static_cast<size_t>(i)];
  }
  // About how often an edge with these labels occurs, seen from its first end;
  // rarer edges share a counter with others at times.
  int frequency(int from, int elabel, int to) const;

private:
  xvector<vertex_profile> profiles_; // graph after graph
  xvector<size_t> first_;      // per graph, where its profiles start
  xvector<int> frequency_;     // by hash of the labels
};

} // namespace kestro
