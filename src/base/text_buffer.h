// Text on its way to a stream, formatted in memory.
#pragma once

#include <array>
#include <cstdio>
#include <cstring>
#include <string_view>

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
  void add(int number) { end_at(put(room(longest_int), number)); } // decimal
  void add(std::string_view text) {
    char *const at = room(text.size());
    end_at(at + text.copy(at, text.size()));
  }

  // Room for that many bytes more.  What is put there is in once end_at() tells
  // where it ends.
  char *room(size_t bytes) {
    make_room(bytes);
    return text_.get() + size_;
  }
  void end_at(const char *end) {
    size_ = static_cast<size_t>(end - text_.get());
  }
  // Puts a number in decimal to at, where there is room for longest_int bytes;
  // returns its end.
  static constexpr size_t longest_int = 11; // sign included
  static char *put(char *at, int number) {
    if (static_cast<size_t>(number) >= short_numbers)
      return put_long(at, number);
    const short_number &text = short_texts[static_cast<size_t>(number)];
    memcpy(at, &text, sizeof text);
    return at + text.length;
  }

  // Hands all text to the stream, and the stream's to the file.
  void flush();

private:
  // A number of up to three digits; it is copied with its length at once.
  struct short_number {
    char digits[3];
    unsigned char length;
  };
  static constexpr size_t short_numbers = 1000;
  static const std::array<short_number, short_numbers> short_texts;
  static constexpr size_t first_capacity = 4096; // bytes
  static constexpr size_t piece = 65536; // bytes handed over rather than moved
  void make_room(size_t bytes) {
    if (capacity_ - size_ < bytes)
      enlarge(bytes);
  }
  void enlarge(size_t bytes);
  static char *put_long(char *at, int number);
  void hand_over();

  FILE *stream_;
  xptr<char> text_;
  size_t size_ = 0;     // bytes of text_ in use
  size_t capacity_ = 0; // bytes
};

} // namespace kestro
