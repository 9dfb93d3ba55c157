// The choice of the two kept parents.
//
// A pattern meets its join partners in the child lists of its kept parents, and
// the least frequent parents have the shortest lists.

#include "mining/parents.h"

#include <cstring>

#include "base/comparators.h"
#include "base/error.h"
#include "base/xmalloc.h"

namespace kestro {

// Negative when the pattern x of prev ranks before y.
static int compare_ranks(int x, int y, const sg_set *prev) {
  const int d = sg_set_get(prev, x)->count - sg_set_get(prev, y)->count;
  return d ? d : x - y;
}

// The elements of a record laid out for more vertices are wider than the entry.
static void insert_entry(subgraph *sg, const sg_parent *entry) {
  const size_t width = static_cast<size_t>(sg->parent->element_size);
  const size_t bytes =
      static_cast<size_t>(sg_parent_ints(entry->vs)) * sizeof(int);
  int small[64] = {}; // enough for nearly all patterns
  xvector<int> large;
  int *element = small;
  if (width > sizeof small) {
    large.resize(width / sizeof(int));
    element = large.data();
  }
  memcpy(element, entry, bytes);
  ksstack_insert_sorted(element, sg->parent, compar_int);
}

void sg_update_parent_info(subgraph *sg, const sg_parent *entry,
                           const sg_set *prev) {
  if (ksstack_bsearch(&entry->pid, sg->parent, compar_int))
    return;
  if (sg_parent_size(sg) < 2) {
    insert_entry(sg, entry);
    return;
  }
  const int p0 = sg_parent_at(sg, 0)->pid;
  const int p1 = sg_parent_at(sg, 1)->pid;
  const int cmpx0 = compare_ranks(entry->pid, p0, prev);
  const int cmpx1 = compare_ranks(entry->pid, p1, prev);
  const int cmp01 = compare_ranks(p0, p1, prev);
  assert(cmpx0 && cmpx1 && cmp01);
  int dropped;
  if (cmpx0 < 0 && cmpx1 < 0)
    dropped = cmp01 < 0 ? 1 : 0;
  else if (cmpx0 < 0 && cmpx1 > 0)
    dropped = 0;
  else if (cmpx0 > 0 && cmpx1 < 0)
    dropped = 1;
  else if (cmpx0 > 0 && cmpx1 > 0)
    return;
  else
    die("subgraph.c", "can't happen\n");
  ksstack_remove_at(sg->parent, dropped);
  insert_entry(sg, entry);
}

void sg_register_children(const sg_set *level, const sg_set *prev,
                          const interruption *stop) {
  interruption_poll poll(stop, 4096);
  for (int j = 0; j < sg_set_size(level); j++) {
    poll.step();
    const subgraph *sg = sg_set_get(level, j);
    for (int i = 0; i < sg_parent_size(sg); i++)
      sg_add_child(sg_set_get(prev, sg_parent_at(sg, i)->pid), j);
  }
}

} // namespace kestro
