// Matching all patterns of a result.
//
// Patterns are tried by size.  One whose parents do not all occur cannot occur
// either, so in most graphs few are looked for.  Labels are compared by ids: a
// graph that numbers them otherwise is copied once with the result's, where a
// label that the result does not know becomes one that no pattern has.
//
// What a search writes to belongs to the call, so any number of threads match.

#include <kestro/matcher.h>

#include <algorithm>
#include <utility>

#include "base/comparators.h"
#include "base/xmalloc.h"
#include "cl/search_plan.h"
#include "graph/connectivity.h"
#include "library/access.h"

namespace kestro {

struct lattice_matcher::state {
  explicit state(const result &r) : patterns(r) {
    xvector<int> order;
    plans.reserve(static_cast<size_t>(r.size()));
    for (const pattern &p : patterns) {
      const graph *g = access::graph_of(p.graph());
      order.resize(static_cast<size_t>(g->vs));
      graph_bfs_order(g, order.data());
      plans.emplace_back(g, order.data());
    }
  }

  result patterns; // whose graphs the plans borrow
  xvector<search_plan> plans;
};

lattice_matcher::lattice_matcher(const result &patterns)
    : state_(std::make_shared<const state>(patterns)) {}

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
  const label_set *ls = access::label_set(state_->patterns.mined());
  const graph *target = access::graph_of(g);
  graph_ptr copy;
  if (access::label_set(g) != ls) { // which is alive, so that its place is its
    copy = translated(g, ls);
    target = copy.get();
  }
  std::vector<int> found;
  xvector<char> occurs(state_->plans.size(), 0);
  xvector<int> image;
  search_memory memory;
  for (size_t i = 0; i < state_->plans.size(); i++) {
    const int at = static_cast<int>(i);
    const auto parents = state_->patterns.parents(at);
    if (!std::all_of(parents.begin(), parents.end(), [&](int parent) {
          return occurs[static_cast<size_t>(parent)];
        }))
      continue;
    image.resize(static_cast<size_t>(state_->patterns[at].graph().vertices()));
    if (!state_->plans[i].find(target, &memory, image.data()))
      continue;
    occurs[i] = 1;
    found.push_back(at);
  }
  return found;
}

} // namespace kestro
