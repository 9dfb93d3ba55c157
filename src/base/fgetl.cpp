// Whole-line reading from streams.
//
// The pieces of a line gather in a growing buffer, by the rule of
// base/line_pieces.h.  Costs one pass over the line plus the moves of the
// buffer.

#include "base/fgetl.h"

#include <cstring>

#include "base/error.h"
#include "base/line_pieces.h"

namespace kestro {

namespace {

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

} // namespace

char *fgetl(char **buffer, int *size, FILE *stream) {
  if (!*buffer)
    die("fgetl.c", "null buffer supplied\n");
  if (*size <= 1)
    die("fgetl.c", "input buffer size must be greater than 1\n");
  stream_pieces pieces(buffer, stream);
  return take_line(pieces, size) ? *buffer : nullptr;
}

} // namespace kestro
