// Arenas: chunks in a list.

#include "base/arena.h"

#include <algorithm>
#include <cassert>

#include "base/xmalloc.h"

namespace kestro {

static size_t aligned(size_t bytes) {
  constexpr size_t unit = alignof(std::max_align_t);
  return (bytes + unit - 1) / unit * unit;
}

static arena_chunk *new_chunk(size_t size) {
  auto *chunk = static_cast<arena_chunk *>(xmalloc(size));
  *chunk = {nullptr, size};
  return chunk;
}

static void free_chunks(arena_chunk *first) {
  while (first)
    xfree(std::exchange(first, first->next));
}

size_t chunk_pool::kept() const {
  const std::lock_guard<std::mutex> lock(access_);
  return kept_;
}

chunk_pool::~chunk_pool() { free_chunks(first_); }

arena_chunk *chunk_pool::take(size_t size) {
  {
    const std::lock_guard<std::mutex> lock(access_);
    for (arena_chunk **at = &first_; *at; at = &(*at)->next) {
      if ((*at)->size < size)
        continue;
      kept_ -= (*at)->size;
      return std::exchange(*at, (*at)->next);
    }
  }
  return new_chunk(size);
}

void chunk_pool::give(arena_chunk *first) noexcept {
  const std::lock_guard<std::mutex> lock(access_);
  while (first) {
    arena_chunk *const given = std::exchange(first, first->next);
    if (is_checked || given->size > most_ - kept_) {
      xfree(given);
      continue;
    }
    kept_ += given->size;
    given->next = std::exchange(first_, given);
  }
}

arena::~arena() {
  if (pool_)
    pool_->give(first_);
  else
    free_chunks(first_);
}

void arena::add_chunk(size_t size) {
  arena_chunk *const added = pool_ ? pool_->take(size) : new_chunk(size);
  added->next = first_;
  if (!first_)
    last_ = added;
  first_ = added;
  free_ = reinterpret_cast<char *>(added + 1);
  left_ = added->size - sizeof(arena_chunk);
}

void *arena::take(size_t bytes) {
  const size_t size = aligned(bytes);
  if (size > left_) {
    add_chunk(std::max(sizeof(arena_chunk) + size, next_size_));
    next_size_ = std::min(2 * next_size_, largest_chunk);
  }
  taken_ += size;
  left_ -= size;
  return std::exchange(free_, free_ + size);
}

void arena::absorb(arena *other) noexcept {
  assert(pool_ == other->pool_);
  arena taken(std::move(*other));
  other->pool_ = pool_;
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
