// Parent entries of a candidate that its automorphisms bring to one another.
#pragma once

#include "cl/automorphism_group.h"
#include "graph/removable_edges.h"
#include "mining/subgraph.h"

namespace kestro {

// The entries of one candidate after another, one for each removable edge.
class parent_images {
public:
  explicit parent_images(const interruption *stop = nullptr) : search_(stop) {}

  // Finds the automorphisms of g and forgets all entries.  Both are borrowed;
  // edges are g's removable ones, by u, then w.
  void set(const graph *g, const xvector<removable_edge> &edges);

  // Whether the parent without edge i is entered.
  bool has(size_t i) const { return known_[i] != 0; }
  // The entry of edge i: its ends and sizes are set, the rest once it is
  // entered.
  sg_parent *at(size_t i) {
    return reinterpret_cast<sg_parent *>(memory_.data() + i * ints_);
  }
  // Enters at(i), filled by the caller, whose parent has the only record of its
  // class in the level, and the entries of the edges to which automorphisms
  // bring edge i.
  void enter_with_images(size_t i);

private:
  size_t image_of(size_t i, const int *perm) const;

  const graph *g_ = nullptr;
  const xvector<removable_edge> *edges_ = nullptr;
  automorphism_search search_;
  xvector<int> perms_;    // generators, the image of every vertex
  int generators_ = 0;    // how many
  xvector<int> at_slot_;  // by slot of an edge's smaller end, the edge
  xvector<char> known_;   // by edge
  xvector<int> memory_;   // of the entries
  size_t ints_ = 0;       // of each of them
  xvector<size_t> queue_; // edges whose images are looked at
};

} // namespace kestro
