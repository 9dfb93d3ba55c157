// The working form of a small graph in the step-by-step canonical labelling,
// with which the tests compare the labeller of cl/canonical.h.
#pragma once

#include <cstddef>
#include <memory>

#include "graph/graph.h"

namespace kestro {

struct cl_vertex;

// One neighbour of a vertex.
struct cl_edge {
  int label;    // edge label id + 1, so never 0
  cl_vertex *v; // the neighbour, in the same adjmat; null when never filled
};

// A vertex and what sets it apart from the others.
struct cl_vertex {
  int id;       // the graph's vid, carried along untouched
  int degree;   // neighbours
  int label;    // vertex label id
  int row;      // own index in vertex, and row and column in cells; fixed
  int part;     // part that holds the vertex
  int new_part; // part that the refinement in progress gives it
  cl_edge *adj; // degree neighbours, room for all vertices
};

// A labelled graph as a matrix, as neighbour lists and as an ordered partition
// of the vertex positions, in one block:
//
//   | header | vertex: vs | sorted: vs | cells: vs * vs | rows: vs |
//   | part: vs + 1 | new_part_start: vs + 1 | start_perm, perm, iperm: vs |
//   | adj of vertex 0: vs | adj of vertex 1: vs | ... |
//   | vertex_scratch: vs | edge_scratch: vs |
//
// Cells never move: perm says which vertex stands where, and cells are read
// through it.  The vertices at positions part[k] .. part[k + 1]-1
// are those whose part is k.  After every sort, sorted[i] is
// &vertex[perm[i]] and iperm is the inverse of perm.
//
// The block may have room for more vertices than are in use; then every array
// stays where the larger size puts it, but rows lie vs cells apart.
struct adjmat {
  size_t size;                // bytes of the block
  int vs;                     // vertices in use
  cl_vertex *vertex;          // vs records, by row
  cl_vertex **sorted;         // vs vertices in the order of the last sort
  int *cells;                 // vs * vs edge labels + 1, 0 for no edge
  int **rows;                 // vs starts of rows in cells
  int *part;                  // parts + 1 first positions; part[parts] is vs
  int parts;                  // parts of the partition; vs when it is discrete
  int *new_part_start;        // first positions of the refinement in progress
  int new_parts;              // parts after the last refinement
  int *start_perm;            // perm when the exhaustive search began
  int *perm;                  // vertex at each position
  int *iperm;                 // position of each vertex
  cl_vertex **vertex_scratch; // room to sort vertices
  cl_edge *edge_scratch;      // room to sort one neighbour list
};

// Bytes of the block of an adjmat of n vertices.
size_t cl_adjmat_size(int n);
// Lays an adjmat of n vertices out in caller memory of cl_adjmat_size(n) bytes:
// every vertex at its own position, in one part.  Cells and the fields of
// the vertices that come from a graph are left as they are.
void cl_init_adjmat(adjmat *m, int n);
// The same in a new block; freed with cl_free_adjmat.
adjmat *cl_new_adjmat(int n);
// Starts m over for n vertices, no more than it was laid out for.
void cl_reset_adjmat(adjmat *m, int n);
// A full copy in a block of the same size.
adjmat *cl_dup_adjmat(const adjmat *m);
// Frees the block; m may be null.
void cl_free_adjmat(adjmat *m);

struct adjmat_deleter {
  void operator()(adjmat *m) const { cl_free_adjmat(m); }
};
using adjmat_ptr = std::unique_ptr<adjmat, adjmat_deleter>;

// Copies between adjmats of equal vs: everything; perm and iperm alone; the
// partition alone, but for parts, which dst keeps.  The 2 stands for the two
// adjmats that must exist, where cl_dup_adjmat makes a new one.
void cl_copy_adjmat2(const adjmat *src, adjmat *dst);
void copy_adjmat_perm(const adjmat *src, adjmat *dst);
void copy_adjmat_partitioning(const adjmat *src, adjmat *dst);

// Fills m from a graph of m->vs vertices without marks, all in part 0 and in
// the graph's order.  Nothing is sorted.
void cl_graph_to_adjmat(const graph *g, adjmat *m);
// Writes m back into a graph of the same sizes, in the order of the positions;
// vid goes with the vertices, key is left.
void cl_adjmat_to_graph(const adjmat *m, graph *g);

// Nonzero cells: twice the number of edges.
int cl_count_edges(const adjmat *m);
// Exchanges the entries a and b of perm, and those of iperm.
void cl_swap_positions(adjmat *m, int a, int b);

} // namespace kestro
