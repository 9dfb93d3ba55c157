// What of a graph one pattern can lie in, with twins drawn together.
#pragma once

#include <cstdint>

#include "base/interruption.h"
#include "base/xmalloc.h"
#include "graph/graph.h"

namespace kestro {

// The region of a graph around one vertex, and its classes of twins: vertices
// of one label whose edges lead to the same vertices with the same labels, the
// edge between them aside.  An exchange of twins is an automorphism of the
// region.  The pattern and the graph are borrowed and without marks.
class twin_graph {
public:
  // Another pattern and graph; there is no region yet.
  void set(const graph *pattern, const graph *t);

  // The region becomes that of all vertices at most radius edges from root,
  // along edges of kinds that the pattern has.  False when it is as it was.
  // Takes time in the order of the region's slots times their logarithm.
  bool move(int root, int radius, interruption_poll *poll);

  // Whether no edge of such a kind leads out of the region.
  bool is_whole() const { return is_whole_; }
  // Whether the region has as many vertices, slots and vertices of each label
  // as the pattern.
  bool has_room() const;
  // The class of a vertex of the graph, -1 outside the region.
  int class_of(int w) const;

  int vertices() const { return static_cast<int>(vertices_.size()); }
  int slots() const { return static_cast<int>(neighbours_.size()); }
  int classes() const { return static_cast<int>(first_member_.size()) - 1; }

  // The vertices of class c, ascending, and their number.
  const int *members(int c) const { return members_.data() + first_member(c); }
  int size(int c) const { return first_member(c + 1) - first_member(c); }
  int vlabel(int c) const { return graph_->vlabel[*members(c)]; }

  // An edge from any vertex of a class to all others of another one, or of its
  // own.
  struct class_edge {
    int to; // the other class
    int elabel;
  };
  const class_edge *edges(int c) const { return edges_.data() + first_edge(c); }
  int edge_count(int c) const { return first_edge(c + 1) - first_edge(c); }

  // The kinds of a vertex's edges and the degrees at their other ends.
  struct edge_end {
    int elabel;
    int vlabel;
    int degree; // in the region
    bool operator<(const edge_end &other) const;
  };
  // Those at the vertices of class c, in order: of one kind the largest degree
  // comes first.
  void edge_ends(int c, xvector<edge_end> *ends) const;

private:
  struct edge_kind {
    int from, elabel, to;
    bool operator<(const edge_kind &other) const;
  };
  struct signature {
    uint64_t hash;
    int vertex;
    int inner; // label of the edges between the twins, -1 for none
    bool operator<(const signature &other) const;
  };

  int first_member(int c) const {
    return first_member_[static_cast<size_t>(c)];
  }
  int first_edge(int c) const { return first_edge_[static_cast<size_t>(c)]; }
  bool is_possible(int w, int slot) const;
  void collect(int root, int radius, interruption_poll *poll);
  void connect(interruption_poll *poll);
  void sign(interruption_poll *poll);
  bool are_twins(int a, int b, int inner) const;
  void unite_twins(interruption_poll *poll);
  void number_classes();
  void connect_classes();

  const graph *pattern_ = nullptr;
  const graph *graph_ = nullptr;
  xvector<edge_kind> kinds_;   // of the pattern's slots, sorted
  xvector<int> vertices_;      // of the region, ascending
  xvector<int> collected_;     // those of the region asked for
  xvector<char> is_collected_; // by vertex of the graph
  xvector<int> place_;         // by vertex of the graph: in vertices_, or -1
  bool is_whole_ = false;

  // By place.
  xvector<int> first_;      // where its neighbours start; the end
  xvector<int> neighbours_; // places, ascending
  xvector<int> elabels_;    // of the slots
  xvector<signature> signatures_;
  xvector<int> twin_;  // the first of its class
  xvector<int> class_; // its class

  // By class.
  xvector<int> first_member_;
  xvector<int> members_; // vertices of the graph
  xvector<int> first_edge_;
  xvector<class_edge> edges_;
};

} // namespace kestro
