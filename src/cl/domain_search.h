// The search for a pattern where a plain walk takes too long.
#pragma once

#include <cstdint>
#include <utility>

#include "base/interruption.h"
#include "base/xmalloc.h"
#include "cl/failed_states.h"
#include "cl/twin_graph.h"
#include "graph/graph.h"

namespace kestro {

// Looks for one connected pattern in one graph, root by root.  It has a cost of
// its own before the first step, which is in the order of the pattern's slots
// times the graph's; after that it remembers what has failed, from root to root
// as well.
class domain_search {
public:
  // Searches throw interrupted when stop, which may be null, says so.
  explicit domain_search(const interruption *stop)
      : poll_(stop, 1 << 17), failed_(stop) {}

  // Another pattern, whose vertices have those depths, and another graph.  Both
  // are borrowed and without marks.
  void set(const graph *pattern, const xvector<int> &depth, const graph *t);

  enum class answer { none, found, too_large };
  // Whether a mapping sends the vertex at depth 0 to root.  When found, image()
  // is the first of them in lexicographic order along the depths.  For patterns
  // or regions that are too large it does not tell.
  answer find(int root);
  const int *image() const { return image_.data(); } // per depth

  // Whether it is known without a search that no mapping has that root.
  bool excludes(int root) const;

  // Vertices assigned so far, in all searches: what the time goes with.
  int64_t assignments() const { return assignments_; }

private:
  using word = uint64_t; // of a set of classes
  enum class verdict { open, no_room, too_large };
  // Vertices without a class, and the members left of all theirs.
  struct share {
    int members;
    int vertices;
  };

  void measure_pattern();
  void group_pattern();
  verdict prepare();
  void lay_rows();
  bool fill_domains();
  bool has_ends(int u) const;
  void start();

  bool assign(int u, int c);
  void take_back(int u, size_t mark);
  bool extend();
  int next_vertex() const;
  void improve(int u);
  int first_free(int c) const;

  bool propagate(bool is_possible);
  bool revise(int u);
  bool share_out();
  share joined_share(int v);
  int members_of(const word *set) const;
  bool remove(int c);
  bool restrict_to(int v, const word *allowed);
  void keep(int v);
  void touch(int v);
  void describe();

  word *domain(int v) { return &domains_[at(v) * width_]; }
  const word *domain(int v) const { return &domains_[at(v) * width_]; }
  const word *row(int label, int c) const {
    return &rows_[(at(label) * at(classes_) + at(c)) * width_];
  }
  bool contains(const word *set, int c) const {
    return set[at(c) / 64] >> (at(c) % 64) & 1;
  }
  int count(const word *set) const;
  template <class Do> void for_each(const word *set, Do todo) const;
  static size_t at(int i) { return static_cast<size_t>(i); }

  // The pattern.
  const graph *pattern_ = nullptr;
  xvector<int> order_;      // its vertices by depth
  int radius_ = 0;          // the distance of the farthest from the first
  xvector<int> labels_;     // of its edges, ascending
  xvector<int> label_;      // by slot: where its label is among them
  xvector<int> by_group_;   // its vertices, twins together
  xvector<int> first_twin_; // where the groups of twins begin there; the end
  xvector<int> group_;      // by vertex: its group
  xvector<twin_graph::edge_end> ends_; // of its edges, by vertex, in order
  xvector<twin_graph::edge_end> class_ends_;

  // The region that is searched.
  twin_graph region_;
  verdict verdict_ = verdict::open;
  int classes_ = 0;
  size_t width_ = 0;       // words of a set of classes
  xvector<word> rows_;     // by label and class: the classes that edges lead to
  xvector<word> possible_; // by pattern vertex: the classes it may have
  xvector<char> has_failed_; // by class: as a root

  // A partial assignment.
  xvector<int> choice_; // by pattern vertex: its class, or -1
  xvector<int> open_;   // by pattern vertex: neighbours without a class
  xvector<int> free_;   // by class: members left
  xvector<int> demand_; // by class: vertices without a class it is possible for
  int unassigned_ = 0;  // vertices without a class
  xvector<word> domains_;    // by pattern vertex: the classes left to it
  xvector<int> kept_;        // domains as they were, to be restored
  xvector<word> kept_words_; // their sets
  xvector<int64_t> kept_at_; // by pattern vertex: the assignment it was kept at
  xvector<int> touched_;     // domains to be propagated
  xvector<char> is_touched_; // by pattern vertex
  xvector<word> set_;        // for revise() and share_out()
  xvector<word> allowed_;    // for remove() and share_out()
  xvector<share> shares_;    // for share_out()
  xvector<word> share_words_;            // their classes
  xvector<word> fresh_;                  // for joined_share()
  xvector<std::pair<int, int>> by_size_; // for share_out(): size, vertex
  int64_t assignments_ = 0;

  // What has been found.
  xvector<int> solution_; // by pattern vertex: its class
  xvector<int> image_;    // per depth
  xvector<int> next_;     // by class: members taken for the image

  xvector<std::pair<int, int>> smaller_; // for improve(): vertex, class
  xvector<int> used_;                    // for describe(): classes
  failed_states::word state_;
  interruption_poll poll_;
  failed_states failed_;
};

} // namespace kestro
