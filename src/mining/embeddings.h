// Embeddings carried along: for each transaction of a pattern one place where
// it occurs, so that a pattern with one edge more needs one edge placed.
#pragma once

#include <cstdint>

#include "mining/sg_set.h"

namespace kestro {

// An image in a row; rows exist only where all transactions have fewer than
// 65,536 vertices.
using row_vertex = uint16_t;

// A pattern's rows are a stack parallel to its tid set: row i holds, for each
// vertex of the pattern, its image in transaction i of tid.

// The memory that rows may take: as much as the transactions themselves.
class embedding_budget {
public:
  // transactions is a graph list.
  explicit embedding_budget(const ksstack *transactions);
  // Empty rows for up to n transactions, whose memory is taken off the budget;
  // null when it does not suffice.
  ksstack *take_rows(const subgraph *sg, int n);
  // Puts back what rows of sg take, or will take when full.
  void give_back(const subgraph *sg);
  // Takes what sg's rows hold already.
  void charge(const subgraph *sg);

private:
  size_t left_ = 0; // bytes
};

// Row i of a pattern that has rows.
inline row_vertex *sg_row(const subgraph *sg, int i) {
  return reinterpret_cast<row_vertex *>(
      sg->rows->data +
      static_cast<size_t>(i) * static_cast<size_t>(sg->rows->element_size));
}

// Places sg in transaction t by one edge more than parent_row places the parent
// of entry; false, with row undefined, when that edge finds no place there.
bool extend_row(const subgraph *sg, const sg_parent *entry,
                const row_vertex *parent_row, const graph *t, row_vertex *row);

} // namespace kestro
