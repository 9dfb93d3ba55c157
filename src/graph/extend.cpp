// Building a graph and one edge more in one pass.
//
// The slots are copied in up to three runs, with each new one let in at its
// sorted place, so the result needs no sorting.  It goes into memory that the
// caller uses again; nothing is allocated.

#include "graph/extend.h"

#include <algorithm>
#include <numeric>

#include "base/error.h"

namespace kestro {

// Where neighbour belongs in the list of vertex i.
static int place_in(const graph *g, int i, int neighbour) {
  int j = g->v[i];
  while (j < g->v[i + 1] && g->e[j] < neighbour)
    j++;
  return j;
}

// Copies the slots in [first, end) of g to those of result from at on; returns
// where they end.
static int copy_slots(const graph *g, int first, int end, graph *result,
                      int at) {
  std::copy(g->e + first, g->e + end, result->e + at);
  std::copy(g->elabel + first, g->elabel + end, result->elabel + at);
  return at + end - first;
}

static int append_slot(graph *result, int at, int neighbour, int elabel) {
  result->e[at] = neighbour;
  result->elabel[at] = elabel;
  return at + 1;
}

// Copies the vertices of g, of which first has a slot more in result, and so
// has second, which is greater, where g has it.
static void copy_vertices(const graph *g, int first, int second,
                          graph *result) {
  const int vs = g->vs;
  const int *const v = g->v;
  int *const to = result->v;
  for (int i = 0; i <= vs; i++)
    to[i] = v[i] + (i > first) + (i > second);
  std::copy_n(g->vlabel, vs, result->vlabel);
  if (g->vid)
    std::copy_n(g->vid, vs, result->vid);
  else
    std::iota(result->vid, result->vid + vs, 0);
}

void graph_extend_between(const graph *g, int from, int to, int elabel,
                          graph *result) {
  assert(!graph_has_edge(g, from, to));
  result->es = g->es + 2;
  result->vs = g->vs;
  const auto [first, second] = std::minmax(from, to);
  const int of_first = place_in(g, first, second);
  const int of_second = place_in(g, second, first);
  int at = copy_slots(g, 0, of_first, result, 0);
  at = append_slot(result, at, second, elabel);
  at = copy_slots(g, of_first, of_second, result, at);
  at = append_slot(result, at, first, elabel);
  copy_slots(g, of_second, g->es, result, at);
  copy_vertices(g, first, second, result);
  KESTRO_STRUCTURE(graph_check(result));
}

void graph_extend_to_new(const graph *g, int from, int elabel, int vlabel,
                         graph *result) {
  const int n = g->vs;
  result->es = g->es + 2;
  result->vs = n + 1;
  const int of_from = g->v[from + 1]; // no neighbour is greater than n
  int at = copy_slots(g, 0, of_from, result, 0);
  at = append_slot(result, at, n, elabel);
  at = copy_slots(g, of_from, g->es, result, at);
  at = append_slot(result, at, from, elabel);
  copy_vertices(g, from, n, result);
  result->v[n + 1] = at;
  result->vlabel[n] = vlabel;
  result->vid[n] = n;
  KESTRO_STRUCTURE(graph_check(result));
}

} // namespace kestro
