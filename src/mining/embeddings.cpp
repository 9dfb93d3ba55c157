// Rows of embeddings.
//
// Most candidates that pass their bound occur in nearly all transactions of it,
// and mostly where a parent was found; placing one edge there costs a walk over
// one neighbour list instead of a search.  Rows live from the count of one
// level to the count of the next, within a budget, so a large database never
// takes more than twice its own memory.

#include "mining/embeddings.h"

#include <algorithm>

#include "graph/graph_list.h"

namespace kestro {

embedding_budget::embedding_budget(const ksstack *transactions) {
  int largest = 0;
  for (int i = 0; i < transactions->count; i++) {
    const graph *t = graph_list_at(transactions, i);
    left_ += graph_size(t->es, t->vs);
    largest = std::max(largest, t->vs);
  }
  if (largest > UINT16_MAX)
    left_ = 0;
}

static size_t row_bytes(const subgraph *sg) {
  return static_cast<size_t>(sg->g->vs) * sizeof(row_vertex);
}

ksstack *embedding_budget::take_rows(const subgraph *sg, int n) {
  const size_t bytes = static_cast<size_t>(n) * row_bytes(sg);
  if (n == 0 || bytes > left_)
    return nullptr;
  left_ -= bytes;
  return ksstack_new(n, static_cast<int>(row_bytes(sg)));
}

static size_t rows_bytes(const subgraph *sg) {
  return sg->rows ? static_cast<size_t>(sg->rows->capacity) * row_bytes(sg) : 0;
}

void embedding_budget::give_back(const subgraph *sg) {
  left_ += rows_bytes(sg);
}

void embedding_budget::charge(const subgraph *sg) {
  left_ -= std::min(left_, rows_bytes(sg));
}

// The slot of w in u's list, by bisection; -1 when there is none.
static int find_slot(const graph *t, int u, int w) {
  int *end = t->e + t->v[u + 1];
  int *slot = std::lower_bound(t->e + t->v[u], end, w);
  return slot < end && *slot == w ? static_cast<int>(slot - t->e) : -1;
}

bool extend_row(const subgraph *sg, const sg_parent *entry,
                const row_vertex *parent_row, const graph *t, row_vertex *row) {
  const graph *g = sg->g;
  for (int i = 0; i < g->vs; i++)
    row[i] = entry->map[i] == -1 ? UINT16_MAX : parent_row[entry->map[i]];
  const bool v_is_new = entry->map[entry->v] == -1;
  const int from = v_is_new ? entry->u : entry->v;
  const int to = v_is_new ? entry->v : entry->u;
  const int label = graph_edge_label(g, from, to);
  if (entry->map[to] != -1) {
    const int slot = find_slot(t, row[from], row[to]);
    return slot != -1 && t->elabel[slot] == label;
  }
  for (int j = t->v[row[from]]; j < t->v[row[from] + 1]; j++) {
    const int w = t->e[j];
    if (t->elabel[j] != label || t->vlabel[w] != g->vlabel[to] ||
        std::find(row, row + g->vs, w) != row + g->vs)
      continue;
    row[to] = static_cast<row_vertex>(w);
    return true;
  }
  return false;
}

} // namespace kestro
