// Candidates by key.
//
// A sorted array would move half of what it holds at every insertion, and there
// can be many more candidates than patterns; so they are looked up by hash and
// sorted once.

#include "mining/candidate_set.h"

#include <utility>

namespace kestro {

static size_t first_place(uint32_t key) {
  return (key * size_t{0x9e3779b1}) >> 7;
}

// Where an equal record is, or the free place where sg belongs.
size_t candidate_set::place_of(const subgraph *sg) const {
  const size_t mask = table_.size() - 1; // the size is a power of two
  size_t i = first_place(sg->g->key) & mask;
  while (table_[i].sg &&
         (table_[i].key != sg->g->key || sg_compare(table_[i].sg, sg) != 0))
    i = (i + 1) & mask;
  return i;
}

bool candidate_set::contains(const subgraph *sg) const {
  return !table_.empty() && table_[place_of(sg)].sg;
}

void candidate_set::grow() {
  xvector<place> old(table_.empty() ? 256 : 2 * table_.size());
  std::swap(old, table_);
  const size_t mask = table_.size() - 1;
  for (const place &p : old) {
    if (!p.sg)
      continue;
    size_t i = first_place(p.key) & mask;
    while (table_[i].sg)
      i = (i + 1) & mask;
    table_[i] = p;
  }
}

void candidate_set::insert(sg_ptr sg) {
  if (4 * static_cast<size_t>(size()) >= 3 * table_.size())
    grow();
  table_[place_of(sg.get())] = {sg->g->key, sg.get()};
  sg_set_push(records_.get(), std::move(sg));
}

void candidate_set::take_over(candidate_set *other) {
  for (int i = 0; i < other->size(); i++) {
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
  sg_set_sort(records_.get());
  return records_.release();
}

} // namespace kestro
