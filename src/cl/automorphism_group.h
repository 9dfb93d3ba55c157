// The automorphism group of a graph, by generators.
#pragma once

#include "cl/colouring.h"
#include "cl/vertex_orbits.h"
#include "graph/graph.h"

namespace kestro {

// Finds generators of the automorphism groups of graphs, one after another.
// Each thread has its own, since the work arrays are used again.
class automorphism_search {
public:
  explicit automorphism_search(const interruption *stop = nullptr) {
    work_.poll = interruption_poll(stop, 16384);
  }

  // Appends generators of the group of g, which has no marks, to perms, each
  // g->vs ints: the image of every vertex.  Returns how many they are: at most
  // g->vs - 1, and 0 when the identity is the only automorphism.  Throws
  // interrupted when stop says so; perms may hold some of them then.
  //
  // Costs a path of refinements for each generator where refinement leaves only
  // vertices alike that some automorphism exchanges, as in trees; else a search
  // for each vertex that it does not tell from others of another orbit.
  int find(const graph *g, xvector<int> *perms);

private:
  bool add_exchanges();
  int add_exchanges_in(int first, int end);
  size_t class_of_marked(int u) const;
  bool is_twin_of_marked(int w, int u) const;
  int degree_of(int u) const { return g_->v[u + 1] - g_->v[u]; }
  void follow_path();
  void search_cell(size_t level);
  bool leads_to_image(int w, size_t level);
  bool find_image(size_t level);
  bool is_image_of(int w, const xvector<int> &vertices) const;
  bool is_automorphism();
  void add(const xvector<int> &perm);
  void mark_neighbours(int u);
  void unmark_neighbours(int u);
  static size_t index(int i) { return static_cast<size_t>(i); }

  const graph *g_ = nullptr;
  xvector<int> *perms_ = nullptr;
  size_t first_ = 0;      // where the generators of g begin in perms
  size_t exchanges_ = 0;  // how many of them exchange twins
  size_t found_ = 0;      // how many there are
  graph view_ = {};       // g with labels_
  xvector<int> labels_;   // by vertex: its cell and its number among its twins
  xvector<int> firsts_;   // of the classes of twins of a cell
  xvector<int> sizes_;    // by class
  xvector<size_t> class_; // by vertex that is the first of one
  xvector<int> marks_;    // by vertex: label plus 1 of the edge to it, else 0
  refinement_work work_;
  xvector<colouring> path_;  // by level; the nodes that are not discrete
  size_t levels_ = 0;        // of the path
  xvector<colouring> trial_; // the nodes of another path
  xvector<int> leaf_;        // the arrangement the path ends with
  xvector<int> set_apart_;   // vertices on the way to a node of the other path
  xvector<int> failed_;      // in the cell searched, of other orbits
  xvector<int> image_;       // the automorphism found last
  vertex_orbits orbits_;     // but for the exchanges of twins
};

} // namespace kestro
