// Canonical labelling.
//
// Refinement alone settles most graphs.  Where it leaves cells of several
// vertices, a search picks the order: the exhaustive one when every cell is
// small, whose result depends on the graph alone; else the individualising one,
// or for the exact form the one of cl/exact_search.h, whose result depends on
// the graph alone, too.  The work arrays only grow.

#include "cl/canonical.h"

#include <algorithm>

#include "base/error.h"
#include "cl/exact_search.h"

namespace kestro {

// Brings the order of cells_ into canonical order; all but the key is known
// then.
canonical_form labeller::find_order(const graph *g) {
  colouring_init(&cells_, g, &work_);
  if (cells_.cells == g->vs)
    return {0, true, true};
  labels_.fill(g);
  if (form_ == form::exact) {
    search_exactly(&cells_, g, labels_, threshold_, &work_);
    return {0, true, false};
  }
  if (colouring_largest_cell(&cells_) >= threshold_)
    return {0, search_by_stabilizer(&cells_, g, labels_, &work_, &calls_),
            false};
  return {0, search_exhaustively(&cells_, g, labels_, &work_.poll), false};
}

// The graph's arrays as they were, read while they are rewritten.
struct old_arrays {
  const int *e, *v, *vid, *elabel, *vlabel;
};

// Copies the arrays in one piece: they lie in one block, which vlabel ends.
static old_arrays copy_arrays(const graph *g, xvector<int> *memory) {
  const int *const end = g->vlabel + g->vs;
  const auto ints = static_cast<size_t>(end - g->e);
  if (memory->size() < ints)
    memory->resize(ints);
  int *const to = memory->data();
  std::copy(static_cast<const int *>(g->e), end, to);
  return {to, to + (g->v - g->e), to + (g->vid - g->e), to + (g->elabel - g->e),
          to + (g->vlabel - g->e)};
}

// Rewrites g with the vertex at position i as vertex i.  Neighbour lists are
// filled side by side: each vertex in turn enters itself in those of its
// neighbours, so that they come out ascending.
void labeller::relabel(graph *g) {
  const int vs = g->vs;
  const int *const order = cells_.order.data();
  const old_arrays old = copy_arrays(g, &arrays_);
  if (next_.size() < static_cast<size_t>(vs))
    next_.resize(static_cast<size_t>(vs));
  int *const next = next_.data();
  int filled = 0;
  for (int i = 0; i < vs; i++) {
    const int u = order[i];
    g->v[i] = next[u] = filled;
    g->vid[i] = old.vid[u];
    g->vlabel[i] = old.vlabel[u];
    filled += old.v[u + 1] - old.v[u];
  }
  g->v[vs] = filled;
  int *const e = g->e;
  int *const elabel = g->elabel;
  for (int i = 0; i < vs; i++) {
    const int u = order[i];
    const int end = old.v[u + 1];
    for (int j = old.v[u]; j < end; j++) {
      const int slot = next[old.e[j]]++;
      e[slot] = i;
      elabel[slot] = old.elabel[j];
    }
  }
}

canonical_form labeller::canonicalize(graph *g) {
  canonical_form form = find_order(g);
  relabel(g);
  form.key = g->key = graph_key(g);
  KESTRO_STRUCTURE(graph_check(g));
  return form;
}

} // namespace kestro
