// Building a graph and one edge more in one pass.
//
// Neighbour lists are copied with the new slot let in at its sorted place, so
// the result needs no sorting.  It goes into memory that the caller uses again;
// nothing is allocated.

#include "graph/extend.h"

#include <algorithm>

#include "base/error.h"

namespace kestro {

// Appends vertex i of g, which loses nothing, to result, whose slots up to
// count are filled; returns how many are then.
static int copy_vertex(const graph *g, int i, int count, graph *result) {
  const int degree = g->v[i + 1] - g->v[i];
  result->v[i] = count;
  result->vlabel[i] = g->vlabel[i];
  result->vid[i] = g->vid ? g->vid[i] : i;
  std::copy_n(g->e + g->v[i], degree, result->e + count);
  std::copy_n(g->elabel + g->v[i], degree, result->elabel + count);
  return count + degree;
}

// Lets a slot in among those of the vertex appended last.
static int insert_slot(graph *result, int first, int count, int neighbour,
                       int elabel) {
  int j = count;
  for (; j > first && result->e[j - 1] > neighbour; j--) {
    result->e[j] = result->e[j - 1];
    result->elabel[j] = result->elabel[j - 1];
  }
  result->e[j] = neighbour;
  result->elabel[j] = elabel;
  return count + 1;
}

void graph_extend_between(const graph *g, int from, int to, int elabel,
                          graph *result) {
  assert(!graph_has_edge(g, from, to));
  result->es = g->es + 2;
  result->vs = g->vs;
  int count = 0;
  for (int i = 0; i < g->vs; i++) {
    const int first = count;
    count = copy_vertex(g, i, count, result);
    if (i == from || i == to)
      count = insert_slot(result, first, count, i == from ? to : from, elabel);
  }
  result->v[g->vs] = count;
  KESTRO_STRUCTURE(graph_check(result));
}

void graph_extend_to_new(const graph *g, int from, int elabel, int vlabel,
                         graph *result) {
  const int n = g->vs;
  result->es = g->es + 2;
  result->vs = n + 1;
  int count = 0;
  for (int i = 0; i < n; i++) {
    const int first = count;
    count = copy_vertex(g, i, count, result);
    if (i == from)
      count = insert_slot(result, first, count, n, elabel);
  }
  result->v[n] = count;
  result->vlabel[n] = vlabel;
  result->vid[n] = n;
  count = insert_slot(result, count, count, from, elabel);
  result->v[n + 1] = count;
  KESTRO_STRUCTURE(graph_check(result));
}

} // namespace kestro
