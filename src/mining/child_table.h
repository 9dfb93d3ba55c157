// The patterns of a level by parent and added edge.
#pragma once

#include "mining/core_links.h"
#include "mining/extension.h"
#include "mining/sg_set.h"

namespace kestro {

// A pattern found as one of its parents plus an edge.
struct found_child {
  int child;         // its id in the level
  int16_t entry;     // the index of its parent entry that leads there
  int16_t generator; // of the parent's group, which brings the edge from a
                     // place that was met before; -1 at the place that the
                     // entry tells
};

// For every parent and every edge such that the parent plus the edge is a
// pattern of the level: that pattern.
class child_table {
public:
  // children is the level, cores, which is borrowed, the level of their
  // parents.
  child_table(const sg_set *children, const core_links *cores,
              const interruption *stop = nullptr);

  // The pattern that x, an extension of a core, is; null when it is none of the
  // level.  Costs the logarithm of the places of the core's children.
  const found_child *find(const extension &x) const {
    const int *start = starts_.data() + x.pattern;
    const placed_child *at = places_.data() + start[0];
    int left = start[1] - start[0];
    const placed_child wanted = placed(x, {});
    while (left > 1) {
      const int half = left / 2;
      at += comes_after(at[half - 1], wanted) ? half : 0;
      left -= half;
    }
    return left == 1 && is_same(*at, wanted) ? &at->found : nullptr;
  }

  // Whether the form of a pattern of the level, or of a core, is known not to
  // depend on the order of vertices.
  bool child_is_invariant(int id) const {
    return children_[static_cast<size_t>(id)] != 0;
  }
  bool core_is_invariant(int id) const { return cores_->is_invariant(id); }

  // For x that is found: permutations of the core that, applied from the last
  // to the first, bring the edge of the found child's entry to the place of x.
  void find_steps(extension x, xvector<const int *> *steps) const;

private:
  // A place of an edge on a core, and the child that is there.
  struct placed_child {
    uint32_t place; // from, then to
    int elabel;
    int vlabel;
    found_child found;
  };
  static placed_child placed(const extension &x, const found_child &found) {
    return {uint32_t{static_cast<uint16_t>(x.from)} << 16 |
                static_cast<uint16_t>(x.to),
            x.elabel, x.vlabel, found};
  }
  static uint64_t labels_of(const placed_child &c) {
    return uint64_t{static_cast<uint32_t>(c.elabel)} << 32 |
           static_cast<uint32_t>(c.vlabel);
  }
  static bool is_same(const placed_child &a, const placed_child &b) {
    return a.place == b.place && labels_of(a) == labels_of(b);
  }
  // Whether b stands behind a in a core's list.
  static bool comes_after(const placed_child &a, const placed_child &b) {
    return a.place < b.place ||
           (a.place == b.place && labels_of(a) < labels_of(b));
  }

  class builder;

  xvector<int> starts_; // by core: where its children begin, and the end
  xvector<placed_child> places_;
  const core_links *cores_;
  xvector<char> children_; // by id: whether invariant
};

} // namespace kestro
