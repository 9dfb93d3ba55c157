// The parents of a candidate, derived from those of the pattern it extends.
#pragma once

#include "mining/child_table.h"
#include "mining/closure.h"
#include "mining/links.h"

namespace kestro {

class derived_parents {
public:
  // Borrows all: children, the level of the parents, cores, the level below it,
  // and a table and the cache made of them.
  derived_parents(const sg_set *children, const sg_set *cores,
                  const automorphism_cache *automorphisms,
                  const child_table *table)
      : children_(children), cores_(cores), automorphisms_(automorphisms),
        table_(table) {}

  // Looks up the parents of the candidate that is x's pattern, one of children,
  // plus x's edge; false when one of them is certainly not in children.  What
  // follows is about that candidate.
  bool look_up(const extension &x);

  // From here on the candidate's vertices are numbered as in cand, its
  // canonical form, whose vid are the vertices of x's pattern, the new one
  // following them.
  void take_order(const graph *cand);

  // Whether find() knows all parents.
  bool knows_all() const { return knows_all_; }
  // Whether the parent without one of the removable edges is known.
  bool knows(const removable_edge &edge) const;
  // The same; if so, writes its id and the map to it into entry.
  bool find(const removable_edge &edge, sg_parent *entry) const;

private:
  extension part_without(const sg_link *link) const;
  std::pair<int, int> ends_of(const removable_edge &edge) const;
  bool is_own_edge(const removable_edge &edge) const;
  int known_link(const removable_edge &edge) const;
  void compose(int link, int *map) const;

  const sg_set *children_;
  const sg_set *cores_;
  const automorphism_cache *automorphisms_;
  const child_table *table_;
  extension x_ = {};
  const subgraph *pattern_ = nullptr; // x's
  bool knows_all_ = false;
  xvector<const found_child *> found_; // by link of pattern: without its edge
  xvector<int> origin_; // by vertex of the candidate, that of x's pattern
};

} // namespace kestro
