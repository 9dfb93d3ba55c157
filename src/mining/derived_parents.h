// The parents of a candidate, told from those of the pattern it was made of.
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

  // Goes on to the candidate that is x's pattern, one of children, plus x's
  // edge; false when a part of it is certainly not in children.
  bool start(const extension &x);

  // Takes the candidate in canonical form, whose vid are the vertices of x's
  // pattern, the new one following them.
  void arrange(const graph *cand);

  // Whether find() tells all parents of the arranged candidate.
  bool tells_all() const { return tells_all_; }
  // Whether the parent is told that the arranged candidate is without one of
  // its removable edges.
  bool tells(const removable_edge &edge) const;
  // The same; writes pid and map to entry if so.
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
  bool tells_all_ = false;
  xvector<const found_child *> found_; // by link of pattern: without its edge
  xvector<int> origin_; // by vertex of the candidate, that of x's pattern
};

} // namespace kestro
