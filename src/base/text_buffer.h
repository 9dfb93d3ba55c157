// Text on its way to a stream, formatted in memory.
#pragma once

#include <cstdio>

#include "base/xmalloc.h"

namespace kestro {

// Collects text for one stream and hands it over in large pieces: when the
// buffer is full, on flush(), and at the end of the scope, also when an
// exception ends it, so that what was added before a failure is in the file.
// The stream remembers its errors; flush_output() and close_output() ask it for
// them.
class text_buffer {
public:
  explicit text_buffer(FILE *stream) : stream_(stream) {}
  text_buffer(const text_buffer &) = delete;
  text_buffer &operator=(const text_buffer &) = delete;
  ~text_buffer() { hand_over(); }

  void add(char c) {
    make_room(1);
    text_.get()[size_++] = c;
  }
  void add(int number) { // in decimal
    if (number < 0 || number > 9)
      add_long(number);
    else
      add(static_cast<char>('0' + number));
  }
  void add(const char *text) {
    while (*text)
      add(*text++);
  }

  // Hands all text to the stream, and the stream's to the file.
  void flush();

private:
  static constexpr size_t first_capacity = 4096; // bytes
  static constexpr size_t piece = 65536; // bytes handed over rather than moved
  void make_room(size_t bytes) {
    if (capacity_ - size_ < bytes)
      enlarge(bytes);
  }
  void enlarge(size_t bytes);
  void add_long(int number);
  void hand_over();

  FILE *stream_;
  xptr<char> text_;
  size_t size_ = 0;     // bytes of text_ in use
  size_t capacity_ = 0; // bytes
};

} // namespace kestro
