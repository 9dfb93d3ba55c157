// One whole run, from the settings to the closed output files.
#pragma once

#include <cstdio>

#include "base/ksstack.h"
#include "driver/options.h"
#include "graph/label_set.h"

namespace kestro {

// Mines o->input_file as o says: writes the output files beside it and the
// report to out; with o->save_labels only writes the label file.  Returns when
// all of that has been written whole; dies with "can't write a file" otherwise,
// also when an output is the input or a pipe, or another run is writing it.
// The name of the input must not hold a newline.  Runs in different threads do
// not disturb one another; the CPU time they report is the process's.
void run_kestro(options *o, FILE *out);

// The minimum support as a number of transactions, for a support in per cent of
// n transactions: rounded, and kept within 1 and n (1 when n is 0).
int min_support_count(double support, int n);

// The part of a run behind the reading: transactions is a graph list, its
// labels are numbered by ls, o->min_support_count is set.
void mine_frequent_subgraphs(const ksstack *transactions, const label_set *ls,
                             options *o, FILE *out);

} // namespace kestro
