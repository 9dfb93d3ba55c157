// Stacks of graph pointers that own the graphs.

#include "graph/graph_list.h"

namespace kestro {

graph_list *graph_list_new() {
  return static_cast<graph_list *>(
      ksstack_new(128, static_cast<int>(sizeof(graph *))));
}

void graph_list_free(graph_list *list) {
  if (!list)
    return;
  for (int i = 0; i < list->count; i++)
    graph_free(graph_list_at(list, i));
  ksstack_free(list);
}

void graph_list_push(graph_ptr g, graph_list *list) {
  graph *address = g.get();
  ksstack_push(&address, list);
  g.release();
}

} // namespace kestro
