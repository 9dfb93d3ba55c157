// Generators of an automorphism group.
//
// Twins, vertices with the same edges to all others, are exchanged first: their
// exchanges generate all permutations of a class.  Any automorphism maps
// classes onto classes, so followed by such permutations it keeps the number of
// every vertex within its class.  What is left are the automorphisms that do:
// those of the graph in which the number is a part of the label.
//
// These are found along one path of the individualisation tree, from its leaf
// upwards.  At a node the group that fixes what was set apart before is known
// once every vertex of the node's first open cell is known to be in the orbit
// of the one that the path sets apart, or not to be.  A vertex that is the
// image of another under generators found already needs no search; for any
// other a path under it is looked for that ends with an image of the leaf.  A
// generator joins two orbits, so there are fewer generators than vertices.

#include "cl/automorphism_group.h"

#include <algorithm>
#include <numeric>

#include "cl/cell_image.h"

namespace kestro {

int automorphism_search::find(const graph *g, xvector<int> *perms) {
  g_ = g;
  perms_ = perms;
  first_ = perms->size();
  found_ = exchanges_ = levels_ = 0;
  if (path_.empty())
    path_.resize(1);
  colouring_init(&path_[0], g, &work_);
  if (path_[0].cells == g->vs)
    return 0;
  if (marks_.size() < index(g->vs))
    marks_.resize(index(g->vs), 0);
  const bool only_twins = add_exchanges();
  exchanges_ = found_;
  if (only_twins)
    return static_cast<int>(found_);
  if (exchanges_ > 0) {
    view_ = *g;
    view_.vlabel = labels_.data();
    g_ = &view_;
    colouring_init(&path_[0], g_, &work_);
  }
  orbits_.reset(g->vs);
  follow_path();
  for (size_t level = levels_; level-- > 0;)
    search_cell(level);
  return static_cast<int>(found_);
}

// Adds the exchanges of twins and writes the labels that tell twins apart.
// Returns whether every cell of several vertices is one class of twins.
bool automorphism_search::add_exchanges() {
  const colouring &root = path_[0];
  labels_.resize(index(g_->vs));
  image_.resize(index(g_->vs));
  if (class_.size() < index(g_->vs))
    class_.resize(index(g_->vs), 0);
  std::iota(image_.begin(), image_.end(), 0);
  bool only_twins = true;
  for (int s = 0, end; s < g_->vs; s = end) {
    end = root.cell_end[index(s)];
    if (end - s == 1)
      labels_[index(root.order[index(s)])] = s;
    else
      only_twins &= add_exchanges_in(s, end) == 1;
  }
  return only_twins;
}

// The same for one cell; returns how many classes its vertices are in.
int automorphism_search::add_exchanges_in(int first, int end) {
  firsts_.clear();
  sizes_.clear();
  for (int i = first; i < end; i++) {
    const int u = path_[0].order[index(i)];
    mark_neighbours(u);
    const size_t k = class_of_marked(u);
    unmark_neighbours(u);
    if (k == firsts_.size()) {
      class_[index(u)] = k;
      firsts_.push_back(u);
      sizes_.push_back(0);
    } else {
      std::swap(image_[index(firsts_[k])], image_[index(u)]);
      add(image_);
      std::swap(image_[index(firsts_[k])], image_[index(u)]);
    }
    work_.poll.step(static_cast<int64_t>(firsts_.size()) + 1);
    labels_[index(u)] = first + sizes_[k]++;
  }
  return static_cast<int>(firsts_.size());
}

// The class that has a twin of u, whose neighbours are marked; the number of
// classes for none.  A twin is a neighbour, or a neighbour of each neighbour,
// which takes the shorter walk where there are many classes.
size_t automorphism_search::class_of_marked(int u) const {
  const size_t none = firsts_.size();
  const int slot = g_->v[u];
  const bool is_few =
      none < 8 || slot == g_->v[u + 1] ||
      none <= index(degree_of(u)) + index(degree_of(g_->e[slot]));
  if (is_few) {
    size_t k = 0;
    while (k < none && !is_twin_of_marked(firsts_[k], u))
      k++;
    return k;
  }
  for (const int x : {u, g_->e[slot]})
    for (int j = g_->v[x]; j < g_->v[x + 1]; j++) {
      const int w = g_->e[j];
      const size_t k = class_[index(w)]; // holds for firsts of this cell only
      if (k < none && firsts_[k] == w && is_twin_of_marked(w, u))
        return k;
    }
  return none;
}

// Whether w is a twin of u, whose neighbours are marked; both are in one cell,
// so they have equally many neighbours.
bool automorphism_search::is_twin_of_marked(int w, int u) const {
  for (int j = g_->v[w]; j < g_->v[w + 1]; j++)
    if (g_->e[j] != u && marks_[index(g_->e[j])] != g_->elabel[j] + 1)
      return false;
  return true;
}

void automorphism_search::follow_path() {
  for (levels_ = 0; path_[levels_].cells < g_->vs; levels_++) {
    if (path_.size() == levels_ + 1)
      path_.resize(2 * path_.size());
    colouring *next = &path_[levels_ + 1];
    *next = path_[levels_];
    const int cell = colouring_first_open(next, 0);
    colouring_individualise(next, g_, next->order[index(cell)], &work_);
  }
  leaf_ = path_[levels_].order;
  if (trial_.size() < levels_ + 1)
    trial_.resize(levels_ + 1);
}

// Adds generators that bring the vertex set apart at a level to all others of
// its orbit, while those set apart before stay.
void automorphism_search::search_cell(size_t level) {
  const colouring &node = path_[level];
  const int cell = colouring_first_open(&node, 0);
  const int end = node.cell_end[index(cell)];
  set_apart_.clear();
  for (size_t i = 0; i < level; i++)
    set_apart_.push_back(leaf_[index(colouring_first_open(&path_[i], 0))]);
  failed_.clear();
  for (int q = cell + 1; q < end; q++) {
    const int w = node.order[index(q)];
    const auto in_orbit_of_w = [&](int u) { return orbits_.same(u, w); };
    if (in_orbit_of_w(node.order[index(cell)]) ||
        std::any_of(failed_.begin(), failed_.end(), in_orbit_of_w))
      continue;
    trial_[level] = node;
    if (leads_to_image(w, level)) {
      add(image_);
      orbits_.join(image_);
    } else {
      failed_.push_back(w);
    }
  }
}

// Whether some leaf under the node of the trial at a level, with w set apart,
// is an image of the path's leaf.
bool automorphism_search::leads_to_image(int w, size_t level) {
  colouring *next = &trial_[level + 1];
  *next = trial_[level];
  colouring_individualise(next, g_, w, &work_);
  if (!have_equal_cells(path_[level + 1], *next))
    return false;
  set_apart_.push_back(w);
  const bool found = find_image(level + 1);
  set_apart_.pop_back();
  return found;
}

// The same for the node as it is.
bool automorphism_search::find_image(size_t level) {
  match_cells(path_[level], trial_[level], &image_);
  if (is_automorphism())
    return true;
  if (level == levels_)
    return false;
  const int cell = colouring_first_open(&trial_[level], 0);
  const int end = trial_[level].cell_end[index(cell)];
  // An image of few changes is found soonest where vertices stay.
  const int kept = leaf_[index(cell)];
  xvector<int> tried;
  if (trial_[level].colour[index(kept)] == cell) {
    if (leads_to_image(kept, level))
      return true;
    tried.push_back(kept);
  }
  for (int q = cell; q < end; q++) {
    const int w = trial_[level].order[index(q)];
    if (is_image_of(w, tried))
      continue;
    if (leads_to_image(w, level))
      return true;
    tried.push_back(w);
  }
  return false;
}

// Whether generators that fix what is set apart take w to one of vertices.
bool automorphism_search::is_image_of(int w,
                                      const xvector<int> &vertices) const {
  if (vertices.empty())
    return false;
  const size_t vs = index(g_->vs);
  xvector<const int *> fixing;
  for (size_t k = exchanges_; k < found_; k++) {
    const int *perm = perms_->data() + first_ + k * vs;
    if (std::all_of(set_apart_.begin(), set_apart_.end(),
                    [&](int u) { return perm[u] == u; }))
      fixing.push_back(perm);
  }
  xvector<int> images = {w};
  xvector<bool> seen(vs, false);
  seen[index(w)] = true;
  for (size_t i = 0; i < images.size(); i++)
    for (const int *perm : fixing) {
      const int u = perm[images[i]];
      if (!seen[index(u)])
        images.push_back(u);
      seen[index(u)] = true;
    }
  return std::any_of(vertices.begin(), vertices.end(),
                     [&](int u) { return seen[index(u)]; });
}

// Whether image_ is one.
bool automorphism_search::is_automorphism() {
  for (int u = 0; u < g_->vs; u++) {
    const int w = image_[index(u)];
    if (g_->vlabel[u] != g_->vlabel[w] ||
        g_->v[u + 1] - g_->v[u] != g_->v[w + 1] - g_->v[w])
      return false;
    mark_neighbours(w);
    bool same = true;
    for (int j = g_->v[u]; j < g_->v[u + 1] && same; j++)
      same = marks_[index(image_[index(g_->e[j])])] == g_->elabel[j] + 1;
    unmark_neighbours(w);
    if (!same)
      return false;
  }
  return true;
}

void automorphism_search::add(const xvector<int> &perm) {
  perms_->insert(perms_->end(), perm.begin(), perm.end());
  found_++;
}

void automorphism_search::mark_neighbours(int u) {
  for (int j = g_->v[u]; j < g_->v[u + 1]; j++)
    marks_[index(g_->e[j])] = g_->elabel[j] + 1;
}

void automorphism_search::unmark_neighbours(int u) {
  for (int j = g_->v[u]; j < g_->v[u + 1]; j++)
    marks_[index(g_->e[j])] = 0;
}

} // namespace kestro
