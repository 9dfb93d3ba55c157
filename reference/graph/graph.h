// Graphs: vertices looked up one by one.
#pragma once

#include "graph/graph.h"

namespace kestro {

// First vertex whose vid is id.  Dies, listing all vids, when there is none.
int graph_find_vid(const graph *g, int id);

} // namespace kestro
