// How a line is made of pieces, the same for a stream and a text in memory.
//
// The first piece uses the room there is; every further piece doubles the
// enlargement.  A piece completes its line when it stays two short of its room,
// or one short and ends in a newline: one character less than fgets could
// deliver.  Recorded results depend on it (base/fgetl.h).
#pragma once

#include <climits>
#include <cstddef>

#include "base/xmalloc.h"

namespace kestro {

// A part of a line.
struct line_piece {
  const char *text; // null at end of input
  size_t length;    // characters in front of its first zero byte
};

// Whether the length of a piece shows that its line ends with it.
inline bool ends_line(line_piece piece, int limit) {
  const auto length = static_cast<size_t>(limit);
  return piece.length < length ||
         (piece.length == length && piece.text[length - 1] == '\n');
}

// Takes the pieces of one line from a source that has two members: next(limit)
// returns the next piece of at most limit characters, and enlarge(size) follows
// every enlargement of *size, the bytes of the buffer that the line would fill.
// False when input ends first.
template <class Pieces> bool take_line(Pieces &pieces, int *size) {
  line_piece piece = pieces.next(*size - 1);
  if (!piece.text)
    return false;
  if (ends_line(piece, *size - 1))
    return true;
  for (int step = 5, taken = 0;; taken++) {
    if (taken >= 2)
      step *= 2;
    if (*size > INT_MAX - step)
      die_out_of_memory();
    *size += step;
    pieces.enlarge(*size);
    piece = pieces.next(step);
    if (!piece.text)
      return false;
    if (ends_line(piece, step - 1))
      return true;
  }
}

} // namespace kestro
