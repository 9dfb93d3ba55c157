// Whole-line reading.
//
// The first read uses the room there is; every further piece doubles the
// enlargement.  Pieces are complete when they stay two short of their room, or
// one short and end in a newline: one character less than fgets could deliver,
// which is what makes the two habits told in the header.  The rule is the same
// for a stream, whose pieces gather in a growing buffer, and for a text in
// memory, whose pieces lie one behind the other where they are.  Costs one pass
// over the line plus, for a stream, the moves of its buffer.

#include "base/fgetl.h"

#include <algorithm>
#include <climits>
#include <cstring>

#include "base/error.h"

namespace kestro {

namespace {

// A part of a line.
struct line_piece {
  const char *text; // null at end of input
  size_t length;    // characters in front of its first zero byte
};

// Pieces that fgets reads into a buffer, each over the terminator of the last.
class stream_pieces {
public:
  stream_pieces(char **buffer, FILE *stream)
      : buffer_(buffer), stream_(stream) {}

  line_piece next(int limit) {
    char *const text = fgets(*buffer_ + used_, limit + 1, stream_);
    used_ += limit;
    return {text, text ? strlen(text) : 0};
  }
  void enlarge(int size) {
    *buffer_ =
        static_cast<char *>(xrealloc(*buffer_, static_cast<size_t>(size)));
  }

private:
  char **buffer_;
  FILE *stream_;
  int used_ = 0; // characters in front of the next piece
};

// Pieces of a text in memory.
class text_pieces {
public:
  text_pieces(char *at, char *end) : at_(at), end_(end) {}

  line_piece next(int limit) {
    if (at_ == end_)
      return {nullptr, 0};
    const char *text = at_;
    const auto most =
        std::min(static_cast<size_t>(limit), static_cast<size_t>(end_ - at_));
    auto *newline = static_cast<char *>(memchr(at_, '\n', most));
    at_ = newline ? newline + 1 : at_ + most;
    return {text, strnlen(text, static_cast<size_t>(at_ - text))};
  }
  void enlarge(int) {}
  char *at() const { return at_; }

private:
  char *at_; // the next piece
  char *end_;
};

} // namespace

// Whether a piece says by its length that its line ends with it.
static bool ends_line(line_piece piece, int limit) {
  const auto length = static_cast<size_t>(limit);
  return piece.length < length ||
         (piece.length == length && piece.text[length - 1] == '\n');
}

// Takes the pieces of one line; false when input ends first.
template <class Pieces> static bool take_line(Pieces &pieces, int *size) {
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

char *fgetl(char **buffer, int *size, FILE *stream) {
  if (!*buffer)
    die("fgetl.c", "null buffer supplied\n");
  if (*size <= 1)
    die("fgetl.c", "input buffer size must be greater than 1\n");
  stream_pieces pieces(buffer, stream);
  return take_line(pieces, size) ? *buffer : nullptr;
}

char *text_lines::next_of_pieces(int *size) {
  char *const line = at_;
  text_pieces pieces(at_, end_);
  const bool found = take_line(pieces, size);
  at_ = pieces.at();
  return found ? terminated(line) : nullptr;
}

char *text_lines::next_piece(int size) {
  restore();
  char *const line = at_;
  line_ = line;
  text_pieces pieces(at_, end_);
  const bool found = pieces.next(size - 1).text;
  at_ = pieces.at();
  return found ? terminated(line) : nullptr;
}

void text_lines::locate(error *e, const char *byte) {
  if (e->line() != 0)
    return;
  restore(); // the zero may stand for a newline
  set_error_place(e, text_.name,
                  1 + std::count<const char *>(begin_, byte, '\n'));
}

} // namespace kestro
