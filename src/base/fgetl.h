// Reading whole lines of any length, from streams and from memory.
#pragma once

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <memory>

#include "base/error.h"
#include "base/file_text.h"
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

// The lines of a text in memory, none of them copied.  What is returned is a
// string in the text, ended by a zero that stands for the byte behind it until
// the next call; so only one reader at a time may work on a text, which is as
// it was when the reader ends.
class text_lines {
public:
  // Borrows the text, which stays where it is.
  explicit text_lines(const file_text &text)
      : text_(text), begin_(text.bytes.get()), end_(begin_ + text.size),
        at_(begin_), line_(begin_) {}
  text_lines(const text_lines &) = delete;
  text_lines &operator=(const text_lines &) = delete;
  ~text_lines() { restore(); }

  // The line that fgetl() would read into a buffer of *size bytes, which is
  // enlarged likewise though there is none; null at end of input.
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

  // Tells an error that has no place yet the name of the text and the number of
  // the line read last.  Numbers count newlines, however lines were read.
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
