// Groups by generators, and orbits by a walk along them.

#include "mining/pattern_groups.h"

#include <algorithm>

namespace kestro {

void pattern_groups::expect(int n) {
  entries_.assign(static_cast<size_t>(n), {});
  for (worker &w : workers_)
    w.perms.clear();
}

void pattern_groups::need_workers(int n) {
  while (static_cast<int>(workers_.size()) < n)
    workers_.emplace_back(stop_);
}

void pattern_groups::prepare_by(int w, int i, const graph *g) {
  entry *e = &entries_[static_cast<size_t>(i)];
  if (e->count != -1)
    return;
  worker *by = &workers_[static_cast<size_t>(w)];
  const size_t first = by->perms.size();
  const int count = by->search.find(g, &by->perms);
  *e = {first, w, count, g->vs};
}

void pattern_groups::prepare(int i, const graph *g) {
  need_workers(1);
  prepare_by(0, i, g);
}

pattern_group pattern_groups::at(int i) const {
  const entry &e = entries_[static_cast<size_t>(i)];
  if (e.count <= 0)
    return {};
  const worker &by = workers_[static_cast<size_t>(e.worker)];
  return {by.perms.data() + e.first, e.count, e.vs};
}

// The bit of a vertex or of a pair of vertices.
static size_t bit_of(const edge_place &place, int vs) {
  const auto [u, w] = std::minmax(place.u, place.w);
  if (u == -1)
    return static_cast<size_t>(w);
  return static_cast<size_t>(u) * static_cast<size_t>(vs) +
         static_cast<size_t>(w);
}

// Adds a place unless it was met before.
void orbit_walk::meet(const edge_place &place, int vs) {
  const size_t bit = bit_of(place, vs);
  uint64_t *word = &marks_[bit / 64];
  const uint64_t mask = uint64_t{1} << bit % 64;
  if (*word & mask)
    return;
  *word |= mask;
  images_.push_back(place);
}

std::span<const edge_place> orbit_walk::images(const pattern_group &group,
                                               edge_place place,
                                               interruption_poll *poll) {
  images_.clear();
  if (group.count == 0) {
    images_.push_back(place);
    return images_;
  }
  const size_t vs = static_cast<size_t>(group.vs);
  const size_t bits = place.w == -1 ? vs : vs * vs;
  if (marks_.size() * 64 < bits)
    marks_.resize(bits / 64 + 1, 0);
  try {
    walk(group, place, poll);
  } catch (...) {
    clear_marks(group.vs);
    throw;
  }
  clear_marks(group.vs);
  return images_;
}

void orbit_walk::walk(const pattern_group &group, const edge_place &place,
                      interruption_poll *poll) {
  meet(place, group.vs);
  for (size_t i = 0; i < images_.size(); i++) {
    if (poll)
      poll->step(group.count);
    const edge_place from = images_[i];
    for (int k = 0; k < group.count; k++) {
      const int *perm = group.perm(k);
      meet({perm[from.u], from.w == -1 ? -1 : perm[from.w]}, group.vs);
    }
  }
}

void orbit_walk::clear_marks(int vs) {
  for (const edge_place &met : images_)
    marks_[bit_of(met, vs) / 64] = 0;
}

} // namespace kestro
