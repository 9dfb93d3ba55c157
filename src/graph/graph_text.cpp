// The graph text writer.
//
// Vertices are written by index, not by vid, so what is written reads back as
// the same graph.

#include "graph/graph_text.h"

#include <cstring>

#include "base/error.h"

namespace kestro {

// Ends a line, for which there is room at at, with its label.
static void end_line(char *at, const char *label, text_buffer &out) {
  *at++ = ' ';
  while (*label)
    *at++ = *label++;
  *at++ = '\n';
  out.end_at(at);
}

// Room for the two letters at the line's start, two numbers and a space between
// them, a space, the label and the line's end.
static char *line_room(const char *label, text_buffer &out) {
  return out.room(2 * text_buffer::longest_int + strlen(label) + 5);
}

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
  char *at = line_room(label, out);
  *at++ = both_ways ? 'u' : 'd';
  *at++ = ' ';
  at = text_buffer::put(at, i);
  *at++ = ' ';
  end_line(text_buffer::put(at, g->e[j]), label, out);
}

static void save_vertex(const graph *g, int i, const label_set *ls,
                        text_buffer &out) {
  const char *label = label_set_vertex_label(ls, g->vlabel[i]);
  char *at = line_room(label, out);
  *at++ = 'v';
  *at++ = ' ';
  end_line(text_buffer::put(at, i), label, out);
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
