// Classifying and parsing the lines of a transaction file.
//
// The text behind a line's letter is read by sscanf, whose leniency is part of
// the format: blanks anywhere, trailing text ignored.  A line that stops just
// before its label would be scanned again and again with an ever larger label
// buffer, which can only end in exhausted memory; it is sent there at once.

#include "graph/graph_line.h"

#include <cctype>
#include <cstdio>
#include <string>

#include "base/error.h"
#include "base/utils.h"
#include "base/xmalloc.h"

namespace kestro {

[[noreturn]] static void die_of_line(const char *line,
                                     int at = __builtin_LINE()) {
  std::string text(line);
  die(place("graph.c", at), "invalid input line '%s'\n",
      chomp_newlines(text.data()));
}

int graph_line_kind(const char *line) {
  char c;
  if (sscanf(line, " %c ", &c) != 1)
    die("graph.c", "invalid input line: %s\n", line);
  switch (tolower(static_cast<unsigned char>(c))) {
  case '#':
  case '%':
    return graph_line_comment;
  case 'd':
  case 'e':
  case 'u':
    return graph_line_edge;
  case 't':
    return graph_line_transaction;
  case 'v':
    return graph_line_vertex;
  default:
    die_of_line(line);
  }
}

// Holds the scan of one line to all conversions.
static void require_scan(const char *line, int converted, int all) {
  if (converted == all - 1)
    die_out_of_memory();
  if (converted != all)
    die_of_line(line);
}

int graph_parse_line(const char *line, int *a, int *b, char **label,
                     int *label_size) {
  const int kind = graph_line_kind(line);
  char letter;
  char format[40];
  if (kind == graph_line_vertex) {
    snprintf(format, sizeof format, " %%c %%d %%%ds ", *label_size - 1);
    require_scan(line, sscanf(line, format, &letter, a, *label), 3);
  } else if (kind == graph_line_edge) {
    snprintf(format, sizeof format, " %%c %%d %%d %%%ds ", *label_size - 1);
    require_scan(line, sscanf(line, format, &letter, a, b, *label), 4);
  } else if (kind == graph_line_comment) {
    *a = *b = -1;
  }
  return kind;
}

} // namespace kestro
