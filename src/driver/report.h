// The run report: header, table of sizes, summary and timing.
#pragma once

#include <cstdio>

#include <kestro/database.h>

#include "driver/options.h"
#include "mining/statistics.h"

namespace kestro {

// Every line starts with prefix: "" on standard output, "# " in the pattern
// file.  Every block flushes its stream.

// Columns of the table, as bits.
constexpr int column_size = 1;
constexpr int column_candidates = 2;
constexpr int column_frequent = 4;
constexpr int column_line_end = 32;
// Masks of rows; bits 8 and 16 have no column.
constexpr int mask_full = 63;
constexpr int mask_candidate_half = 3; // size and candidates, line left open
constexpr int mask_frequent_half = 60; // the rest of that line
constexpr int mask_maximal = 37;

void print_header(const options *o, const database &db, FILE *out,
                  const char *prefix);

void print_table_heading(FILE *out, const char *prefix, int mask);
void print_table_row(const statistics *s, int size, FILE *out,
                     const char *prefix, int mask);
// The rows of the reported sizes up to last, headed, and an empty line; a last
// size of which nothing was counted is left out.
void print_size_table(const options *o, const statistics *s, int last,
                      FILE *out, const char *prefix, int mask);

void print_summary(const options *o, const statistics *s, FILE *out,
                   const char *prefix);
void print_timing(double seconds, FILE *out, const char *prefix);

} // namespace kestro
