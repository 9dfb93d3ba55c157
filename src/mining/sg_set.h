// One level of the search: an ordered array of pattern records.
#pragma once

#include "base/interruption.h"
#include "base/xmalloc.h"
#include "mining/subgraph.h"

namespace kestro {

// A stack of subgraph *, with its records, kept sorted by sg_compare once
// complete; a pattern's position in it is its id.
struct sg_set : ksstack {
  arena blocks; // of those records that have no block of their own
};

sg_set *sg_set_create(); // empty, capacity 1024
// Frees every record, then the set; s may be null.
void sg_set_free(sg_set *s);

struct sg_set_deleter {
  void operator()(sg_set *s) const { sg_set_free(s); }
};
using sg_set_ptr = std::unique_ptr<sg_set, sg_set_deleter>;

inline int sg_set_size(const sg_set *s) { return s->count; }
// Record i; dies with "invalid index" for i >= size.
inline subgraph *sg_set_get(const sg_set *s, int i) {
  return i < s->count ? ksstack_array<subgraph *>(s)[i]
                      : ksstack_get<subgraph *>(s, i);
}
// Appends; the set owns sg from then on.
void sg_set_push(sg_set *s, sg_ptr sg);
// Throws interrupted, with s as it was, when stop says so.
void sg_set_sort(sg_set *s, const interruption *stop = nullptr);
// By binary search: the position of an equal record or -1.
int sg_set_find(const sg_set *s, const subgraph *sg);
// Empties the set without touching the records, which have moved elsewhere.
void sg_set_clear(sg_set *s);
// Moves the records out of a set, in order; they must not outlive its blocks.
xvector<sg_ptr> sg_set_take_records(sg_set *s);
// Where records that are gone hold more than half of the set's blocks, moves
// those that are left together and frees the rest.  Throws interrupted when
// stop, which may be null, says so; all records still have an owner then.
void sg_set_compact(sg_set *s, const interruption *stop = nullptr);

// Drops the graphs and parents of all records.  Throws interrupted as above.
void sg_set_keep_links(sg_set *s, const interruption *stop = nullptr);

// Dies through an assertion unless s is sorted without repeats.
void sg_set_check(const sg_set *s);

} // namespace kestro
