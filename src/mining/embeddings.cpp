// Rows of embeddings.
//
// Most candidates that pass their bound occur in nearly all of its
// transactions, and mostly at the embedding of a parent; placing one edge there
// costs a walk over the slots of one vertex instead of a search.  Rows live
// from the count of a pattern to that of the last candidate that keeps it as a
// parent.

#include "mining/embeddings.h"

#include <algorithm>
#include <cstring>

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

void edge_placement::set(const subgraph *sg, const sg_parent *entry,
                         const edge_slots *slots) {
  slots_ = slots;
  map_.resize(static_cast<size_t>(entry->vs));
  for (int i = 0; i < entry->vs; i++)
    map_[static_cast<size_t>(i)] =
        static_cast<uint16_t>(std::max(entry->image(i), 0));
  const bool v_is_new = entry->image(entry->v) == -1;
  const int from = v_is_new ? entry->u : entry->v;
  const int to = v_is_new ? entry->v : entry->u;
  from_ = entry->image(from);
  to_ = entry->image(to);
  new_vertex_ = to_ == -1 ? to : -1;
  parent_vs_ = sg->g->vs - (to_ == -1);
  elabel_ = graph_edge_label(sg->g, from, to);
  vlabel_ = sg->g->vlabel[to];
  kind_ = slots->kind_of(elabel_, vlabel_);
}

// Whether one of u's slots is of the edge's kind.
bool edge_placement::is_of_kind(int tid, int u, edge_slots::range slots,
                                const uint32_t *slot) const {
  return edge_slots::kind_in(*slot) == kind_ &&
         (kind_ != edge_slots::other_kinds ||
          slots_->is_of_kind(tid, u, slot - slots.first, elabel_, vlabel_));
}

// Whether the transaction has the edge between u and w.
bool edge_placement::has_edge(int tid, int u, int w) const {
  constexpr ptrdiff_t many = 16;
  const edge_slots::range slots = slots_->of(tid, u);
  const uint32_t wanted = edge_slots::slot(w, 0);
  const uint32_t *slot = slots.first;
  if (slots.last - slots.first > many)
    slot = std::lower_bound(slots.first, slots.last, wanted);
  while (slot < slots.last && *slot < wanted)
    slot++;
  return slot < slots.last && edge_slots::end_of(*slot) == w &&
         is_of_kind(tid, u, slots, slot);
}

// Whether the first n images of a row are others.
static bool is_free(const uint8_t *row, int n, int image) {
  return !memchr(row, image, static_cast<size_t>(n));
}
static bool is_free(const uint16_t *row, int n, int image) {
  return std::find(row, row + n, static_cast<uint16_t>(image)) == row + n;
}

// A neighbour of u for the new vertex that the row does not hold; -1 for none.
template <class Image>
int edge_placement::free_neighbour(int tid, int u, const Image *row) const {
  const edge_slots::range slots = slots_->of(tid, u);
  for (const uint32_t *slot = slots.first; slot < slots.last; slot++)
    if (is_of_kind(tid, u, slots, slot) &&
        is_free(row, parent_vs_, edge_slots::end_of(*slot)))
      return edge_slots::end_of(*slot);
  return -1;
}

// row[i] = parent_row[map[i]], four at a time.
template <class Image>
static void take_images(const Image *parent_row, const xvector<uint16_t> &map,
                        Image *row) {
  const uint16_t *from = map.data();
  const uint16_t *const end = from + map.size();
  for (; end - from >= 4; from += 4, row += 4) {
    row[0] = parent_row[from[0]];
    row[1] = parent_row[from[1]];
    row[2] = parent_row[from[2]];
    row[3] = parent_row[from[3]];
  }
  while (from < end)
    *row++ = parent_row[*from++];
}

template <class Image>
bool edge_placement::extend(const Image *parent_row, int tid,
                            Image *row) const {
  const int u = parent_row[from_];
  int image = 0; // of the new vertex
  if (to_ != -1) {
    if (!has_edge(tid, u, parent_row[to_]))
      return false;
  } else {
    image = free_neighbour(tid, u, parent_row);
    if (image == -1)
      return false;
  }
  take_images(parent_row, map_, row);
  if (new_vertex_ != -1)
    row[new_vertex_] = static_cast<Image>(image);
  return true;
}

template bool edge_placement::extend(const uint8_t *, int, uint8_t *) const;
template bool edge_placement::extend(const uint16_t *, int, uint16_t *) const;

} // namespace kestro
