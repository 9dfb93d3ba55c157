// Chains of vertices with two neighbours are walked once, from either end; what
// is left are the few vertices where chains meet, and every path between them
// is tried.  Six independent cycles have ten such vertices at most.

#include "cl/cycle_lengths.h"

#include <cassert>

namespace kestro {

static size_t index(int i) { return static_cast<size_t>(i); }

// Walks from a joint through slot j to the next joint.
void cycle_lengths_finder::follow(const graph *g, const xvector<int> &degree,
                                  int from, int j) {
  int last = from;
  int at = g->e[j];
  int length = 1;
  while (degree[index(at)] == 2) {
    int next = g->v[at];
    while (g->e[next] == last || degree[index(g->e[next])] == 0)
      next++;
    last = at;
    at = g->e[next];
    length++;
  }
  if (at == from)
    lengths_ |= length_bit(length);
  else
    ways_.push_back({number_[index(at)], length});
}

// Adds the cycles of two ways between the same joints.
void cycle_lengths_finder::add_pairs(size_t from) {
  for (size_t i = first_[from]; i < first_[from + 1]; i++)
    for (size_t j = first_[from]; j < i; j++)
      if (ways_[i].to == ways_[j].to)
        lengths_ |= length_bit(ways_[i].length + ways_[j].length);
}

// Adds the cycles of three joints and more that go on from one, of which the
// start has the lowest number; length is that of the path so far, met has its
// joints.
void cycle_lengths_finder::go_on(size_t from, int length, uint32_t met) {
  const uint32_t start = uint32_t{1} << start_;
  for (size_t i = first_[from]; i < first_[from + 1]; i++) {
    const way &x = ways_[i];
    const uint32_t to = uint32_t{1} << x.to;
    if (to > start && !(met & to))
      go_on(index(x.to), length + x.length, met | to);
    else if (to == start && met != (start | uint32_t{1} << from))
      lengths_ |= length_bit(length + x.length);
  }
}

cycle_lengths cycle_lengths_finder::find(const graph *g,
                                         const xvector<int> &component,
                                         const xvector<int> &degree) {
  lengths_ = 0;
  number_.resize(index(g->vs));
  joints_.clear();
  ways_.clear();
  first_.clear();
  for (const int u : component) {
    if (degree[index(u)] < 3)
      continue;
    number_[index(u)] = static_cast<int>(joints_.size());
    joints_.push_back(u);
  }
  assert(!joints_.empty() && joints_.size() <= 2 * (most_cycles - 1));
  for (const int u : joints_) {
    first_.push_back(ways_.size());
    for (int j = g->v[u]; j < g->v[u + 1]; j++)
      if (degree[index(g->e[j])] > 0)
        follow(g, degree, u, j);
  }
  first_.push_back(ways_.size());
  for (start_ = 0; start_ < joints_.size(); start_++) {
    add_pairs(start_);
    go_on(start_, 0, uint32_t{1} << start_);
  }
  return lengths_;
}

} // namespace kestro
