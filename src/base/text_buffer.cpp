// Formatting text in memory.
//
// A call of fprintf costs hundreds of instructions, most of them for reading
// its format and for locking the stream, where a pattern line is a dozen
// characters.  So lines are put together here, and the stream sees a piece of
// 64 KiB at a time.

#include "base/text_buffer.h"

#include <algorithm>
#include <charconv>

namespace kestro {

constexpr std::array<text_buffer::short_number, text_buffer::short_numbers>
    text_buffer::short_texts = [] {
      std::array<short_number, short_numbers> texts{};
      for (size_t n = 0; n < short_numbers; n++) {
        short_number &text = texts[n];
        for (size_t unit = n < 10 ? 1 : n < 100 ? 10 : 100; unit; unit /= 10)
          text.digits[text.length++] = static_cast<char>('0' + n / unit % 10);
      }
      return texts;
    }();

char *text_buffer::put_long(char *at, int number) {
  return std::to_chars(at, at + longest_int, number).ptr;
}

void text_buffer::flush() {
  hand_over();
  fflush(stream_);
}

void text_buffer::enlarge(size_t bytes) {
  if (size_ >= piece)
    hand_over();
  if (capacity_ - size_ >= bytes)
    return;
  const size_t capacity =
      std::max({first_capacity, 2 * capacity_, size_ + bytes});
  void *const moved = xrealloc(text_.get(), capacity);
  static_cast<void>(text_.release());
  text_.reset(static_cast<char *>(moved));
  capacity_ = capacity;
}

void text_buffer::hand_over() {
  if (size_)
    fwrite(text_.get(), 1, size_, stream_);
  size_ = 0;
}

} // namespace kestro
