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
  const int from = entry->image(x_.from);
  if (x_.to == -1) {
    if (from == -1)
      return {};
    return pendant_extension(entry->pid, from, x_.elabel, x_.vlabel);
  }
  const int to = entry->image(x_.to);
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
  const size_t entries = static_cast<size_t>(sg_parent_size(pattern_));
  found_.resize(entries);
  parts_.resize(entries);
  // An edge that closes a cycle may make more edges removable.
  knows_all_ = pattern_->invariant && x.to == -1;
  const char *entry = pattern_->entries;
  for (size_t l = 0; l < entries; l++, entry += pattern_->entry_bytes) {
    extension &part = parts_[l];
    part = part_without(reinterpret_cast<const sg_parent *>(entry));
    found_[l] = nullptr;
    if (part.pattern == -1)
      continue;
    const found_child *found = table_->find(part);
    if (!found && table_->core_is_invariant(part.pattern))
      return false;
    found_[l] = found;
    knows_all_ &= found && table_->child_is_invariant(found->child);
  }
  // Their entries are read once the candidate has its form.
  for (const found_child *found : found_)
    if (found)
      __builtin_prefetch(sg_set_get(children_, found->child));
  return true;
}

void derived_parents::take_order(const graph *cand) {
  origin_.assign(cand->vid, cand->vid + cand->vs);
  first_entry_.assign(static_cast<size_t>(pattern_->g->vs) + 1, -1);
  for (int l = sg_parent_size(pattern_); l-- > 0;)
    first_entry_[static_cast<size_t>(sg_parent_at(pattern_, l)->u)] = l;
  for (const found_child *found : found_)
    if (found) {
      const sg_parent *entry =
          sg_parent_at(sg_set_get(children_, found->child), found->entry);
      __builtin_prefetch(entry);
      __builtin_prefetch(reinterpret_cast<const char *>(entry + 1) + 16);
    }
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
  int l = first_entry_[static_cast<size_t>(low)];
  for (; l != -1 && l < sg_parent_size(pattern_); l++) {
    const sg_parent *entry = sg_parent_at(pattern_, l);
    if (entry->u != low || entry->v > high)
      return -1; // entries are sorted by their edge
    if (entry->v < high)
      continue;
    const found_child *found = found_[static_cast<size_t>(l)];
    return found && table_->child_is_invariant(found->child) ? l : -1;
  }
  return -1;
}

bool derived_parents::knows(const removable_edge &edge) const {
  return is_own_edge(edge) ? pattern_->invariant : known_entry(edge) != -1;
}

bool derived_parents::find(const removable_edge &edge, sg_parent *entry) const {
  if (is_own_edge(edge)) {
    if (!pattern_->invariant)
      return false;
    entry->pid = x_.pattern;
    for (int i = 0; i < entry->vs; i++) {
      const int origin = origin_[static_cast<size_t>(i)];
      entry->set_image(i, origin < pattern_->g->vs ? origin : -1);
    }
    return true;
  }
  const int index = known_entry(edge);
  if (index == -1)
    return false;
  entry->pid = found_[static_cast<size_t>(index)]->child;
  compose(index, entry);
  return true;
}

namespace {

// An entry's map whatever its type.
struct any_map {
  const sg_parent *entry;
  int operator[](int i) const { return entry->image(i); }
};

} // namespace

// Maps cand to the part without that entry's edge.
void derived_parents::compose(int index, sg_parent *entry) const {
  // Nothing has more vertices than cand, so all maps are of its type, or read
  // one by one.
  if (entry->has_bytes())
    compose_maps(
        index, [](const sg_parent *e) { return e->map<int8_t>(); },
        entry->map<int8_t>());
  else
    compose_maps(
        index, [](const sg_parent *e) { return any_map{e}; },
        entry->map<int16_t>());
}

template <class MapOf, class Image>
void derived_parents::compose_maps(int index, MapOf map_of, Image *map) const {
  const found_child *found = found_[static_cast<size_t>(index)];
  const subgraph *part = sg_set_get(children_, found->child);
  const sg_parent *back = sg_parent_at(part, found->entry);
  const auto to_core = map_of(sg_parent_at(pattern_, index));
  const auto part_to_core = map_of(back);
  const int n = pattern_->g->vs;
  const int part_vs = back->vs;
  const size_t room = static_cast<size_t>(n) + 1;
  maps_.resize(2 * room);
  int16_t *const to_part = maps_.data() + 1; // by vertex of the core, or -1
  to_part[-1] = -1;
  for (int r = 0; r < part_vs; r++)
    to_part[part_to_core[r]] = static_cast<int16_t>(r);
  const int16_t new_vertex = to_part[-1]; // of the part, if it has one
  to_part[-1] = -1;
  if (found->generator != -1)
    move_on(index, back, to_part);
  // The vertex of the candidate that the core lacks is the new one, or a leaf
  // that x's edge keeps.
  const int kept = x_.to == -1              ? n
                   : to_core[x_.from] == -1 ? x_.from
                   : to_core[x_.to] == -1   ? x_.to
                                            : -1;
  int16_t *const by_origin = maps_.data() + room;
  for (int b = 0; b < n; b++)
    by_origin[b] = to_part[to_core[b]];
  if (kept != -1)
    by_origin[kept] = new_vertex;
  const size_t vs = origin_.size();
  const int *const origin = origin_.data();
  for (size_t i = 0; i < vs; i++)
    map[i] = static_cast<Image>(by_origin[origin[i]]);
}

// Moves the vertices of a part along the automorphism of the core that brings
// the part's edge to where it is in the candidate.
void derived_parents::move_on(int index, const sg_parent *back,
                              int16_t *to_part) const {
  table_->find_steps(parts_[static_cast<size_t>(index)], &steps_);
  for (int16_t r = 0; r < back->vs; r++) {
    int in_core = back->image(r);
    if (in_core == -1)
      continue;
    for (size_t s = steps_.size(); s-- > 0;)
      in_core = steps_[s][in_core];
    to_part[in_core] = r;
  }
}

} // namespace kestro
