// Writing levels to the output files of a run.
#pragma once

#include <cstdio>

#include "graph/label_set.h"
#include "mining/sg_set.h"

namespace kestro {

// Every writer dies with "no output file specified" when handed no stream, and
// flushes it at the end.

// Per record "t # SIZE-ID, COUNT" and the lines of its graph.
void sg_set_write_patterns(const sg_set *set, const label_set *ls,
                           FILE *stream);
// Per record a line "SIZE-ID TID TID ...".
void sg_set_write_tid_list(const sg_set *set, FILE *stream);
// Per record a line "SIZE-ID PARENT PARENT ...", parents as SIZE-ID.
void sg_set_write_pc_list(const sg_set *set, FILE *stream);

} // namespace kestro
