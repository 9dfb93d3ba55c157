// Matching many patterns.
//
// Patterns are tried in their order, in which parents come first.  One whose
// parents do not all occur cannot occur either, so in most graphs few are
// looked for.  Labels are compared by ids: a graph that numbers them otherwise
// is copied once with the patterns', where a label that these do not know
// becomes one that no pattern has.
//
// What a search writes to belongs to the call, so any number of threads match.

#include <kestro/matcher.h>

#include <algorithm>
#include <string>
#include <utility>

#include <kestro/error.h>

#include "base/comparators.h"
#include "base/xmalloc.h"
#include "cl/search_plan.h"
#include "graph/connectivity.h"
#include "library/access.h"

namespace kestro {

struct lattice_matcher::state {
  explicit state(const result &r) : of_result(r), labels_of(r.mined()) {
    plans.reserve(static_cast<size_t>(r.size()));
    for (int i = 0; i < r.size(); i++) {
      prepare(r[i].graph());
      add_parents(r.parents(i));
    }
  }

  state(const database &patterns, std::span<const int64_t> first,
        std::span<const int> all)
      : labels_of(patterns) {
    const auto n = static_cast<size_t>(patterns.size());
    if (first.size() != n + 1 || first[0] != 0 ||
        first[n] != static_cast<int64_t>(all.size()) ||
        !std::is_sorted(first.begin(), first.end()))
      throw error("the places of parents make no sense");
    plans.reserve(n);
    for (size_t i = 0; i < n; i++) {
      const auto from = static_cast<size_t>(first[i]);
      prepare(patterns[static_cast<int>(i)]);
      add_parents(all.subspan(from, static_cast<size_t>(first[i + 1]) - from));
    }
  }

  // The parents of pattern i, which come before it.
  std::span<const int> parents_of(size_t i) const {
    return {parents.data() + first_parent[i],
            first_parent[i + 1] - first_parent[i]};
  }

  std::optional<result> of_result; // its graphs or those of the database are
  database labels_of;              // borrowed by the plans
  xvector<search_plan> plans;
  xvector<size_t> first_parent = {0};
  xvector<int> parents;
  size_t most_vertices = 0; // of a pattern

private:
  void prepare(graph_view p) {
    const graph *g = access::graph_of(p);
    const std::string name = "pattern " + std::to_string(plans.size());
    if (g->vs == 0)
      throw error(name + " has no vertex");
    order_.resize(static_cast<size_t>(g->vs));
    if (graph_bfs_order(g, order_.data()) < g->vs)
      throw error(name + " is not connected");
    plans.emplace_back(g, order_.data());
    most_vertices = std::max(most_vertices, order_.size());
  }

  // Those of the pattern prepared last.
  void add_parents(std::span<const int> own) {
    for (const int parent : own)
      if (parent < 0 || static_cast<size_t>(parent) >= plans.size() - 1)
        throw error("pattern " + std::to_string(plans.size() - 1) +
                    " comes before its parent " + std::to_string(parent));
    parents.insert(parents.end(), own.begin(), own.end());
    first_parent.push_back(parents.size());
  }

  xvector<int> order_;
};

lattice_matcher::lattice_matcher(const result &patterns)
    : state_(std::make_shared<const state>(patterns)) {}

lattice_matcher::lattice_matcher(const database &patterns,
                                 std::span<const int64_t> first_parents,
                                 std::span<const int> parents)
    : state_(std::make_shared<const state>(patterns, first_parents, parents)) {}

static void translate(const ksstack *from, const ksstack *to, int *labels,
                      int count) {
  const char *const *const texts = ksstack_array<const char *>(from);
  for (int i = 0; i < count; i++)
    labels[i] = ksstack_bsearch_index(&texts[labels[i]], to, compar_str);
}

// A copy of g with the ids of other labels, -1 for those unknown to them.
static graph_ptr translated(graph_view g, const label_set *to) {
  const label_set *from = access::label_set(g);
  graph_ptr copy(graph_copy(access::graph_of(g)));
  translate(from->vertex_labels, to->vertex_labels, copy->vlabel, copy->vs);
  translate(from->edge_labels, to->edge_labels, copy->elabel, copy->es);
  return copy;
}

std::vector<int> lattice_matcher::contained(graph_view g) const {
  const label_set *ls = access::label_set(state_->labels_of);
  const graph *target = access::graph_of(g);
  graph_ptr copy;
  if (access::label_set(g) != ls) { // which is alive, so that its place is its
    copy = translated(g, ls);
    target = copy.get();
  }
  std::vector<int> found;
  xvector<char> occurs(state_->plans.size(), 0);
  xvector<int> image(state_->most_vertices);
  search_memory memory;
  for (size_t i = 0; i < state_->plans.size(); i++) {
    const auto parents = state_->parents_of(i);
    if (!std::all_of(parents.begin(), parents.end(), [&](int parent) {
          return occurs[static_cast<size_t>(parent)];
        }))
      continue;
    if (!state_->plans[i].find(target, &memory, image.data()))
      continue;
    occurs[i] = 1;
    found.push_back(static_cast<int>(i));
  }
  return found;
}

} // namespace kestro
