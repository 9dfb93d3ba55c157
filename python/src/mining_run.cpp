// Mining on a thread of its own.
//
// The thread that called waits without the global lock.  Twenty times a second
// it takes the lock, lets Python handle signals, and tells the callback how far
// the run is.  What either raises requests the stop, and is handed back beside
// the levels that were complete.  The mining thread never takes the lock.

#include "mining_run.h"

#include <chrono>
#include <condition_variable>
#include <exception>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <stop_token>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <unistd.h>

#include <kestro/kestro.h>

#include <nanobind/stl/optional.h>
#include <nanobind/stl/string.h>

#include "arrays.h"
#include "packed_patterns.h"

namespace kestro_python {

static constexpr auto wake_up = std::chrono::milliseconds(50);

namespace {

// What the mining thread leaves for the one that waits.
class mailbox {
public:
  void put(const kestro::progress &now) {
    const std::lock_guard lock(mutex_);
    if (now.at == kestro::progress::step::complete)
      complete_.push_back(now);
    else
      latest_ = now;
  }

  void end() {
    // Notified under the lock: once it is given back the waiting thread may
    // end this object.
    const std::lock_guard lock(mutex_);
    ended_ = true;
    changed_.notify_one();
  }

  // Waits for the end, or for the time after which it is to be looked.
  bool wait() {
    std::unique_lock lock(mutex_);
    return changed_.wait_for(lock, wake_up, [this] { return ended_; });
  }

  // What came since the last call: every size that is complete, and of the
  // other steps the last one, if it belongs to a later size.
  std::vector<kestro::progress> take() {
    const std::lock_guard lock(mutex_);
    std::vector<kestro::progress> news = std::exchange(complete_, {});
    if (latest_ && (news.empty() || latest_->size > news.back().size))
      news.push_back(*latest_);
    latest_.reset();
    return news;
  }

private:
  std::mutex mutex_;
  std::condition_variable changed_;
  bool ended_ = false;
  std::vector<kestro::progress> complete_;
  std::optional<kestro::progress> latest_;
};

class packing_listener : public kestro::listener {
public:
  packing_listener(packed_patterns *found, mailbox *progress)
      : found_(found), progress_(progress) {}
  void on_level(const kestro::level &found) override { found_->add(found); }
  void on_progress(const kestro::progress &now) override {
    if (progress_)
      progress_->put(now);
  }

private:
  packed_patterns *found_;
  mailbox *progress_; // null when nobody asks
};

// What is run: one of the library's ways to mine, and what it works on.
using miner = std::function<kestro::mining_summary(const kestro::mine_options &,
                                                   kestro::listener &)>;

// A run and its thread.
class mining_run {
public:
  mining_run(miner mine, const kestro::mine_options &options,
             bool with_progress)
      : mine_(std::move(mine)), options_(options),
        with_progress_(with_progress) {
    options_.stop = stop_.get_token();
    thread_ = std::thread([this] { work(); });
  }
  ~mining_run() {
    if (thread_.joinable()) {
      stop_.request_stop();
      thread_.join();
    }
  }
  mining_run(const mining_run &) = delete;
  mining_run &operator=(const mining_run &) = delete;

  mailbox *box() { return &box_; }
  void request_stop() { stop_.request_stop(); }

  // Waits for the thread; throws what ended it.
  const kestro::mining_summary &join() {
    thread_.join();
    if (failure_)
      std::rethrow_exception(failure_);
    return summary_;
  }
  nb::dict hand_over(bool with_tids) { return found_.hand_over(with_tids); }

private:
  void work() {
    try {
      packing_listener listener(&found_, with_progress_ ? &box_ : nullptr);
      summary_ = mine_(options_, listener);
    } catch (...) {
      failure_ = std::current_exception();
    }
    box_.end();
  }

  miner mine_;
  kestro::mine_options options_;
  bool with_progress_;
  std::stop_source stop_;
  mailbox box_;
  packed_patterns found_;
  kestro::mining_summary summary_;
  std::exception_ptr failure_;
  std::thread thread_; // last: it uses all of the above
};

// Runs Python code in between: signal handlers and the callback.
class python_side {
public:
  python_side(nb::object callback, mailbox *box)
      : callback_(std::move(callback)), box_(box) {}

  // False once something was raised, which is kept.
  bool look() {
    if (raised_.is_valid())
      return false;
    try {
      if (PyErr_CheckSignals() != 0)
        throw nb::python_error();
      deliver();
    } catch (nb::python_error &e) {
      raised_ = nb::borrow(e.value());
      return false;
    }
    return true;
  }

  nb::object raised() const {
    return raised_.is_valid() ? raised_ : nb::none();
  }

private:
  static const char *name_of(kestro::progress::step step) {
    switch (step) {
    case kestro::progress::step::joining:
      return "joining";
    case kestro::progress::step::bounding:
      return "bounding";
    case kestro::progress::step::counting:
      return "counting";
    case kestro::progress::step::complete:
      break;
    }
    return "complete";
  }

  void deliver() {
    if (callback_.is_none())
      return;
    for (const kestro::progress &p : box_->take())
      callback_(p.size, name_of(p.at), p.done, p.known, p.candidates);
  }

  nb::object callback_;
  mailbox *box_;
  nb::object raised_;
};

} // namespace

static const char *name_of(kestro::ending why) {
  switch (why) {
  case kestro::ending::complete:
    return "complete";
  case kestro::ending::max_size:
    return "max_size";
  case kestro::ending::pattern_limit:
    return "max_patterns";
  case kestro::ending::time_limit:
    return "time_limit";
  case kestro::ending::stopped:
    break;
  }
  return "stopped";
}

static kestro::minimum_support support_of(const std::string &unit,
                                          double amount) {
  if (unit == "count")
    return kestro::minimum_support::count(static_cast<int>(amount));
  if (unit == "fraction")
    return kestro::minimum_support::fraction(amount);
  return kestro::minimum_support::percentage(amount);
}

static nb::dict dict_of(const kestro::mining_summary &s) {
  std::vector<int64_t> candidates;
  std::vector<int64_t> frequent;
  for (const auto &counts : s.sizes) {
    candidates.push_back(counts.candidates);
    frequent.push_back(counts.frequent);
  }
  nb::dict d;
  d["ending"] = name_of(s.why);
  d["min_support"] = s.min_support;
  d["last_size"] = s.last_size;
  d["order_dependent"] = s.order_dependent;
  d["candidates"] = array_of(std::move(candidates));
  d["frequent"] = array_of(std::move(frequent));
  return d;
}

// Waits until the run has ended.  Where the callback forks, the child has no
// mining thread; its copy of the run is given up, because there is nobody to
// wait for, and locks may be held by that thread for ever.
static void wait_for_end(std::unique_ptr<mining_run> *run,
                         python_side *python) {
  const pid_t process = getpid();
  for (;;) {
    bool ended;
    {
      const nb::gil_scoped_release free;
      ended = (*run)->box()->wait();
    }
    if (ended)
      return;
    const bool goes_on = python->look();
    if (getpid() != process) {
      static_cast<void>(run->release());
      throw std::runtime_error("the process was forked while it was mining");
    }
    if (!goes_on)
      (*run)->request_stop();
  }
}

static kestro::mine_options options_of(const std::string &unit, double amount,
                                       int min_size,
                                       std::optional<int> max_size, int jobs,
                                       bool exact,
                                       std::optional<double> time_limit,
                                       std::optional<long long> pattern_limit) {
  kestro::mine_options options;
  options.support = support_of(unit, amount);
  options.min_size = min_size;
  options.max_size = max_size;
  options.jobs = jobs;
  options.kind = exact ? kestro::form::exact : kestro::form::prescribed;
  if (time_limit)
    options.time_limit = std::chrono::duration<double>(*time_limit);
  options.pattern_limit = pattern_limit;
  return options;
}

static nb::tuple run_to_end(miner mine, const kestro::mine_options &options,
                            nb::object callback, bool with_tids) {
  auto run = std::make_unique<mining_run>(std::move(mine), options,
                                          !callback.is_none());
  python_side python(std::move(callback), run->box());
  wait_for_end(&run, &python);
  const kestro::mining_summary &summary = run->join();
  python.look(); // what came since
  return nb::make_tuple(run->hand_over(with_tids), dict_of(summary),
                        python.raised());
}

static nb::tuple mine(const kestro::database &db, const std::string &unit,
                      double amount, int min_size, std::optional<int> max_size,
                      int jobs, bool exact, std::optional<double> time_limit,
                      std::optional<long long> pattern_limit,
                      nb::object callback) {
  return run_to_end(
      [db](const kestro::mine_options &options, kestro::listener &to) {
        return kestro::mine(db, options, to);
      },
      options_of(unit, amount, min_size, max_size, jobs, exact, time_limit,
                 pattern_limit),
      std::move(callback), true);
}

static nb::tuple mine_known(const kestro::database &patterns,
                            input<int32_t> supports, int graphs,
                            int min_support, int min_size,
                            std::optional<int> max_size, int jobs,
                            std::optional<double> time_limit,
                            std::optional<long long> pattern_limit,
                            nb::object callback) {
  std::vector<int> known(supports.data(), supports.data() + supports.size());
  return run_to_end(
      [patterns, known = std::move(known),
       graphs](const kestro::mine_options &options, kestro::listener &to) {
        return kestro::mine_known(patterns, known, graphs, options, to);
      },
      options_of("count", min_support, min_size, max_size, jobs, true,
                 time_limit, pattern_limit),
      std::move(callback), false);
}

static nb::tuple mine_sought(const kestro::database &db,
                             const kestro::database &patterns, int jobs) {
  return run_to_end(
      [db, patterns](const kestro::mine_options &options,
                     kestro::listener &to) {
        return kestro::mine_sought(db, patterns, options, to);
      },
      options_of("count", 1, 1, std::nullopt, jobs, true, std::nullopt,
                 std::nullopt),
      nb::none(), true);
}

// What all return, as a stub tells it.
#define KESTRO_PACKED_RUN                                                      \
  "tuple[dict[str, numpy.typing.NDArray[typing.Any]], dict[str, typing.Any], " \
  "BaseException | None]"
#define KESTRO_CALLBACK                                                        \
  "collections.abc.Callable[[int, str, int, int, int], object] | None"

void bind_mine(nb::module_ &m) {
  m.def(
      "mine", &mine, nb::arg("db"), nb::arg("unit"), nb::arg("amount"),
      nb::arg("min_size"), nb::arg("max_size").none(), nb::arg("jobs"),
      nb::arg("exact"), nb::arg("time_limit").none(),
      nb::arg("pattern_limit").none(), nb::arg("callback").none(),
      nb::sig("def mine(db: Database, unit: str, amount: float, "
              "min_size: int, max_size: int | None, jobs: int, exact: bool, "
              "time_limit: float | None, pattern_limit: int | None, "
              "callback: " KESTRO_CALLBACK ") -> " KESTRO_PACKED_RUN),
      "Mines; returns the packed patterns, the summary, and what the callback "
      "or a signal handler raised, or None.  The unit of the minimum support "
      "is count, fraction or percentage.");
  m.def(
      "mine_known", &mine_known, nb::arg("patterns"), nb::arg("supports"),
      nb::arg("graphs"), nb::arg("min_support"), nb::arg("min_size"),
      nb::arg("max_size").none(), nb::arg("jobs"), nb::arg("time_limit").none(),
      nb::arg("pattern_limit").none(), nb::arg("callback").none(),
      nb::sig("def mine_known(patterns: Database, "
              "supports: numpy.typing.NDArray[numpy.int32], graphs: int, "
              "min_support: int, min_size: int, max_size: int | None, "
              "jobs: int, time_limit: float | None, pattern_limit: int | None, "
              "callback: " KESTRO_CALLBACK ") -> " KESTRO_PACKED_RUN),
      "Mines by known supports, with supports in place of TIDs; the minimum "
      "support is a number of graphs.");
  m.def("mine_sought", &mine_sought, nb::arg("db"), nb::arg("patterns"),
        nb::arg("jobs"),
        nb::sig("def mine_sought(db: Database, patterns: Database, jobs: int) "
                "-> " KESTRO_PACKED_RUN),
        "Mines those of these patterns and their parts that are in any graph.");
  m.def(
      "min_support",
      [](const std::string &unit, double amount, int graphs) {
        return support_of(unit, amount).graphs(graphs);
      },
      nb::arg("unit"), nb::arg("amount"), nb::arg("graphs"),
      "The minimum support as a number of so many graphs.");
}

} // namespace kestro_python
