// The two searches among the vertex orders that refinement leaves open, carried
// out step by step.
#pragma once

#include <cstdint>
#include <stdexcept>

#include "reference/cl/adjmat.h"

namespace kestro::stepwise {

// Compares the strict lower triangles of two adjmats of equal vs, row by row,
// over the rows at the positions of a's parts from .. to; both are read through
// their own perm.  The difference of the first unequal cells, or 0.  The
// searches look for the greatest triangle.
int compare_adjmat_parts_from_to(const adjmat *a, const adjmat *b, int from,
                                 int to);

// Thrown once a search has tried more arrangements than the limit.
struct leaf_limit_passed : std::runtime_error {
  leaf_limit_passed() : std::runtime_error("leaf limit passed") {}
};
// Lets the searches that follow on this thread try limit arrangements in all;
// at first there is no limit.  An arrangement is a leaf of the stabilizer
// search or one arrangement of one part in the exhaustive search.
void set_leaf_limit(uint64_t limit);

// Exhaustive search: every arrangement inside every part.

// Notes perm in start_perm: where the arrangements of each part begin and end.
void save_adjmat_perm(adjmat *m);
// Advances part p to its next arrangement, wrapping around.  False when the
// part is back at its start_perm; iperm follows.
bool next_part_permutation(adjmat *m, int p);
// Tries all arrangements of parts p and later, each against best; a strictly
// greater one is copied into best, so that the first of equal ones stays.  m
// must have been refined and saved; it ends with the perm it began with.
void compare_adjmat_parts(adjmat *m, int p, adjmat *best);

// Stabilizer search: one vertex at a time is set apart and the rest refined.

// Makes vertex v a part of its own ahead of its companions and refines.  Notes
// perm, iperm and the part of each of the vs vertices for unfix_vertex.
void fix_vertex(adjmat *m, int v, int *saved_perm, int *saved_iperm,
                int *saved_part);
// Puts the partition back.  The vertices keep, inside their parts, the order
// that the search has brought them into, since the sort that follows sets perm
// and iperm anew.
void unfix_vertex(adjmat *m, int v, const int *saved_perm,
                  const int *saved_iperm, const int *saved_part);
// Searches depth first from part, the first one of several vertices, and leaves
// the result in best.  The part before which m was already compared is from.
void get_min_adjmat_by_stabilizer(adjmat *m, int part, int from, adjmat *best);
// The first part, from on, that has several vertices, or -1.
int first_open_part(const adjmat *m, int from);
// Recursive steps of the stabilizer search on this thread so far.
uint64_t cl_stabilizer_calls();

} // namespace kestro::stepwise
