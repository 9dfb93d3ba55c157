// Canonical labelling.
//
// Refinement alone settles most graphs.  Where it leaves cells of several
// vertices, a search picks the order: the exhaustive one when every cell is
// small, whose result depends on the graph alone, else the individualising one.
// The work arrays only grow.

#include "cl/canonical.h"

#include <algorithm>
#include <utility>

#include "base/error.h"
#include "base/thread_state.h"
#include "cl/canonical_search.h"

namespace kestro {

namespace {

struct canonical_state {
  int stabilizer_threshold = 5;
  bool invariant = true; // of the form made last
  bool rigid = true;     // the graph of the form made last
  colouring cells;
  label_cells labels;
  xvector<int> position; // by vertex, its canonical index
  xvector<int> arrays;   // a copy of the graph's arrays
};

} // namespace

static thread_local thread_state<canonical_state> state;

void cl_set_stabilizer_threshold(int n) { state->stabilizer_threshold = n; }

int cl_get_stabilizer_threshold() { return state->stabilizer_threshold; }

bool cl_form_is_invariant() { return state->invariant; }

bool cl_form_is_rigid() { return state->rigid; }

void cl_free_work_area() {
  const int threshold = state->stabilizer_threshold;
  *state = canonical_state();
  state->stabilizer_threshold = threshold;
  colouring_free_work_area();
}

static int largest_cell(const colouring *c) {
  int largest = 0;
  const int vs = static_cast<int>(c->order.size());
  for (int s = 0, end; s < vs; s = end) {
    end = c->cell_end[static_cast<size_t>(s)];
    largest = std::max(largest, end - s);
  }
  return largest;
}

// Brings order into canonical order; returns whether the form is invariant.
static bool find_order(const graph *g) {
  colouring *c = &state->cells;
  colouring_init(c, g);
  state->rigid = c->cells == g->vs;
  if (state->rigid)
    return true;
  state->labels.fill(g);
  if (largest_cell(c) >= state->stabilizer_threshold)
    return search_by_stabilizer(c, g, state->labels);
  return search_exhaustively(c, g, state->labels);
}

// The graph's arrays as they were, read while they are rewritten.
struct old_arrays {
  const int *e, *v, *vid, *elabel, *vlabel;
};

static old_arrays copy_arrays(const graph *g) {
  const size_t ints =
      2 * static_cast<size_t>(g->es) + 3 * static_cast<size_t>(g->vs) + 1;
  if (state->arrays.size() < ints)
    state->arrays.resize(ints);
  int *to = state->arrays.data();
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

// Rewrites g with vertex order[i] as vertex i.
static void relabel(graph *g, const int *order) {
  const old_arrays old = copy_arrays(g);
  if (state->position.size() < static_cast<size_t>(g->vs))
    state->position.resize(static_cast<size_t>(g->vs));
  int *position = state->position.data();
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

uint32_t cl_canonicalize_graph(graph *g) {
  state->invariant = find_order(g);
  relabel(g, state->cells.order.data());
  g->key = graph_key(g);
  KESTRO_STRUCTURE(graph_check(g));
  return g->key;
}

} // namespace kestro
