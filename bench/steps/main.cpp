// kestro_steps JOBS SUPPORT FILE
//
// Mines FILE at SUPPORT per cent on JOBS threads, writes the pattern file
// beside it as the program does, and prints what each step of the search took,
// reading not among them: wall time, CPU time of the first thread, which alone
// does what is not spread, and CPU time of all threads.  A step begins where
// the listener is told that the one before it has ended.

#include <malloc.h>

#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>

#include <kestro/kestro.h>

#include "base/output_lock.h"
#include "driver/level_files.h"
#include "driver/options.h"
#include "driver/run.h"

namespace kestro {

namespace {

enum class step { first_levels, joining, bounding, counting, writing };

constexpr std::array<const char *, 5> step_names = {
    "first levels", "joining", "bounding", "counting", "writing"};

// Seconds since some moment.
struct moment {
  double wall;
  double first; // CPU time of the thread that asks
  double all;   // CPU time of the process
};

double read_clock(clockid_t clock) {
  timespec t;
  clock_gettime(clock, &t);
  return static_cast<double>(t.tv_sec) + 1e-9 * static_cast<double>(t.tv_nsec);
}

moment now() {
  return {read_clock(CLOCK_MONOTONIC), read_clock(CLOCK_THREAD_CPUTIME_ID),
          read_clock(CLOCK_PROCESS_CPUTIME_ID)};
}

// Sums up what the steps take, of which one is going on at any moment.
class step_clock {
public:
  void enter(step next) {
    const moment t = now();
    moment *sum = &sums_[static_cast<size_t>(step_)];
    sum->wall += t.wall - since_.wall;
    sum->first += t.first - since_.first;
    sum->all += t.all - since_.all;
    since_ = t;
    step_ = next;
  }
  void print() const {
    puts("step\twall_s\tfirst_s\tall_s");
    for (size_t i = 0; i < sums_.size(); i++)
      printf("%s\t%.4f\t%.4f\t%.4f\n", step_names[i], sums_[i].wall,
             sums_[i].first, sums_[i].all);
  }

private:
  std::array<moment, step_names.size()> sums_ = {};
  moment since_ = now();
  step step_ = step::first_levels;
};

class timed_listener : public listener {
public:
  timed_listener(const output_streams *o, step_clock *clock)
      : files_(o), clock_(clock) {}

  // Asked once the candidates of a size are there, before they are bounded.
  bool wants_candidates() const override {
    clock_->enter(step::bounding);
    return false;
  }
  void on_level(const level &found) override {
    clock_->enter(step::writing);
    files_.write_level(found);
  }
  void on_progress(const progress &p) override {
    if (p.at == progress::step::complete)
      clock_->enter(p.size < 2 ? step::first_levels : step::joining);
    else if (p.at == progress::step::counting && p.done == 0)
      clock_->enter(step::counting);
  }

private:
  level_files files_;
  step_clock *clock_;
};

} // namespace

static void measure(int jobs, double support, const char *file) {
  options o;
  o.input_file = file;
  const database db = database::read(file);
  const xvector<output_lock> locks = open_outputs(&o, stdout);
  mine_options what;
  what.support = clamped_support(support);
  what.jobs = jobs;
  step_clock clock;
  timed_listener listener(&o, &clock);
  mine(db, what, listener);
  clock.enter(step::writing);
  close_outputs(&o);
  clock.enter(step::writing);
  clock.print();
}

} // namespace kestro

int main(int argc, char **argv) {
  if (argc != 4) {
    fprintf(stderr, "Usage: %s JOBS SUPPORT FILE\n", argv[0]);
    return 2;
  }
#ifdef __GLIBC__
  mallopt(M_MMAP_THRESHOLD, 1 << 18); // as the program has it
#endif
  try {
    kestro::measure(atoi(argv[1]), atof(argv[2]), argv[3]);
  } catch (const kestro::error &e) {
    fprintf(stderr, "%s\n", e.what());
    return 1;
  }
}
