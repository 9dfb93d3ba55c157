// Pattern records.
//
// Header and graph share one allocation; the five sets are stacks of their own
// because they grow at different times.  Their elements start with the id, so
// all of them sort and search with compar_int.

#include "mining/subgraph.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <utility>

#include "base/comparators.h"
#include "base/error.h"
#include "base/xmalloc.h"

namespace kestro {

static_assert(sizeof(sg_parent) == 4 * sizeof(int));

// The graph starts behind the header, at the next multiple of eight bytes.
static_assert(sizeof(subgraph) % alignof(graph) == 0);

static constexpr int int_bytes = static_cast<int>(sizeof(int));

size_t sg_size(int es, int vs) { return sizeof(subgraph) + graph_size(es, vs); }

// Record in memory with its graph laid out and no sets.
static subgraph *lay_out(void *memory, int es, int vs) {
  subgraph *sg = static_cast<subgraph *>(memory);
  sg->g = graph_init(sg + 1, es, vs);
  sg->count = 0;
  sg->child = sg->parent = sg->pid = sg->tid = sg->cover = nullptr;
  sg->rows = sg->links = nullptr;
  sg->block = sg_size(es, vs);
  sg->invariant = sg->rigid = sg->in_arena = false;
  return sg;
}

// Gives a record without sets its empty ones.
static void create_sets(subgraph *sg) {
  const int vs = sg->g->vs;
  const int edges = sg->g->es / 2;
  ksstack_ptr child(ksstack_new(vs, int_bytes));
  ksstack_ptr parent(ksstack_new(2, sg_parent_ints(vs) * int_bytes));
  ksstack_ptr pid(ksstack_new(edges, 2 * int_bytes));
  ksstack_ptr tid(ksstack_new(1, int_bytes));
  sg->cover = ksstack_new(1, int_bytes);
  sg->child = child.release();
  sg->parent = parent.release();
  sg->pid = pid.release();
  sg->tid = tid.release();
}

subgraph *sg_create(int es, int vs) {
  xptr<void> memory(xmalloc(sg_size(es, vs)));
  subgraph *sg = sg_init(memory.get(), es, vs);
  memory.release();
  return sg;
}

subgraph *sg_init(void *memory, int es, int vs) {
  subgraph *sg = lay_out(memory, es, vs);
  create_sets(sg);
  return sg;
}

static ksstack *copy_set(const ksstack *s) {
  return s ? ksstack_copy(s) : nullptr;
}

static size_t aligned(size_t bytes) {
  constexpr size_t unit = alignof(std::max_align_t);
  return (bytes + unit - 1) / unit * unit;
}

// Bytes of a copy of a set in another block; 0 for an absent one.
static size_t inner_bytes(const ksstack *s) {
  return s ? aligned(ksstack_bytes(std::max(s->count, 1), s->element_size)) : 0;
}

// A copy without room to spare.
static ksstack *copy_exactly(const ksstack *s, char *memory) {
  if (!s)
    return nullptr;
  ksstack *copy = ksstack_init(memory, std::max(s->count, 1), s->element_size);
  copy->count = s->count;
  memcpy(copy->data, s->data,
         static_cast<size_t>(s->count) * static_cast<size_t>(s->element_size));
  return copy;
}

subgraph *sg_copy(const subgraph *sg, arena *memory) {
  const int es = sg->g->es;
  const int vs = sg->g->vs;
  const size_t pid_at = aligned(sg_size(es, vs));
  const size_t parent_at = pid_at + inner_bytes(sg->pid);
  const size_t links_at = parent_at + inner_bytes(sg->parent);
  const size_t block = links_at + inner_bytes(sg->links);
  char *at = static_cast<char *>(memory ? memory->take(block) : xmalloc(block));
  sg_ptr copy(lay_out(at, es, vs));
  copy->in_arena = memory != nullptr;
  copy->block = block;
  graph_copy_into(sg->g, copy->g);
  copy->count = sg->count;
  copy->pid = copy_exactly(sg->pid, at + pid_at);
  copy->parent = copy_exactly(sg->parent, at + parent_at);
  copy->child = copy_set(sg->child);
  copy->tid = copy_set(sg->tid);
  copy->cover = copy_set(sg->cover);
  copy->rows = copy_set(sg->rows);
  copy->links = copy_exactly(sg->links, at + links_at);
  copy->invariant = sg->invariant;
  copy->rigid = sg->rigid;
  return copy.release();
}

subgraph *sg_move(subgraph *sg, arena *memory) {
  // These sets have blocks of their own, which stay where they are.
  ksstack_ptr child(std::exchange(sg->child, nullptr));
  ksstack_ptr tid(std::exchange(sg->tid, nullptr));
  ksstack_ptr cover(std::exchange(sg->cover, nullptr));
  ksstack_ptr rows(std::exchange(sg->rows, nullptr));
  subgraph *moved = sg_copy(sg, memory);
  moved->child = child.release();
  moved->tid = tid.release();
  moved->cover = cover.release();
  moved->rows = rows.release();
  sg_free(sg);
  return moved;
}

subgraph *sg_light_copy(const subgraph *sg, void *memory) {
  subgraph *copy = lay_out(memory, sg->g->es, sg->g->vs);
  graph_copy_into(sg->g, copy->g);
  copy->count = sg->count;
  return copy;
}

// Whether a set lies in its record's block.
static bool is_inside(const subgraph *sg, const ksstack *s) {
  const auto begin = reinterpret_cast<uintptr_t>(sg);
  const auto at = reinterpret_cast<uintptr_t>(s);
  return begin < at && at < begin + sg->block;
}

static void free_set(const subgraph *sg, ksstack *s) {
  if (is_inside(sg, s))
    ksstack_finish(s);
  else
    ksstack_free(s);
}

void sg_free_sets(subgraph *sg) {
  for (ksstack *s : {sg->child, sg->parent, sg->pid, sg->tid, sg->cover,
                     sg->rows, sg->links})
    free_set(sg, s);
}

void sg_free_links(subgraph *sg) {
  free_set(sg, std::exchange(sg->links, nullptr));
}

void sg_free(subgraph *sg) {
  if (!sg)
    return;
  sg_free_sets(sg);
  if (!sg->in_arena)
    xfree(sg);
}

// Difference of the pairs (a[i], b[i]) of two graphs, i below n.
static int compare_interleaved(const int *xa, const int *xb, const int *ya,
                               const int *yb, int n) {
  for (int i = 0; i < n; i++) {
    if (xa[i] != ya[i])
      return xa[i] - ya[i];
    if (xb[i] != yb[i])
      return xb[i] - yb[i];
  }
  return 0;
}

int sg_compare(const subgraph *x, const subgraph *y) {
  const graph *a = x->g;
  const graph *b = y->g;
  if (a->es != b->es)
    return a->es - b->es;
  if (a->vs != b->vs)
    return a->vs - b->vs;
  if (a->key != b->key)
    return static_cast<int>(a->key) < static_cast<int>(b->key) ? -1 : 1;
  const int d = compare_interleaved(a->v, a->vlabel, b->v, b->vlabel, a->vs);
  if (d)
    return d;
  return compare_interleaved(a->e, a->elabel, b->e, b->elabel, a->es);
}

// First int of element i of a set, which has it.
static int id_at(const ksstack *s, int i) { return ksstack_get<int>(s, i); }

static int size_of(const ksstack *s) { return s ? s->count : 0; }

static void clear(ksstack *s) {
  if (s)
    s->count = 0;
}

// Creates the set if it is absent, as those of candidates are.
static void add_id(ksstack **set, int id) {
  const int element[2] = {id, 0}; // wide enough for either width
  if (!*set)
    *set = ksstack_new(4, int_bytes);
  if (!ksstack_bsearch(element, *set, compar_int))
    ksstack_insert_sorted(element, *set, compar_int);
}

int sg_child_size(const subgraph *sg) { return size_of(sg->child); }
int sg_child_at(const subgraph *sg, int i) { return id_at(sg->child, i); }
void sg_add_child(subgraph *sg, int id) { add_id(&sg->child, id); }

int sg_pid_size(const subgraph *sg) { return size_of(sg->pid); }
int sg_pid_at(const subgraph *sg, int i) { return id_at(sg->pid, i); }
void sg_add_pid(subgraph *sg, int id) { add_id(&sg->pid, id); }
void sg_clear_pid(subgraph *sg) { clear(sg->pid); }

int sg_tid_size(const subgraph *sg) { return size_of(sg->tid); }
int sg_tid_at(const subgraph *sg, int i) { return id_at(sg->tid, i); }
void sg_append_tid(subgraph *sg, int tid) {
  if (!sg->tid)
    sg->tid = ksstack_new(1, int_bytes);
  ksstack_push(&tid, sg->tid);
}

int sg_parent_size(const subgraph *sg) { return size_of(sg->parent); }
sg_parent *sg_parent_at(const subgraph *sg, int i) {
  return static_cast<sg_parent *>(ksstack_at(sg->parent, i));
}
int sg_find_parent(const subgraph *sg, int pid) {
  return sg->parent ? ksstack_lower_bound(&pid, sg->parent, compar_int) : -1;
}
void sg_clear_parent(subgraph *sg) { clear(sg->parent); }

} // namespace kestro
