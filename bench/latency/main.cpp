// kestro_latency FILE SUPPORT MAXSIZE MOMENTS JOBS...
//
// How long a run goes on after it has been asked to stop.  For each number of
// threads FILE is mined once to the end, at SUPPORT per cent up to MAXSIZE
// edges, then MOMENTS times with a request at moments spread evenly over the
// time that took.  One row of a table per request goes to standard output, the
// largest latency per number of threads to standard error.  The latency ends
// when all memory of the run has been freed, but for the transactions; the CPU
// time spent meanwhile tells what it would be on a quiet machine.

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <mutex>
#include <stop_token>
#include <string>
#include <thread>
#include <utility>

#include "base/error.h"
#include "base/file_text.h"
#include "base/interruption.h"
#include "driver/level_loop.h"
#include "driver/run.h"
#include "driver/transaction_counter.h"
#include "graph/label_set.h"
#include "graph/transactions.h"

namespace kestro {

namespace {

using clock = std::chrono::steady_clock;
using seconds = std::chrono::duration<double>;

struct database {
  label_set_ptr labels;
  graph_list_ptr transactions;

  explicit database(const char *file) : labels(label_set_create()) {
    label_set_build(file, labels.get());
    transactions.reset(graph_read_transactions(file, labels.get()));
  }
};

struct settings {
  const char *file;
  const char *support;
  int minsup;
  int maxsize;
  int moments;
};

// The last step that a run entered; told to the thread that stops it.
class current_step {
public:
  void enter(std::string step) {
    const std::lock_guard lock(mutex_);
    step_ = std::move(step);
  }
  std::string get() {
    const std::lock_guard lock(mutex_);
    return step_;
  }

private:
  std::mutex mutex_;
  std::string step_ = "prepare";
};

// Follows a run through its seams; all counting is left to the real counter.
class observer : public level_receiver,
                 public candidate_counter,
                 public progress_listener {
public:
  observer(transaction_counter *counter, current_step *step)
      : counter_(counter), step_(step) {}

  void candidates(const sg_set *set) override {
    size_++;
    patterns_ = sg_set_size(set);
  }
  void level(const sg_set *set) override {
    levels++;
    size_ = std::max(size_, levels);
    patterns_ = sg_set_size(set);
    enter("generate");
  }
  sg_set_ptr edges() override {
    enter("edges");
    return counter_->edges();
  }
  sg_set_ptr double_edges(const sg_set *edges) override {
    enter("paths");
    return counter_->double_edges(edges);
  }
  void bound(sg_set *cand, const sg_set *prev) override {
    enter("bound");
    counter_->bound(cand, prev);
    patterns_ = sg_set_size(cand);
  }
  void count(sg_set *cand, const sg_set *prev) override {
    enter("count");
    counter_->count(cand, prev);
    patterns_ = sg_set_size(cand);
    enter("register");
  }
  void candidates(int) override {}
  void level(int) override {}

  int levels = 0; // received

private:
  // A step, the size it works on, and how many records that starts with.
  void enter(const char *step) {
    step_->enter(std::string(step) + " " + std::to_string(size_) + " " +
                 std::to_string(patterns_));
  }

  transaction_counter *counter_;
  current_step *step_;
  int size_ = 0;
  int patterns_ = 0;
};

} // namespace

// Mines until stop says to end; returns how many levels were received.
static int mine(const database &db, const settings &s, int jobs,
                const interruption *stop, current_step *step) {
  int levels = 0;
  try {
    transaction_counter counter(
        db.transactions.get(), label_set_edge_labels(db.labels.get()),
        label_set_vertex_labels(db.labels.get()), s.minsup, jobs, stop);
    observer seams(&counter, step);
    statistics stats;
    stats_init(&stats);
    const mining_run run = {1,      s.maxsize, {.jobs = jobs}, &seams,
                            &seams, &seams,    &stats,         stop};
    try {
      mine_levels(&run);
    } catch (const interrupted &) {
      levels = seams.levels;
      throw;
    }
    levels = seams.levels;
  } catch (const interrupted &) {
  }
  return levels;
}

// The CPU time of the process, which other processes do not disturb.
static double process_time() {
  timespec t;
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &t);
  return static_cast<double>(t.tv_sec) + 1e-9 * static_cast<double>(t.tv_nsec);
}

static std::string date() {
  char text[32];
  const time_t t = time(nullptr);
  tm utc;
  strftime(text, sizeof text, "%FT%TZ", gmtime_r(&t, &utc));
  return text;
}

// Asks a run to stop at that moment; returns the latency.
static double stop_at(double moment, const database &db, const settings &s,
                      int jobs) {
  std::stop_source source;
  const interruption stop(source.get_token());
  current_step step;
  clock::time_point asked;
  double cpu = 0;
  std::string during;
  const clock::time_point start = clock::now();
  std::jthread stopper([&] {
    std::this_thread::sleep_until(
        start + std::chrono::duration_cast<clock::duration>(seconds(moment)));
    during = step.get();
    cpu = process_time();
    asked = clock::now();
    source.request_stop();
  });
  const int levels = mine(db, s, jobs, &stop, &step);
  const clock::time_point ended = clock::now();
  const double cpu_ended = process_time();
  stopper.join();
  const double latency = std::max(0.0, seconds(ended - asked).count());
  printf("%s\t%s\t%s\t%d\t%d\t%.4f\t%.4f\t%.4f\t%d\t%s\n", date().c_str(),
         s.file, s.support, s.maxsize, jobs, moment, latency,
         std::max(0.0, cpu_ended - cpu), levels, during.c_str());
  fflush(stdout);
  return latency;
}

static void measure(const database &db, const settings &s, int jobs) {
  const clock::time_point start = clock::now();
  current_step step;
  const interruption never;
  mine(db, s, jobs, &never, &step);
  const double whole = seconds(clock::now() - start).count();
  double largest = 0;
  for (int i = 0; i < s.moments; i++)
    largest =
        std::max(largest, stop_at(whole * (i + 0.5) / s.moments, db, s, jobs));
  fprintf(stderr, "%s: %d threads, whole run %.3f s, largest latency %.4f s\n",
          s.file, jobs, whole, largest);
}

} // namespace kestro

int main(int argc, char **argv) {
  if (argc < 6) {
    fprintf(stderr, "Usage: %s FILE SUPPORT MAXSIZE MOMENTS JOBS...\n",
            argv[0]);
    return 2;
  }
  try {
    const kestro::database db(argv[1]);
    const kestro::settings s = {
        argv[1], argv[2],
        kestro::min_support_count(atof(argv[2]), db.transactions->count),
        atoi(argv[3]), atoi(argv[4])};
    puts("date\tdatabase\tsupport\tmaxsize\tjobs\tmoment_s\tlatency_"
         "s\tlevels\tduring");
    for (int i = 5; i < argc; i++)
      kestro::measure(db, s, atoi(argv[i]));
  } catch (const kestro::fatal_error &error) {
    fputs(error.what(), stderr);
    return 1;
  }
}
