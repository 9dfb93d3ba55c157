// One line of a transaction file: its kind, and what it says.
#pragma once

#include <cstddef>

namespace kestro {

// The kinds of lines.  An edge kind has bit 2 set; 10 is an edge stored in both
// directions, the only one the parser makes, 6 one stored once.
constexpr int graph_line_comment = 0;
constexpr int graph_line_vertex = 1;
constexpr int graph_line_single_edge = 6;
constexpr int graph_line_edge = 10;
constexpr int graph_line_transaction = 16;
constexpr int graph_line_edge_bit = 2;

inline bool graph_line_is_edge(int kind) {
  return kind == graph_line_edge || kind == graph_line_single_edge;
}

// The kind of a line by its first non-blank character, in either case.  Dies
// with "invalid input line" for any other character, or none.
int graph_line_kind(const char *line);

// What a line says.  Of an edge line a and b are the ends, of a vertex line a
// is the id; of a comment both are -1.  What a kind has no use for is 0.
struct graph_line {
  int kind;
  int a;
  int b;
  int label_length;  // bytes
  const char *label; // in the line, not terminated; null without one
};

// The bytes of a label that count.
constexpr int graph_line_most_label = 1023;

// The bytes of a label for which there is always room: with two vertex ids of
// ten digits and a newline its line fits the first piece of a line read, behind
// which over-long lines begin.
constexpr int graph_line_safe_label = 1023 - 25;

// Reads a line, its label cut after most_label bytes.  Dies with "invalid input
// line" at what cannot be read, and of exhausted memory at a vertex or edge
// line without a label.
graph_line graph_scan_line(const char *line, int most_label);

} // namespace kestro
