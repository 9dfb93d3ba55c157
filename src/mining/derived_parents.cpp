// Parents without canonical forms.
//
// A candidate is B + e.  Taking another edge f out of it gives B - f + e, and
// B - f is a parent of B, known with a map from B.  So a look-up of that parent
// and e's place in it yields which frequent pattern the rest is, or that it is
// none: one look-up per edge, and only for candidates that pass them all a
// graph is built.  The map from the candidate to the rest is composed of B's
// map to B - f and the rest's own map to it.
//
// Two cases are left to the canonical form of the rest.  An edge may hold B
// together but not the candidate, because it lies on a cycle that e closes. And
// the canonical form of a rest may depend on the order of vertices: then the
// level may hold two records of one graph, and only the form itself shows which
// of them is the parent.

#include "mining/derived_parents.h"

#include <utility>

namespace kestro {

// The extension of an entry's parent that is the candidate without that entry's
// edge, pattern -1 when x's edge would be left without hold.
extension derived_parents::part_without(const sg_parent *entry) const {
  const int from = entry->map[x_.from];
  if (x_.to == -1) {
    if (from == -1)
      return {};
    return pendant_extension(entry->pid, from, x_.elabel, x_.vlabel);
  }
  const int to = entry->map[x_.to];
  // A leaf of B that loses its edge hangs on x's edge instead.
  if (from == -1)
    return pendant_extension(entry->pid, to, x_.elabel,
                             pattern_->g->vlabel[x_.from]);
  if (to == -1)
    return pendant_extension(entry->pid, from, x_.elabel,
                             pattern_->g->vlabel[x_.to]);
  return closing_extension(entry->pid, from, to, x_.elabel);
}

bool derived_parents::look_up(const extension &x) {
  x_ = x;
  pattern_ = sg_set_get(children_, x.pattern);
  const int entries = sg_parent_size(pattern_);
  if (found_.size() < static_cast<size_t>(entries))
    found_.resize(static_cast<size_t>(entries));
  // An edge that closes a cycle may make more edges removable.
  knows_all_ = pattern_->invariant && x.to == -1;
  for (int l = 0; l < entries; l++) {
    const sg_parent *entry = sg_parent_at(pattern_, l);
    const extension part = part_without(entry);
    found_[static_cast<size_t>(l)] = nullptr;
    if (part.pattern == -1)
      continue;
    const found_child *found = table_->find(part);
    if (!found && sg_set_get(cores_, part.pattern)->invariant)
      return false;
    found_[static_cast<size_t>(l)] = found;
    knows_all_ &= found && sg_set_get(children_, found->child)->invariant;
  }
  return true;
}

void derived_parents::take_order(const graph *cand) {
  origin_.assign(cand->vid, cand->vid + cand->vs);
}

// The ends of an edge of the candidate as vertices of x's pattern, the smaller
// first.
std::pair<int, int> derived_parents::ends_of(const removable_edge &edge) const {
  const int u = origin_[static_cast<size_t>(edge.u)];
  const int w = origin_[static_cast<size_t>(edge.w)];
  return u < w ? std::pair(u, w) : std::pair(w, u);
}

// Whether that edge is x's, taking which away leaves x's pattern.
bool derived_parents::is_own_edge(const removable_edge &edge) const {
  const auto [low, high] = ends_of(edge);
  return x_.from == low && x_.to == (high == pattern_->g->vs ? -1 : high);
}

// The entry of x's pattern for that edge whose part is certain, -1
// for none.
int derived_parents::known_entry(const removable_edge &edge) const {
  const auto [low, high] = ends_of(edge);
  int first = 0;
  int last = sg_parent_size(pattern_);
  while (first < last) { // entries are sorted by their edge
    const int middle = (first + last) / 2;
    const sg_parent *entry = sg_parent_at(pattern_, middle);
    if (entry->u < low || (entry->u == low && entry->v < high))
      first = middle + 1;
    else
      last = middle;
  }
  if (first == sg_parent_size(pattern_))
    return -1;
  const sg_parent *entry = sg_parent_at(pattern_, first);
  const found_child *found = found_[static_cast<size_t>(first)];
  return entry->u == low && entry->v == high && found &&
                 sg_set_get(children_, found->child)->invariant
             ? first
             : -1;
}

bool derived_parents::knows(const removable_edge &edge) const {
  return is_own_edge(edge) ? pattern_->invariant : known_entry(edge) != -1;
}

bool derived_parents::find(const removable_edge &edge, sg_parent *entry) const {
  if (!knows(edge))
    return false;
  if (is_own_edge(edge)) {
    entry->pid = x_.pattern;
    for (size_t i = 0; i < origin_.size(); i++)
      entry->map[i] =
          static_cast<int16_t>(origin_[i] < pattern_->g->vs ? origin_[i] : -1);
    return true;
  }
  const int index = known_entry(edge);
  entry->pid = found_[static_cast<size_t>(index)]->child;
  compose(index, entry->map);
  return true;
}

// Maps cand to the part without that entry's edge.
void derived_parents::compose(int index, int16_t *map) const {
  const found_child *found = found_[static_cast<size_t>(index)];
  const sg_parent *step = sg_parent_at(pattern_, index);
  const subgraph *part = sg_set_get(children_, found->child);
  const sg_parent *back = sg_parent_at(part, found->entry);
  steps_.clear();
  if (found->generator != -1)
    table_->find_steps(part_without(step), &steps_);
  to_part_.resize(static_cast<size_t>(pattern_->g->vs));
  int16_t *to_part = to_part_.data(); // by vertex of the core
  int16_t new_vertex = -1;            // of the part
  const int16_t n_part = static_cast<int16_t>(part->g->vs);
  for (int16_t r = 0; r < n_part; r++) {
    if (back->map[r] == -1) {
      new_vertex = r;
      continue;
    }
    int in_core = back->map[r];
    for (size_t s = steps_.size(); s-- > 0;)
      in_core = steps_[s][in_core];
    to_part[in_core] = r;
  }
  // The vertex of the candidate that the core lacks: the new one, or a leaf
  // that x's edge keeps.
  const int n = pattern_->g->vs;
  const int kept = x_.to == -1                ? n
                   : step->map[x_.from] == -1 ? x_.from
                   : step->map[x_.to] == -1   ? x_.to
                                              : -1;
  for (size_t i = 0; i < origin_.size(); i++) {
    const int b = origin_[i];
    if (b == kept)
      map[i] = new_vertex;
    else
      map[i] = step->map[b] == -1 ? int16_t{-1} : to_part[step->map[b]];
  }
}

} // namespace kestro
