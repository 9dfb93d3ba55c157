// Disabling and enabling one edge in place.
//
// Nothing is rebuilt: two slots and at most one vertex are complemented.  The
// cost is the walk that checks the rest for connectedness.

#include "graph/edge_marks.h"

#include "base/error.h"
#include "graph/connectivity.h"

namespace kestro {

void graph_mark_edge_between(graph *g, int u, int v) {
  assert(u != v);
  int i = g->v[u];
  while (i < g->v[u + 1] && g->e[i] != v)
    i++;
  assert(i < g->v[u + 1]);
  const int slot_u = i;
  i = g->v[v];
  while (i < g->v[v + 1] && g->e[i] != u)
    i++;
  assert(i < g->v[v + 1]);
  const int slot_v = i;

  const bool leaf_u = graph_vertex_degree(g, u) == 1;
  const bool leaf_v = graph_vertex_degree(g, v) == 1;
  graph_toggle(&g->e[slot_u]);
  graph_toggle(&g->e[slot_v]);
  if (leaf_u)
    graph_toggle(&g->v[u]);
  if (leaf_v)
    graph_toggle(&g->v[v]);
}

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

// Enables the first disabled slot of u that leads to w.
static void enable_slot(graph *g, int u, int w) {
  const int end = graph_unmark(g->v[u + 1]);
  for (int j = graph_unmark(g->v[u]); j < end; j++) {
    if (graph_is_disabled(g->e[j]) && graph_unmark(g->e[j]) == w) {
      graph_toggle(&g->e[j]);
      return;
    }
  }
}

void graph_enable_edge_between(graph *g, int u, int w) {
  if (graph_is_disabled(g->v[u]))
    graph_toggle(&g->v[u]);
  if (graph_is_disabled(g->v[w]))
    graph_toggle(&g->v[w]);
  enable_slot(g, u, w);
  enable_slot(g, w, u);
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
