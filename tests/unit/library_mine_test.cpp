#include <kestro/mine.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>
#include <ranges>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include <kestro/error.h>
#include <kestro/matcher.h>

namespace kestro {
namespace {

// A complete graph of four equal vertices, twice, and a path of four in
// between.
database three_graphs() {
  database_builder db;
  const std::initializer_list<labelled_edge> complete = {
      {0, 1, "s"}, {0, 2, "s"}, {0, 3, "s"},
      {1, 2, "s"}, {1, 3, "s"}, {2, 3, "s"}};
  db.add({"C", "C", "C", "C"}, complete);
  db.add({"C", "C", "C", "C"}, {{0, 1, "s"}, {1, 2, "s"}, {2, 3, "s"}});
  db.add({"C", "C", "C", "C"}, complete);
  return std::move(db).build();
}

mine_options in_two() {
  mine_options options;
  options.support = minimum_support::count(2);
  return options;
}

std::vector<int> sizes_of(const result &r) {
  std::vector<int> patterns; // by size, from 1 on
  for (const pattern &p : r) {
    patterns.resize(static_cast<size_t>(p.size()));
    patterns.back()++;
  }
  return patterns;
}

std::string refusal(const mine_options &options) {
  try {
    mine(three_graphs(), options);
  } catch (const error &e) {
    return e.what();
  }
  return "nothing was thrown";
}

template <class T> std::vector<T> list(std::span<const T> s) {
  return {s.begin(), s.end()};
}

// The connected graphs on up to four vertices by edges.
const std::vector<int> all_sizes = {1, 1, 3, 2, 1, 1};

} // namespace

TEST(LibraryMine, FindsEveryPattern) {
  const result found = mine(three_graphs(), in_two());
  EXPECT_EQ(sizes_of(found), all_sizes);
  EXPECT_EQ(found.summary().why, ending::complete);
  EXPECT_EQ(found.summary().min_support, 2);
  EXPECT_EQ(found.summary().last_size, 7);
  EXPECT_EQ(found.summary().order_dependent, 0);
  ASSERT_EQ(found.summary().sizes.size(), 8u);
  EXPECT_EQ(found.summary().sizes[3].candidates, 3);
  EXPECT_EQ(found.summary().sizes[4].frequent, 2);
  EXPECT_EQ(found.mined().size(), 3);
}

TEST(LibraryMine, PatternsTellTheirTransactions) {
  const result found = mine(three_graphs(), in_two());
  const pattern edge = found[0];
  EXPECT_EQ(edge.size(), 1);
  EXPECT_EQ(edge.id(), 0);
  EXPECT_EQ(edge.support(), 3);
  EXPECT_EQ(list(edge.tids()), (std::vector<int>{0, 1, 2}));
  EXPECT_TRUE(edge.parents().empty());
  EXPECT_EQ(edge.graph().vertex_label(1), "C");
  const pattern largest = found[found.size() - 1];
  EXPECT_EQ(largest.graph().edges(), 6);
  EXPECT_EQ(largest.graph().vertices(), 4);
  EXPECT_EQ(list(largest.tids()), (std::vector<int>{0, 2}));
  EXPECT_EQ(list(largest.parents()), std::vector<int>{0});
  EXPECT_FALSE(largest.is_order_dependent());
  EXPECT_TRUE(largest.embedding(0).empty());
}

TEST(LibraryMine, ParentsAndChildrenMirrorOneAnother) {
  const result found = mine(three_graphs(), in_two());
  int links = 0;
  for (int i = 0; i < found.size(); i++) {
    std::vector<int> ids;
    for (const int parent : found.parents(i)) {
      EXPECT_EQ(found[parent].size() + 1, found[i].size());
      ids.push_back(found[parent].id());
      const auto back = list(found.children(parent));
      EXPECT_EQ(std::count(back.begin(), back.end(), i), 1);
      links++;
    }
    EXPECT_EQ(ids, list(found[i].parents()));
    links -= static_cast<int>(found.children(i).size());
  }
  EXPECT_EQ(links, 0);
}

TEST(LibraryMine, PatternsAreFoundByName) {
  const result found = mine(three_graphs(), in_two());
  for (int i = 0; i < found.size(); i++)
    EXPECT_EQ(found.find(found[i].size(), found[i].id()), i);
  EXPECT_EQ(found.find(3, 3), std::nullopt);
  EXPECT_EQ(found.find(3, -1), std::nullopt);
  EXPECT_EQ(found.find(0, 0), std::nullopt);
  EXPECT_EQ(found.find(7, 0), std::nullopt);
}

TEST(LibraryMine, ClosedAndMaximalOfAWholeRun) {
  const result found = mine(three_graphs(), in_two());
  int closed = 0;
  int maximal = 0;
  for (int i = 0; i < found.size(); i++) {
    ASSERT_NE(found.is_closed(i), answer::unknown);
    closed += found.is_closed(i) == answer::yes;
    maximal += found.is_maximal(i) == answer::yes;
  }
  EXPECT_EQ(closed, 2); // the path of all three, and the largest
  EXPECT_EQ(maximal, 1);
  EXPECT_EQ(found.is_maximal(found.size() - 1), answer::yes);
}

TEST(LibraryMine, LastLevelOfALimitedRunIsUnknown) {
  mine_options options = in_two();
  options.max_size = 3;
  const result found = mine(three_graphs(), options);
  EXPECT_EQ(found.summary().why, ending::max_size);
  EXPECT_EQ(sizes_of(found), (std::vector<int>{1, 1, 3}));
  for (int i = 0; i < found.size(); i++) {
    const bool is_last = found[i].size() == 3;
    EXPECT_EQ(found.is_maximal(i), is_last ? answer::unknown : answer::no);
    EXPECT_EQ(found.is_closed(i), is_last ? answer::unknown : answer::no);
  }
}

TEST(LibraryMine, MaxSizeOfTheWholeRunKnowsNothingOfLargerOnes) {
  mine_options options = in_two();
  options.max_size = 6;
  EXPECT_EQ(mine(three_graphs(), options).summary().why, ending::max_size);
  options.max_size = 7;
  EXPECT_EQ(mine(three_graphs(), options).summary().why, ending::complete);
  options.max_size = 0;
  const result none = mine(three_graphs(), options);
  EXPECT_EQ(none.size(), 0);
  EXPECT_EQ(none.summary().why, ending::max_size);
  options.max_size = -4;
  EXPECT_EQ(mine(three_graphs(), options).size(), 0);
}

TEST(LibraryMine, MinSizeLeavesParentsNamed) {
  mine_options options = in_two();
  options.min_size = 4;
  const result found = mine(three_graphs(), options);
  EXPECT_EQ(found.size(), 4);
  EXPECT_FALSE(found[0].parents().empty());
  EXPECT_TRUE(found.parents(0).empty()); // none of them is in the result
  EXPECT_EQ(found.find(3, 0), std::nullopt);
  options.min_size = 9;
  EXPECT_EQ(mine(three_graphs(), options).size(), 0);
}

TEST(LibraryMine, PatternLimitDeliversTheLevelThatPassesIt) {
  const std::vector<std::pair<long long, int>> limits = {
      {0, 1}, {1, 2}, {2, 5}, {3, 5}, {5, 7}, {8, 9}};
  for (const auto &[limit, patterns] : limits) {
    mine_options options = in_two();
    options.pattern_limit = limit;
    const result found = mine(three_graphs(), options);
    EXPECT_EQ(found.size(), patterns) << limit;
    EXPECT_EQ(found.summary().why, ending::pattern_limit);
    EXPECT_EQ(found.is_maximal(found.size() - 1), answer::unknown);
  }
  mine_options options = in_two();
  options.pattern_limit = 9;
  EXPECT_EQ(mine(three_graphs(), options).summary().why, ending::complete);
}

TEST(LibraryMine, StopBeforehandFindsNothing) {
  std::stop_source source;
  source.request_stop();
  mine_options options = in_two();
  options.stop = source.get_token();
  const result found = mine(three_graphs(), options);
  EXPECT_EQ(found.size(), 0);
  EXPECT_EQ(found.summary().why, ending::stopped);
  EXPECT_EQ(found.summary().last_size, 0);
}

TEST(LibraryMine, TimeThatIsUpFindsNothing) {
  mine_options options = in_two();
  options.time_limit = std::chrono::seconds(0);
  const result found = mine(three_graphs(), options);
  EXPECT_EQ(found.size(), 0);
  EXPECT_EQ(found.summary().why, ending::time_limit);
}

TEST(LibraryMine, TimeBeyondTheClockIsNoLimit) {
  for (const double seconds :
       {1e9, 1e300, std::numeric_limits<double>::infinity()}) {
    mine_options options = in_two();
    options.time_limit = std::chrono::duration<double>(seconds);
    EXPECT_EQ(mine(three_graphs(), options).summary().why, ending::complete);
  }
}

TEST(LibraryMine, StopKeepsTheLevelsThatAreComplete) {
  class stopping : public listener {
  public:
    void on_level(const level &found) override {
      levels++;
      if (found.size() == 3)
        source.request_stop();
    }
    std::stop_source source;
    int levels = 0;
  };
  for (const int jobs : {1, 3}) {
    stopping to;
    mine_options options = in_two();
    options.jobs = jobs;
    options.stop = to.source.get_token();
    const mining_summary summary = mine(three_graphs(), options, to);
    EXPECT_EQ(to.levels, 3);
    EXPECT_EQ(summary.why, ending::stopped);
    EXPECT_EQ(summary.last_size, 3);
    EXPECT_EQ(summary.sizes.size(), 4u);
  }
}

TEST(LibraryMine, RefusesWhatMakesNoSense) {
  mine_options options;
  options.jobs = 0;
  EXPECT_EQ(refusal(options), "jobs must be at least 1, not 0");
  options = {};
  options.pattern_limit = -1;
  EXPECT_EQ(refusal(options), "the pattern limit must not be negative");
  for (const double seconds : {-0.5, std::nan("")}) {
    options = {};
    options.time_limit = std::chrono::duration<double>(seconds);
    EXPECT_EQ(refusal(options),
              "the time limit must be a number of seconds from 0 on");
  }
}

TEST(LibraryMine, RefusesPatternsThatAreNotThere) {
  const result found = mine(three_graphs(), in_two());
  EXPECT_THROW(found[-1], error);
  EXPECT_THROW(found[9], error);
  EXPECT_THROW(found.children(9), error);
  EXPECT_THROW(found.parents(-1), error);
  EXPECT_THROW(found.is_closed(9), error);
  EXPECT_THROW(found.is_maximal(9), error);
}

TEST(LibraryMine, SupportAboveTheDatabaseFindsNothing) {
  mine_options options;
  options.support = minimum_support::count(4);
  const result found = mine(three_graphs(), options);
  EXPECT_EQ(found.size(), 0);
  EXPECT_EQ(found.summary().why, ending::complete);
  EXPECT_EQ(found.summary().min_support, 4);
  EXPECT_EQ(mine(database()).size(), 0);
}

TEST(LibraryMine, EmbeddingsAreThoseOfTheMatcher) {
  const database db = three_graphs();
  mine_options options = in_two();
  options.keep_embeddings = true;
  for (const int jobs : {1, 3}) {
    options.jobs = jobs;
    const result found = mine(db, options);
    for (const pattern &p : found) {
      const matcher m(p.graph());
      for (int i = 0; i < p.support(); i++)
        EXPECT_EQ(list(p.embedding(i)),
                  m.first(db[p.tids()[static_cast<size_t>(i)]]));
      EXPECT_THROW(p.embedding(p.support()), error);
    }
  }
}

TEST(LibraryMine, ResultOutlivesTheDatabase) {
  std::optional<database> db = three_graphs();
  const std::optional<result> first = mine(*db, in_two());
  db.reset();
  const result second = *first;
  EXPECT_EQ(second[0].graph().vertex_label(0), "C");
  EXPECT_EQ(second.mined().size(), 3);
}

TEST(LibraryMine, ResultStaysWhereItWasTakenFrom) {
  result found = mine(three_graphs(), in_two());
  const result taken = std::move(found);
  EXPECT_EQ(found.size(), taken.size());
}

TEST(LibraryMine, ResultIsARange) {
  static_assert(std::ranges::input_range<result>);
  const result found = mine(three_graphs(), in_two());
  EXPECT_EQ(std::ranges::count_if(
                found, [](const pattern &p) { return p.support() == 3; }),
            3); // the paths
}

TEST(LibraryMine, OptionsCanBeNamedOneByOne) {
  const mine_options options = {.support = minimum_support::count(3),
                                .jobs = 2};
  EXPECT_EQ(mine(three_graphs(), options).size(), 3);
}

TEST(LibraryMine, ProgressGoesForward) {
  class watcher : public listener {
  public:
    void on_level(const level &) override {}
    void on_progress(const progress &now) override {
      EXPECT_LE(now.done, now.known);
      if (!steps.empty()) {
        const progress &before = steps.back();
        EXPECT_LE(std::pair(before.size, before.at),
                  std::pair(now.size, now.at));
        if (std::pair(before.size, before.at) == std::pair(now.size, now.at)) {
          EXPECT_LE(before.done, now.done);
        }
      }
      steps.push_back(now);
    }
    std::vector<progress> steps;
  };
  for (const int jobs : {1, 3}) {
    mine_options options = in_two();
    options.jobs = jobs;
    watcher to;
    mine(three_graphs(), options, to);
    std::vector<int> complete;
    for (const progress &p : to.steps)
      if (p.at == progress::step::complete)
        complete.push_back(p.size);
    EXPECT_EQ(complete, (std::vector<int>{1, 2, 3, 4, 5, 6}));
    EXPECT_EQ(to.steps.front().size, 1);
    bool joins = false;
    bool bounds = false;
    for (const progress &p : to.steps) {
      joins |= p.at == progress::step::joining && p.size == 4;
      bounds |= p.at == progress::step::bounding && p.candidates == 3;
    }
    EXPECT_TRUE(joins || jobs > 1);
    EXPECT_TRUE(bounds || jobs > 1);
  }
}

TEST(LibraryMine, CandidatesComeBeforeTheirLevel) {
  class watcher : public listener {
  public:
    bool wants_candidates() const override { return true; }
    void on_candidates(const level &generated) override {
      last = generated.size();
      all += generated.patterns();
      EXPECT_EQ(generated[0].support(), 0);
      EXPECT_TRUE(generated[0].tids().empty());
      EXPECT_FALSE(generated[0].parents().empty());
      EXPECT_THROW(generated[generated.patterns()], error);
    }
    void on_level(const level &found) override {
      EXPECT_TRUE(found.size() < 3 || found.size() == last);
    }
    int last = 0;
    int all = 0;
  };
  watcher to;
  const mining_summary summary = mine(three_graphs(), in_two(), to);
  long long generated = 0;
  for (const auto &counts : summary.sizes)
    generated += counts.candidates;
  EXPECT_EQ(to.all, generated);
  EXPECT_GT(to.all, 0);
}

TEST(LibraryMine, WhatTheListenerThrowsComesOut) {
  struct complaint {};
  class unwilling : public listener {
  public:
    void on_level(const level &) override {}
    void on_progress(const progress &now) override {
      if (now.at == progress::step::counting)
        throw complaint();
    }
  };
  for (const int jobs : {1, 3}) {
    mine_options options = in_two();
    options.jobs = jobs;
    unwilling to;
    EXPECT_THROW(mine(three_graphs(), options, to), complaint);
  }
}

namespace {

// Trees, many enough for every step to look at the request.
database many_trees() {
  database_builder db;
  const std::vector<std::string> labels(30, "C");
  for (int i = 0; i < 4000; i++) {
    std::vector<labelled_edge> edges;
    for (int v = 1; v < 30; v++)
      edges.push_back({(v * (i % 7 + 1)) % v, v, "s"});
    db.add(labels, edges);
  }
  return std::move(db).build();
}

// Throws in the middle of a step, having asked for a stop.
class stopping_complainer : public listener {
public:
  struct complaint {};
  explicit stopping_complainer(progress::step at) : at_(at) {}
  void on_level(const level &) override {}
  void on_progress(const progress &now) override {
    if (now.at == at_ && now.done > 0) {
      source.request_stop();
      throw complaint();
    }
  }
  std::stop_source source;

private:
  progress::step at_;
};

} // namespace

TEST(LibraryMine, StopIsSeenWhereverItFallsBeforehand) {
  const database db = many_trees();
  std::stop_source source;
  source.request_stop();
  for (const int jobs : {1, 3}) {
    mine_options options = in_two();
    options.jobs = jobs;
    options.stop = source.get_token();
    EXPECT_EQ(mine(db, options).summary().why, ending::stopped);
    options.stop = {};
    options.time_limit = std::chrono::seconds(0);
    EXPECT_EQ(mine(db, options).summary().why, ending::time_limit);
  }
}

TEST(LibraryMine, WhatTheListenerThrowsGoesBeforeAStop) {
  for (const int jobs : {1, 2, 3})
    for (const auto at : {progress::step::joining, progress::step::bounding,
                          progress::step::counting})
      for (int again = 0; again < 20; again++) {
        stopping_complainer to(at);
        mine_options options = in_two();
        options.jobs = jobs;
        options.stop = to.source.get_token();
        bool complained = false;
        try {
          mine(three_graphs(), options, to);
        } catch (const stopping_complainer::complaint &) {
          complained = true;
        }
        // With several threads others may do all the work of a step.
        EXPECT_EQ(complained, to.source.stop_requested());
        EXPECT_TRUE(complained || jobs > 1);
      }
}

TEST(LibraryMine, RunsAtOnceShareOneDatabase) {
  const database db = three_graphs();
  std::vector<int> patterns(4);
  {
    std::vector<std::jthread> threads;
    for (int &n : patterns)
      threads.emplace_back([&db, &n] { n = mine(db, in_two()).size(); });
  }
  EXPECT_EQ(patterns, std::vector<int>(4, 9));
}

} // namespace kestro
