// The individualisation tree, searched for its best leaf.
//
// Refinement commutes with renaming vertices, so the trees of relabelled copies
// are images of one another, and the best matrix that a leaf shows is one for
// all of them.  Where orbit_check finds all leaves alike, any one is the best.
// Else the tree is walked, and three things keep the walk short; none of them
// loses a better leaf:
// - the rows of the leading singletons are those of all leaves below a node, so
//   a node is cut where they are below the best leaf's.  The child with the
//   greatest such rows goes first, which cuts its lesser siblings unseen;
// - a leaf that shows the matrix of an earlier one gives an automorphism.  It
//   takes the branch of the earlier leaf, which has been searched, to that of
//   the later one, which can thus be left, up to where the two paths part;
// - for the same reason a vertex is left out when automorphisms that fix what
//   was set apart before take it to a vertex tried already.  Twins are such
//   vertices from the start.

#include "cl/exact_search.h"

#include <algorithm>

#include "cl/canonical_search.h"
#include "cl/orbit_check.h"

namespace kestro {

namespace {

class leaf_search {
public:
  leaf_search(const graph *g, const label_cells &cells)
      : g_(g), cells_(cells) {}

  const xvector<int> &find_best(const colouring &root) {
    visit(root);
    return leaves_[best_].order;
  }

private:
  static size_t index(int i) { return static_cast<size_t>(i); }

  struct leaf {
    xvector<int> order;
    xvector<int> path; // the vertices set apart, in turn
  };

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

  // The nodes below a node, of twins one, the one with the greatest leading
  // rows first.
  xvector<colouring> children_of(const colouring &node) const {
    const int cell = colouring_first_open(&node, 0);
    const int *first = node.order.data() + cell;
    const int *end = node.order.data() + node.cell_end[index(cell)];
    xvector<colouring> children;
    for (const int *w = first; w < end; w++) {
      const auto is_twin = [&](int u) { return cells_.are_twins(u, *w); };
      if (std::any_of(first, w, is_twin))
        continue;
      children.push_back(node);
      colouring_individualise(&children.back(), g_, *w);
      if (compare_leading(children.back(), children.front()) > 0)
        std::swap(children.back(), children.front());
    }
    return children;
  }

  // How many cells from the first on are singletons.
  int leading(const colouring &c) const {
    const int open = colouring_first_open(&c, 0);
    return open == -1 ? g_->vs : open;
  }

  // Of rows that agree as far as both are known, the more are the greater.
  int compare_leading(const colouring &a, const colouring &b) const {
    const int rows_a = leading(a);
    const int rows_b = leading(b);
    const int d = cells_.compare_rows(a.order.data(), b.order.data(), 0,
                                      std::min(rows_a, rows_b));
    return d ? d : rows_a - rows_b;
  }

  bool is_below_best(const colouring &c) const {
    return !leaves_.empty() &&
           cells_.compare_rows(c.order.data(), leaves_[best_].order.data(), 0,
                               leading(c)) < 0;
  }

  void take_leaf(const xvector<int> &order) {
    int d = 1; // against the best leaf
    for (size_t i = 0; i < leaves_.size(); i++) {
      const leaf &earlier = leaves_[i];
      const int e =
          cells_.compare_rows(order.data(), earlier.order.data(), 0, g_->vs);
      if (e == 0) {
        add_automorphism(earlier.order, order);
        back_to_ = static_cast<size_t>(
            std::mismatch(path_.begin(), path_.end(), earlier.path.begin())
                .first -
            path_.begin());
        return;
      }
      if (i == best_)
        d = e;
    }
    if (d > 0)
      best_ = leaves_.size();
    leaves_.push_back({order, path_});
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
  xvector<int> path_;    // the vertices set apart on the way to the node
  xvector<leaf> leaves_; // those that show different matrices
  size_t best_ = 0;      // of leaves_
  size_t back_to_ = 0;   // nodes deeper than this are left
  xvector<xvector<int>> automorphisms_;
};

} // namespace

void search_exactly(colouring *c, const graph *g, const label_cells &cells,
                    int threshold) {
  if (colouring_largest_cell(c) < threshold) {
    search_greatest(c, g, cells);
    return;
  }
  orbit_check check(c, g, cells);
  c->order = check.run() ? check.leaf() : leaf_search(g, cells).find_best(*c);
}

} // namespace kestro
