// Placing a pattern in transactions by one edge more than a parent.
#pragma once

#include <cstddef>
#include <cstdint>

#include "base/xmalloc.h"
#include "mining/edge_slots.h"
#include "mining/subgraph.h"

namespace kestro {

// Where the rows of a pattern go, one for each transaction of a bound.
template <class Image> struct row_places {
  const int *tids; // the bound, ascending
  int count;       // transactions in it
  Image *rows;     // of all transactions, or room for one row that is not kept
  bool are_kept;   // which of the two
  char *found;     // by position: whether the pattern has been placed there

  // Where the row of the transaction at that position goes.
  Image *row(int i, int vs) const {
    return are_kept ? rows + static_cast<ptrdiff_t>(i) * vs : rows;
  }
};

// A walk through a parent's transactions and rows in step with a bound, all of
// whose transactions the parent has.
template <class Image> struct row_cursor {
  const int *tids; // the parent's, ascending
  const Image *rows;
  int count; // of them
  int vs;    // images of a row
  int at;    // the position reached

  explicit row_cursor(const subgraph *parent);
  // Moves to that transaction, which is not before the one reached.
  void move_to(int tid);
  const Image *row() const { return rows + static_cast<ptrdiff_t>(at) * vs; }
};

// How a pattern is placed by one edge more than one of its parents.
class edge_placement {
public:
  // Images of a row that is not kept need room for so many more.
  static constexpr int spare_images = 32;

  // For the pattern sg and one of its parent entries, in transactions whose
  // edges have these slots, which are borrowed.
  void set(const subgraph *sg, const sg_parent *entry, const edge_slots *slots);

  // Places the pattern in a transaction by one edge more than the parent's row;
  // false, with row undefined, when that edge finds no place there.
  template <class Image>
  bool extend(const Image *parent_row, int tid, Image *row) const;

  // The same for the transactions at positions first to end - 1 of a bound, one
  // after another; returns in how many the edge finds a place.  Kept rows
  // behind them, whatever their position, are undefined afterwards.
  template <class Image>
  int extend_all(row_cursor<Image> *from, const row_places<Image> &to,
                 int first, int end) const;
  // The plain way of it.
  template <class Image>
  int extend_each(row_cursor<Image> *from, const row_places<Image> &to,
                  int first, int end) const;

private:
  class shuffling;

  bool is_of_kind(int tid, int u, edge_slots::range slots,
                  const uint32_t *slot) const;
  bool has_edge(int tid, int u, int w) const;
  template <class Image>
  int free_neighbour(int tid, int u, const Image *row) const;

  const edge_slots *slots_ = nullptr;
  xvector<uint16_t> map_; // per vertex, the parent's, any for the new one
  int parent_vs_ = 0;     // vertices of the parent
  int from_ = -1;         // the parent's ends of the edge, to_ -1 when new
  int to_ = -1;
  int new_vertex_ = -1; // the new vertex, -1 for none
  int elabel_ = -1;     // of the edge
  int vlabel_ = -1;     // of the end that it leads to
  int kind_ = -1;       // of both
};

} // namespace kestro
