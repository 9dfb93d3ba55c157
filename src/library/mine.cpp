// Mining a database level by level.
//
// The search is run over the database's transactions; what it finds is shown
// to the listener as it lies in the search's memory.  A request to stop and the
// time limit unwind the search; whatever was complete has been handed over.

#include <kestro/mine.h>

#include <algorithm>
#include <climits>
#include <exception>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include <kestro/error.h>

#include "base/interruption.h"
#include "library/access.h"
#include "library/level_data.h"
#include "mining/level_loop.h"
#include "mining/sought_patterns.h"
#include "mining/statistics.h"
#include "mining/support_table.h"
#include "mining/transaction_counter.h"

namespace kestro {

namespace {

// Hands what the search finds on to a listener.
class relay : public level_receiver {
public:
  relay(const database &db, const mine_options &options,
        const interruption *stop, listener *to)
      : transactions_(access::transactions(db)), labels_(access::label_set(db)),
        options_(options), stop_(stop), to_(to) {}

  void candidates(const sg_set *set) override {
    if (sg_set_size(set) == 0 || !to_->wants_candidates())
      return;
    const level_data shown = look_at(set);
    tell([&] { to_->on_candidates(access::level_of(&shown)); });
  }

  bool level(const sg_set *set) override {
    level_data shown = look_at(set);
    if (options_.keep_embeddings)
      add_embeddings(&shown, transactions_, options_.jobs, stop_);
    tell([&] { to_->on_level(access::level_of(&shown)); });
    patterns_ += shown.count();
    return patterns_ <= options_.pattern_limit.value_or(LLONG_MAX);
  }

  void advanced(const progress &now) override {
    if (now.at == progress::step::complete)
      last_complete_ = now.size;
    tell([&] { to_->on_progress(now); });
  }

  // What the listener has thrown, null for nothing: another thread may have
  // been interrupted at the same time.
  std::exception_ptr failure() const { return failure_; }

  int last_complete() const { return last_complete_; }

private:
  template <class Call> void tell(Call call) {
    try {
      call();
    } catch (...) {
      failure_ = std::current_exception();
      throw;
    }
  }

  level_data look_at(const sg_set *set) const {
    return kestro::look_at(set, sg_set_get(set, 0)->g->es / 2, labels_);
  }

  const graph_list *transactions_;
  const label_set *labels_;
  const mine_options &options_;
  const interruption *stop_;
  listener *to_;
  long long patterns_ = 0; // handed over
  int last_complete_ = 0;  // size
  std::exception_ptr failure_;
};

} // namespace

static void check(const mine_options &options) {
  if (options.jobs < 1)
    throw error("jobs must be at least 1, not " + std::to_string(options.jobs));
  if (options.pattern_limit && *options.pattern_limit < 0)
    throw error("the pattern limit must not be negative");
  // Written so that a number that is none fails.
  if (options.time_limit && !(options.time_limit->count() >= 0))
    throw error("the time limit must be a number of seconds from 0 on");
}

static interruption interruption_of(const mine_options &options) {
  using clock = std::chrono::steady_clock;
  if (!options.time_limit)
    return interruption(options.stop);
  const clock::time_point now = clock::now();
  // What lies beyond the clock's reach is no limit.
  if (*options.time_limit >= clock::time_point::max() - now)
    return interruption(options.stop);
  return interruption(
      options.stop,
      now + std::chrono::duration_cast<clock::duration>(*options.time_limit));
}

static void add_counts(const statistics &stats, mining_summary *summary) {
  for (int size = 0; size <= summary->last_size; size++)
    summary->sizes.push_back({stats_get(&stats, stats_candidates, size),
                              stats_get(&stats, stats_frequent, size)});
  summary->order_dependent = stats.order_dependent;
}

// Runs the search with a counter that make_counter(min_support, stop) returns.
template <class MakeCounter>
static mining_summary search(const database &db, int graphs,
                             const mine_options &options, listener *to,
                             MakeCounter make_counter) {
  check(options);
  const interruption stop = interruption_of(options);
  mining_summary summary;
  summary.min_support = options.support.graphs(graphs);
  statistics stats;
  stats_init(&stats);
  relay receiver(db, options, &stop, to);
  try {
    auto counter = make_counter(summary.min_support, &stop);
    const mining_run run = {
        options.min_size,
        options.max_size.value_or(INT_MAX),
        {options.jobs, options.stabilizer_threshold, options.kind},
        &receiver,
        &counter,
        &stats,
        &stop};
    const search_end end = mine_levels(&run);
    summary.last_size = end.last;
    if (end.more)
      summary.why = end.last < options.max_size.value_or(INT_MAX)
                        ? ending::pattern_limit
                        : ending::max_size;
  } catch (const interrupted &e) {
    if (receiver.failure())
      std::rethrow_exception(receiver.failure());
    summary.last_size = receiver.last_complete();
    summary.why = e.cause() == interruption_cause::stop_requested
                      ? ending::stopped
                      : ending::time_limit;
  }
  add_counts(stats, &summary);
  return summary;
}

static transaction_counter counter_of(const database &db, int min_support,
                                      int jobs, const interruption *stop) {
  const label_set *const labels = access::label_set(db);
  return {access::transactions(db),
          label_set_edge_labels(labels),
          label_set_vertex_labels(labels),
          min_support,
          jobs,
          stop};
}

mining_summary mine(const database &from, const mine_options &options,
                    listener &to) {
  const database db = from; // which the listener may change meanwhile
  return search(db, db.size(), options, &to,
                [&](int min_support, const interruption *stop) {
                  return counter_of(db, min_support, options.jobs, stop);
                });
}

static void check_known(const database &patterns, std::span<const int> supports,
                        int graphs, const mine_options &options) {
  if (options.kind != form::exact)
    throw error("known patterns are in the exact form only");
  if (options.keep_embeddings)
    throw error("without graphs there are no embeddings to keep");
  if (graphs < 0)
    throw error("there cannot be " + std::to_string(graphs) + " graphs");
  if (supports.size() != static_cast<size_t>(patterns.size()))
    throw error(std::to_string(patterns.size()) + " known patterns, but " +
                std::to_string(supports.size()) + " supports");
  for (const int support : supports)
    if (support < 0 || support > graphs)
      throw error("a known pattern cannot be in " + std::to_string(support) +
                  " of " + std::to_string(graphs) + " graphs");
}

// Nothing that was known may be lost.
static void check_found(const mining_summary &found,
                        const xvector<int> &known) {
  const auto count = [](const auto &by_size, size_t size) {
    return size < by_size.size() ? by_size[size] : 0;
  };
  const auto complete = static_cast<size_t>(found.last_size);
  const size_t sizes =
      found.why == ending::complete ? known.size() : complete + 1;
  for (size_t size = 1; size < sizes; size++) {
    const long long came = size <= complete ? found.sizes[size].frequent : 0;
    if (came != count(known, size))
      throw error("of " + std::to_string(count(known, size)) +
                  " known patterns of " + std::to_string(size) +
                  " edges only " + std::to_string(came) + " came up");
  }
}

mining_summary mine_known(const database &from, std::span<const int> supports,
                          int graphs, const mine_options &options,
                          listener &to) {
  check_known(from, supports, graphs, options);
  const database patterns = from;
  xvector<int> known;
  const mining_summary summary =
      search(patterns, graphs, options, &to,
             [&](int min_support, const interruption *stop) {
               support_table table(access::transactions(patterns), supports,
                                   min_support, options.jobs, stop);
               for (int size = 0; size <= table.largest(); size++)
                 known.push_back(table.frequent(size));
               return table;
             });
  check_found(summary, known);
  return summary;
}

static bool have_equal_labels(const labels &a, const labels &b) {
  if (a.vertex_labels() != b.vertex_labels() ||
      a.edge_labels() != b.edge_labels())
    return false;
  for (int i = 0; i < a.vertex_labels(); i++)
    if (a.vertex_label(i) != b.vertex_label(i))
      return false;
  for (int i = 0; i < a.edge_labels(); i++)
    if (a.edge_label(i) != b.edge_label(i))
      return false;
  return true;
}

mining_summary mine_sought(const database &from, const database &sought,
                           const mine_options &options, listener &to) {
  if (options.kind != form::exact)
    throw error("sought patterns are in the exact form only");
  if (!have_equal_labels(from.label_set(), sought.label_set()))
    throw error("the patterns have other labels than the graphs");
  const database db = from;
  const database patterns = sought;
  return search(db, db.size(), options, &to,
                [&](int min_support, const interruption *stop) {
                  return sought_counter(
                      access::transactions(patterns),
                      options.stabilizer_threshold,
                      std::make_unique<transaction_counter>(
                          counter_of(db, min_support, options.jobs, stop)),
                      stop);
                });
}

} // namespace kestro
