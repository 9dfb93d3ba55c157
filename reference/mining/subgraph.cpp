// Id sets of pattern records, kept in order by insertion.

#include "reference/mining/subgraph.h"

#include "base/comparators.h"
#include "mining/parents.h"
#include "reference/base/ksstack.h"

namespace kestro {

static void clear(ksstack *s) {
  if (s)
    s->count = 0;
}

static void add_id(ksstack **set, int id) {
  if (!*set)
    *set = ksstack_new(4, static_cast<int>(sizeof(int)));
  if (!ksstack_bsearch(&id, *set, compar_int))
    ksstack_insert_sorted(&id, *set, compar_int);
}

int sg_support(const subgraph *sg) { return sg_tid_size(sg); }

int sg_pid_size(const subgraph *sg) {
  xvector<int> ids;
  sg_parent_ids(sg, &ids);
  return static_cast<int>(ids.size());
}

int sg_pid_at(const subgraph *sg, int i) {
  xvector<int> ids;
  sg_parent_ids(sg, &ids);
  return ids.at(static_cast<size_t>(i));
}

int sg_child_size(const subgraph *sg) {
  return sg->child ? sg->child->count : 0;
}
int sg_child_at(const subgraph *sg, int i) {
  return ksstack_get<int>(sg->child, i);
}
void sg_add_child(subgraph *sg, int id) { add_id(&sg->child, id); }
void sg_clear_child(subgraph *sg) { clear(sg->child); }

void sg_register_children(const sg_set *level, const sg_set *prev) {
  for (int j = 0; j < sg_set_size(level); j++) {
    const subgraph *sg = sg_set_get(level, j);
    for (int i = 0; i < sg_kept_size(sg); i++)
      sg_add_child(sg_set_get(prev, sg_kept_at(sg, i)->pid), j);
  }
}

void sg_add_tid(subgraph *sg, int tid) { add_id(&sg->tid, tid); }
void sg_clear_tid(subgraph *sg) { clear(sg->tid); }

int sg_cover_size(const subgraph *sg) {
  return sg->cover ? sg->cover->count : 0;
}
int sg_cover_at(const subgraph *sg, int i) {
  return ksstack_get<int>(sg->cover, i);
}
void sg_add_cover(subgraph *sg, int id) { add_id(&sg->cover, id); }
bool sg_in_cover(const subgraph *sg, int id) {
  return sg->cover && ksstack_bsearch(&id, sg->cover, compar_int) != nullptr;
}
void sg_remove_cover(subgraph *sg, int id) {
  if (sg->cover)
    ksstack_remove_sorted(&id, sg->cover, compar_int);
}
void sg_clear_cover(subgraph *sg) { clear(sg->cover); }

} // namespace kestro
