// The table of records.
//
// A sorted array would move half of what it holds at every insertion, and a
// tree touches a record at every step down; here the keys alone decide nearly
// always, and lie side by side.

#include "mining/record_table.h"

#include <algorithm>

#include "base/error.h"

namespace kestro {

static size_t first_place(uint32_t key) {
  return (key * size_t{0x9e3779b1}) >> 7;
}

// Where an equal record is, or the free place where sg belongs.
size_t record_table::place_of(const subgraph *sg) const {
  const size_t mask = places_.size() - 1; // the size is a power of two
  size_t i = first_place(sg->g->key) & mask;
  while (places_[i].sg &&
         (places_[i].key != sg->g->key || sg_compare(places_[i].sg, sg) != 0))
    i = (i + 1) & mask;
  return i;
}

const subgraph *record_table::find(const subgraph *sg) const {
  return places_.empty() ? nullptr : places_[place_of(sg)].sg;
}

void record_table::grow() {
  const size_t size = places_.empty() ? 256 : 2 * places_.size();
  const size_t mask = size - 1;
  interruption_poll poll(stop_, 16384);
  xvector<place> larger;
  larger.reserve(size);
  while (larger.size() < size) {
    const size_t piece = std::min(size - larger.size(), size_t{1024});
    larger.resize(larger.size() + piece);
    poll.step(static_cast<int64_t>(piece));
  }
  for (const place &p : places_) {
    if (!p.sg)
      continue;
    poll.step();
    size_t i = first_place(p.key) & mask;
    while (larger[i].sg)
      i = (i + 1) & mask;
    larger[i] = p;
  }
  places_.swap(larger);
}

void record_table::insert(const subgraph *sg) {
  if (4 * static_cast<size_t>(count_) >= 3 * places_.size())
    grow();
  place &p = places_[place_of(sg)];
  assert(!p.sg);
  p = {sg->g->key, sg};
  count_++;
}

void record_table::clear() {
  places_.clear();
  count_ = 0;
}

} // namespace kestro
