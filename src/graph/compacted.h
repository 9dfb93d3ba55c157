// A graph without its disabled vertices and slots.
#pragma once

#include "graph/graph.h"

namespace kestro {

// Copies the enabled vertices and slots of g, in their order and renumbered,
// into out, which has room for them and takes their numbers as its sizes.  The
// key is copied as it is.
void graph_copy_compacted(const graph *g, graph *out);

} // namespace kestro
