// Finding a vertex by walking over all.

#include "reference/graph/graph.h"

namespace kestro {

int graph_find_vid(const graph *g, int id) {
  for (int i = 0; i < g->vs; i++)
    if (g->vid[i] == id)
      return i;
  graph_die_of_vid(g, id);
}

} // namespace kestro
