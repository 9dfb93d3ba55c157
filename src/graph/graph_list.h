// Lists of graphs that own them: the transactions of a run, the components of
// a graph.
#pragma once

#include "base/ksstack.h"
#include "graph/graph.h"

namespace kestro {

// A stack whose elements are graph *, with its graphs.
ksstack *graph_list_new(); // capacity 128
void graph_list_free(ksstack *list);
// Appends g, which the list owns from then on.
void graph_list_push(graph_ptr g, ksstack *list);

// Graph i, without a check.
inline graph *graph_list_at(const ksstack *list, int i) {
  return ksstack_array<graph *>(list)[i];
}

struct graph_list_deleter {
  void operator()(ksstack *list) const { graph_list_free(list); }
};
using graph_list_ptr = std::unique_ptr<ksstack, graph_list_deleter>;

} // namespace kestro
