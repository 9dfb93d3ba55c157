// Ordered colour refinement on flat arrays.
//
// A pass gives every vertex of an open cell its signature, the sorted labels
// and colours along its edges, sorts the cell by it, and splits where it
// differs; all signatures of a pass see the colours of the pass before.  Passes
// go on until one splits nothing.  Sorting is stable, so vertices that nothing
// tells apart stay in the order they came in; canonical forms depend on that.
//
// A pass costs the sorting of the open cells' adjacency lists and of the cells
// themselves; singletons cost nothing.  A path takes half as many passes as it
// has vertices, though, so in large graphs passes look at changes only
// (cl/refine_changes.h).  In small ones signatures are single words
// (cl/refine_small.h).

#include "cl/colouring.h"

#include <algorithm>

#include "cl/refine_changes.h"
#include "cl/refine_small.h"

namespace kestro {

namespace {

// How two vertices of one cell compare.
class vertex_order {
public:
  vertex_order(const graph *g, const uint64_t *signature, bool first_pass)
      : g_(g), signature_(signature), first_pass_(first_pass) {}

  // Negative when a comes first, 0 when nothing tells them apart.
  int compare(int a, int b) const {
    const int degree = g_->v[a + 1] - g_->v[a];
    if (first_pass_) { // later on, one cell has one degree and one label
      const int other = g_->v[b + 1] - g_->v[b];
      if (degree != other)
        return degree > other ? -1 : 1;
      if (g_->vlabel[a] != g_->vlabel[b])
        return g_->vlabel[a] < g_->vlabel[b] ? -1 : 1;
    }
    const uint64_t *x = signature_ + g_->v[a];
    const uint64_t *y = signature_ + g_->v[b];
    for (int k = 0; k < degree; k++)
      if (x[k] != y[k])
        return x[k] < y[k] ? -1 : 1;
    return 0;
  }

private:
  const graph *g_;
  const uint64_t *signature_;
  bool first_pass_;
};

} // namespace

static int cell_size(const colouring *c, int first) {
  return c->cell_end[static_cast<size_t>(first)] - first;
}

template <class T, class Less>
static void insertion_sort(T *first, T *last, Less less) {
  for (T *i = first; i < last; i++) {
    const T item = *i;
    T *j = i;
    for (; j > first && less(item, j[-1]); j--)
      *j = j[-1];
    *j = item;
  }
}

// A stable sort; cells and adjacency lists are nearly always short.
template <class T, class Less>
static void stable_sort(T *first, T *last, Less less) {
  if (last - first <= 24)
    insertion_sort(first, last, less);
  else
    std::stable_sort(first, last, less);
}

static void sign(const colouring *c, const graph *g, int u,
                 uint64_t *signature) {
  const int *colour = c->colour.data();
  for (int j = g->v[u]; j < g->v[u + 1]; j++)
    signature[j] = static_cast<uint64_t>(g->elabel[j]) << 32 |
                   static_cast<uint64_t>(colour[g->e[j]]);
  stable_sort(signature + g->v[u], signature + g->v[u + 1],
              [](uint64_t x, uint64_t y) { return x < y; });
}

// Splits the cell [first, end) by the signatures of its vertices; returns how
// many cells it gave.  New colours go to new_colour.
static int split_cell(colouring *c, const vertex_order &by, int first, int end,
                      int *new_colour) {
  int *order = c->order.data();
  stable_sort(order + first, order + end,
              [&](int a, int b) { return by.compare(a, b) < 0; });
  int cells = 1;
  int start = first;
  new_colour[first] = first;
  for (int i = first + 1; i < end; i++) {
    if (by.compare(order[start], order[i]) != 0) {
      c->cell_end[static_cast<size_t>(start)] = i;
      start = i;
      cells++;
    }
    new_colour[i] = start;
  }
  c->cell_end[static_cast<size_t>(start)] = end;
  return cells;
}

static void pass(colouring *c, const graph *g, bool first_pass,
                 refinement_work *work) {
  uint64_t *signature = work->signature.data();
  int *new_colour = work->new_colour.data();
  const int *cell_end = c->cell_end.data();
  work->poll.step(g->vs);
  for (int s = 0; s < g->vs; s = cell_end[s])
    if (cell_end[s] - s > 1)
      for (int i = s; i < cell_end[s]; i++)
        sign(c, g, c->order[static_cast<size_t>(i)], signature);
  const vertex_order by(g, signature, first_pass);
  for (int s = 0, end; s < g->vs; s = end) {
    end = cell_end[s];
    if (end - s == 1)
      new_colour[s] = s;
    else
      c->cells += split_cell(c, by, s, end, new_colour) - 1;
  }
  for (int i = 0; i < g->vs; i++)
    c->colour[static_cast<size_t>(c->order[static_cast<size_t>(i)])] =
        new_colour[i];
}

// Passes until one splits nothing.
static void refine(colouring *c, const graph *g, bool first_pass,
                   refinement_work *work) {
  int old_cells;
  do {
    old_cells = c->cells;
    pass(c, g, first_pass, work);
    first_pass = false;
  } while (c->cells > old_cells && c->cells < g->vs);
}

// The same from the first pass on, for a large graph.
static void refine_large(colouring *c, const graph *g, refinement_work *work) {
  pass(c, g, true, work);
  if (c->cells == 1 || c->cells == g->vs)
    return;
  int largest = 0;
  for (int s = 0; s < g->vs; s = c->cell_end[static_cast<size_t>(s)])
    if (cell_size(c, s) > cell_size(c, largest))
      largest = s;
  work->changed.clear();
  for (int s = 0; s < g->vs; s = c->cell_end[static_cast<size_t>(s)])
    if (s != largest)
      work->changed.insert(work->changed.end(), c->order.begin() + s,
                           c->order.begin() + s + cell_size(c, s));
  refine_changes(c, g, &work->changed, work);
}

void colouring_init(colouring *c, const graph *g, refinement_work *work) {
  const size_t vs = static_cast<size_t>(g->vs);
  c->order.resize(vs);
  c->colour.assign(vs, 0);
  c->cell_end.assign(vs, g->vs);
  c->cells = g->vs > 0;
  for (int i = 0; i < g->vs; i++)
    c->order[static_cast<size_t>(i)] = i;
  if (work->signature.size() < static_cast<size_t>(g->es))
    work->signature.resize(static_cast<size_t>(g->es));
  if (work->new_colour.size() < vs)
    work->new_colour.resize(vs);
  if (g->vs >= work->large)
    refine_large(c, g, work);
  else if (g->vs <= work->small && can_refine_small(g))
    refine_small(c, g, work);
  else
    refine(c, g, true, work);
}

void colouring_individualise(colouring *c, const graph *g, int v,
                             refinement_work *work) {
  const int first = c->colour[static_cast<size_t>(v)];
  const int end = c->cell_end[static_cast<size_t>(first)];
  int *order = c->order.data();
  int *at = std::find(order + first, order + end, v);
  std::move_backward(order + first, at, at + 1);
  order[first] = v;
  for (int i = first + 1; i < end; i++)
    c->colour[static_cast<size_t>(order[i])] = first + 1;
  c->cell_end[static_cast<size_t>(first)] = first + 1;
  c->cell_end[static_cast<size_t>(first) + 1] = end;
  c->cells++;
  if (c->cells == g->vs)
    return;
  if (g->vs >= work->large) {
    work->changed.assign(1, v);
    refine_changes(c, g, &work->changed, work);
  } else if (g->vs <= work->small && can_refine_small(g)) {
    refine_small_from(c, g, v, work);
  } else {
    refine(c, g, false, work);
  }
}

int colouring_first_open(const colouring *c, int from) {
  const int vs = static_cast<int>(c->order.size());
  for (int s = from; s < vs; s = c->cell_end[static_cast<size_t>(s)])
    if (c->cell_end[static_cast<size_t>(s)] - s > 1)
      return s;
  return -1;
}

int colouring_largest_cell(const colouring *c) {
  int largest = 0;
  const int vs = static_cast<int>(c->order.size());
  for (int s = 0, end; s < vs; s = end) {
    end = c->cell_end[static_cast<size_t>(s)];
    largest = std::max(largest, end - s);
  }
  return largest;
}

void colouring_coarsen(colouring *c, const colouring *coarser) {
  c->cells = coarser->cells;
  c->colour = coarser->colour;
  c->cell_end = coarser->cell_end;
}

} // namespace kestro
