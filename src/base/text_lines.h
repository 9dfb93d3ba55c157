// Reading the lines of a text in memory.
#pragma once

#include <algorithm>
#include <cstring>

#include "base/error.h"
#include "base/file_text.h"

namespace kestro {

// The lines of a text in memory, none of them copied.  A returned line is a
// string inside the text.  Its terminating zero replaces the byte behind it
// until the next call, so only one reader at a time may work on a text.  When
// the reader ends, the text is as it was.
class text_lines {
public:
  // Borrows the text, which stays where it is.
  explicit text_lines(const file_text &text)
      : text_(text), begin_(text.bytes.get()), end_(begin_ + text.size),
        at_(begin_), line_(begin_) {}
  text_lines(const text_lines &) = delete;
  text_lines &operator=(const text_lines &) = delete;
  ~text_lines() { restore(); }

  // The line that fgetl() would read into a buffer of *size bytes; null at end
  // of input.  There is no buffer, but *size grows as fgetl() would enlarge it.
  char *next(int *size) {
    restore();
    char *const line = at_;
    line_ = line;
    const auto left = static_cast<size_t>(end_ - at_);
    const auto most = std::min(static_cast<size_t>(*size) - 1, left);
    // A first piece with a newline is a line; nearly all are.
    auto *const newline = static_cast<char *>(memchr(at_, '\n', most));
    if (!newline)
      return next_of_pieces(size);
    at_ = newline + 1;
    return terminated(line);
  }
  // What fgets() would read into a buffer of size bytes; null at the end.
  char *next_piece(int size);

  // The bytes in front of what is read next.
  size_t position() const { return static_cast<size_t>(at_ - begin_); }
  void seek(size_t position) { at_ = begin_ + position; }
  // What is read next.
  const char *at() const { return at_; }

  // Writes the name of the text and the number of the line read last into an
  // error that has no place yet.  A number is one more than the newlines in
  // front of the line, however lines were read.
  void locate(error *e) { locate(e, line_); }
  // The same with the line that holds a byte.
  void locate(error *e, const char *byte);

private:
  char *next_of_pieces(int *size);
  void restore() { *ended_ = replaced_; }
  // Ends the line where reading goes on.
  char *terminated(char *line) {
    ended_ = at_;
    replaced_ = *at_;
    *at_ = '\0';
    return line;
  }

  const file_text &text_;
  char *begin_;
  char *end_;
  char *at_;                 // what is read next
  char *line_;               // what was read last
  char *ended_ = &replaced_; // where a zero may stand for replaced_
  char replaced_ = '\0';
};

} // namespace kestro
