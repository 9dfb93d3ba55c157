// Passes over changes.
//
// Suppose that nothing told the vertices of a cell apart before the last pass,
// and that this pass split some cells.  Two vertices of one cell have equally
// many neighbours, along edges of each label, in every cell of before.  So they
// differ now only if they differ in the parts that cells were split into, and
// then in one part other than the largest of its cell.  A pass therefore looks
// at the vertices with a neighbour in such a part, and at their signatures;
// all others of their cell, which have no such neighbour, have one signature,
// which is read off any of them.
//
// Where the cells stand in the order changes with every split, even for
// vertices that the pass does not look at.  So a cell lies somewhere in
// members, its vertices in any order, and has its position beside it.  The
// order is written at the end; vertices of one cell stand as they came.

#include "cl/refine_changes.h"

#include <algorithm>
#include <cassert>
#include <numeric>

namespace kestro {

namespace {

using cell_record = refinement_work::cell_record;

// Most of what is sorted is short.
template <class T, class Less> void sort(T *first, T *last, Less less) {
  if (last - first > 12) {
    std::sort(first, last, less);
    return;
  }
  for (T *i = first + 1; i < last; i++) {
    const T item = *i;
    T *j = i;
    for (; j > first && less(item, j[-1]); j--)
      *j = j[-1];
    *j = item;
  }
}

class change_refiner {
public:
  change_refiner(colouring *c, const graph *g, refinement_work *work)
      : c_(c), g_(g), work_(work), signature_(work->signature.data()) {
    work->touched.clear(); // of a pass that was interrupted
    work->members.assign(c->order.begin(), c->order.end());
    work->cell.assign(c->colour.begin(), c->colour.end());
    const size_t vs = index(g->vs);
    if (work->cells.size() < vs) {
      work->cells.resize(vs);
      work->where.resize(vs);
    }
    members_ = work->members.data();
    cell_ = work->cell.data();
    cells_ = work->cells.data();
    where_ = work->where.data();
    for (int s = 0, end; s < g->vs; s = end) {
      end = c->cell_end[index(s)];
      cells_[s] = {s, end - s, 0};
    }
    place(0, g->vs);
  }

  void run(xvector<int> *changed) {
    work_->poll.step(g_->vs);
    while (!changed->empty() && c_->cells < g_->vs) {
      touch_neighbours(*changed);
      changed->clear();
      // Before any cell is split: all signatures see the same colours.
      for (const int cell : work_->touched)
        sign_cell(cells_[cell], cell);
      for (const int cell : work_->touched)
        split(cell, changed);
      work_->touched.clear();
    }
    write_back();
  }

private:
  static size_t index(int i) { return static_cast<size_t>(i); }

  // Notes where the members [first, end) are.
  void place(int first, int end) {
    for (int i = first; i < end; i++)
      where_[members_[i]] = i;
  }

  // Moves the neighbours of changed vertices that are in open cells to the end
  // of their cells, and lists the cells.
  void touch_neighbours(const xvector<int> &changed) {
    for (const int v : changed) {
      work_->poll.step();
      for (int j = g_->v[v]; j < g_->v[v + 1]; j++)
        touch(g_->e[j]);
    }
  }

  void touch(int u) {
    const int cell = cell_[u];
    cell_record &r = cells_[cell];
    if (r.size == 1)
      return;
    const int last = cell + r.size - r.touched - 1; // the untouched ones'
    const int at = where_[u];
    if (at > last)
      return;
    if (r.touched++ == 0)
      work_->touched.push_back(cell);
    std::swap(members_[at], members_[last]);
    where_[members_[at]] = at;
    where_[u] = last;
  }

  // Signs the touched vertices of a cell, and one for all others.
  void sign_cell(const cell_record &r, int cell) {
    const int end = cell + r.size;
    if (r.touched < r.size)
      sign(members_[cell]);
    for (int i = end - r.touched; i < end; i++)
      sign(members_[i]);
  }

  void sign(int u) {
    const int first = g_->v[u];
    const int end = g_->v[u + 1];
    for (int j = first; j < end; j++)
      signature_[j] = static_cast<uint64_t>(g_->elabel[j]) << 32 |
                      static_cast<uint64_t>(cells_[cell_[g_->e[j]]].position);
    sort(signature_ + first, signature_ + end,
         [](uint64_t x, uint64_t y) { return x < y; });
  }

  // Vertices of one cell have equally many neighbours.
  int compare(int a, int b) const {
    const uint64_t *x = signature_ + g_->v[a];
    const uint64_t *y = signature_ + g_->v[b];
    for (int left = g_->v[a + 1] - g_->v[a]; left > 0; left--, x++, y++)
      if (*x != *y)
        return *x < *y ? -1 : 1;
    return 0;
  }

  // Splits a cell by the signatures of its vertices.  Adds the vertices of its
  // parts, without those of the largest, to changed.
  void split(int cell, xvector<int> *changed) {
    cell_record &r = cells_[cell];
    const int end = cell + r.size;
    const int rest = r.size - r.touched; // vertices that are not touched
    const int position = r.position;
    int *const first = members_ + end - r.touched;
    r.touched = 0;
    sort(first, members_ + end,
         [this](int a, int b) { return compare(a, b) < 0; });
    place(cell + rest, end);

    // The parts in the order of their signatures; the rest is one of them.
    int next = position;
    int largest = cell;
    work_->parts.clear();
    const auto add_part = [&](int begin, int size) {
      cells_[begin] = {next, size, 0};
      next += size;
      work_->parts.push_back(begin);
      if (size > cells_[largest].size || work_->parts.size() == 1)
        largest = begin;
    };
    bool rest_is_open = rest > 0;
    for (int i = cell + rest; i < end;) {
      if (rest_is_open && compare(members_[cell], members_[i]) < 0) {
        add_part(cell, rest);
        rest_is_open = false;
      }
      int j = i + 1;
      while (j < end && compare(members_[i], members_[j]) == 0)
        j++;
      add_part(i, j - i);
      i = j;
    }
    if (rest_is_open)
      add_part(cell, rest);
    assert(next == position + (end - cell));
    c_->cells += static_cast<int>(work_->parts.size()) - 1;
    for (const int part : work_->parts) {
      const int *const begin = members_ + part;
      const int *const part_end = begin + cells_[part].size;
      if (part != cell)
        for (const int *v = begin; v < part_end; v++)
          cell_[*v] = part;
      if (part != largest)
        changed->insert(changed->end(), begin, part_end);
    }
  }

  // Gives c the cells; order still holds the vertices as they came.
  void write_back() {
    int *const came = members_; // of no more use
    std::copy(c_->order.begin(), c_->order.end(), came);
    for (int i = 0; i < g_->vs; i++) {
      const int v = came[i];
      cell_record &r = cells_[cell_[v]];
      c_->colour[index(v)] = r.position;
      c_->cell_end[index(r.position)] = r.position + r.size;
      c_->order[index(r.position + r.touched++)] = v;
    }
  }

  colouring *c_;
  const graph *g_;
  refinement_work *work_;
  uint64_t *signature_; // by slot
  int *members_;        // the vertices, cell by cell
  int *where_;          // by vertex, its place in members_
  int *cell_;           // by vertex, the place of its cell's first member
  cell_record *cells_;  // by that place
};

} // namespace

void refine_changes(colouring *c, const graph *g, xvector<int> *changed,
                    refinement_work *work) {
  change_refiner(c, g, work).run(changed);
  changed->clear();
}

} // namespace kestro
