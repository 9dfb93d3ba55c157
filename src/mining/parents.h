// Which of its parents a pattern keeps.
#pragma once

#include "mining/sg_set.h"

namespace kestro {

// Offers a parent entry to sg; prev is the previous level, whose supports
// decide.  At most two entries stay, those of the least frequent parents (of
// equally frequent ones, the smaller id); of several entries for one parent the
// first stays.  Kept parents are those under which the pattern is joined at the
// next level.
void sg_update_parent_info(subgraph *sg, const sg_parent *entry,
                           const sg_set *prev);

// Adds each pattern of level to the child sets of its kept parents in prev.
// Throws interrupted when stop, which may be null, says so.
void sg_register_children(const sg_set *level, const sg_set *prev,
                          const interruption *stop = nullptr);

} // namespace kestro
