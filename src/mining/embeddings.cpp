// Rows of embeddings.
//
// They live from the count of a pattern to that of the last candidate that
// keeps it as a parent.

#include "mining/embeddings.h"

#include <algorithm>

#include "graph/graph_list.h"

namespace kestro {

embedding_budget::embedding_budget(const graph_list *transactions) {
  int largest = 0;
  for (int i = 0; i < transactions->count; i++) {
    const graph *t = graph_list_at(transactions, i);
    share_ += static_cast<long long>(graph_size(t->es, t->vs));
    largest = std::max(largest, t->vs);
  }
  share_ = share_ / 4;
  width_ = largest <= UINT8_MAX + 1 ? 1 : largest <= UINT16_MAX + 1 ? 2 : 0;
}

long long embedding_budget::bytes() const {
  const long long share = share_;
  return share + std::max(share, spare);
}

static long long rows_bytes(const subgraph *sg) {
  return sg->rows ? static_cast<long long>(sg->rows->capacity) *
                        sg->rows->element_size
                  : 0;
}

ksstack *embedding_budget::take_rows(const subgraph *sg, int n) {
  const long long bytes = static_cast<long long>(n) * sg->g->vs * width_;
  if (bytes == 0)
    return nullptr;
  if ((taken_ += bytes) > this->bytes()) {
    taken_ -= bytes;
    return nullptr;
  }
  return ksstack_new(n, sg->g->vs * width_);
}

void embedding_budget::give_back(const subgraph *sg) {
  taken_ -= rows_bytes(sg);
}

void embedding_budget::charge(const subgraph *sg) { taken_ += rows_bytes(sg); }

template <class Image>
static void push_images(const int *images, int vs, ksstack *rows) {
  xvector<Image> row(images, images + vs);
  ksstack_push(row.data(), rows);
}

void sg_push_row(const subgraph *sg, const int *images) {
  if (sg_has_byte_rows(sg))
    push_images<uint8_t>(images, sg->g->vs, sg->rows);
  else
    push_images<uint16_t>(images, sg->g->vs, sg->rows);
}

} // namespace kestro
