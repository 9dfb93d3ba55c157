// Canonical labelling.
//
// Refinement alone settles most graphs.  Where it leaves cells of several
// vertices, a search picks the order: the exhaustive one when every cell is
// small, whose result depends on the graph alone; else the individualising one,
// or for the exact form the one of cl/exact_search.h, whose result depends on
// the graph alone, too.  The work arrays only grow.

#include "cl/canonical.h"

#include <algorithm>
#include <utility>

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

static old_arrays copy_arrays(const graph *g, xvector<int> *memory) {
  const size_t ints =
      2 * static_cast<size_t>(g->es) + 3 * static_cast<size_t>(g->vs) + 1;
  if (memory->size() < ints)
    memory->resize(ints);
  int *to = memory->data();
  const auto copied = [&to](const int *from, int count) {
    std::copy(from, from + count, to);
    return std::exchange(to, to + count);
  };
  old_arrays old;
  old.e = copied(g->e, g->es);
  old.v = copied(g->v, g->vs + 1);
  old.vid = copied(g->vid, g->vs);
  old.elabel = copied(g->elabel, g->es);
  old.vlabel = copied(g->vlabel, g->vs);
  return old;
}

// Inserts the slot (neighbour, label) among the sorted ones in [first, end).
static void insert_slot(graph *g, int first, int end, int neighbour,
                        int label) {
  int j = end;
  for (; j > first && g->e[j - 1] > neighbour; j--) {
    g->e[j] = g->e[j - 1];
    g->elabel[j] = g->elabel[j - 1];
  }
  g->e[j] = neighbour;
  g->elabel[j] = label;
}

// Rewrites g with the vertex at position i as vertex i.
void labeller::relabel(graph *g) {
  const int *order = cells_.order.data();
  const old_arrays old = copy_arrays(g, &arrays_);
  if (position_.size() < static_cast<size_t>(g->vs))
    position_.resize(static_cast<size_t>(g->vs));
  int *position = position_.data();
  for (int i = 0; i < g->vs; i++)
    position[order[i]] = i;
  int filled = 0;
  g->v[0] = 0;
  for (int i = 0; i < g->vs; i++) {
    const int u = order[i];
    g->vid[i] = old.vid[u];
    g->vlabel[i] = old.vlabel[u];
    const int first = filled;
    for (int j = old.v[u]; j < old.v[u + 1]; j++)
      insert_slot(g, first, filled++, position[old.e[j]], old.elabel[j]);
    g->v[i + 1] = filled;
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
