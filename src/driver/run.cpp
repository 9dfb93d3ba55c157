// The run: labels, transactions, mining, report.
//
// The report goes to the stream given and, behind "# ", to the head and foot of
// the pattern file.  A run for maximal patterns mines and writes everything
// first, then reduces the files and reports what is left.

#include "driver/run.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <utility>

#include "base/cpu_time.h"
#include "base/error.h"
#include "base/file_identity.h"
#include "base/open_file.h"
#include "base/output_file.h"
#include "base/output_lock.h"
#include "driver/level_files.h"
#include "driver/live_table.h"
#include "driver/report.h"
#include "library/access.h"
#include "mining/maximal.h"
#include "mining/statistics.h"

namespace kestro {

// The name the caller asked for; when asked is null, the name of o->input_file
// with suffix ".ls", stored in *derived.
static const char *label_file_name(const char *asked, const options *o,
                                   xptr<char> *derived) {
  if (asked)
    return asked;
  *derived = make_output_name(o->input_file, ".ls");
  return derived->get();
}

static labels load_labels(const options *o) {
  xptr<char> derived;
  return labels::of_label_file(
      label_file_name(o->load_labels_file, o, &derived));
}

static database obtain_database(const options *o) {
  if (o->load_labels)
    return database::read(o->input_file, load_labels(o));
  return database::read(o->input_file);
}

// Writes the label file, which may be the one that was read.
static void save_labels(const options *o) {
  const labels all =
      o->load_labels ? load_labels(o) : labels::of_transactions(o->input_file);
  xptr<char> derived;
  const char *name = label_file_name(o->save_labels_file, o, &derived);
  const file_identity output(name);
  xptr<char> source; // name of the label file read
  if (!o->load_labels || !output.is_same(file_identity(
                             label_file_name(o->load_labels_file, o, &source))))
    refuse_input(output, name, o);
  const output_lock lock(name);
  label_set_save(access::label_set(all), name);
}

minimum_support clamped_support(double per_cent) {
  if (std::isnan(per_cent))
    return minimum_support::percentage(0);
  return minimum_support::percentage(std::clamp(per_cent, 0.0, 100.0));
}

// The head of the pattern file holds the name of the input.  A newline in it
// would begin a line that readers take for part of a pattern.
static void check_name(const char *name) {
  if (strchr(name, '\n'))
    throw fatal_error("the name of the input holds a newline\n");
}

mining_summary run_kestro(options *o, FILE *out) {
  check_name(o->input_file);
  if (o->maximal)
    o->parent_children_list = 1; // the selection reads the PC list
  if (o->save_labels) {
    save_labels(o);
    return {};
  }
  return mine_frequent_subgraphs(obtain_database(o), o, out);
}

static statistics statistics_of(const mining_summary &found) {
  statistics stats;
  stats_init(&stats);
  for (int size = 0; size <= found.last_size; size++) {
    const auto &counts = found.sizes[static_cast<size_t>(size)];
    stats_set(&stats, stats_candidates, size,
              static_cast<int>(counts.candidates));
    stats_set(&stats, stats_frequent, size, static_cast<int>(counts.frequent));
  }
  return stats;
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
static void finish_maximal(const database &db, const options *o, statistics *s,
                           int last, double seconds, FILE *out) {
  select_maximal_patterns(access::label_set(db), o->minsize, o->maximal,
                          o->parent_children_list, o->tid_list,
                          o->pattern_file.get(), o->pc_file.get(),
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

namespace {

// Writes the files and shows the table as the run goes on.
class run_listener : public listener {
public:
  run_listener(const options *o, FILE *out)
      : files_(o), table_(o, out), o_(o) {}

  bool wants_candidates() const override { return o_->candidates; }
  void on_candidates(const level &generated) override {
    files_.write_candidates(generated);
  }
  void on_level(const level &found) override { files_.write_level(found); }
  void on_progress(const progress &now) override { table_.show(now); }

private:
  level_files files_;
  live_table table_;
  const options *o_;
};

} // namespace

static mine_options mining_options(const options *o) {
  mine_options m;
  m.support = clamped_support(o->support);
  m.min_size = o->minsize;
  m.max_size = o->maxsize;
  m.jobs = o->jobs;
  m.kind = o->kind;
  m.stabilizer_threshold = o->stabilizer_threshold;
  return m;
}

mining_summary mine_frequent_subgraphs(const database &db, options *o,
                                       FILE *out) {
  const mine_options what = mining_options(o);
  o->min_support_count = what.support.graphs(db.size());
  const xvector<output_lock> locks = open_outputs(o, out);
  print_header(o, db, out, "");
  print_header(o, db, o->pattern_stream.get(), "# ");
  flush_output(out, standard_output);
  flush_output(o->pattern_stream.get(), o->pattern_file.get());

  run_listener listener(o, out);
  const double start = user_cpu_time();
  mining_summary found = mine(db, what, listener);
  const double seconds = user_cpu_time() - start;

  statistics stats = statistics_of(found);
  if (!o->maximal)
    finish_report(o, &stats, found.last_size, seconds, out);
  close_outputs(o);
  if (o->maximal)
    finish_maximal(db, o, &stats, found.last_size, seconds, out);
  flush_output(out, standard_output);
  return found;
}

} // namespace kestro
