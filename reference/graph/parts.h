// Making smaller graphs out of one: its components, or the edges to keep.
#pragma once

#include "graph/graph.h"
#include "graph/graph_list.h"

namespace kestro {

// A new graph list of c graphs, one per component as graph_connected_components
// numbers them, vertices in their old order.  The caller frees the list.
graph_list *split_components(const graph *g, int c, const int *comp);

// A new graph of the slots j with keep[j] != 0 and of the vertices that keep a
// slot; null when no slot is kept.  Both slots of an edge must be kept or
// dropped together: dies with "wrong edge removal" otherwise.
graph *graph_remove_edges(const graph *g, const int *keep);

// Replaces every graph by its remainder under its keep array, dropping those
// of which nothing is kept.
void graph_filter_by_slots(graph_list *list, const int *const *keep);
// Replaces every graph by its components, dropping single vertices.
void graph_split_all(graph_list *list);

} // namespace kestro
