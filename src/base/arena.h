// Memory that is handed out piece by piece and freed as a whole.
#pragma once

#include <cstddef>
#include <utility>

namespace kestro {

// Pieces lie one behind another in chunks.  A chunk is twice as large as the
// one before, between two bounds, and larger where a piece needs it.
class arena {
public:
  static constexpr size_t smallest_chunk = size_t{1} << 14; // bytes
  static constexpr size_t largest_chunk = size_t{1} << 20;

  arena() = default;
  ~arena();
  arena(arena &&other) noexcept { swap(other); }
  arena &operator=(arena &&other) noexcept {
    arena moved(std::move(other));
    swap(moved);
    return *this;
  }

  // bytes of memory until the arena's end, aligned as malloc's.
  void *take(size_t bytes);
  // Takes over the pieces of other, which is empty then.
  void absorb(arena *other) noexcept;
  // Bytes of all pieces.
  size_t taken() const { return taken_; }

private:
  // The head of a chunk; its memory follows.
  struct alignas(std::max_align_t) chunk {
    chunk *next;
  };

  void add_chunk(size_t size);
  void swap(arena &other) noexcept {
    std::swap(first_, other.first_);
    std::swap(last_, other.last_);
    std::swap(next_size_, other.next_size_);
    std::swap(free_, other.free_);
    std::swap(left_, other.left_);
    std::swap(taken_, other.taken_);
  }

  chunk *first_ = nullptr; // the newest
  chunk *last_ = nullptr;
  size_t next_size_ = smallest_chunk; // of a chunk, with its head
  char *free_ = nullptr;              // the rest of the chunk in use
  size_t left_ = 0;                   // bytes of it
  size_t taken_ = 0;
};

} // namespace kestro
