// The run: labels, transactions, mining, report.
//
// The report goes to the stream given and, behind "# ", to the head and foot of
// the pattern file.  A run for maximal patterns mines and writes everything
// first, then reduces the files and reports what is left.

#include "driver/run.h"

#include <cmath>
#include <cstring>
#include <utility>

#include "base/error.h"
#include "base/file_identity.h"
#include "base/output_file.h"
#include "base/output_lock.h"
#include "driver/level_files.h"
#include "driver/level_loop.h"
#include "driver/live_table.h"
#include "driver/report.h"
#include "driver/transaction_counter.h"
#include "graph/transactions.h"
#include "mining/maximal.h"
#include "mining/statistics.h"

namespace kestro {

// The name asked for, or else input_file's with suffix ".ls".
static const char *label_file_name(const char *asked, const options *o,
                                   xptr<char> *derived) {
  if (asked)
    return asked;
  *derived = make_output_name(o->input_file, ".ls");
  return derived->get();
}

// The label set; the input, unless it is not needed for that, is in *input.
static label_set_ptr obtain_labels(const options *o, file_text *input) {
  if (o->load_labels) {
    xptr<char> derived;
    return label_set_ptr(
        label_set_load(label_file_name(o->load_labels_file, o, &derived)));
  }
  label_set_ptr ls(label_set_create());
  *input = read_file(o->input_file);
  label_set_build(*input, ls.get());
  return ls;
}

static graph_list_ptr obtain_transactions(const options *o, file_text input,
                                          const label_set *ls) {
  if (!input.bytes)
    input = read_file(o->input_file);
  return graph_list_ptr(graph_read_transactions(input, ls));
}

// Writes the label file, which may be the one that was read.
static void save_labels(const options *o, const label_set *ls) {
  xptr<char> derived;
  const char *name = label_file_name(o->save_labels_file, o, &derived);
  const file_identity output(name);
  xptr<char> source; // name of the label file read
  if (!o->load_labels || !output.is_same(file_identity(
                             label_file_name(o->load_labels_file, o, &source))))
    refuse_input(output, name, o);
  const output_lock lock(name);
  label_set_save(ls, name);
}

int min_support_count(double support, int n) {
  // Extended precision decides which supports fall just short of a count.
  const long double count =
      truncl(static_cast<long double>(support) / 100.0L * n + 0.5L);
  if (std::isnan(count))
    return 1;
  const long double capped = count > n ? n : count;
  return capped < 1 ? 1 : static_cast<int>(capped);
}

// A name with a newline would write lines of its own into the head of the
// pattern file, which are read as patterns.
static void check_name(const char *name) {
  if (strchr(name, '\n'))
    throw fatal_error("the name of the input holds a newline\n");
}

void run_kestro(options *o, FILE *out) {
  check_name(o->input_file);
  if (o->maximal)
    o->parent_children_list = 1; // the selection reads the PC list
  file_text input;
  const label_set_ptr ls = obtain_labels(o, &input);
  if (o->save_labels) {
    save_labels(o, ls.get());
    return;
  }
  const graph_list_ptr transactions =
      obtain_transactions(o, std::move(input), ls.get());
  o->min_support_count = min_support_count(o->support, transactions->count);
  mine_frequent_subgraphs(transactions.get(), ls.get(), o, out);
}

// Table, summary and timing, as they stand at the foot of the report.
static void print_foot(const options *o, const statistics *s, int last,
                       int mask, double seconds, FILE *out,
                       const char *prefix) {
  print_size_table(o, s, last, out, prefix, mask);
  print_summary(o, s, out, prefix);
  print_timing(seconds, out, prefix);
}

// Reduces the closed output files to the maximal patterns and reports them.
static void finish_maximal(const label_set *ls, const options *o, statistics *s,
                           int last, double seconds, FILE *out) {
  select_maximal_patterns(ls, o->minsize, o->maximal, o->parent_children_list,
                          o->tid_list, o->pattern_file.get(), o->pc_file.get(),
                          o->tid_file.get(), s);
  file_ptr patterns(open_file(o->pattern_file.get(), "a"));
  print_foot(o, s, last, mask_maximal, seconds, out, "");
  print_foot(o, s, last, mask_maximal, seconds, patterns.get(), "# ");
  close_output(std::move(patterns), o->pattern_file.get());
}

// The live table has shown the rows on out already.
static void finish_report(const options *o, const statistics *s, int last,
                          double seconds, FILE *out) {
  fputc('\n', out);
  print_summary(o, s, out, "");
  print_timing(seconds, out, "");
  print_foot(o, s, last, mask_full, seconds, o->pattern_stream.get(), "# ");
}

void mine_frequent_subgraphs(const ksstack *transactions, const label_set *ls,
                             options *o, FILE *out) {
  statistics stats;
  stats_init(&stats);
  const xvector<output_lock> locks = open_outputs(o, out);
  print_header(o, transactions, ls, out, "");
  print_header(o, transactions, ls, o->pattern_stream.get(), "# ");
  flush_output(out, standard_output);
  flush_output(o->pattern_stream.get(), o->pattern_file.get());

  level_files files(o, ls);
  transaction_counter counter(transactions, label_set_edge_labels(ls),
                              label_set_vertex_labels(ls), o->min_support_count,
                              o->jobs);
  live_table table(out, o->maximal, &stats);
  const mining_run run = {
      o->minsize, o->maxsize, {o->jobs, o->stabilizer_threshold, o->kind},
      &files,     &counter,   &table,
      &stats};
  const double start = user_cpu_time();
  const int last = mine_levels(&run);
  const double seconds = user_cpu_time() - start;
  o->order_dependent = stats.order_dependent;

  if (!o->maximal)
    finish_report(o, &stats, last, seconds, out);
  close_outputs(o);
  if (o->maximal)
    finish_maximal(ls, o, &stats, last, seconds, out);
  flush_output(out, standard_output);
}

} // namespace kestro
