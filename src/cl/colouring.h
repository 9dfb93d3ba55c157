// An ordered partition of a graph's vertices, and its refinement.
#pragma once

#include <cstdint>

#include "base/interruption.h"
#include "base/xmalloc.h"
#include "graph/graph.h"

namespace kestro {

// The cells are ranges of order; a cell is known by its first position, which
// is the colour of its vertices.  Refinement splits cells and never moves a
// vertex out of its cell's range, so colours compare as the cells do.
struct colouring {
  int cells = 0;         // how many; vs of them make it discrete
  xvector<int> order;    // vs: vertices by position
  xvector<int> colour;   // vs: by vertex, the first position of its cell
  xvector<int> cell_end; // vs: by first position, the end of that cell
};

// Memory that refinement uses again and again; belongs to whoever refines.
struct refinement_work {
  xvector<uint64_t> signature; // by slot: label and colour, sorted per vertex
  xvector<int> new_colour;     // by position
  interruption_poll poll;      // a step costs the vertices that it passes

  // Graphs of so many vertices and more are refined by cl/refine_changes.h,
  // with the same result.  In smaller ones whole passes cost less.
  int large = 40;
  // Smaller graphs of at most so many vertices are refined by
  // cl/refine_small.h, where their labels allow it, with the same result.
  int small = 64;

  // What this uses: see there.
  struct cell_record {
    int position; // of the cell in the order
    int size;
    int touched; // how many of its members are
  };
  xvector<int> members;
  xvector<int> where;
  xvector<int> cell;
  xvector<cell_record> cells;
  xvector<int> touched; // cells
  xvector<int> parts;
  xvector<int> changed; // vertices
};

// Refines the partition of all vertices of g into one cell: vertices are set
// apart by degree (higher first), label, and the ascending list of the labels
// and colours that they see along their edges, until that tells no more apart.
// Vertices of one cell stand in ascending number.
void colouring_init(colouring *c, const graph *g, refinement_work *work);

// Sets v apart from its cell, ahead of the rest, and refines.  Vertices that
// stay in one cell keep their order.  work has been used for g already.
void colouring_individualise(colouring *c, const graph *g, int v,
                             refinement_work *work);

// The first position of the first cell of several vertices, from a cell's first
// position on; -1 when the rest is discrete.
int colouring_first_open(const colouring *c, int from);

// The size of the largest cell, 0 when there is none.
int colouring_largest_cell(const colouring *c);

// Makes the cells of c those of coarser, of which c's are a refinement, and
// keeps c's order.
void colouring_coarsen(colouring *c, const colouring *coarser);

} // namespace kestro
