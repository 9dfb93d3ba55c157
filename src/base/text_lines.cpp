// Whole-line reading in memory.
//
// The pieces of a line lie one behind the other in the text, by the rule of
// base/line_pieces.h; nothing is copied.  Costs one pass over the line.

#include "base/text_lines.h"

#include "base/line_pieces.h"

namespace kestro {

namespace {

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
