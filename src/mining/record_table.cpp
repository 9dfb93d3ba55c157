// The table of records.
//
// A sorted array would move half of what it holds at every insertion, and a
// tree touches a record at every step down; here the keys alone decide nearly
// always, and lie side by side.

#include "mining/record_table.h"

#include <cassert>

namespace kestro {

inline bool record_table::slot::holds(const subgraph *other) const {
  return key == other->g->key && sg_compare(sg, other) == 0;
}

const subgraph *record_table::find(const subgraph *sg) const {
  const slot wanted = {sg->g->key, sg};
  return table_
      .look_up(wanted.hash(), [&](const slot &s) { return s.holds(sg); })
      .sg;
}

void record_table::insert(const subgraph *sg) {
  const bool is_new = table_.insert({sg->g->key, sg},
                                    [&](const slot &s) { return s.holds(sg); });
  assert(is_new);
}

} // namespace kestro
