// One line of a transaction file: its kind, and what it says.
#pragma once

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

// The kind of a line; of a vertex line the id in a, of an edge line the ends in
// a and b, and the label of either in *label; a and b are -1 for a comment.
// The label buffer of *label_size bytes is the caller's; a label too long for
// it is cut.  Dies with "invalid input line" at what cannot be read, and of
// exhausted memory at a vertex or edge line without a label.
int graph_parse_line(const char *line, int *a, int *b, char **label,
                     int *label_size);

} // namespace kestro
