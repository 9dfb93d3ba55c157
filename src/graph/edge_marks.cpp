// Disabling and enabling one edge in place.
//
// Nothing is rebuilt: two slots and at most one vertex are complemented.

#include "graph/edge_marks.h"

#include "base/error.h"

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

} // namespace kestro
