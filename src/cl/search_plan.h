// A pattern prepared for being looked for in many graphs.
#pragma once

#include <memory>

#include "base/interruption.h"
#include "base/xmalloc.h"
#include "cl/domain_search.h"
#include "cl/graph_profiles.h"
#include "graph/graph.h"

namespace kestro {

// One vertex of the pattern, to be mapped at one depth of the search.
struct plan_step {
  vertex_profile profile;
  int u;            // the vertex
  int vlabel;       // its label
  int degree;       // its neighbours
  int anchor;       // depth of a neighbour mapped before, -1 at depth 0
  int anchor_label; // label of the edge to it
  int twin;         // depth of the leaf before that is like it, or -1
  int twins_behind; // like leaves that come later
  int closing[2];   // its range of closing edges
  int needs[2];     // its range of needs
};

// An edge to a further neighbour mapped before.
struct plan_edge {
  int depth; // of the neighbour
  int label;
};

// Neighbours mapped later that are alike.
struct plan_need {
  int elabel;
  int vlabel;
  int degree; // the smallest among them
  int count;
};

// A search with domains, made when it is first needed.  A copy has none.
class late_search {
public:
  late_search() = default;
  late_search(const late_search &) {}
  late_search(late_search &&) = default;
  late_search &operator=(const late_search &) = delete;
  late_search &operator=(late_search &&) = default;
  ~late_search() = default;

  void make(const interruption *stop) {
    if (!search_)
      search_ = std::make_unique<domain_search>(stop);
  }
  domain_search *get() const { return search_.get(); }

private:
  std::unique_ptr<domain_search> search_;
};

// What a walk knows when it pauses.
struct walk_pauses {
  int root = -1;  // that of the last pause, -1: none in this search
  int below = -1; // taken back there for certain; -1: it stays with the walk
  bool is_hard = false;      // the search with domains is prepared
  bool is_too_large = false; // for it
  // Lets the walk go on below a root that it has had a mapping of.
  void skip(int w) {
    is_hard = is_hard && root != -1;
    is_too_large = is_too_large && root != -1;
    root = w;
    below = -1;
  }
};

// The state of a search; its memory is used again by the next one.
struct search_memory {
  xvector<int> at;    // per depth: slot, or root at depth 0, looked at next
  xvector<int> image; // per depth: the vertex mapped to
  xvector<char> used; // by vertex: 1 for images, 0 between searches
  // A walk that takes back about so many vertices below one root, and as many
  // as the graph has slots, ends there: the search with domains takes the root.
  int patience = 2048;
  // A search that has taken back so many, times a part of the slots in large
  // graphs, looks whether there is a component with room for the pattern.
  int look_after = 24;
  walk_pauses pauses;
  late_search hard;
  xvector<char> met;  // by vertex, for the look at components
  xvector<int> queue; // the same
};

// Which mappings a search visits: all, or only those in which the images of
// twins ascend.  Each of the latter stands for all mappings that result from it
// by exchanging twins.
enum class twin_images { any, ascending };

// The search for a connected pattern along a fixed order of its vertices.  The
// pattern is borrowed and must be without marks.
class search_plan {
public:
  // Searches throw interrupted when stop, which may be null, says so.
  explicit search_plan(const interruption *stop = nullptr) : stop_(stop) {}
  // order lists the vertices such that each but the first has a neighbour
  // before it.
  search_plan(const graph *pattern, const int *order,
              const interruption *stop = nullptr)
      : search_plan(stop) {
    set(pattern, order);
  }
  // Makes this the plan of another pattern.
  void set(const graph *pattern, const int *order);
  // The same along an order that starts at a rarest edge and goes on with the
  // vertex that has most neighbours mapped, then the rarest edge to one.  The
  // order is made by the first find() below that needs it, which must not be
  // one with a memory of the caller's; profiles is borrowed until then.
  void set_rarest_first(const graph *pattern, const graph_profiles &profiles);

  // Lets walks skip images of u with fewer neighbours, for a caller who has no
  // use for them; some may be found all the same.
  void need_degree(int u, int degree);

  // Whether the pattern occurs in t, a graph without marks; where, is written
  // to image, by pattern vertex: of all mappings the first in lexicographic
  // order along the plan's.
  bool find(const graph *t, int *image);
  // The same in graph i of a list, faster with the help of its profiles.
  bool find(const graph_profiles &profiles, int i, int *image);
  // The memory of these searches.
  search_memory &memory() { return memory_; }

  // The same with a memory of the caller's, so that any number of threads may
  // search with one plan.
  bool find(const graph *t, search_memory *memory, int *image) const;

  // The first mapping into t, and the one behind the last given, in that order;
  // false when there is none.  A walk has a new memory to itself.
  bool first(const graph *t, twin_images twins, search_memory *memory,
             int *image) const;
  bool next(const graph *t, twin_images twins, search_memory *memory,
            int *image) const;
  // The number of twins up to the vertex at a depth, itself included.
  int twins_up_to(int depth) const;

private:
  struct target;
  bool fits(const plan_step &step, const target &to, int w) const;
  bool find(const graph *t, const vertex_profile *profiles, const int *roots,
            int root_count, search_memory *memory, int *image) const;
  bool search(const graph *t, const target &to, const int *roots,
              int root_count, int depth, twin_images twins,
              search_memory *memory) const;
  template <twin_images Twins>
  int walk(const target &to, int depth, int *left, search_memory *memory) const;
  bool has_component(const target &to, int vs, search_memory *memory) const;
  bool goes_on(const target &to, int vs, int depth,
               search_memory *memory) const;
  void prepare_hard(const graph *t, search_memory *memory) const;
  int pause(const graph *t, const target &to, int depth, int *given,
            search_memory *memory) const;
  int take_over(const target &to, int depth, search_memory *memory) const;
  void write_image(const search_memory &memory, int *image) const;

  // A vertex of the pattern while its place in the order is looked for.
  struct waiting_vertex {
    int mapped; // neighbours in the order; -1 when in it itself
    int rarest; // frequency of the rarest edge to one of them
  };
  void set_pattern(const graph *pattern);
  void settle();
  void make_steps(const int *order);
  void add_step(int u, int d);
  int twin_of(int u) const;
  int first_in_order(const graph_profiles &profiles) const;
  int next_in_order() const;

  const interruption *stop_;
  const graph *pattern_ = nullptr;
  const graph_profiles *rarest_by_ = nullptr; // while there are no steps yet
  xvector<plan_step> steps_;
  xvector<plan_edge> closing_;
  xvector<plan_need> needs_;
  xvector<int> order_;
  xvector<int> depth_; // by vertex
  cycle_core_finder cores_;
  cycle_core core_;         // the pattern's
  uint64_t edge_kinds_ = 0; // the pattern's
  xvector<plan_need> later_;
  xvector<waiting_vertex> waiting_;
  search_memory memory_; // of find()
};

} // namespace kestro
