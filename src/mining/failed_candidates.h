// The candidates of a level that failed the downward-closure test.
#pragma once

#include "base/arena.h"
#include "mining/record_table.h"

namespace kestro {

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
  arena copies_;
  record_table table_;
};

} // namespace kestro
