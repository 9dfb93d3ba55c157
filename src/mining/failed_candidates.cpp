// Failed candidates in a table over an arena.
//
// A candidate that failed is usually generated again, through other cores and
// automorphisms; one look-up then spares the test of all its sub-patterns.

#include "mining/failed_candidates.h"

#include <cstddef>

namespace kestro {

static size_t aligned(size_t size) {
  constexpr size_t unit = alignof(std::max_align_t);
  return (size + unit - 1) / unit * unit;
}

void *copy_arena::allocate(size_t wanted) {
  const size_t bytes = aligned(wanted);
  if (chunks_.empty() || used_ + bytes >= chunk_size_) {
    size_t size = chunks_.empty() ? chunk_size_ : 2 * chunk_size_;
    while (bytes >= size)
      size *= 2;
    xptr<void> chunk(xmalloc(size));
    chunks_.push_back(std::move(chunk));
    chunk_size_ = size;
    used_ = 0;
  }
  void *place = static_cast<char *>(chunks_.back().get()) + used_;
  used_ += bytes;
  return place;
}

void failed_candidates::insert(const subgraph *sg) {
  void *memory = arena_.allocate(sg_size(sg->g->es, sg->g->vs));
  table_.insert(sg_light_copy(sg, memory));
}

} // namespace kestro
