// Failed candidates in a tree over an arena.
//
// A candidate that failed is usually generated again, through other cores and
// automorphisms; one tree look-up then spares the test of all its sub-patterns.

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

// The tree's keys are integers that hold addresses.
// NOLINTBEGIN(performance-no-int-to-ptr)
static int compare_records(rbt_key a, rbt_key b) {
  return sg_compare(reinterpret_cast<const subgraph *>(a),
                    reinterpret_cast<const subgraph *>(b));
}
// NOLINTEND(performance-no-int-to-ptr)

static rbt_key key_of(const subgraph *sg) {
  return reinterpret_cast<rbt_key>(sg);
}

failed_candidates::failed_candidates() : tree_(rbt_new(compare_records)) {}

bool failed_candidates::contains(const subgraph *sg) const {
  return rbt_find(key_of(sg), tree_.get()) != nullptr;
}

void failed_candidates::insert(const subgraph *sg) {
  void *memory = arena_.allocate(sg_size(sg->g->es, sg->g->vs));
  rbt_insert(key_of(sg_light_copy(sg, memory)), tree_.get());
}

} // namespace kestro
