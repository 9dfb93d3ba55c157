// Copying what is enabled of a graph.
//
// Vertices and slots keep their relative order, so the copy's lists are sorted
// as the original's are; one pass numbers the vertices, one copies.

#include "graph/compacted.h"

#include "base/error.h"
#include "base/xmalloc.h"

namespace kestro {

void graph_copy_compacted(const graph *g, graph *out) {
  const int es = graph_active_slots(g);
  const int vs = graph_active_vertices(g);
  out->key = g->key;
  int u = 0;
  int filled = 0;
  xvector<int> index(static_cast<size_t>(g->vs), -1); // -1: disabled
  for (int i = 0; i < g->vs; i++)
    if (!graph_is_disabled(g->v[i]))
      index[static_cast<size_t>(i)] = u++;
  for (int i = 0; i < g->vs; i++) {
    if (graph_is_disabled(g->v[i]))
      continue;
    u = index[static_cast<size_t>(i)];
    out->v[u] = filled;
    out->vid[u] = g->vid ? g->vid[i] : i;
    out->vlabel[u] = g->vlabel[i];
    const int end = graph_unmark(g->v[i + 1]);
    for (int j = g->v[i]; j < end; j++) {
      if (graph_is_disabled(g->e[j]))
        continue;
      out->e[filled] = index[static_cast<size_t>(g->e[j])];
      out->elabel[filled] = g->elabel[j];
      filled++;
    }
  }
  assert(filled == es);
  out->v[vs] = filled;
  out->es = es;
  out->vs = vs;
  KESTRO_STRUCTURE(graph_check(out));
}

} // namespace kestro
