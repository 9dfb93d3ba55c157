// Joining as it is prescribed: two patterns glued along a map between them.
#pragma once

#include "mining/candidates.h"

namespace kestro {

// Joins the patterns a and b of level k-1 through their core with id p in
// cores, which is among the kept parents of both; a and b may be the same.
void sg_join_pair(int a, int b, int p, const sg_set *cores,
                  join_context *context);

// For each vertex of the pattern that ea belongs to, the vertex of eb's pattern
// that it meets through the automorphism perm of their core of n vertices; -1
// for the one outside the core.
void setup_map(const sg_parent *ea, const sg_parent *eb, const int *perm, int n,
               int *map);

} // namespace kestro
