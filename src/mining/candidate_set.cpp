// Accepted candidates.

#include "mining/candidate_set.h"

#include <utility>

namespace kestro {

void candidate_set::insert(sg_ptr sg) {
  const subgraph *record = sg.get();
  sg_set_push(records_.get(), std::move(sg));
  table_.insert(record);
}

void candidate_set::take_over(candidate_set *other) {
  interruption_poll poll(stop_);
  for (int i = 0; i < other->size(); i++) {
    poll.step();
    sg_ptr sg(std::exchange(ksstack_array<subgraph *>(other->records_.get())[i],
                            nullptr));
    if (!contains(sg.get()))
      insert(std::move(sg));
  }
  sg_set_clear(other->records_.get());
  other->table_.clear();
}

sg_set *candidate_set::release_sorted() {
  table_.clear();
  sg_set_sort(records_.get(), stop_);
  return records_.release();
}

} // namespace kestro
