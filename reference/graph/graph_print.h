// Showing a graph's arrays to a developer.
#pragma once

#include <cstdio>

#include "graph/graph.h"

namespace kestro {

// Debug print: the key, then the arrays as rows of aligned cells, one group of
// cells per vertex.
void graph_print(const graph *g, FILE *out);

} // namespace kestro
