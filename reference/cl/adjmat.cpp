// The adjmat record: layout, copies, and the way from and to a graph.
//
// All arrays lie in one block behind the header, so that a copy costs one
// allocation; arrays of pointers start at the next aligned address.  Copies
// re-aim every pointer: nothing in a block ever points into another one.
// Filling and copying cost vs * vs steps for the cells.

#include "reference/cl/adjmat.h"

#include <cassert>
#include <cstring>
#include <type_traits>

#include "base/xmalloc.h"
#include "reference/base/exchange.h"

namespace kestro {

static_assert(std::is_trivially_copyable_v<adjmat>);
static_assert(std::is_trivially_copyable_v<cl_vertex>);

static size_t count_of(int n) { return static_cast<size_t>(n); }

static size_t square(int n) { return count_of(n) * count_of(n); }

namespace {

// Hands out consecutive arrays of a block as offsets from its start.
struct block_layout {
  size_t end = 0; // bytes handed out so far
  template <class T> size_t take(size_t count) {
    const size_t at = (end + alignof(T) - 1) / alignof(T) * alignof(T);
    end = at + count * sizeof(T);
    return at;
  }
};

// Where each array of an adjmat starts, in bytes from the header.
struct adjmat_layout {
  size_t vertex, sorted, cells, rows, part, new_part_start, start_perm, perm,
      iperm, adj, vertex_scratch, edge_scratch, size;
};

} // namespace

static adjmat_layout layout_of(int vs) {
  static constexpr int most = 1 << 28; // below it, no size exceeds a size_t
  if (vs > most)
    die_out_of_memory();
  const size_t n = count_of(vs);
  block_layout block;
  block.take<adjmat>(1);
  adjmat_layout at;
  at.vertex = block.take<cl_vertex>(n);
  at.sorted = block.take<cl_vertex *>(n);
  at.cells = block.take<int>(n * n);
  at.rows = block.take<int *>(n);
  at.part = block.take<int>(n + 1);
  at.new_part_start = block.take<int>(n + 1);
  at.start_perm = block.take<int>(n);
  at.perm = block.take<int>(n);
  at.iperm = block.take<int>(n);
  at.adj = block.take<cl_edge>(n * n);
  at.vertex_scratch = block.take<cl_vertex *>(n);
  at.edge_scratch = block.take<cl_edge>(n);
  at.size = block.end;
  return at;
}

size_t cl_adjmat_size(int n) { return layout_of(n).size; }

template <class T> static void aim(T **array, adjmat *m, size_t offset) {
  *array = reinterpret_cast<T *>(reinterpret_cast<char *>(m) + offset);
}

void cl_init_adjmat(adjmat *m, int n) {
  const adjmat_layout at = layout_of(n);
  m->size = at.size;
  aim(&m->vertex, m, at.vertex);
  aim(&m->sorted, m, at.sorted);
  aim(&m->cells, m, at.cells);
  aim(&m->rows, m, at.rows);
  aim(&m->part, m, at.part);
  aim(&m->new_part_start, m, at.new_part_start);
  aim(&m->start_perm, m, at.start_perm);
  aim(&m->perm, m, at.perm);
  aim(&m->iperm, m, at.iperm);
  aim(&m->vertex_scratch, m, at.vertex_scratch);
  aim(&m->edge_scratch, m, at.edge_scratch);
  cl_edge *adj;
  aim(&adj, m, at.adj);
  for (int i = 0; i < n; i++)
    m->vertex[i].adj = adj + count_of(i) * count_of(n);
  cl_reset_adjmat(m, n);
}

adjmat *cl_new_adjmat(int n) {
  adjmat *m = static_cast<adjmat *>(xmalloc(cl_adjmat_size(n)));
  cl_init_adjmat(m, n);
  return m;
}

static void stand_at_own_positions(adjmat *m) {
  for (int i = 0; i < m->vs; i++)
    m->perm[i] = m->iperm[i] = i;
}

void cl_reset_adjmat(adjmat *m, int n) {
  m->vs = n;
  m->parts = 1;
  m->new_parts = 1;
  m->part[0] = 0;
  if (n > 0)
    m->part[1] = n;
  stand_at_own_positions(m);
  for (int i = 0; i < n; i++) {
    m->vertex[i].row = i;
    m->sorted[i] = &m->vertex[i];
    m->rows[i] = m->cells + count_of(i) * count_of(n);
  }
}

adjmat *cl_dup_adjmat(const adjmat *m) {
  adjmat *copy = static_cast<adjmat *>(xmalloc(m->size));
  cl_init_adjmat(copy, m->vs);
  copy->size = m->size;
  cl_copy_adjmat2(m, copy);
  return copy;
}

void cl_free_adjmat(adjmat *m) { xfree(m); }

static void copy_ints(const int *from, size_t count, int *to) {
  memcpy(to, from, count * sizeof(int));
}

// The record of dst that stands for a record of src.
static cl_vertex *counterpart(const cl_vertex *v, adjmat *dst) {
  return v ? &dst->vertex[v->row] : nullptr;
}

static void copy_vertex(const cl_vertex *src, adjmat *dst) {
  cl_vertex *copy = &dst->vertex[src->row];
  cl_edge *const adj = copy->adj;
  *copy = *src;
  copy->adj = adj;
  for (int k = 0; k < src->degree; k++)
    adj[k] = {src->adj[k].label, counterpart(src->adj[k].v, dst)};
}

void cl_copy_adjmat2(const adjmat *src, adjmat *dst) {
  assert(dst->vs == src->vs);
  const size_t n = count_of(src->vs);
  dst->parts = src->parts;
  dst->new_parts = src->new_parts;
  for (int i = 0; i < src->vs; i++) {
    copy_vertex(&src->vertex[i], dst);
    dst->sorted[i] = counterpart(src->sorted[i], dst);
  }
  copy_ints(src->start_perm, n, dst->start_perm);
  copy_ints(src->perm, n, dst->perm);
  copy_ints(src->iperm, n, dst->iperm);
  copy_ints(src->cells, n * n, dst->cells);
  copy_ints(src->part, n + 1, dst->part);
  copy_ints(src->new_part_start, n + 1, dst->new_part_start);
}

void copy_adjmat_perm(const adjmat *src, adjmat *dst) {
  assert(src->vs == dst->vs);
  copy_ints(src->perm, count_of(src->vs), dst->perm);
  copy_ints(src->iperm, count_of(src->vs), dst->iperm);
}

void copy_adjmat_partitioning(const adjmat *src, adjmat *dst) {
  assert(src->vs == dst->vs);
  for (int i = 0; i < src->vs; i++)
    dst->vertex[i].part = src->vertex[i].part;
  copy_ints(src->part, count_of(src->vs) + 1, dst->part);
}

static void fill_vertex(const graph *g, int i, adjmat *m) {
  cl_vertex *v = &m->vertex[i];
  v->id = g->vid ? g->vid[i] : i;
  v->degree = g->v[i + 1] - g->v[i];
  v->label = g->vlabel[i];
  v->part = 0;
  for (int k = 0; k < v->degree; k++) {
    const int slot = g->v[i] + k;
    const int label = g->elabel[slot] + 1;
    m->rows[i][g->e[slot]] = label;
    v->adj[k] = {label, &m->vertex[g->e[slot]]};
  }
}

void cl_graph_to_adjmat(const graph *g, adjmat *m) {
  assert(g->vs == m->vs);
  stand_at_own_positions(m);
  memset(m->cells, 0, square(m->vs) * sizeof(int));
  for (int i = 0; i < g->vs; i++)
    fill_vertex(g, i, m);
}

// Appends the neighbours of the vertex at a position, by position; returns the
// slots used so far.
static int append_neighbours(const adjmat *m, int position, int slot,
                             graph *g) {
  const int *row = m->rows[m->perm[position]];
  for (int j = 0; j < m->vs; j++) {
    const int cell = row[m->perm[j]];
    if (j == position || cell == 0)
      continue;
    g->e[slot] = j;
    g->elabel[slot] = cell - 1;
    slot++;
  }
  return slot;
}

void cl_adjmat_to_graph(const adjmat *m, graph *g) {
  const int es = cl_count_edges(m);
  assert(es == g->es && m->vs == g->vs);
  g->v[0] = 0;
  for (int i = 0; i < m->vs; i++) {
    const cl_vertex *v = &m->vertex[m->perm[i]];
    g->vlabel[i] = v->label;
    g->vid[i] = v->id;
    g->v[i + 1] = append_neighbours(m, i, g->v[i], g);
  }
}

int cl_count_edges(const adjmat *m) {
  const size_t cells = square(m->vs);
  int edges = 0;
  for (size_t i = 0; i < cells; i++)
    edges += m->cells[i] != 0;
  return edges;
}

void cl_swap_positions(adjmat *m, int a, int b) {
  swap_ints(&m->perm[a], &m->perm[b]);
  swap_ints(&m->iperm[a], &m->iperm[b]);
}

} // namespace kestro
