// One line of a transaction file, its label copied out.
#pragma once

#include "graph/graph_line.h"

namespace kestro {

// Reads a line as graph_scan_line() and returns its kind.  The label goes into
// *label, a buffer of the caller's with *label_size bytes, by which it is cut;
// what a kind has no use for is left as it is.
int graph_parse_line(const char *line, int *a, int *b, char **label,
                     int *label_size);

} // namespace kestro
