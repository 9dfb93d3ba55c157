// Embeddings: for each transaction of a pattern one place where it occurs.
#pragma once

#include <atomic>
#include <cstdint>

#include "base/xmalloc.h"
#include "graph/graph_list.h"
#include "mining/sg_set.h"

namespace kestro {

// A pattern's rows are a stack parallel to its tid set: row i holds, for each
// vertex of the pattern, its image in transaction i of tid.  Images are of type
// uint8_t where all transactions have at most 256 vertices, else uint16_t;
// there are no rows where a transaction has more than 65,536.

// The memory that rows may take.  A share is a quarter of what the transactions
// themselves take and 896 bytes for each pattern or candidate alive, about what
// one takes without rows.  Rows may take two shares, or one and
// 16 MiB where that is more: a run with few patterns can bear that, and at high
// supports rows are long.  Several threads may use one budget.
class embedding_budget {
public:
  static constexpr long long per_pattern = 896;  // of a share, in bytes
  static constexpr long long spare = 16LL << 20; // bytes

  explicit embedding_budget(const graph_list *transactions);
  embedding_budget(const embedding_budget &other)
      : width_(other.width_), share_(other.share_.load()),
        taken_(other.taken_.load()) {}
  // Bytes of an image, 0 where there are no rows.
  int image_bytes() const { return width_; }
  // Makes room for one more pattern alive, takes it back.
  void add_pattern() { share_ += per_pattern; }
  void remove_pattern() { share_ -= per_pattern; }
  // Bytes that rows may take in all.
  long long bytes() const;
  // Empty rows for up to n transactions, whose memory is taken off the budget;
  // null when it does not suffice.
  ksstack *take_rows(const subgraph *sg, int n);
  // Puts back what rows of sg take, or will take when full.
  void give_back(const subgraph *sg);
  // Takes off the budget what sg's rows hold already.
  void charge(const subgraph *sg);

private:
  int width_ = 1;                    // bytes of an image, 0 for no rows
  std::atomic<long long> share_ = 0; // bytes
  std::atomic<long long> taken_ = 0; // bytes of rows
};

// Of a pattern that has rows: whether their images are bytes.
inline bool sg_has_byte_rows(const subgraph *sg) {
  return sg->rows->element_size == sg->g->vs;
}

// Row i of a pattern that has rows of that type.
template <class Image> const Image *sg_row(const subgraph *sg, int i) {
  return reinterpret_cast<const Image *>(
      sg->rows->data +
      static_cast<size_t>(i) * static_cast<size_t>(sg->rows->element_size));
}

// Appends a row to those of a pattern that has rows.
void sg_push_row(const subgraph *sg, const int *images);

} // namespace kestro
