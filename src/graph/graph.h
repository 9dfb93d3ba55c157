// The one representation of a labelled undirected graph: transactions,
// patterns and candidates all hold one.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

namespace kestro {

// A labelled undirected graph in compressed adjacency form, in one block:
//
//   | header | e: es | v: vs + 1 | vid: vs | elabel: es | vlabel: vs |
//
// Of patterns there are many, and their vertices come from nowhere else: their
// blocks are without vid.
//
// The neighbours of vertex i are e[v[i]] .. e[v[i + 1] - 1], ascending and
// without repeats; every edge has a slot at either end, both with its label.
//
// A vertex or slot is disabled in place by storing the bitwise complement of
// v[i] or e[j]; complementing again restores it.  Since the end of a range is
// v[i + 1], which may be complemented too, ends are read through
// graph_unmark().  Functions called raw read stored values as they are and are
// for graphs without marks.
struct graph {
  int es;       // slots, two per edge
  int vs;       // vertices
  uint32_t key; // hash of structure and labels, 0 when fresh
  int *e;       // es neighbours; negative means disabled
  int *v;       // vs + 1 offsets into e; negative means disabled
  int *vid;     // vs ids in the graph this one came from; null where each
                // vertex has its own number as id
  int *elabel;  // es edge label ids
  int *vlabel;  // vs vertex label ids
};

// Whether a graph has ids of its own.
enum class graph_ids { stored, own_numbers };

// Bytes of the block of a graph with es slots and vs vertices.
size_t graph_size(int es, int vs, graph_ids ids = graph_ids::stored);
// Lays a graph out in caller memory of graph_size(es, vs) bytes, with key 0;
// the arrays' contents are left as they are.
graph *graph_init(void *memory, int es, int vs,
                  graph_ids ids = graph_ids::stored);
// The same in a new block; freed with graph_free.
graph *graph_create(int es, int vs);
// A new graph with all that g holds; likewise.
graph *graph_copy(const graph *g);
// Copies src into the arrays of dst, which must have room for them; ids only
// where dst stores any.
void graph_copy_into(const graph *src, graph *dst);
// Overwrites the block with zero bytes and frees it; g may be null.
void graph_free(graph *g);

struct graph_deleter {
  void operator()(graph *g) const { graph_free(g); }
};
using graph_ptr = std::unique_ptr<graph, graph_deleter>;

// Marks, on stored values of v and e.
inline bool graph_is_disabled(int x) { return x < 0; }
inline int graph_unmark(int x) { return x >= 0 ? x : ~x; }
inline void graph_toggle(int *x) { *x = ~*x; }

// Enabled slots and vertices; enabled slots of vertex u, 0 if u is disabled.
int graph_active_slots(const graph *g);
int graph_active_vertices(const graph *g);
int graph_vertex_degree(const graph *g, int u);

// Raw: whether u-w is an edge; the slot of w in u's list, and its label, or -1.
int graph_has_edge(const graph *g, int u, int w);
int graph_edge_index(const graph *g, int u, int w);
int graph_edge_label(const graph *g, int u, int w);

// The death of a look-up of a vid that g does not have; lists those it has.
[[noreturn]] void graph_die_of_vid(const graph *g, int id);

// The hash of e, v, elabel and vlabel, as stored; vid and key do not enter.
// The caller stores it into key.
uint32_t graph_key(const graph *g);

// Dies through an assertion unless g is a graph without marks whose lists are
// sorted, symmetric and equally labelled.
void graph_check(const graph *g);

} // namespace kestro
