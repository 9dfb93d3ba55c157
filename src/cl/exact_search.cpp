// The individualisation tree, searched for its best leaf.
//
// Refinement commutes with renaming vertices, so the trees of relabelled copies
// are images of one another, and the best matrix that a leaf shows is one for
// all of them.  Where orbit_check finds all leaves alike, any one is the best.
// Else the tree is walked, and three things keep the walk short; none of them
// loses a better leaf:
// - the rows of the leading singletons are those of all leaves below a node, so
//   a node is cut where they are below the best leaf's;
// - a leaf that shows the matrix of the best one so far gives an automorphism.
//   It takes the branch of that leaf, which has been searched, to the branch of
//   this one, which can thus be left, up to where their paths part;
// - for the same reason a vertex is left out when automorphisms that fix what
//   was set apart before take it to a vertex tried already.  Twins are such
//   vertices from the start.
// These cuts take effect once the best leaf is known.  So every node is entered
// by the child from which one path goes furthest; without that, a cell of
// several orbits at every depth has the walk try their sequences one after
// another.

#include "cl/exact_search.h"

#include <algorithm>

#include "cl/canonical_search.h"
#include "cl/orbit_check.h"

namespace kestro {

namespace {

class leaf_search {
public:
  leaf_search(const graph *g, const label_cells &cells, refinement_work *work)
      : g_(g), cells_(cells), work_(work) {}

  const xvector<int> &find_best(const colouring &root) {
    visit(root);
    return best_;
  }

private:
  static size_t index(int i) { return static_cast<size_t>(i); }

  void visit(const colouring &node) {
    if (node.cells == g_->vs) {
      take_leaf(node.order);
      return;
    }
    const size_t cell = index(colouring_first_open(&node, 0));
    xvector<int> tried;
    for (const colouring &child : children_of(node)) {
      const int w = child.order[cell];
      if (is_below_best(child) || is_image_of_one(w, tried))
        continue;
      back_to_ = path_.size();
      path_.push_back(w);
      visit(child);
      path_.pop_back();
      if (back_to_ < path_.size())
        return;
      tried.push_back(w);
    }
  }

  // The nodes below a node, of twins one, the one whose first path ends with
  // the best arrangement first.
  xvector<colouring> children_of(const colouring &node) const {
    const int cell = colouring_first_open(&node, 0);
    const int *first = node.order.data() + cell;
    const int *end = node.order.data() + node.cell_end[index(cell)];
    xvector<colouring> children;
    xvector<int> best;
    for (const int *w = first; w < end; w++) {
      const auto is_twin = [&](int u) { return cells_.are_twins(u, *w); };
      if (std::any_of(first, w, is_twin))
        continue;
      children.push_back(node);
      colouring_individualise(&children.back(), g_, *w, work_);
      xvector<int> leaf = first_leaf(children.back());
      if (best.empty() || compare(leaf, best) > 0) {
        best = std::move(leaf);
        std::swap(children.back(), children.front());
      }
    }
    return children;
  }

  xvector<int> first_leaf(colouring c) const {
    while (c.cells < g_->vs) {
      const int cell = colouring_first_open(&c, 0);
      colouring_individualise(&c, g_, c.order[index(cell)], work_);
    }
    return c.order;
  }

  int compare(const xvector<int> &a, const xvector<int> &b) const {
    return cells_.compare_rows(a.data(), b.data(), 0, g_->vs);
  }

  // How many cells from the first on are singletons.
  int leading(const colouring &c) const {
    const int open = colouring_first_open(&c, 0);
    return open == -1 ? g_->vs : open;
  }

  bool is_below_best(const colouring &c) const {
    return !best_.empty() &&
           cells_.compare_rows(c.order.data(), best_.data(), 0, leading(c)) < 0;
  }

  void take_leaf(const xvector<int> &order) {
    const int d = best_.empty() ? 1 : compare(order, best_);
    if (d > 0) {
      best_ = order;
      best_path_ = path_;
    } else if (d == 0) {
      add_automorphism(best_, order);
      const auto fork =
          std::mismatch(path_.begin(), path_.end(), best_path_.begin());
      back_to_ = static_cast<size_t>(fork.first - path_.begin());
    }
  }

  void add_automorphism(const xvector<int> &from, const xvector<int> &to) {
    xvector<int> map(from.size());
    for (size_t i = 0; i < from.size(); i++)
      map[index(from[i])] = to[i];
    automorphisms_.push_back(std::move(map));
  }

  bool fixes_path(const xvector<int> &map) const {
    return std::all_of(path_.begin(), path_.end(),
                       [&](int u) { return map[index(u)] == u; });
  }

  // Whether known automorphisms that fix the path take w to one of vertices.
  bool is_image_of_one(int w, const xvector<int> &vertices) const {
    if (vertices.empty())
      return false;
    xvector<int> images = {w};
    xvector<bool> seen(index(g_->vs), false);
    seen[index(w)] = true;
    for (size_t i = 0; i < images.size(); i++)
      for (const xvector<int> &map : automorphisms_) {
        const int u = map[index(images[i])];
        if (seen[index(u)] || !fixes_path(map))
          continue;
        seen[index(u)] = true;
        images.push_back(u);
      }
    return std::any_of(vertices.begin(), vertices.end(),
                       [&](int u) { return seen[index(u)]; });
  }

  const graph *g_;
  const label_cells &cells_;
  refinement_work *work_;
  xvector<int> path_;      // the vertices set apart on the way to the node
  xvector<int> best_;      // the arrangement of the best leaf so far
  xvector<int> best_path_; // and the vertices set apart on the way to it
  size_t back_to_ = 0;     // nodes deeper than this are left
  xvector<xvector<int>> automorphisms_;
};

} // namespace

void search_exactly(colouring *c, const graph *g, const label_cells &cells,
                    int threshold, refinement_work *work) {
  if (colouring_largest_cell(c) < threshold) {
    search_greatest(c, g, cells, &work->poll);
    return;
  }
  orbit_check check(c, g, cells, work);
  c->order =
      check.run() ? check.leaf() : leaf_search(g, cells, work).find_best(*c);
}

} // namespace kestro
