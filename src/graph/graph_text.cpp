// The graph text writer.
//
// Vertices are written by index, not by vid, so what is written reads back as
// the same graph.

#include "graph/graph_text.h"

#include "base/error.h"

namespace kestro {

static void save_slot(const graph *g, int i, int j, const label_set *ls,
                      FILE *stream) {
  int k = g->v[g->e[j]]; // the slot of the other end
  while (k < g->v[g->e[j] + 1] && g->e[k] != i)
    k++;
  assert(k < g->v[g->e[j] + 1]);
  const bool both_ways = g->elabel[j] == g->elabel[k];
  if (both_ways && i > g->e[j])
    return;
  fprintf(stream, "%c %d %d %s\n", both_ways ? 'u' : 'd', i, g->e[j],
          label_set_edge_label(ls, g->elabel[j]));
}

void graph_save(const graph *g, const label_set *ls, FILE *stream) {
  for (int i = 0; i < g->vs; i++)
    fprintf(stream, "v %d %s\n", i, label_set_vertex_label(ls, g->vlabel[i]));
  for (int i = 0; i < g->vs; i++)
    for (int j = g->v[i]; j < g->v[i + 1]; j++)
      save_slot(g, i, j, ls, stream);
}

} // namespace kestro
