// Passes over small graphs.
//
// What a vertex sees along an edge, the label and the colour, fits into 14
// bits, so the sorted list of up to four edges and the vertex's position make
// one word.  Sorting such words sorts a cell, and leaves vertices that see the
// same in their order.  Vertices with more edges have lists of several words.
//
// Sets of cells are bits of a word, too: a pass looks only at the open cells
// that have a neighbour whose colour the last pass changed.  The vertices of
// any other cell see what they saw in the last pass, which left them together.

#include "cl/refine_small.h"

#include <algorithm>
#include <bit>
#include <utility>

namespace kestro {

namespace {

constexpr int most_vertices = 64;
constexpr int place_bits = 6; // of a vertex, a position, a colour or a degree
constexpr int elabel_bits = 8;
constexpr int vlabel_bits = 16;
constexpr int item_bits = elabel_bits + place_bits; // of an edge
constexpr int short_list = 4;                       // edges in one word

uint64_t bit(int i) { return uint64_t{1} << i; }

void put_in_order(uint64_t *a, uint64_t *b) {
  const uint64_t low = std::min(*a, *b);
  *b = std::max(*a, *b);
  *a = low;
}

// The numbers item(0) to item(n - 1), at most four, ascending from the highest
// bits on.
template <int bits, class Item> uint64_t sorted_list(int n, Item item) {
  if (n == 0)
    return 0;
  uint64_t a = item(0);
  if (n == 1)
    return a;
  uint64_t b = item(1);
  put_in_order(&a, &b);
  if (n == 2)
    return a << bits | b;
  uint64_t c = item(2);
  put_in_order(&b, &c);
  put_in_order(&a, &b);
  if (n == 3)
    return (a << bits | b) << bits | c;
  uint64_t d = item(3);
  put_in_order(&c, &d);
  put_in_order(&b, &c);
  put_in_order(&a, &b);
  return ((a << bits | b) << bits | c) << bits | d;
}

class small_refiner {
public:
  small_refiner(colouring *c, const graph *g, refinement_work *work)
      : c_(c), g_(g), work_(work), order_(c->order.data()),
        colour_(c->colour.data()), cell_end_(c->cell_end.data()) {}

  // The first pass: degrees and labels tell vertices apart, too.
  void start() {
    work_->poll.step(g_->vs);
    for (int u = 0; u < g_->vs; u++) {
      keys_[u] = first_key(u);
      if (degree(u) > short_list)
        write_list(u);
    }
    split_by_keys(0, g_->vs);
    for (int s = 0; s < g_->vs && degree(order_[s]) > short_list;) {
      const int end = cell_end_[s];
      split_by_lists(s, end);
      s = end;
    }
    touch_neighbours();
  }

  // Has the cells with a neighbour of v looked at first.
  void touch_neighbours_of(int v) {
    for (int j = g_->v[v]; j < g_->v[v + 1]; j++)
      touched_ |= bit(colour_[g_->e[j]]);
  }

  // Passes until one splits nothing.
  void run() {
    while (touched_ != 0 && c_->cells < g_->vs) {
      work_->poll.step(g_->vs);
      // Before any cell is split: all see the same colours.
      uint64_t open = 0;
      for (; touched_ != 0; touched_ &= touched_ - 1) {
        const int s = std::countr_zero(touched_);
        if (cell_end_[s] == s + 1)
          continue;
        open |= bit(s);
        for (int i = s; i < cell_end_[s]; i++)
          sign(i);
      }
      for (; open != 0; open &= open - 1) {
        const int s = std::countr_zero(open);
        if (degree(order_[s]) > short_list)
          split_by_lists(s, cell_end_[s]);
        else
          split_by_keys(s, cell_end_[s]);
      }
      touch_neighbours();
    }
  }

private:
  int degree(int u) const { return g_->v[u + 1] - g_->v[u]; }

  // What is seen along an edge.
  uint64_t item(int slot) const {
    return static_cast<uint64_t>(g_->elabel[slot] << place_bits |
                                 colour_[g_->e[slot]]);
  }

  uint64_t first_key(int u) const {
    const uint64_t rank = static_cast<uint64_t>(most_vertices - 1 - degree(u))
                              << vlabel_bits |
                          static_cast<uint64_t>(g_->vlabel[u]);
    const int *labels = g_->elabel + g_->v[u];
    const uint64_t list =
        degree(u) > short_list
            ? 0
            : sorted_list<elabel_bits>(degree(u), [labels](int k) {
                return static_cast<uint64_t>(labels[k]);
              });
    return (rank << short_list * elabel_bits | list) << place_bits |
           static_cast<uint64_t>(u);
  }

  // Notes what the vertex at a position sees.
  void sign(int i) {
    const int u = order_[i];
    const int first = g_->v[u];
    const int n = degree(u);
    if (n > short_list)
      write_list(u);
    else
      keys_[i] =
          sorted_list<item_bits>(n, [&](int k) { return item(first + k); })
              << place_bits |
          static_cast<uint64_t>(i);
  }

  uint64_t *list_of(int u) { return work_->signature.data() + g_->v[u]; }
  const uint64_t *list_of(int u) const {
    return work_->signature.data() + g_->v[u];
  }

  void write_list(int u) {
    uint64_t *list = list_of(u);
    for (int k = 0; k < degree(u); k++) {
      const uint64_t added = item(g_->v[u] + k);
      int at = k;
      for (; at > 0 && list[at - 1] > added; at--)
        list[at] = list[at - 1];
      list[at] = added;
    }
  }

  // The order of two vertices of one degree by their lists.
  int compare_lists(int a, int b) const {
    const uint64_t *x = list_of(a);
    const uint64_t *y = list_of(b);
    for (int left = degree(a); left > 0; left--, x++, y++)
      if (*x != *y)
        return *x < *y ? -1 : 1;
    return 0;
  }

  void split_by_keys(int first, int end) {
    int old[most_vertices];
    for (int i = first; i < end; i++) {
      old[i] = order_[i];
      const uint64_t key = keys_[i];
      int j = i;
      for (; j > first && keys_[j - 1] > key; j--)
        keys_[j] = keys_[j - 1];
      keys_[j] = key;
    }
    for (int i = first; i < end; i++)
      order_[i] = old[keys_[i] & (most_vertices - 1)];
    split(first, end, [this](int i) {
      return (keys_[i - 1] ^ keys_[i]) >> place_bits != 0;
    });
  }

  void split_by_lists(int first, int end) {
    for (int i = first; i < end; i++) {
      const int u = order_[i];
      int j = i;
      for (; j > first && compare_lists(u, order_[j - 1]) < 0; j--)
        order_[j] = order_[j - 1];
      order_[j] = u;
    }
    split(first, end, [this](int i) {
      return compare_lists(order_[i - 1], order_[i]) != 0;
    });
  }

  // Splits a cell wherever the vertex at a position differs from the one before
  // it.
  template <class Differs> void split(int first, int end, Differs differs) {
    int start = first;
    for (int i = first + 1; i < end; i++) {
      if (differs(i)) {
        cell_end_[start] = i;
        start = i;
        c_->cells++;
      }
      if (start != first) {
        colour_[order_[i]] = start;
        changed_ |= bit(order_[i]);
      }
    }
    cell_end_[start] = end;
  }

  // Turns from the vertices whose colour the pass has changed to the cells that
  // the next one looks at.
  void touch_neighbours() {
    for (; changed_ != 0; changed_ &= changed_ - 1)
      touch_neighbours_of(std::countr_zero(changed_));
  }

  colouring *c_;
  const graph *g_;
  refinement_work *work_; // its signatures hold lists, by slot
  int *order_;
  int *colour_;
  int *cell_end_;
  uint64_t touched_ = 0;         // cells, by their first positions
  uint64_t changed_ = 0;         // vertices
  uint64_t keys_[most_vertices]; // by position: list and position
};

} // namespace

bool can_refine_small(const graph *g) {
  int elabels = 0;
  for (int j = 0; j < g->es; j++)
    elabels |= g->elabel[j];
  int vlabels = 0;
  for (int i = 0; i < g->vs; i++)
    vlabels |= g->vlabel[i];
  return g->vs <= most_vertices &&
         static_cast<uint32_t>(elabels) >> elabel_bits == 0 &&
         static_cast<uint32_t>(vlabels) >> vlabel_bits == 0;
}

void refine_small(colouring *c, const graph *g, refinement_work *work) {
  if (g->vs < 2)
    return;
  small_refiner refiner(c, g, work);
  refiner.start();
  refiner.run();
}

void refine_small_from(colouring *c, const graph *g, int v,
                       refinement_work *work) {
  small_refiner refiner(c, g, work);
  refiner.touch_neighbours_of(v);
  refiner.run();
}

} // namespace kestro
