// Classifying and parsing the lines of a transaction file.
//
// The fields behind a line's letter are read as sscanf reads "%c %d %d %s",
// whose leniency is part of the format: blanks anywhere or nowhere, trailing
// text ignored, numbers beyond an int cut to its width.  Done by hand because a
// line is parsed several times on its way into a graph, at a tenth of sscanf's
// cost.
//
// A line that stops just before its label used to be scanned again and again
// with an ever larger label buffer, which can only end in exhausted memory; it
// is sent there at once.

#include "graph/graph_line.h"

#include <climits>
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

// White space as in the C locale, whatever the locale is.
static bool is_blank(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

static const char *skip_blanks(const char *p) {
  while (is_blank(*p))
    p++;
  return p;
}

// The kind of a line by its first non-blank character, -1 for none.
static int kind_of(char c) {
  switch (c) {
  case '#':
  case '%':
    return graph_line_comment;
  case 'd':
  case 'D':
  case 'e':
  case 'E':
  case 'u':
  case 'U':
    return graph_line_edge;
  case 't':
  case 'T':
    return graph_line_transaction;
  case 'v':
  case 'V':
    return graph_line_vertex;
  default:
    return -1;
  }
}

// The kind of a line, whose first non-blank character is at *at.
static int classify(const char *line, const char **at) {
  *at = skip_blanks(line);
  if (**at == '\0')
    die("graph.c", "invalid input line: %s\n", line);
  const int kind = kind_of(**at);
  if (kind == -1)
    die_of_line(line);
  return kind;
}

int graph_line_kind(const char *line) {
  const char *at;
  return classify(line, &at);
}

// Reads a decimal number behind blanks and moves *at past it; false, with *at
// undefined, when there is none.  What exceeds a long is as large as a long can
// be; of the rest an int keeps the low bits.
static bool read_int(const char **at, int *value) {
  const char *p = skip_blanks(*at);
  const bool negative = *p == '-';
  if (*p == '-' || *p == '+')
    p++;
  if (*p < '0' || *p > '9')
    return false;
  unsigned long magnitude = 0;
  bool too_large = false;
  for (; *p >= '0' && *p <= '9'; p++) {
    const unsigned digit = static_cast<unsigned>(*p - '0');
    too_large |=
        magnitude > (static_cast<unsigned long>(LONG_MAX) - digit) / 10;
    magnitude = magnitude * 10 + digit;
  }
  if (too_large)
    magnitude = negative ? 1UL + LONG_MAX : LONG_MAX;
  *value = static_cast<int>(negative ? 0UL - magnitude : magnitude);
  *at = p;
  return true;
}

// Copies the word behind blanks, or as much of it as label has room for.
static void read_label(const char *at, char *label, int label_size) {
  const char *p = skip_blanks(at);
  if (*p == '\0')
    die_out_of_memory();
  char *const last = label + label_size - 1;
  while (*p != '\0' && !is_blank(*p) && label < last)
    *label++ = *p++;
  *label = '\0';
}

int graph_parse_line(const char *line, int *a, int *b, char **label,
                     int *label_size) {
  const char *at;
  const int kind = classify(line, &at);
  at++;
  if (kind == graph_line_vertex) {
    if (!read_int(&at, a))
      die_of_line(line);
    read_label(at, *label, *label_size);
  } else if (kind == graph_line_edge) {
    if (!read_int(&at, a) || !read_int(&at, b))
      die_of_line(line);
    read_label(at, *label, *label_size);
  } else if (kind == graph_line_comment) {
    *a = *b = -1;
  }
  return kind;
}

} // namespace kestro
