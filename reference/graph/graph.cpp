// Copying a graph, and finding a vertex by walking over all.

#include "reference/graph/graph.h"

namespace kestro {

graph *graph_copy(const graph *g) {
  graph *copy = graph_create(g->es, g->vs);
  graph_copy_into(g, copy);
  return copy;
}

int graph_find_vid(const graph *g, int id) {
  for (int i = 0; i < g->vs; i++)
    if (g->vid[i] == id)
      return i;
  graph_die_of_vid(g, id);
}

} // namespace kestro
