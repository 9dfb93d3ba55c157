// The searches behind canonical order.
//
// The exhaustive search places vertices position by position.  Rows of the
// matrix depend on the vertices placed before only, so of the vertices that may
// come next only those with the greatest row can lead to the best arrangement;
// it branches where several have it, and once for all twins among them.  Two
// equal arrangements show an automorphism.  One that fixes the vertices placed
// so far takes the branch of one vertex to that of another, which shows nothing
// new, so of each orbit of the vertices that tie one branch is enough.
//
// The individualising search takes every leaf it reaches, so the last one wins,
// and which one that is depends on the order of visits.  Usually it does not
// matter: where all leaves are images of one another (cl/orbit_check.h), one is
// enough.  Only where they are not is the search carried out step by step.

#include "cl/canonical_search.h"

#include <algorithm>
#include <cassert>
#include <climits>

#include "cl/orbit_check.h"
#include "cl/vertex_orbits.h"

namespace kestro {

// Whether the exhaustive search leaves a cell as it came: when it is not the
// last one and the vertex numbered like its first position, wherever that
// stands, has no edges.  The number is part of the form; connected graphs of
// two or more vertices have no such cell.
static bool is_passed_over(const colouring *c, const graph *g, int cell) {
  return g->v[cell] == g->v[cell + 1] &&
         c->cell_end[static_cast<size_t>(cell)] < g->vs;
}

// Whether some vertex, which then comes last in the order, has no edges.
static bool has_lone_vertex(const colouring *c, const graph *g) {
  const int last = c->order.back();
  return g->v[last] == g->v[last + 1];
}

namespace {

class exhaustive_search {
public:
  exhaustive_search(const colouring *c, const graph *g,
                    const label_cells &cells, interruption_poll *poll)
      : c_(c), g_(g), cells_(cells), poll_(poll), placed_(c->order),
        best_(c->order), place_(2 * c->order.size()), rows_(g->vs) {
    note_places(placed_, place_of());
    note_places(best_, best_place_of());
  }

  // Leaves the cells that are passed over as they came, and their rows out of
  // the comparison.  Of equal arrangements the first in lexicographic order is
  // then the best, since their rows differ where none were compared.
  void pass_over() { passes_over_ = true; }

  // The best arrangement; of equal ones the first met, at first the incoming.
  const xvector<int> &find_best() {
    place_from(0, false);
    return best_;
  }

  // Whether no arrangement's first rows are above those of the given one.
  // Answers no when that takes more than some steps to find out; images under
  // the automorphisms given, which are borrowed, take none.
  bool is_greatest(const xvector<int> &arrangement, int rows,
                   const xvector<xvector<int>> &automorphisms) {
    best_ = arrangement;
    note_places(best_, best_place_of());
    rows_ = rows;
    automorphisms_ = &automorphisms;
    steps_left_ = 1000;
    place_from(0, false);
    return best_ == arrangement && steps_left_ > 0;
  }

private:
  static size_t index(int i) { return static_cast<size_t>(i); }

  int *place_of() { return place_.data(); }
  int *best_place_of() { return place_.data() + index(g_->vs); }

  static void note_places(const xvector<int> &arrangement, int *place) {
    for (size_t i = 0; i < arrangement.size(); i++)
      place[arrangement[i]] = static_cast<int>(i);
  }

  // Compares the first i cells of the row of u in the arrangement a, in which
  // place_a tells the places of vertices, with those of w in b.  Rows can
  // differ only where one of the two has a neighbour.
  int compare_cells(int u, const int *a, const int *place_a, int w,
                    const int *b, const int *place_b, int i) const {
    const int *row_u = cells_.row(u);
    const int *row_w = cells_.row(w);
    int difference = 0;
    for (int j = g_->v[u], end = g_->v[u + 1]; j < end; j++)
      if (const int p = place_a[g_->e[j]]; p < i)
        if (const int d = g_->elabel[j] + 1 - row_w[b[p]]) {
          i = p;
          difference = d;
        }
    for (int j = g_->v[w], end = g_->v[w + 1]; j < end; j++)
      if (const int p = place_b[g_->e[j]]; p < i)
        if (const int d = row_u[a[p]] - (g_->elabel[j] + 1)) {
          i = p;
          difference = d;
        }
    return difference;
  }

  // Compares the row of u, coming next at position i, with that of w.
  int compare_next(int u, int w, int i) {
    return compare_cells(u, placed_.data(), place_of(), w, placed_.data(),
                         place_of(), i);
  }

  void swap_placed(int i, int j) {
    std::swap(placed_[index(i)], placed_[index(j)]);
    place_of()[placed_[index(i)]] = i;
    place_of()[placed_[index(j)]] = j;
  }

  // The end, within placed_, of the vertices from position i to the end of its
  // cell that have the greatest row, which are moved to the front.
  int gather_greatest(int i, int cell_end) {
    int ties = i + 1;
    for (int q = i + 1; q < cell_end; q++) {
      const int d = compare_next(placed_[index(q)], placed_[index(i)], i);
      if (d < 0)
        continue;
      if (d > 0)
        ties = i;
      swap_placed(ties, q);
      ties++;
    }
    return ties;
  }

  // Compares row i of placed_ with that of best_.
  int compare_with_best(int i) {
    return compare_cells(placed_[index(i)], placed_.data(), place_of(),
                         best_[index(i)], best_.data(), best_place_of(), i);
  }

  // Fills the positions from i on.  The rows before i are above those of best_
  // when better is true, else equal to them.
  void place_from(int i, bool better) {
    if (steps_left_ == 0)
      return;
    steps_left_--;
    if (i == rows_) {
      poll_->step(g_->vs);
      take_leaf(better);
      return;
    }
    const int cell = c_->colour[index(placed_[index(i)])];
    if (passes_over_ && is_passed_over(c_, g_, cell)) {
      place_from(i + 1, better);
      return;
    }
    poll_->step(c_->cell_end[index(cell)] - i);
    const int ties = gather_greatest(i, c_->cell_end[index(cell)]);
    if (!better) {
      const int d = compare_with_best(i);
      if (d < 0)
        return;
      better = d > 0;
    }
    if (ties == i + 1)
      place_from(i + 1, better);
    else
      branch(i, ties, better);
  }

  // Places each vertex from position i to ties next, but for images of others.
  void branch(int i, int ties, bool better) {
    xvector<int> tied(placed_.begin() + i, placed_.begin() + ties);
    if (passes_over_)
      std::sort(tied.begin(), tied.end());
    fixing_orbits fixing;
    for (size_t k = 0; k < tied.size(); k++) {
      if (k > 0 &&
          (is_image_of_earlier(tied, k, i, &fixing) || has_twin(tied, k)))
        continue;
      swap_placed(i, place_of()[tied[k]]);
      place_from(i + 1, better);
      better = false; // best_ begins with these rows by now
      if (back_to_ < i)
        return;
      back_to_ = INT_MAX;
    }
  }

  // Takes the arrangement that is placed if it is better than the best.  Else
  // it equals the leaf met first that is as good, of which it is the image: all
  // branches up to where they part show nothing new.
  void take_leaf(bool better) {
    if (better) {
      best_ = placed_;
      std::copy_n(place_of(), g_->vs, best_place_of());
    }
    if (rows_ < g_->vs || passes_over_)
      return; // the rest may differ
    if (better || leaf_.empty()) {
      leaf_ = placed_;
      return;
    }
    xvector<int> map(leaf_.size());
    for (size_t p = 0; p < map.size(); p++)
      map[index(leaf_[p])] = placed_[p];
    found_.push_back(std::move(map));
    const auto fork =
        std::mismatch(leaf_.begin(), leaf_.end(), placed_.begin());
    back_to_ = static_cast<int>(fork.first - leaf_.begin());
  }

  // The orbits under the automorphisms that fix the vertices placed so far.
  struct fixing_orbits {
    vertex_orbits orbits;
    size_t looked_at = 0; // of the automorphisms
  };

  bool is_image_of_earlier(const xvector<int> &tied, size_t k, int i,
                           fixing_orbits *fixing) const {
    const xvector<xvector<int>> &maps = *automorphisms_;
    if (maps.empty())
      return false;
    if (fixing->looked_at == 0)
      fixing->orbits.reset(g_->vs);
    const auto end = placed_.begin() + i;
    for (; fixing->looked_at < maps.size(); fixing->looked_at++) {
      const xvector<int> &map = maps[fixing->looked_at];
      if (std::all_of(placed_.begin(), end,
                      [&](int u) { return map[index(u)] == u; }))
        fixing->orbits.join(map);
    }
    for (size_t l = 0; l < k; l++)
      if (fixing->orbits.same(tied[l], tied[k]))
        return true;
    return false;
  }

  bool has_twin(const xvector<int> &tied, size_t k) const {
    for (size_t l = 0; l < k; l++)
      if (cells_.are_twins(tied[l], tied[k]))
        return true;
    return false;
  }

  const colouring *c_;
  const graph *g_;
  const label_cells &cells_;
  interruption_poll *poll_;
  xvector<int> placed_; // the arrangement tried; a permutation of every cell
  xvector<int> best_;
  xvector<int> place_; // by vertex, its place in placed_, then that in best_
  int rows_;           // how many decide
  xvector<int> leaf_;  // the first one met that shows what best_ shows
  xvector<xvector<int>> found_; // automorphisms between leaves
  const xvector<xvector<int>> *automorphisms_ = &found_; // those to use
  int back_to_ = INT_MAX; // branches from later positions are left
  uint64_t steps_left_ = UINT64_MAX;
  bool passes_over_ = false;
};

// The individualising search, carried out.
class stepwise_search {
public:
  stepwise_search(colouring *c, const graph *g, const label_cells &cells,
                  refinement_work *work)
      : c_(c), g_(g), cells_(cells), work_(work), taken_(c->order) {}

  // Returns how many steps that took.
  uint64_t run() {
    visit(colouring_first_open(c_, 0));
    c_->order = taken_;
    return calls_;
  }

private:
  void visit(int cell) {
    if (c_->cells == g_->vs) {
      taken_ = c_->order;
      return;
    }
    assert(cell != -1);
    const colouring before = *c_;
    const int end = before.cell_end[static_cast<size_t>(cell)];
    for (int q = cell; q < end; q++) {
      colouring_individualise(c_, g_, c_->order[static_cast<size_t>(q)], work_);
      if (cells_.compare_rows(c_->order.data(), taken_.data(), 0, cell + 1) >=
          0) {
        calls_++;
        visit(colouring_first_open(c_, cell));
      }
      colouring_coarsen(c_, &before);
    }
  }

  colouring *c_;
  const graph *g_;
  const label_cells &cells_;
  refinement_work *work_;
  xvector<int> taken_; // the arrangement taken last
  uint64_t calls_ = 0;
};

} // namespace

void search_greatest(colouring *c, const graph *g, const label_cells &cells,
                     interruption_poll *poll) {
  c->order = exhaustive_search(c, g, cells, poll).find_best();
}

bool search_exhaustively(colouring *c, const graph *g, const label_cells &cells,
                         interruption_poll *poll) {
  exhaustive_search search(c, g, cells, poll);
  const bool lone = has_lone_vertex(c, g);
  if (lone)
    search.pass_over();
  c->order = search.find_best();
  return !lone;
}

bool search_by_stabilizer(colouring *c, const graph *g,
                          const label_cells &cells, refinement_work *work,
                          uint64_t *calls) {
  orbit_check check(c, g, cells, work);
  if (!check.run()) {
    *calls += stepwise_search(c, g, cells, work).run();
    return false;
  }
  const int rows = check.rows_set_apart();
  if (cells.compare_rows(check.leaf().data(), c->order.data(), 0, rows) < 0)
    return false; // every branch is cut: the incoming arrangement stays
  c->order = check.leaf();
  // Invariant when no incoming arrangement could cut it.
  return exhaustive_search(c, g, cells, &work->poll)
      .is_greatest(check.leaf(), rows, check.automorphisms());
}

} // namespace kestro
