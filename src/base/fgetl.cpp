// Whole-line reading into a growing buffer.
//
// The first read uses the room there is; every further piece doubles the
// enlargement.  Pieces are complete when they stay two short of their room, or
// one short and end in a newline: one character less than fgets could deliver,
// which is what makes the two habits told in the header.  Costs one pass over
// the line plus the moves of its buffer.

#include "base/fgetl.h"

#include <climits>
#include <cstring>

#include "base/error.h"

namespace kestro {

// Whether a piece of text says by its length that its line ends with it.
static bool ends_line(const char *piece, size_t limit) {
  const size_t length = strlen(piece);
  return length < limit || (length == limit && piece[length - 1] == '\n');
}

char *fgetl(char **buffer, int *size, FILE *stream) {
  if (!*buffer)
    die("fgetl.c", "null buffer supplied\n");
  if (*size <= 1)
    die("fgetl.c", "input buffer size must be greater than 1\n");

  if (!fgets(*buffer, *size, stream))
    return nullptr;
  if (ends_line(*buffer, static_cast<size_t>(*size) - 1))
    return *buffer;

  for (int step = 5, pieces = 0;; pieces++) {
    if (pieces >= 2)
      step *= 2;
    if (*size > INT_MAX - step)
      die_out_of_memory();
    const int end = *size - 1; // index of the old terminator
    *size += step;
    *buffer =
        static_cast<char *>(xrealloc(*buffer, static_cast<size_t>(*size)));
    if (!fgets(*buffer + end, step + 1, stream))
      return nullptr;
    if (ends_line(*buffer + end, static_cast<size_t>(step) - 1))
      return *buffer;
  }
}

} // namespace kestro
