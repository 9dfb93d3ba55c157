// What joins read of the level of cores.
#pragma once

#include <array>
#include <span>

#include "mining/pattern_groups.h"
#include "mining/sg_set.h"

namespace kestro {

// The child lists and groups of a level: under which cores its patterns are
// joined, and how.  The records of the cores can go before the level above is
// joined.
class core_links {
public:
  // cores is the level; children, the one above, says which of them are
  // parents, and of whom.  Groups are computed on up to jobs threads.  Throws
  // interrupted when stop, which may be null, says so.
  core_links(const sg_set *cores, const sg_set *children, int jobs = 1,
             const interruption *stop = nullptr);

  // How many cores there are.
  int size() const { return static_cast<int>(invariant_.size()); }
  // The patterns of the next level that keep a core as a parent, ascending.
  std::span<const int> children(int core) const {
    const int *start = starts_.data() + core;
    return {children_.data() + start[0],
            static_cast<size_t>(start[1] - start[0])};
  }
  // How many parent entries of patterns of the next level tell of a core.
  int entries(int core) const { return entries_[static_cast<size_t>(core)]; }
  // The group of a core that is a parent.
  pattern_group group(int core) const { return groups_.at(core); }
  // Whether the form of a core is known not to depend on the order of vertices.
  bool is_invariant(int core) const {
    return invariant_[static_cast<size_t>(core)] != 0;
  }

private:
  // By child: the kept parents, -1 for none.
  using kept_parents = xvector<std::array<int, 2>>;

  kept_parents read_children(const sg_set *children, interruption_poll *poll);
  void list_children(const kept_parents &kept, interruption_poll *poll);

  xvector<int> starts_;   // by core: where its children begin, and the end
  xvector<int> children_; // of all cores
  xvector<int> entries_;  // by core
  xvector<char> invariant_;
  pattern_groups groups_;
};

} // namespace kestro
