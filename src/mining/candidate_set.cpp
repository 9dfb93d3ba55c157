// Accepted candidates.

#include "mining/candidate_set.h"

#include <utility>

namespace kestro {

const subgraph *candidate_set::insert(const subgraph *sg) {
  return add(sg_ptr(sg_copy(sg, &records_->blocks)));
}

const subgraph *candidate_set::add(sg_ptr sg) {
  const subgraph *record = sg.get();
  sg_set_push(records_.get(), std::move(sg));
  table_.insert(record);
  return record;
}

void candidate_set::take_over(candidate_set *other) {
  interruption_poll poll(stop_);
  other->table_.clear();
  // Records must not outlive their blocks, whatever is thrown: these go before
  // the set that has the blocks.
  xvector<sg_ptr> records = sg_set_take_records(other->records_.get());
  records_->blocks.absorb(&other->records_->blocks);
  for (sg_ptr &sg : records) {
    poll.step();
    if (!contains(sg.get()))
      add(std::move(sg));
  }
}

sg_set *candidate_set::release_sorted() {
  table_.clear();
  sg_set_sort(records_.get(), stop_);
  return records_.release();
}

} // namespace kestro
