// The candidates of one size while they come in.
#pragma once

#include "mining/record_table.h"
#include "mining/sg_set.h"

namespace kestro {

// Records in the order they were accepted; sorted once, in the end, since there
// can be many more candidates than patterns.
class candidate_set {
public:
  // insert(), take_over() and release_sorted() throw interrupted when stop,
  // which may be null, says so.
  explicit candidate_set(const interruption *stop = nullptr)
      : records_(sg_set_create()), table_(stop), stop_(stop) {}

  // Has the memory for records come from pool, which must outlive them, while
  // there are none.
  void use(chunk_pool *pool) { records_->blocks = arena(pool); }

  // Whether a record with an equal graph is in.
  bool contains(const subgraph *sg) const { return table_.find(sg) != nullptr; }
  // Copies sg, whose graph is in canonical form and not in yet; returns the
  // copy.
  const subgraph *insert(const subgraph *sg);

  // Moves the records of other that are not in yet, and empties other.
  void take_over(candidate_set *other);

  int size() const { return sg_set_size(records_.get()); }
  // Ends the set and hands over its records, sorted.
  sg_set *release_sorted();

private:
  const subgraph *add(sg_ptr sg);

  sg_set_ptr records_;
  record_table table_;
  const interruption *stop_;
};

} // namespace kestro
