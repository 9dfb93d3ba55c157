// Classifying and parsing the lines of a transaction file.
//
// The fields behind a line's letter are read as sscanf reads "%c %d %d %s",
// whose leniency is part of the format: blanks anywhere or nowhere, trailing
// text ignored, numbers beyond an int cut to its width.  Done by hand at a
// tenth of sscanf's cost, with the label left where it stands.
//
// A line that stops just before its label used to be scanned again and again
// with an ever larger label buffer, which can only end in exhausted memory; it
// is sent there at once.

#include "graph/graph_line.h"

#include <climits>
#include <cstring>
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
static bool is_blank(char c) {
  const auto byte = static_cast<unsigned char>(c);
  return byte <= ' ' && (byte == ' ' || (byte >= '\t' && byte <= '\r'));
}

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

static unsigned digit_of(char c) {
  return static_cast<unsigned>(static_cast<unsigned char>(c)) - '0';
}

// The decimal number at p.  What exceeds a long is as large as a long can be;
// of the rest an int keeps the low bits.
static int long_number(const char *p, bool negative) {
  constexpr unsigned long most = LONG_MAX;
  unsigned long magnitude = 0;
  bool too_large = false;
  for (; digit_of(*p) <= 9; p++) {
    const unsigned long digit = digit_of(*p);
    if (magnitude >= most / 10)
      too_large |= magnitude > most / 10 || digit > most % 10;
    magnitude = magnitude * 10 + digit;
  }
  if (too_large)
    magnitude = negative ? most + 1 : most;
  return static_cast<int>(negative ? 0UL - magnitude : magnitude);
}

// Reads a decimal number behind blanks and moves *at past it; false, with *at
// undefined, when there is none.
static bool read_int(const char **at, int *value) {
  const char *p = skip_blanks(*at);
  const bool negative = *p == '-';
  if (negative || *p == '+')
    p++;
  const char *const first = p;
  unsigned magnitude = digit_of(*p);
  if (magnitude > 9)
    return false;
  for (unsigned digit; (digit = digit_of(*++p)) <= 9;)
    magnitude = magnitude * 10 + digit;
  constexpr int safe_digits = 9; // of which no number exceeds an int
  if (p - first > safe_digits)
    *value = long_number(first, negative);
  else
    *value = static_cast<int>(negative ? 0U - magnitude : magnitude);
  *at = p;
  return true;
}

// Finds the word behind blanks.
static void read_label(const char *at, int most_label, graph_line *line) {
  const char *p = skip_blanks(at);
  if (*p == '\0')
    die_out_of_memory();
  line->label = p;
  const char *const last = p + most_label;
  while (*p != '\0' && !is_blank(*p) && p != last)
    p++;
  line->label_length = static_cast<int>(p - line->label);
}

graph_line graph_scan_line(const char *line, int most_label) {
  graph_line found = {0, 0, 0, 0, nullptr};
  const char *at;
  found.kind = classify(line, &at);
  at++;
  if (found.kind == graph_line_comment) {
    found.a = found.b = -1;
  } else if (found.kind != graph_line_transaction) {
    if (!read_int(&at, &found.a))
      die_of_line(line);
    if (found.kind != graph_line_vertex && !read_int(&at, &found.b))
      die_of_line(line);
    read_label(at, most_label, &found);
  }
  return found;
}

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
