// Lists of graphs that own them: the transactions of a run, the components of
// a graph.
#pragma once

#include "base/ksstack.h"
#include "graph/graph.h"

namespace kestro {

// A stack of graph *, with its graphs; a type of its own, so that no stack of
// other elements is taken for one.
struct graph_list : ksstack {};
static_assert(sizeof(graph_list) == sizeof(ksstack));

graph_list *graph_list_new(); // empty, capacity 128
// Frees every graph, then the list; it may be null.
void graph_list_free(graph_list *list);
// Appends g, which the list owns from then on.
void graph_list_push(graph_ptr g, graph_list *list);

// Graph i, without a check.
inline graph *graph_list_at(const graph_list *list, int i) {
  return ksstack_array<graph *>(list)[i];
}

struct graph_list_deleter {
  void operator()(graph_list *list) const { graph_list_free(list); }
};
using graph_list_ptr = std::unique_ptr<graph_list, graph_list_deleter>;

} // namespace kestro
