// One whole run, from the settings to the closed output files.
#pragma once

#include <cstdio>

#include <kestro/kestro.h>

#include "driver/options.h"

namespace kestro {

// Mines o->input_file as o says: writes the output files beside it and the
// report to out; with o->save_labels only writes the label file.  Returns when
// all of that has been written whole; dies with "can't write a file" otherwise,
// also when an output is the input or a pipe, or another run is writing it.
// The name of the input must not hold a newline.  Runs in different threads do
// not disturb one another; the CPU time they report is the process's.
mining_summary run_kestro(options *o, FILE *out);

// The support asked for on the command line: what is below 0 or no number is
// none, what is above 100 is all.
minimum_support clamped_support(double per_cent);

// The part of a run behind the reading.
mining_summary mine_frequent_subgraphs(const database &db, options *o,
                                       FILE *out);

} // namespace kestro
