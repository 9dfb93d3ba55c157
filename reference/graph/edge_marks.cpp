// Disabling an edge after asking, by a walk over the rest, whether that stays
// connected.

#include "reference/graph/edge_marks.h"

#include <cassert>

#include "reference/graph/connectivity.h"

namespace kestro {

int graph_disable_edge_between(graph *g, int u, int v) {
  assert(u != v);
  const bool only_edge =
      graph_vertex_degree(g, u) == 1 && graph_vertex_degree(g, v) == 1;
  if (only_edge && graph_has_edge(g, u, v))
    return 0;
  graph_mark_edge_between(g, u, v);
  if (graph_is_connected(g))
    return 1;
  graph_enable_edge_between(g, u, v);
  return 0;
}

// The vertex whose range holds slot x.
static int slot_owner(const graph *g, int slot) {
  int x = -1;
  for (int i = 0; i < g->vs && x == -1; i++)
    if (g->v[i] <= slot && slot < g->v[i + 1])
      x = i;
  assert(x != -1);
  return x;
}

int graph_disable_edge(graph *g, int x, int *u, int *w) {
  if (x < 0 || x >= g->es)
    return 0;
  const int from = slot_owner(g, x);
  const int to = g->e[x];
  if (!graph_disable_edge_between(g, from, to))
    return 0;
  *u = from;
  *w = to;
  return 1;
}

} // namespace kestro
