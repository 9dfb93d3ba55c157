// Canonical labelling.
//
// Refinement alone settles most graphs.  Where it leaves parts of several
// vertices, a search picks the order: the exhaustive one when every part is
// small, else the stabilizer search.  One adjmat serves all graphs and only
// grows; a call allocates nothing but, before a search, a copy to hold the best
// order found.

#include "reference/cl/canonical.h"

#include <algorithm>
#include <cassert>

#include "base/error.h"
#include "reference/cl/canonical_search.h"
#include "reference/cl/refine.h"

namespace kestro::stepwise {

namespace {

struct canonical_state {
  int stabilizer_threshold = 5;
  adjmat_ptr work;  // null before the first graph
  int capacity = 0; // vertices that work has room for
};

} // namespace

static thread_local canonical_state state;

void cl_set_stabilizer_threshold(int n) { state.stabilizer_threshold = n; }

int cl_get_stabilizer_threshold() { return state.stabilizer_threshold; }

void cl_free_work_area() {
  state.work.reset();
  state.capacity = 0;
}

// The shared adjmat, ready for n vertices.
static adjmat *work_area(int n) {
  if (state.capacity < n)
    cl_free_work_area();
  if (!state.work) {
    state.work.reset(cl_new_adjmat(n));
    state.capacity = n;
  }
  cl_reset_adjmat(state.work.get(), n);
  return state.work.get();
}

uint32_t cl_canonicalize_graph(graph *g) {
  adjmat *m = work_area(g->vs);
  cl_graph_to_adjmat(g, m);
  cl_canonicalize_adjmat(m);
  cl_adjmat_to_graph(m, g);
  g->key = graph_key(g);
  KESTRO_STRUCTURE(graph_check(g));
  return g->key;
}

static int largest_part(const adjmat *m) {
  int largest = 0;
  for (int k = 0; k < m->parts; k++)
    largest = std::max(largest, m->part[k + 1] - m->part[k]);
  return largest;
}

void cl_canonicalize_adjmat(adjmat *m) {
  cl_refine(m);
  if (m->parts == m->vs)
    return;
  const adjmat_ptr best(cl_dup_adjmat(m));
  if (largest_part(m) < state.stabilizer_threshold) {
    save_adjmat_perm(m);
    compare_adjmat_parts(m, 0, best.get());
  } else {
    const int part = first_open_part(m, 0);
    assert(part != -1);
    get_min_adjmat_by_stabilizer(m, part, 0, best.get());
  }
  cl_copy_adjmat2(best.get(), m);
}

} // namespace kestro::stepwise
