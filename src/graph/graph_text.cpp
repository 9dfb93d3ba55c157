// The graph text writer.
//
// Vertices are written by index, not by vid, so what is written reads back as
// the same graph.

#include "graph/graph_text.h"

#include "base/error.h"

namespace kestro {

static void save_slot(const graph *g, int i, int j, const label_set *ls,
                      text_buffer &out) {
  int k = g->v[g->e[j]]; // the slot of the other end
  while (k < g->v[g->e[j] + 1] && g->e[k] != i)
    k++;
  assert(k < g->v[g->e[j] + 1]);
  const bool both_ways = g->elabel[j] == g->elabel[k];
  if (both_ways && i > g->e[j])
    return;
  const char *label = label_set_edge_label(ls, g->elabel[j]);
  out.add(both_ways ? 'u' : 'd');
  out.add(' ');
  out.add(i);
  out.add(' ');
  out.add(g->e[j]);
  out.add(' ');
  out.add(label);
  out.add('\n');
}

static void save_vertex(const graph *g, int i, const label_set *ls,
                        text_buffer &out) {
  const char *label = label_set_vertex_label(ls, g->vlabel[i]);
  out.add("v ");
  out.add(i);
  out.add(' ');
  out.add(label);
  out.add('\n');
}

void graph_save(const graph *g, const label_set *ls, text_buffer &out) {
  for (int i = 0; i < g->vs; i++)
    save_vertex(g, i, ls, out);
  for (int i = 0; i < g->vs; i++)
    for (int j = g->v[i]; j < g->v[i + 1]; j++)
      save_slot(g, i, j, ls, out);
}

void graph_save(const graph *g, const label_set *ls, FILE *stream) {
  text_buffer out(stream);
  graph_save(g, ls, out);
}

} // namespace kestro
