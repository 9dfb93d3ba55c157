// Sorted sets of pattern records.
//
// Every insertion moves what comes behind; a level is filled at less cost by
// pushing all records and sorting them once.

#include "reference/mining/sg_set.h"

#include <cassert>

namespace kestro {

static const subgraph *record(const void *element) {
  return *static_cast<const subgraph *const *>(element);
}

static int compare_records(const void *a, const void *b) {
  return sg_compare(record(a), record(b));
}

void sg_set_insert(sg_set *s, sg_ptr sg) {
  subgraph *address = sg.get();
  ksstack_insert_sorted(&address, s, compare_records);
  sg.release();
}

subgraph *sg_set_find_record(const sg_set *s, const subgraph *sg) {
  const int index = sg_set_find(s, sg);
  return index == -1 ? nullptr : sg_set_get(s, index);
}

sg_ptr sg_remove_sg_from_set(const subgraph *sg, sg_set *s) {
  const int index = sg_set_find(s, sg);
  assert(index != -1);
  sg_ptr removed(sg_set_get(s, index));
  ksstack_remove_at(s, index);
  return removed;
}

} // namespace kestro
