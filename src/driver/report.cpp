// The texts of the run report.
//
// Column widths are part of the texts: other programs read these lines.

#include "driver/report.h"

#include <algorithm>
#include <charconv>
#include <climits>
#include <iterator>
#include <string>

namespace kestro {

static const char stars[] =
    "*******************************************************";

namespace {

// What the header says of the transactions.
struct transaction_totals {
  long long edges = 0;
  long long vertices = 0;
  int max_edges = 0;
  int max_vertices = 0;
};

} // namespace

static transaction_totals sum_up(const database &db) {
  transaction_totals totals;
  for (int i = 0; i < db.size(); i++) {
    const graph_view t = db[i];
    totals.edges += t.edges();
    totals.vertices += t.vertices();
    totals.max_edges = std::max(totals.max_edges, t.edges());
    totals.max_vertices = std::max(totals.max_vertices, t.vertices());
  }
  return totals;
}

// A number as printf would give it, but with a point in every locale.
static std::string decimal(double number, int digits) {
  char text[400]; // the largest number has 309 digits in front of the point
  const auto end = std::to_chars(std::begin(text), std::end(text), number,
                                 std::chars_format::fixed, digits);
  return std::string(text, end.ptr);
}

// An average to the nearest whole number; of nothing it is the division's "not
// a number", whose sign would otherwise depend on the machine.
static void print_average(long long sum, int count, FILE *out) {
  if (count == 0)
    fputs("-nan\n", out);
  else
    fprintf(out, "%s\n", decimal(static_cast<double>(sum) / count, 0).c_str());
}

static const char *yes_no(int flag) { return flag ? "Yes" : "No"; }

// clang-format off
static void print_transaction_information(const options *o,
                                          const database &db, FILE *out,
                                          const char *prefix) {
  const transaction_totals totals = sum_up(db);
  const int n = db.size();
  fprintf(out, "%sTransaction File Information --------------------------\n", prefix);
  fprintf(out, "%s  Transaction File Name:                       %s\n", prefix, o->input_file);
  fprintf(out, "%s  Number of Input Transactions:                %d\n", prefix, n);
  fprintf(out, "%s  Number of Distinct Edge Labels:              %d\n", prefix, db.label_set().edge_labels());
  fprintf(out, "%s  Number of Distinct Vertex Labels:            %d\n", prefix, db.label_set().vertex_labels());
  fprintf(out, "%s  Average Number of Edges In a Transaction:    ", prefix);
  print_average(totals.edges, n, out);
  fprintf(out, "%s  Average Number of Vertices In a Transaction: ", prefix);
  print_average(totals.vertices, n, out);
  fprintf(out, "%s  Max Number of Edges In a Transaction:        %d\n", prefix, totals.max_edges);
  fprintf(out, "%s  Max Number of Vertices In a Transaction:     %d\n", prefix, totals.max_vertices);
  fprintf(out, "%s\n", prefix);
}

static void print_options(const options *o, FILE *out, const char *prefix) {
  fprintf(out, "%sOptions -----------------------------------------------\n", prefix);
  fprintf(out, "%s  Min Output Pattern Size:                     %d\n", prefix, o->minsize);
  fprintf(out, "%s  Max Output Pattern Size:                     %d%s\n", prefix, o->maxsize,
          o->maxsize == INT_MAX ? "(INT_MAX)" : "");
  fprintf(out, "%s  Min Support Threshold:                       %s%% (%d transaction%s)\n", prefix,
          decimal(o->support, 1).c_str(), o->min_support_count, o->min_support_count == 1 ? "" : "s");
  fprintf(out, "%s  Generate Only Maximal Patterns:              %s\n", prefix, yes_no(o->maximal));
  fprintf(out, "%s  Generate PC-List:                            %s\n", prefix, yes_no(o->parent_children_list));
  fprintf(out, "%s  Generate TID-List:                           %s\n", prefix, yes_no(o->tid_list));
  fprintf(out, "%s\n", prefix);
}

static void print_outputs(const options *o, FILE *out, const char *prefix) {
  fprintf(out, "%sOutputs -----------------------------------------------\n", prefix);
  fprintf(out, "%s  Frequent Pattern File:                       %s\n", prefix, o->pattern_file.get());
  if (o->parent_children_list)
    fprintf(out, "%s  PC-List File:                                %s\n", prefix, o->pc_file.get());
  if (o->tid_list)
    fprintf(out, "%s  TID-List File:                               %s\n", prefix, o->tid_file.get());
  fprintf(out, "%s\n", prefix);
}

void print_header(const options *o, const database &db, FILE *out,
                  const char *prefix) {
  fprintf(out, "%s%s\n", prefix, stars);
  fprintf(out, "%skestro 1.34 (VESK 1.0)\n", prefix);
  fprintf(out, "%s\n", prefix);
  print_transaction_information(o, db, out, prefix);
  print_options(o, out, prefix);
  print_outputs(o, out, prefix);
  fflush(out);
}

void print_summary(const options *o, const statistics *s, FILE *out, const char *prefix) {
  const long long generated = stats_total(s, stats_candidates, o->minsize, o->maxsize);
  const long long found = stats_total(s, stats_frequent, o->minsize, o->maxsize);
  fprintf(out, "%s  Largest Frequent Pattern Size:               %d\n", prefix, stats_largest(s, stats_frequent));
  if (generated)
    fprintf(out, "%s  Total Number of Candidates Generated:        %lld\n", prefix, generated);
  fprintf(out, "%s  Total Number of Frequent Patterns Found:     %lld\n", prefix, found);
  fprintf(out, "%s\n", prefix);
  fflush(out);
}

void print_timing(double seconds, FILE *out, const char *prefix) {
  fprintf(out, "%sTiming Information ------------------------------------\n", prefix);
  fprintf(out, "%s  Elapsed User CPU Time:                       %s[sec]\n", prefix, decimal(seconds, 1).c_str());
  fprintf(out, "%s%s\n", prefix, stars);
  fflush(out);
}
// clang-format on

void print_table_heading(FILE *out, const char *prefix, int mask) {
  if (mask & column_size)
    fprintf(out, "%s  %-4s ", prefix, "Size");
  if (mask & column_candidates)
    fprintf(out, "%-10s ", "Candidates");
  if (mask & column_frequent)
    fprintf(out, "%-17s ", "Frequent Patterns");
  if (mask & column_line_end)
    fputc('\n', out);
  fflush(out);
}

void print_table_row(const statistics *s, int size, FILE *out,
                     const char *prefix, int mask) {
  if (mask & column_size)
    fprintf(out, "%s  %-4d ", prefix, size);
  if (mask & column_candidates) {
    if (size > 2)
      fprintf(out, "%-10d ", stats_get(s, stats_candidates, size));
    else
      fprintf(out, "%-10s ", "");
  }
  if (mask & column_frequent)
    fprintf(out, "%-17d ", stats_get(s, stats_frequent, size));
  if (mask & column_line_end)
    fputc('\n', out);
  fflush(out);
}

void print_size_table(const options *o, const statistics *s, int last,
                      FILE *out, const char *prefix, int mask) {
  bool headed = false;
  for (int size = std::max(1, o->minsize); size <= std::min(last, o->maxsize);
       size++) {
    if (size == last && stats_get(s, stats_candidates, size) == 0 &&
        stats_get(s, stats_frequent, size) == 0)
      break;
    if (!headed)
      print_table_heading(out, prefix, mask);
    headed = true;
    print_table_row(s, size, out, prefix, mask);
  }
  fprintf(out, "%s\n", prefix);
  fflush(out);
}

} // namespace kestro
