// The candidates of a level that failed the downward-closure test.
#pragma once

#include "base/xmalloc.h"
#include "mining/record_table.h"

namespace kestro {

// Memory handed out piece by piece and freed as a whole.  A chunk that is used
// up is followed by one of twice its size.
class copy_arena {
public:
  static constexpr size_t first_chunk = 1048576; // bytes
  // wanted bytes, aligned for any record, until the arena's end.
  void *allocate(size_t wanted);

private:
  xvector<xptr<void>> chunks_;
  size_t chunk_size_ = first_chunk; // of the last chunk, in bytes
  size_t used_ = 0;                 // of the last chunk, in bytes
};

// Light copies (graph and count, no sets) of failed candidates, found again by
// their graphs.  Lives for the generation of one level.
class failed_candidates {
public:
  // insert() throws interrupted when stop, which may be null, says so.
  explicit failed_candidates(const interruption *stop = nullptr)
      : table_(stop) {}

  bool contains(const subgraph *sg) const { return table_.find(sg) != nullptr; }
  // Keeps a copy of sg, which must not be contained.
  void insert(const subgraph *sg);
  int size() const { return table_.size(); }

private:
  copy_arena arena_;
  record_table table_;
};

} // namespace kestro
