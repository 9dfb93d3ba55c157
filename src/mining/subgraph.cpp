// Pattern records.
//
// Header, graph and parents share one allocation; the id sets are stacks of
// their own because they come later.

#include "mining/subgraph.h"

#include <algorithm>
#include <cassert>
#include <cstring>
#include <utility>

#include "base/comparators.h"
#include "base/xmalloc.h"

namespace kestro {

// The graph starts behind the header, at the next multiple of eight bytes.
static_assert(sizeof(subgraph) % alignof(graph) == 0);

static constexpr int int_bytes = static_cast<int>(sizeof(int));

size_t sg_size(int es, int vs) { return sizeof(subgraph) + graph_size(es, vs); }

static size_t block_size(int es, int vs, graph_ids ids, int parents) {
  if (vs > parent_max_vertices)
    die_out_of_memory();
  return sizeof(subgraph) + graph_size(es, vs, ids) +
         static_cast<size_t>(parents) * sg_parent_bytes(vs);
}

// Record in memory of block_size() bytes with its graph laid out, no parents
// and no sets.
static subgraph *lay_out(void *memory, int es, int vs, graph_ids ids,
                         int parents) {
  subgraph *sg = static_cast<subgraph *>(memory);
  *sg = {};
  sg->g = graph_init(sg + 1, es, vs, ids);
  sg->entries = reinterpret_cast<char *>(sg + 1) + graph_size(es, vs, ids);
  sg->entry_bytes = static_cast<int>(sg_parent_bytes(vs));
  sg->parents_room = parents;
  sg->kept[0] = sg->kept[1] = -1;
  return sg;
}

subgraph *sg_create(int es, int vs) {
  const int parents = es / 2;
  constexpr graph_ids ids = graph_ids::stored;
  sg_ptr sg(
      lay_out(xmalloc(block_size(es, vs, ids, parents)), es, vs, ids, parents));
  sg->child = ksstack_new(vs, int_bytes);
  sg->tid = ksstack_new(1, int_bytes);
  sg->cover = ksstack_new(1, int_bytes);
  return sg.release();
}

subgraph *sg_init(void *memory, int es, int vs) {
  return lay_out(memory, es, vs, graph_ids::stored, 0);
}

static ksstack *copy_set(const ksstack *s) {
  return s ? ksstack_copy(s) : nullptr;
}

// A candidate's room is for more vertices than most have, which sets its
// entries apart.
static void copy_parents(const subgraph *from, subgraph *to) {
  if (from->entry_bytes != to->entry_bytes) {
    for (int i = 0; i < from->parents; i++)
      sg_add_parent(to, sg_parent_at(from, i));
    return;
  }
  memcpy(to->entries, from->entries,
         static_cast<size_t>(from->parents) *
             static_cast<size_t>(from->entry_bytes));
  to->parents = from->parents;
}

// What a record holds but for its sets and vertex ids, in a new block.
static sg_ptr copy_block(const subgraph *sg, arena *memory) {
  const graph *g = sg->g;
  constexpr graph_ids ids = graph_ids::own_numbers;
  const size_t bytes = block_size(g->es, g->vs, ids, sg->parents);
  sg_ptr copy(lay_out(memory ? memory->take(bytes) : xmalloc(bytes), g->es,
                      g->vs, ids, sg->parents));
  copy->in_arena = memory != nullptr;
  graph_copy_into(g, copy->g);
  copy->count = sg->count;
  copy_parents(sg, copy.get());
  std::copy(sg->kept, sg->kept + 2, copy->kept);
  copy->invariant = sg->invariant;
  copy->rigid = sg->rigid;
  return copy;
}

subgraph *sg_copy(const subgraph *sg, arena *memory) {
  sg_ptr copy = copy_block(sg, memory);
  copy->child = copy_set(sg->child);
  copy->tid = copy_set(sg->tid);
  copy->cover = copy_set(sg->cover);
  copy->rows = copy_set(sg->rows);
  return copy.release();
}

size_t sg_block_bytes(const subgraph *sg) {
  const graph *g = sg->g;
  return block_size(g->es, g->vs,
                    g->vid ? graph_ids::stored : graph_ids::own_numbers,
                    sg->parents_room);
}

static void move_sets(subgraph *from, subgraph *to) {
  to->child = std::exchange(from->child, nullptr);
  to->tid = std::exchange(from->tid, nullptr);
  to->cover = std::exchange(from->cover, nullptr);
  to->rows = std::exchange(from->rows, nullptr);
}

subgraph *sg_move(subgraph *sg, arena *memory) {
  sg_ptr moved = copy_block(sg, memory);
  move_sets(sg, moved.get());
  sg_free(sg);
  return moved.release();
}

subgraph *sg_light_copy(const subgraph *sg, void *memory) {
  subgraph *copy = sg_init(memory, sg->g->es, sg->g->vs);
  graph_copy_into(sg->g, copy->g);
  copy->count = sg->count;
  return copy;
}

void sg_free(subgraph *sg) {
  if (!sg)
    return;
  for (ksstack *s : {sg->child, sg->tid, sg->cover, sg->rows})
    ksstack_free(s);
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

sg_parent *sg_add_parent(subgraph *sg, const sg_parent *entry) {
  assert(sg->parents < sg->parents_room);
  sg_parent *added = sg_parent_at(sg, sg->parents++);
  memcpy(static_cast<void *>(added), entry, sg_parent_bytes(entry->vs));
  return added;
}

void sg_clear_parents(subgraph *sg) {
  sg->parents = 0;
  sg->kept[0] = sg->kept[1] = -1;
}

void sg_append_tid(subgraph *sg, int tid) {
  if (!sg->tid)
    sg->tid = ksstack_new(1, int_bytes);
  ksstack_push(&tid, sg->tid);
}

} // namespace kestro
