// What a search knows of the graphs before it starts.
#pragma once

#include <cstdint>

#include "base/interruption.h"
#include "base/xmalloc.h"
#include "cl/cycle_core.h"
#include "graph/graph_list.h"

namespace kestro {

// What is around a vertex as sets of bits: a vertex u can be mapped to w only
// if w's profile has all bits of u's.
struct vertex_profile {
  uint32_t edges = 0; // its edges
  uint32_t paths = 0; // the paths of two edges that start at it
  uint64_t kinds = 0; // the kinds of these paths
  bool covers(const vertex_profile &other) const {
    return ((other.edges & ~edges) | (other.kinds & ~kinds) |
            (other.paths & ~paths)) == 0;
  }
};
vertex_profile profile_of(const graph *g, int u);

// The profiles of all vertices of a list of graphs, and how often edges occur
// in them.
class graph_profiles {
public:
  // Borrows graphs.  Throws interrupted when stop, which may be null, says so.
  explicit graph_profiles(const graph_list *graphs,
                          const interruption *stop = nullptr);

  const graph *graph_at(int i) const { return graph_list_at(graphs_, i); }
  // Whether graph i has fewer vertices than the average one.
  bool is_small(int i) const { return small_[static_cast<size_t>(i)]; }

  const cycle_core &core_of(int i) const {
    return cores_[static_cast<size_t>(i)];
  }
  // By vertex of graph i.
  const vertex_profile *of(int i) const {
    return profiles_.data() + first_[static_cast<size_t>(i)];
  }
  // The vertices of graph i among which those with that label are, ascending.
  struct candidates {
    const int *vertices; // null: all vertices from 0
    int count;
  };
  candidates vertices(int i, int vlabel) const;
  // About how often an edge with these labels occurs, seen from its first end;
  // rarer edges share a counter with others at times.
  int frequency(int from, int elabel, int to) const;

private:
  void add_by_label(const graph *g);
  void count_edge(int from, int elabel, int to);

  const graph_list *graphs_;
  xvector<vertex_profile> profiles_; // graph after graph
  xvector<size_t> first_;            // per graph, where its vertices start
  xvector<char> small_;              // per graph
  xvector<cycle_core> cores_;        // per graph
  xvector<int> by_label_; // per large graph, its vertices by label, then id
  xvector<size_t> first_by_label_; // per graph, where they start; the end
  xvector<int> frequency_;         // by hash of the labels
  xvector<uint64_t> sorted_;       // for add_by_label
};

} // namespace kestro
