// Sets of pattern records changed one record at a time.
#pragma once

#include "mining/sg_set.h"

namespace kestro {

// Inserts in order, after equal records; the set owns sg from then on.
void sg_set_insert(sg_set *s, sg_ptr sg);
// The record equal to sg, or null.
subgraph *sg_set_find_record(const sg_set *s, const subgraph *sg);
// Takes the record equal to sg out of the set, which closes the gap.
sg_ptr sg_remove_sg_from_set(const subgraph *sg, sg_set *s);

} // namespace kestro
