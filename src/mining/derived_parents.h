// The parents of a candidate, derived from those of the pattern it extends.
#pragma once

#include "mining/child_table.h"
#include "mining/closure.h"
#include "mining/parents.h"

namespace kestro {

class derived_parents {
public:
  // Borrows children, the level of the parents, and the table that was built
  // from it and the level below.
  derived_parents(const sg_set *children, const child_table *table)
      : children_(children), table_(table) {}

  // Looks up the parents of the candidate that is x's pattern, one of children,
  // plus x's edge; false when one of them is certainly not in children.  The
  // other functions speak of the candidate looked up last.
  bool look_up(const extension &x);

  // Takes over the numbering of cand, the candidate in canonical form: edges
  // and maps below use it.  cand->vid[i] is vertex i's number in x's pattern; a
  // new vertex has the number that follows the pattern's last.
  void take_order(const graph *cand);

  // Whether find() succeeds for every removable edge.
  bool knows_all() const { return knows_all_; }
  // Whether it is known which parent the candidate without a removable edge is.
  bool knows(const removable_edge &edge) const;
  // The same; if so, writes the parent's id and the map to it into entry,
  // which has its vs.
  bool find(const removable_edge &edge, sg_parent *entry) const;

private:
  extension part_without(const sg_parent *entry) const;
  std::pair<int, int> ends_of(const removable_edge &edge) const;
  bool is_own_edge(const removable_edge &edge) const;
  int known_entry(const removable_edge &edge) const;
  void compose(int index, sg_parent *entry) const;
  template <class MapOf, class Image>
  void compose_maps(int index, MapOf map_of, Image *map) const;
  void move_on(int index, const sg_parent *back, int16_t *to_part) const;

  const sg_set *children_;
  const child_table *table_;
  extension x_ = {};
  const subgraph *pattern_ = nullptr; // x's
  bool knows_all_ = false;
  xvector<const found_child *> found_; // by entry of pattern_: the
                                       // candidate's parent without its edge
  xvector<extension> parts_; // by entry of pattern_: what found_ was looked
                             // for
  xvector<int> origin_;      // by vertex of the candidate, that of x's pattern
  xvector<int> first_entry_; // by vertex of x's pattern, and a new one: the
                             // first entry whose edge starts there, -1 for none
  mutable xvector<const int *> steps_; // of an automorphism of a core
  mutable xvector<int16_t> maps_;      // by vertex, for compose()
};

} // namespace kestro
