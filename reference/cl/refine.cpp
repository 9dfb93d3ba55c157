// Ordered colour refinement.
//
// A pass sorts the vertices by part, degree, label and the parts seen along
// their edges, and opens a new part wherever neighbours in that order differ.
// Since a split can tell further vertices apart, passes repeat until one
// changes nothing.  Each pass sees the parts of the one before: new parts are
// kept aside until the pass is over.
//
// Sorting is a merge sort with insertion sort for short runs, into scratch that
// the adjmat brings along: it is stable and allocates nothing.

#include "reference/cl/refine.h"

#include <algorithm>

namespace kestro::stepwise {

int compare_edges(const cl_edge *x, const cl_edge *y) {
  if (x->label != y->label)
    return x->label - y->label;
  return x->v->part - y->v->part;
}

int compare_vertices(const cl_vertex *a, const cl_vertex *b) {
  if (a->part != b->part)
    return a->part - b->part;
  if (a->degree != b->degree)
    return b->degree - a->degree; // the one key that descends
  if (a->label != b->label)
    return a->label - b->label;
  for (int k = 0; k < a->degree; k++)
    if (const int d = compare_edges(&a->adj[k], &b->adj[k]))
      return d;
  return 0;
}

template <class T, class Less>
static void insertion_sort(T *array, int n, Less less) {
  for (int i = 1; i < n; i++) {
    const T item = array[i];
    int j = i;
    for (; j > 0 && less(item, array[j - 1]); j--)
      array[j] = array[j - 1];
    array[j] = item;
  }
}

// Sorts n elements, equal ones in the order they came; scratch has room for n.
template <class T, class Less>
static void stable_sort(T *array, int n, T *scratch, Less less) {
  if (n <= 16) {
    insertion_sort(array, n, less);
    return;
  }
  T *const middle = array + n / 2;
  T *const end = array + n;
  stable_sort(array, n / 2, scratch, less);
  stable_sort(middle, n - n / 2, scratch, less);
  std::merge(array, middle, middle, end, scratch, less);
  std::copy(scratch, scratch + n, array);
}

void cl_sort_vertices(adjmat *m) {
  for (int i = 0; i < m->vs; i++)
    stable_sort(m->vertex[i].adj, m->vertex[i].degree, m->edge_scratch,
                [](const cl_edge &x, const cl_edge &y) {
                  return compare_edges(&x, &y) < 0;
                });
  stable_sort(m->sorted, m->vs, m->vertex_scratch,
              [](const cl_vertex *a, const cl_vertex *b) {
                return compare_vertices(a, b) < 0;
              });
  for (int i = 0; i < m->vs; i++) {
    m->perm[i] = m->sorted[i]->row;
    m->iperm[m->perm[i]] = i;
  }
}

// Numbers the parts of the sorted vertices anew, each led by its first vertex;
// returns how many there are.
static int split_parts(adjmat *m) {
  int parts = 0;
  const cl_vertex *leader = nullptr;
  for (int i = 0; i < m->vs; i++) {
    cl_vertex *v = m->sorted[i];
    if (!leader || compare_vertices(leader, v) != 0) {
      leader = v;
      m->new_part_start[parts++] = i;
    }
    v->new_part = parts - 1;
  }
  m->new_part_start[parts] = m->vs;
  return parts;
}

static void take_new_parts(adjmat *m, int parts) {
  m->parts = m->new_parts = parts;
  std::copy(m->new_part_start, m->new_part_start + parts + 1, m->part);
  for (int i = 0; i < m->vs; i++)
    m->vertex[i].part = m->vertex[i].new_part;
}

void cl_refine(adjmat *m) {
  if (m->parts < 1)
    return;
  int old_parts;
  do {
    old_parts = m->parts;
    cl_sort_vertices(m);
    take_new_parts(m, split_parts(m));
  } while (m->parts > old_parts);
}

} // namespace kestro::stepwise
