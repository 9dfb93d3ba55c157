// The patterns of a level by parent and added edge.
#pragma once

#include "mining/extension_map.h"
#include "mining/pattern_groups.h"
#include "mining/sg_set.h"

namespace kestro {

// A pattern found as one of its parents plus an edge.
struct found_child {
  int child;     // its id in the level
  int entry;     // the index of its parent entry that leads there
  int generator; // of the parent's group, which brings the edge from a place
                 // that was met before; -1 at the place that the entry tells
};

// For every parent and every edge such that the parent plus the edge is a
// pattern of the level: that pattern.
class child_table {
public:
  // children is the level, cores the level of their parents; groups, which is
  // borrowed, holds the groups of these (sg_find_parent_groups).
  child_table(const sg_set *children, const sg_set *cores,
              const pattern_groups *groups, const interruption *stop = nullptr);

  // The pattern that x, an extension of a core, is; null when it is none of the
  // level.
  const found_child *find(const extension &x) const { return map_.find(x); }

  // Tells that find() will be asked for x soon.
  void expect(const extension &x) const { map_.expect(x); }

  // Whether the form of a pattern of the level, or of a core, is known not to
  // depend on the order of vertices.
  bool child_is_invariant(int id) const { return is_set(children_, id); }
  bool core_is_invariant(int id) const { return is_set(cores_, id); }

  // For x that is found: permutations of the core that, applied from the last
  // to the first, bring the edge of the found child's entry to the place of x.
  void find_steps(extension x, xvector<const int *> *steps) const;

private:
  static bool is_set(const xvector<char> &flags, int id) {
    return flags[static_cast<size_t>(id)] != 0;
  }
  void enter_images(const extension &x, const found_child &found,
                    interruption_poll *poll);

  extension_map<found_child> map_;
  const pattern_groups *groups_; // by id of a core
  xvector<char> children_;       // by id: whether invariant
  xvector<char> cores_;
  xvector<extension> entered_; // the images of one edge
};

} // namespace kestro
