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

// The extension of a link's parent that is the candidate without the link's
// edge, pattern -1 when x's edge would be left without hold.
extension derived_parents::part_without(const sg_link *link) const {
  const int from = link->map[x_.from];
  if (x_.to == -1) {
    if (from == link_gone)
      return {};
    return pendant_extension(link->pid, from, x_.elabel, x_.vlabel);
  }
  const int to = link->map[x_.to];
  // A leaf of B that loses its edge hangs on x's edge instead.
  if (from == link_gone)
    return pendant_extension(link->pid, to, x_.elabel,
                             pattern_->g->vlabel[x_.from]);
  if (to == link_gone)
    return pendant_extension(link->pid, from, x_.elabel,
                             pattern_->g->vlabel[x_.to]);
  return closing_extension(link->pid, from, to, x_.elabel);
}

bool derived_parents::look_up(const extension &x) {
  x_ = x;
  pattern_ = sg_set_get(children_, x.pattern);
  const int links = sg_link_size(pattern_);
  if (found_.size() < static_cast<size_t>(links))
    found_.resize(static_cast<size_t>(links));
  // An edge that closes a cycle may make more edges removable.
  knows_all_ = pattern_->links && pattern_->invariant && x.to == -1;
  for (int l = 0; l < links; l++) {
    const sg_link *link = sg_link_at(pattern_, l);
    const extension part = part_without(link);
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

// The link of x's pattern that lacks that edge and whose part is certain, -1
// for none.
int derived_parents::known_link(const removable_edge &edge) const {
  const auto [low, high] = ends_of(edge);
  int first = 0;
  int last = sg_link_size(pattern_);
  while (first < last) { // links are sorted by their edge
    const int middle = (first + last) / 2;
    const sg_link *link = sg_link_at(pattern_, middle);
    if (link->u < low || (link->u == low && link->v < high))
      first = middle + 1;
    else
      last = middle;
  }
  if (first == sg_link_size(pattern_))
    return -1;
  const sg_link *link = sg_link_at(pattern_, first);
  const found_child *found = found_[static_cast<size_t>(first)];
  return link->u == low && link->v == high && found &&
                 sg_set_get(children_, found->child)->invariant
             ? first
             : -1;
}

bool derived_parents::knows(const removable_edge &edge) const {
  return is_own_edge(edge) ? pattern_->invariant : known_link(edge) != -1;
}

bool derived_parents::find(const removable_edge &edge, sg_parent *entry) const {
  if (!knows(edge))
    return false;
  if (is_own_edge(edge)) {
    entry->pid = x_.pattern;
    for (size_t i = 0; i < origin_.size(); i++)
      entry->map[i] = origin_[i] < pattern_->g->vs ? origin_[i] : -1;
    return true;
  }
  const int link = known_link(edge);
  entry->pid = found_[static_cast<size_t>(link)]->child;
  compose(link, entry->map);
  return true;
}

// Maps cand to the part without that link's edge.
void derived_parents::compose(int link, int *map) const {
  const found_child *found = found_[static_cast<size_t>(link)];
  const sg_link *step = sg_link_at(pattern_, link);
  const subgraph *part = sg_set_get(children_, found->child);
  const sg_link *back = sg_link_at(part, found->link);
  steps_.clear();
  if (found->generator != -1)
    table_->find_steps(part_without(step), &steps_);
  int to_part[link_max_vertices]; // by vertex of the core
  int new_vertex = -1;            // of the part
  for (int r = 0; r < part->g->vs; r++) {
    if (back->map[r] == link_gone) {
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
  const int kept = x_.to == -1                       ? n
                   : step->map[x_.from] == link_gone ? x_.from
                   : step->map[x_.to] == link_gone   ? x_.to
                                                     : -1;
  for (size_t i = 0; i < origin_.size(); i++) {
    const int b = origin_[i];
    if (b == kept)
      map[i] = new_vertex;
    else
      map[i] = step->map[b] == link_gone ? -1 : to_part[step->map[b]];
  }
}

} // namespace kestro
