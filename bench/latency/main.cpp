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

#include <kestro/kestro.h>

namespace kestro {

namespace {

using clock = std::chrono::steady_clock;
using seconds = std::chrono::duration<double>;

struct settings {
  const char *file;
  const char *support;
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

// Notes what a run is doing.
class observer : public listener {
public:
  explicit observer(current_step *step) : step_(step) {}
  void on_level(const level &) override { levels++; }
  void on_progress(const progress &now) override {
    static constexpr const char *names[] = {"joining", "bounding", "counting",
                                            "complete"};
    step_->enter(names[static_cast<int>(now.at)] + (' ' + text(now.size)) +
                 ' ' + text(now.done) + '/' + text(now.known));
  }

  int levels = 0; // received

private:
  static std::string text(long long number) { return std::to_string(number); }
  current_step *step_;
};

} // namespace

// Mines until stop says to end; returns how many levels were received.
static int mine_until(const database &db, const settings &s, int jobs,
                      std::stop_token stop, current_step *step) {
  mine_options options;
  options.support = minimum_support::percentage(atof(s.support));
  options.max_size = s.maxsize;
  options.jobs = jobs;
  options.stop = std::move(stop);
  observer seen(step);
  mine(db, options, seen);
  return seen.levels;
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
  const int levels = mine_until(db, s, jobs, source.get_token(), &step);
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
  mine_until(db, s, jobs, {}, &step);
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
    const kestro::database db = kestro::database::read(argv[1]);
    const kestro::settings s = {argv[1], argv[2], atoi(argv[3]), atoi(argv[4])};
    puts("date\tdatabase\tsupport\tmaxsize\tjobs\tmoment_s\tlatency_s\tcpu_s\t"
         "levels\tduring");
    for (int i = 5; i < argc; i++)
      kestro::measure(db, s, atoi(argv[i]));
  } catch (const kestro::error &e) {
    fprintf(stderr, "%s\n", e.what());
    return 1;
  }
}
