// Arenas: chunks in a list.

#include "base/arena.h"

#include <algorithm>

#include "base/xmalloc.h"

namespace kestro {

static size_t aligned(size_t bytes) {
  constexpr size_t unit = alignof(std::max_align_t);
  return (bytes + unit - 1) / unit * unit;
}

arena::~arena() {
  while (first_)
    xfree(std::exchange(first_, first_->next));
}

void arena::add_chunk(size_t size) {
  auto *added = static_cast<chunk *>(xmalloc(size));
  added->next = first_;
  if (!first_)
    last_ = added;
  first_ = added;
  free_ = reinterpret_cast<char *>(added + 1);
  left_ = size - sizeof(chunk);
}

void *arena::take(size_t bytes) {
  const size_t size = aligned(bytes);
  if (size > left_) {
    add_chunk(std::max(sizeof(chunk) + size, next_size_));
    next_size_ = std::min(2 * next_size_, largest_chunk);
  }
  taken_ += size;
  left_ -= size;
  return std::exchange(free_, free_ + size);
}

void arena::absorb(arena *other) noexcept {
  arena taken(std::move(*other));
  if (!first_) {
    swap(taken);
    return;
  }
  if (!taken.first_)
    return;
  // Behind this one's, so that its newest chunk goes on being filled.
  last_->next = std::exchange(taken.first_, nullptr);
  last_ = taken.last_;
  taken_ += taken.taken_;
}

} // namespace kestro
