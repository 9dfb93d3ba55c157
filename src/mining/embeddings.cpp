// Rows of embeddings.
//
// Most candidates that pass their bound occur in nearly all of its
// transactions, and mostly at the embedding of a parent; placing one edge there
// costs a walk over one neighbour list instead of a search.  Rows live from the
// count of a pattern to that of the last candidate that keeps it as a parent.

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

void edge_placement::set(const subgraph *sg, const sg_parent *entry) {
  map_.resize(static_cast<size_t>(entry->vs));
  for (int i = 0; i < entry->vs; i++)
    map_[static_cast<size_t>(i)] = entry->image(i);
  new_vertex_ = vlabel_ = -1;
  const bool v_is_new = entry->image(entry->v) == -1;
  const int from = v_is_new ? entry->u : entry->v;
  const int to = v_is_new ? entry->v : entry->u;
  from_ = map_[static_cast<size_t>(from)];
  to_ = map_[static_cast<size_t>(to)];
  elabel_ = graph_edge_label(sg->g, from, to);
  parent_vs_ = sg->g->vs - (to_ == -1);
  if (to_ == -1) {
    new_vertex_ = to;
    vlabel_ = sg->g->vlabel[to];
  }
}

// Whether t has the edge u-w with that label.
static bool has_labelled_edge(const graph *t, int u, int w, int elabel) {
  const int *first = t->e + t->v[u];
  const int *last = t->e + t->v[u + 1];
  if (last - first > 16)
    first = std::lower_bound(first, last, w);
  while (first < last && *first < w)
    first++;
  return first < last && *first == w && t->elabel[first - t->e] == elabel;
}

// A neighbour of u for the new vertex that the row does not hold; -1 for none.
template <class Image>
int edge_placement::free_neighbour(const graph *t, int u,
                                   const Image *row) const {
  const int *e = t->e;
  const int *elabels = t->elabel;
  const int *vlabels = t->vlabel;
  const int elabel = elabel_;
  const int vlabel = vlabel_;
  const Image *row_end = row + parent_vs_;
  for (int j = t->v[u], end = t->v[u + 1]; j < end; j++)
    if (vlabels[e[j]] == vlabel && elabels[j] == elabel &&
        std::find(row, row_end, static_cast<Image>(e[j])) == row_end)
      return e[j];
  return -1;
}

template <class Image>
bool edge_placement::extend(const Image *parent_row, const graph *t,
                            Image *row) const {
  const int u = parent_row[from_];
  int image = 0; // of the new vertex
  if (to_ != -1) {
    if (!has_labelled_edge(t, u, parent_row[to_], elabel_))
      return false;
  } else {
    image = free_neighbour(t, u, parent_row);
    if (image == -1)
      return false;
  }
  const int vs = static_cast<int>(map_.size());
  const int *map = map_.data();
  for (int i = 0; i < vs; i++)
    row[i] = parent_row[map[i] == -1 ? 0 : map[i]];
  if (new_vertex_ != -1)
    row[new_vertex_] = static_cast<Image>(image);
  return true;
}

template bool edge_placement::extend(const uint8_t *, const graph *,
                                     uint8_t *) const;
template bool edge_placement::extend(const uint16_t *, const graph *,
                                     uint16_t *) const;

} // namespace kestro
