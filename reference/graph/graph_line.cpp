// The line parser for callers with buffers of their own.

#include "reference/graph/graph_line.h"

#include <cstring>

namespace kestro {

int graph_parse_line(const char *line, int *a, int *b, char **label,
                     int *label_size) {
  const graph_line found = graph_scan_line(line, *label_size - 1);
  if (found.kind == graph_line_transaction)
    return found.kind;
  *a = found.a;
  if (found.kind != graph_line_vertex)
    *b = found.b;
  if (found.label) {
    const auto length = static_cast<size_t>(found.label_length);
    memcpy(*label, found.label, length);
    (*label)[length] = '\0';
  }
  return found.kind;
}

} // namespace kestro
