// The graph record: layout, copies, marks, look-ups and the key.
//
// Everything lies in one block behind the header, so a graph is copied, hashed
// and freed as a whole and can be embedded in another record.  Look-ups scan a
// neighbour list: lists are short.

#include "graph/graph.h"

#include <cstring>
#include <numeric>
#include <string>
#include <type_traits>

#include "base/error.h"
#include "base/xmalloc.h"

namespace kestro {

static_assert(sizeof(int) == 4);
static_assert(std::is_trivially_copyable_v<graph>);

static size_t ints(int count) { return static_cast<size_t>(count); }

size_t graph_size(int es, int vs, graph_ids ids) {
  const size_t of_vertices = ids == graph_ids::stored ? 3 : 2;
  return sizeof(graph) + (ints(vs) * of_vertices + ints(es) * 2 + 1) * 4;
}

graph *graph_init(void *memory, int es, int vs, graph_ids ids) {
  graph *g = static_cast<graph *>(memory);
  g->es = es;
  g->vs = vs;
  g->key = 0;
  g->e = reinterpret_cast<int *>(g + 1);
  g->v = g->e + es;
  g->elabel = g->v + vs + 1;
  g->vid = nullptr;
  if (ids == graph_ids::stored) {
    g->vid = g->elabel;
    g->elabel += vs;
  }
  g->vlabel = g->elabel + es;
  return g;
}

graph *graph_create(int es, int vs) {
  return graph_init(xmalloc(graph_size(es, vs)), es, vs);
}

graph *graph_copy(const graph *g) {
  graph *copy = graph_create(g->es, g->vs);
  graph_copy_into(g, copy);
  return copy;
}

static void copy_ints(const int *from, int count, int *to) {
  memcpy(to, from, ints(count) * sizeof(int));
}

void graph_copy_into(const graph *src, graph *dst) {
  dst->es = src->es;
  dst->vs = src->vs;
  dst->key = src->key;
  copy_ints(src->e, src->es, dst->e);
  copy_ints(src->v, src->vs + 1, dst->v);
  if (dst->vid && src->vid)
    copy_ints(src->vid, src->vs, dst->vid);
  else if (dst->vid)
    std::iota(dst->vid, dst->vid + src->vs, 0);
  copy_ints(src->elabel, src->es, dst->elabel);
  copy_ints(src->vlabel, src->vs, dst->vlabel);
}

void graph_free(graph *g) {
  if (!g)
    return;
  memset(static_cast<void *>(g), 0, graph_size(g->es, g->vs));
  xfree(g);
}

int graph_active_slots(const graph *g) {
  int active = 0;
  for (int j = 0; j < g->v[g->vs]; j++)
    active += !graph_is_disabled(g->e[j]);
  return active;
}

int graph_active_vertices(const graph *g) {
  int active = 0;
  for (int i = 0; i < g->vs; i++)
    active += !graph_is_disabled(g->v[i]);
  return active;
}

int graph_vertex_degree(const graph *g, int u) {
  if (graph_is_disabled(g->v[u]))
    return 0;
  int degree = 0;
  const int end = graph_unmark(g->v[u + 1]);
  for (int j = g->v[u]; j < end; j++)
    degree += !graph_is_disabled(g->e[j]);
  return degree;
}

int graph_has_edge(const graph *g, int u, int w) {
  return graph_edge_index(g, u, w) != -1;
}

int graph_edge_index(const graph *g, int u, int w) {
  for (int j = g->v[u]; j < g->v[u + 1]; j++)
    if (g->e[j] == w)
      return j;
  return -1;
}

int graph_edge_label(const graph *g, int u, int w) {
  const int slot = graph_edge_index(g, u, w);
  return slot == -1 ? -1 : g->elabel[slot];
}

void graph_die_of_vid(const graph *g, int id) {
  std::string text =
      message_text("graph.c", "can't find a vid '%d' in a graph\n", id);
  for (int i = 0; i < g->vs; i++)
    text += std::to_string(g->vid[i]) + " ";
  throw fatal_error(text + "\n");
}

static uint32_t hash_byte(uint32_t h, uint32_t byte) {
  return h ^ (h * 32 + (h >> 3) + byte);
}

// Bytes enter as signed ones, from the least significant.
static uint32_t hash_ints(uint32_t h, const int *words, int count) {
  for (int i = 0; i < count; i++) {
    const uint32_t word = static_cast<uint32_t>(words[i]);
    if (word < 128) { // nearly always
      h = hash_byte(hash_byte(hash_byte(hash_byte(h, word), 0), 0), 0);
      continue;
    }
    for (int shift = 0; shift < 32; shift += 8)
      h = hash_byte(h,
                    static_cast<uint32_t>(static_cast<int8_t>(word >> shift)));
  }
  return h;
}

uint32_t graph_key(const graph *g) {
  const size_t words = 2 * ints(g->es) + 2 * ints(g->vs) + 1;
  uint32_t h = static_cast<uint32_t>(4 * words);
  h = hash_ints(h, g->e, g->es);
  h = hash_ints(h, g->v, g->vs + 1);
  h = hash_ints(h, g->elabel, g->es);
  return hash_ints(h, g->vlabel, g->vs);
}

void graph_check(const graph *g) {
  assert(g->es >= 0 && g->es % 2 == 0 && g->vs >= 0);
  assert(g->v[0] == 0 && g->v[g->vs] == g->es);
  for (int i = 0; i < g->vs; i++) {
    assert(g->v[i] <= g->v[i + 1]);
    for (int j = g->v[i]; j < g->v[i + 1]; j++) {
      assert(g->e[j] >= 0 && g->e[j] < g->vs && g->e[j] != i);
      assert(j == g->v[i] || g->e[j - 1] < g->e[j]);
      assert(graph_edge_label(g, g->e[j], i) == g->elabel[j]);
    }
  }
}

} // namespace kestro
