// Classifying and parsing the lines of a transaction file.
//
// The fields behind a line's letter are read as sscanf reads "%c %d %d %s",
// whose leniency is part of the format: blanks anywhere or nowhere, trailing
// text ignored, numbers beyond an int cut to its width.  Done by hand at a
// tenth of sscanf's cost, with the label left where it stands.
//
// A line that stops just before its label is one for which no label buffer is
// large enough: it ends the run as exhausted memory does.

#include "graph/graph_line.h"

#include <climits>
#include <cstdint>
#include <cstring>
#include <string>

#include "base/chomp_newlines.h"
#include "base/error.h"
#include "base/xmalloc.h"

namespace kestro {

[[noreturn]] static void die_of_line(const char *line,
                                     int at = __builtin_LINE()) {
  std::string text(line);
  die(place("graph.c", at), "invalid input line '%s'\n",
      chomp_newlines(text.data()));
}

// Characters up to the space as a set of bits.  White space is that of the C
// locale, whatever the locale is.
static constexpr uint64_t blanks = 1ULL << ' ' | 0x1fULL << '\t'; // \t\n\v\f\r
static constexpr uint64_t word_ends = blanks | 1ULL << '\0';

static bool is_in(uint64_t set, char c) {
  const auto byte = static_cast<unsigned char>(c);
  return byte <= ' ' && set >> byte & 1;
}

static const char *skip_blanks(const char *p) {
  while (is_in(blanks, *p))
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

// The kind of a line, whose first non-blank character is at letter.
static int classify(const char *line, const char *letter) {
  if (*letter == '\0')
    die("graph.c", "invalid input line: %s\n", line);
  const int kind = kind_of(*letter);
  if (kind == -1)
    die_of_line(line);
  return kind;
}

int graph_line_kind(const char *line) {
  return classify(line, skip_blanks(line));
}

static unsigned digit_of(char c) {
  return static_cast<unsigned>(static_cast<unsigned char>(c)) - '0';
}

// Reads a number behind its sign at p of a line, if it has one; what follows
// it.  What exceeds a long is as large as a long can be; of the rest an int
// keeps the low bits.
static const char *read_long(const char *line, const char *p, int *value) {
  const bool negative = *p == '-';
  if (negative || *p == '+')
    p++;
  if (digit_of(*p) > 9)
    die_of_line(line);
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
  *value = static_cast<int>(negative ? 0UL - magnitude : magnitude);
  return p;
}

// Reads a number behind blanks at p of a line; what follows it.
static inline const char *read_int(const char *line, const char *p,
                                   int *value) {
  constexpr int safe_digits = 9; // of which no number exceeds an int
  p = skip_blanks(p);
  const char *const first = p;
  unsigned magnitude = digit_of(*p);
  if (magnitude > 9)
    return read_long(line, first, value);
  for (unsigned digit; (digit = digit_of(*++p)) <= 9;)
    magnitude = magnitude * 10 + digit;
  if (p - first > safe_digits)
    return read_long(line, first, value);
  *value = static_cast<int>(magnitude);
  return p;
}

// The end of the word at p, or of as much of it as counts.
static const char *skip_word(const char *p, int most) {
  const char *const last = p + most;
  while (p != last && !is_in(word_ends, *p))
    p++;
  return p;
}

graph_line graph_scan_line(const char *line, int most_label) {
  const char *const letter = skip_blanks(line);
  const int kind = classify(line, letter);
  if (kind == graph_line_comment)
    return {kind, -1, -1, 0, nullptr};
  if (kind == graph_line_transaction)
    return {kind, 0, 0, 0, nullptr};
  int a;
  int b = 0;
  const char *p = read_int(line, letter + 1, &a);
  if (kind != graph_line_vertex)
    p = read_int(line, p, &b);
  const char *const label = skip_blanks(p);
  if (*label == '\0')
    die_out_of_memory();
  const char *const end = skip_word(label, most_label);
  return {kind, a, b, static_cast<int>(end - label), label};
}

} // namespace kestro
