// A graph's edge labels as a matrix, by which arrangements are compared.
#pragma once

#include "base/xmalloc.h"
#include "graph/graph.h"

namespace kestro {

// Cell (a, b) is the label of the edge a-b plus 1, 0 for none.
//
// Arrangements of the graph, orders of its vertices, are compared by the strict
// lower triangles of the matrices that they show, row by row; the larger one is
// better.
class label_cells {
public:
  // Costs the edges of g and of the graph before, and the square of the
  // vertices once for the largest.
  void fill(const graph *g);
  const int *row(int a) const { return cells_.data() + index(a) * index(vs_); }

  // Difference of the rows [from, to) of the arrangements a and b; those read
  // no later positions.
  int compare_rows(const int *a, const int *b, int from, int to) const;
  // Whether exchanging u and w alone, which have one label, is an automorphism:
  // they see the same edges to all other vertices.  Costs u's edges.
  bool are_twins(int u, int w) const;

private:
  static size_t index(int i) { return static_cast<size_t>(i); }
  int vs_ = 0;
  xvector<int> cells_;     // rows of vs_ cells; 0 behind them
  xvector<size_t> filled_; // the cells that are not 0, row by row
  xvector<size_t> first_;  // by row, where its own start there; the end
};

} // namespace kestro
