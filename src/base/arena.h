// Memory that is handed out piece by piece and given back as a whole.
#pragma once

#include <cstddef>
#include <mutex>
#include <utility>

#if defined(__has_feature) // as clang++ tells it
#define KESTRO_HAS_ADDRESS_SANITIZER __has_feature(address_sanitizer)
#else
#define KESTRO_HAS_ADDRESS_SANITIZER 0
#endif

namespace kestro {

// A stretch of memory: its head; what it holds follows.
struct alignas(std::max_align_t) arena_chunk {
  arena_chunk *next;
  size_t size; // bytes, with the head
};

// Chunks that arenas are done with, up to so many bytes of them kept for
// others: memory fresh from the system costs a fault for each of its pages.
// Several threads may use one.
class chunk_pool {
public:
  static constexpr size_t usual_most = size_t{1} << 25;
  // The address sanitizer sees who reads what was freed: nothing is kept then.
#if defined(__SANITIZE_ADDRESS__) || KESTRO_HAS_ADDRESS_SANITIZER
  static constexpr bool is_checked = true;
#else
  static constexpr bool is_checked = false;
#endif

  explicit chunk_pool(size_t most = usual_most) : most_(most) {}
  chunk_pool(const chunk_pool &) = delete;
  chunk_pool &operator=(const chunk_pool &) = delete;
  ~chunk_pool();

  // One of at least that size, a new one if need be.
  arena_chunk *take(size_t size);
  // Takes back a list of them.
  void give(arena_chunk *first) noexcept;
  // Bytes of the chunks that it keeps.
  size_t kept() const;

private:
  const size_t most_;
  mutable std::mutex access_;
  arena_chunk *first_ = nullptr;
  size_t kept_ = 0; // bytes
};

// Pieces lie one behind another in chunks.  A chunk is twice as large as the
// one before, between two bounds, and larger where a piece needs it.
class arena {
public:
  static constexpr size_t smallest_chunk = size_t{1} << 14; // bytes
  static constexpr size_t largest_chunk = size_t{1} << 20;

  // Chunks come from pool and go back there, or else from the system; pool must
  // outlive the arena.
  explicit arena(chunk_pool *pool = nullptr) : pool_(pool) {}
  ~arena();
  arena(arena &&other) noexcept { swap(other); }
  arena &operator=(arena &&other) noexcept {
    arena moved(std::move(other));
    swap(moved);
    return *this;
  }

  // bytes of memory until the arena's end, aligned as malloc's.
  void *take(size_t bytes);
  // Takes over the pieces of other, which is empty then; both have one pool.
  void absorb(arena *other) noexcept;
  // Bytes of all pieces.
  size_t taken() const { return taken_; }
  chunk_pool *pool() const { return pool_; }

private:
  void add_chunk(size_t size);
  void swap(arena &other) noexcept {
    std::swap(pool_, other.pool_);
    std::swap(first_, other.first_);
    std::swap(last_, other.last_);
    std::swap(next_size_, other.next_size_);
    std::swap(free_, other.free_);
    std::swap(left_, other.left_);
    std::swap(taken_, other.taken_);
  }

  chunk_pool *pool_ = nullptr;
  arena_chunk *first_ = nullptr; // the newest
  arena_chunk *last_ = nullptr;
  size_t next_size_ = smallest_chunk; // of a chunk, with its head
  char *free_ = nullptr;              // the rest of the chunk in use
  size_t left_ = 0;                   // bytes of it
  size_t taken_ = 0;
};

} // namespace kestro
