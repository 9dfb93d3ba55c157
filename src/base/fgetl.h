// Reading whole lines of any length from streams.
#pragma once

#include <cstdio>

#include "base/xmalloc.h"

namespace kestro {

// A heap buffer that fgetl() may move and enlarge; freed with its owner.
struct line_buffer {
  static constexpr int first_size = 1024; // bytes

  char *text = static_cast<char *>(xmalloc(first_size)); // owned
  int size = first_size;                                 // bytes

  line_buffer() = default;
  line_buffer(const line_buffer &) = delete;
  line_buffer &operator=(const line_buffer &) = delete;
  ~line_buffer() { xfree(text); }
};

// Reads one line, newline included, into *buffer of *size bytes, enlarging
// both through xrealloc as needed.  Returns *buffer, or null at end of input.
// Lines shorter than the buffer are exact.  A longer one is read in pieces of
// 5, 5, 10, 20, ... characters, and keeps two habits on which recorded results
// depend: a piece that fills its room and ends in a newline does not end the
// line, and a last line whose final piece is one short of its room without a
// newline reads as end of input.
// Dies when *buffer is null or *size is below 2.
char *fgetl(char **buffer, int *size, FILE *stream);

inline char *fgetl(line_buffer &line, FILE *stream) {
  return fgetl(&line.text, &line.size, stream);
}

} // namespace kestro
