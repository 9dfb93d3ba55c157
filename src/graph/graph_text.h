// Writing a graph in the line format of transaction files.
#pragma once

#include <cstdio>

#include "base/text_buffer.h"
#include "graph/graph.h"
#include "graph/label_set.h"

namespace kestro {

// Writes the vertex and edge lines of g: "v INDEX LABEL" for each vertex, then
// each edge once, from its smaller end, as "u FROM TO LABEL"; an edge whose two
// slots carry different labels is written from either end as a "d" line.  The
// caller writes the "t" line.
void graph_save(const graph *g, const label_set *ls, FILE *stream);
void graph_save(const graph *g, const label_set *ls, text_buffer &out);

} // namespace kestro
