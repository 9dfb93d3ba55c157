// The parents of patterns: which of them are kept, and what they lack.
#pragma once

#include "mining/extension.h"
#include "mining/sg_set.h"

namespace kestro {

// Adds a parent entry to sg; prev is the previous level, whose supports decide
// which two parents are kept: the least frequent ones (of equally frequent
// ones, the smaller id); of several entries for one parent, the first.  Kept
// parents are those under which the pattern is joined at the next level.
void sg_update_parent_info(subgraph *sg, const sg_parent *entry,
                           const sg_set *prev);

// The ids of all parents, ascending, each once.
void sg_parent_ids(const subgraph *sg, xvector<int> *ids);

// The edge that one of sg's parents lacks, as an extension of that parent.
extension sg_parent_edge(const subgraph *sg, const sg_parent *entry);

} // namespace kestro
