#include "mining/level_loop.h"

#include <climits>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "graph/graph_list.h"
#include "mining/statistics.h"
#include "mining/transaction_counter.h"
#include "reference/mining/subgraph.h"
#include "support/graphs.h"

namespace kestro {
namespace {

using events = std::vector<std::string>;

std::string of_size(const sg_set *set) {
  if (sg_set_size(set) == 0)
    return "none";
  return std::to_string(sg_set_size(set)) + " of size " +
         std::to_string(sg_set_get(set, 0)->g->es / 2);
}

// Both seams in one log; what is not logged goes on to the real counter.
class recorder : public level_receiver, public candidate_counter {
public:
  recorder(const graph_list *transactions, int minsup, int jobs = 1)
      : counter_(transactions, 1, 1, minsup, jobs) {}

  void candidates(const sg_set *set) override {
    log.push_back("receive candidates: " + of_size(set));
  }
  bool level(const sg_set *set) override {
    log.push_back("receive level: " + of_size(set));
    return sg_set_get(set, 0)->g->es / 2 < enough;
  }
  sg_set_ptr edges() override {
    log.push_back("edges");
    return counter_.edges();
  }
  sg_set_ptr double_edges(const sg_set *edges) override {
    log.push_back("double edges of " + of_size(edges));
    return counter_.double_edges(edges);
  }
  void bound(sg_set *cand, const sg_set *prev, work_watcher *watcher) override {
    log.push_back("bound " + of_size(cand) + " by " + of_size(prev));
    if (drop_all) {
      sg_set_free(sg_set_create_from(cand));
      return;
    }
    counter_.bound(cand, prev, watcher);
  }
  void count(sg_set *cand, const sg_set *prev, work_watcher *watcher) override {
    log.push_back("count " + of_size(cand) + " by " + of_size(prev));
    counter_.count(cand, prev, watcher);
  }
  void advanced(const progress &now) override {
    if (now.at == progress::step::complete)
      log.push_back("progress: level " + std::to_string(now.size));
    else if (now.at == progress::step::counting && now.done == 0)
      log.push_back("progress: candidates of " + std::to_string(now.size));
    steps.push_back(now);
  }

  events log;
  std::vector<progress> steps;
  bool drop_all = false; // let no candidate pass the bound
  int enough = INT_MAX;  // the size with which the run is to end

private:
  // A set with the records of s, which is left empty.
  static sg_set *sg_set_create_from(sg_set *s) {
    sg_set *taken = sg_set_create();
    for (int i = 0; i < sg_set_size(s); i++)
      sg_set_push(taken, sg_ptr(sg_set_get(s, i)));
    sg_set_clear(s);
    return taken;
  }

  transaction_counter counter_;
};

// Runs over transactions whose labels are all 0.
class LevelLoop : public testing::Test {
protected:
  LevelLoop() : transactions(graph_list_new()) { stats_init(&stats); }

  void add(graph_ptr g) { graph_list_push(std::move(g), transactions.get()); }
  int mine(int minsup, int minsize = 1, int maxsize = INT_MAX) {
    recorder r(transactions.get(), minsup, jobs);
    r.drop_all = drop_all;
    const search_end end = mine_with(&r, minsize, maxsize);
    log = r.log;
    return end.last;
  }
  search_end mine_with(recorder *r, int minsize = 1, int maxsize = INT_MAX) {
    const mining_run run = {minsize, maxsize, {.jobs = jobs}, r, r, &stats};
    return mine_levels(&run);
  }

  graph_list_ptr transactions;
  bool drop_all = false;
  int jobs = 1;
  events log;
  statistics stats;
};

const events edge_level = {"edges", "receive level: 1 of size 1",
                           "progress: level 1"};
const events paths = {"double edges of 1 of size 1"};
const events path_level = {"double edges of 1 of size 1",
                           "receive level: 1 of size 2", "progress: level 2"};

events operator+(events a, const events &b) {
  a.insert(a.end(), b.begin(), b.end());
  return a;
}

} // namespace

TEST_F(LevelLoop, TellsEveryStepInOrder) {
  add(ring_graph(3));
  add(ring_graph(3));
  EXPECT_EQ(mine(2), 4);
  EXPECT_EQ(
      log,
      (edge_level + path_level +
       events{// path, star and triangle
              "receive candidates: 3 of size 3",
              "bound 3 of size 3 by 1 of size 2", "progress: candidates of 3",
              "count 3 of size 3 by 1 of size 2", "receive level: 1 of size 3",
              "progress: level 3",
              // the triangle with itself gives nothing new
              "receive candidates: none", "bound none by 1 of size 3"}));
}

TEST_F(LevelLoop, NoProgressWhenAllCandidatesFailTheBound) {
  add(ring_graph(3));
  drop_all = true;
  EXPECT_EQ(mine(1), 3);
  EXPECT_EQ(log, (edge_level + path_level +
                  events{"receive candidates: 3 of size 3",
                         "bound 3 of size 3 by 1 of size 2"}));
  EXPECT_EQ(stats_get(&stats, stats_candidates, 3), 3);
  EXPECT_EQ(stats_get(&stats, stats_frequent, 3), 0);
}

TEST_F(LevelLoop, EmptyLevelIsCompleteButNotHandedOver) {
  add(ring_graph(3));
  add(star_graph(4));
  add(path_graph(4));
  EXPECT_EQ(mine(3), 3);
  EXPECT_EQ(
      log,
      (edge_level + path_level +
       events{"receive candidates: 3 of size 3",
              "bound 3 of size 3 by 1 of size 2", "progress: candidates of 3",
              "count 3 of size 3 by 1 of size 2", "progress: level 3"}));
}

TEST_F(LevelLoop, NothingHappensWithoutAFrequentEdge) {
  add(path_graph(2));
  EXPECT_EQ(mine(2), 0);
  EXPECT_EQ(log, events{"edges"});
}

TEST_F(LevelLoop, NothingHappensWithoutTransactions) {
  EXPECT_EQ(mine(1), 0);
  EXPECT_EQ(log, events{"edges"});
}

TEST_F(LevelLoop, EmptySecondLevelIsTriedButNotTold) {
  add(path_graph(2));
  EXPECT_EQ(mine(1), 2);
  EXPECT_EQ(log, edge_level + paths);
}

TEST_F(LevelLoop, EndsWithTheLevelThatIsEnough) {
  add(complete_graph(4));
  for (int size = 1; size <= 5; size++) {
    recorder r(transactions.get(), 1);
    r.enough = size;
    const search_end end = mine_with(&r);
    EXPECT_EQ(end.last, size);
    EXPECT_TRUE(end.more);
    EXPECT_EQ(r.log.back(), "progress: level " + std::to_string(size));
  }
}

TEST_F(LevelLoop, SaysWhetherLargerPatternsMayExist) {
  add(complete_graph(4)); // six edges
  const auto more = [this](int maxsize) {
    recorder r(transactions.get(), 1);
    return mine_with(&r, 1, maxsize).more;
  };
  EXPECT_TRUE(more(0));
  for (int maxsize = 1; maxsize <= 6; maxsize++)
    EXPECT_TRUE(more(maxsize));
  EXPECT_FALSE(more(7));
  EXPECT_FALSE(more(INT_MAX));
  transactions.reset(graph_list_new());
  EXPECT_TRUE(more(0));
  EXPECT_FALSE(more(1));
}

TEST_F(LevelLoop, MaxsizeBelowOneMinesNothing) {
  add(ring_graph(3));
  EXPECT_EQ(mine(1, 0, 0), 0);
  EXPECT_EQ(mine(1, -2, -2), 0);
  EXPECT_EQ(log, events{});
  EXPECT_EQ(stats_get(&stats, stats_frequent, 1), 0);
}

TEST_F(LevelLoop, MaxsizeOneStopsAfterTheEdges) {
  add(ring_graph(3));
  EXPECT_EQ(mine(1, 1, 1), 1);
  EXPECT_EQ(log, edge_level);
  EXPECT_EQ(stats_get(&stats, stats_frequent, 2), 0);
}

TEST_F(LevelLoop, MaxsizeTwoGeneratesNoCandidates) {
  add(ring_graph(3));
  EXPECT_EQ(mine(1, 1, 2), 2);
  EXPECT_EQ(log, edge_level + path_level);
  EXPECT_EQ(stats_total(&stats, stats_candidates, 1, INT_MAX), 0);
}

TEST_F(LevelLoop, MaxsizeThreeGeneratesCandidatesOnce) {
  add(ring_graph(3));
  EXPECT_EQ(mine(1, 1, 3), 3);
  EXPECT_EQ(log, (edge_level + path_level +
                  events{"receive candidates: 3 of size 3",
                         "bound 3 of size 3 by 1 of size 2",
                         "progress: candidates of 3",
                         "count 3 of size 3 by 1 of size 2",
                         "receive level: 1 of size 3", "progress: level 3"}));
}

TEST_F(LevelLoop, SizesBelowMinsizeAreMinedButNotHandedOver) {
  add(ring_graph(3));
  EXPECT_EQ(mine(1, 2, 2), 2);
  EXPECT_EQ(log, (events{"edges", "progress: level 1"} + path_level));
  EXPECT_EQ(stats_get(&stats, stats_frequent, 1), 1);
}

TEST_F(LevelLoop, CandidatesBelowMinsizeAreHandedOver) {
  add(ring_graph(3));
  EXPECT_EQ(mine(1, 4, 4), 4);
  EXPECT_EQ(
      log,
      (events{"edges", "progress: level 1", "double edges of 1 of size 1",
              "progress: level 2", "receive candidates: 3 of size 3",
              "bound 3 of size 3 by 1 of size 2", "progress: candidates of 3",
              "count 3 of size 3 by 1 of size 2", "progress: level 3",
              "receive candidates: none", "bound none by 1 of size 3"}));
  EXPECT_EQ(stats_get(&stats, stats_frequent, 3), 1);
}

TEST_F(LevelLoop, FirstSizeHandedOverIsMinsize) {
  add(complete_graph(4));
  const auto is_level = [](const std::string &event) {
    return event.find("receive level") != std::string::npos;
  };
  EXPECT_EQ(mine(1, 3, 4), 4);
  std::erase_if(log, std::not_fn(is_level));
  EXPECT_EQ(log, (events{"receive level: 3 of size 3",
                         "receive level: 2 of size 4"}));
  EXPECT_EQ(mine(1, 4, 4), 4);
  std::erase_if(log, std::not_fn(is_level));
  EXPECT_EQ(log, events{"receive level: 2 of size 4"});
}

TEST_F(LevelLoop, MinsizeBelowOneReportsFromOneOn) {
  add(ring_graph(3));
  EXPECT_EQ(mine(1, -3, 1), 1);
  EXPECT_EQ(log, edge_level);
}

TEST_F(LevelLoop, LevelsArriveSortedWithSupportsAndParents) {
  class checker : public recorder {
  public:
    using recorder::recorder;
    bool level(const sg_set *set) override {
      sg_set_check(set);
      for (int i = 0; i < sg_set_size(set); i++) {
        const subgraph *sg = sg_set_get(set, i);
        EXPECT_EQ(sg->count, 2);
        EXPECT_EQ(sg_support(sg), 2);
        EXPECT_EQ(sg_pid_size(sg) > 0, sg->g->es > 2);
        patterns++;
      }
      return true;
    }
    int patterns = 0;
  };
  add(complete_graph(4));
  add(complete_graph(4));
  checker c(transactions.get(), 2);
  EXPECT_EQ(mine_with(&c).last, 7);
  // The connected graphs on up to four vertices by edges: 1, 1, 3, 2, 1, 1.
  EXPECT_EQ(c.patterns, 9);
}

TEST_F(LevelLoop, EverySizeMinedIsCounted) {
  add(complete_graph(4));
  for (int size = 1; size <= 8; size++) // whatever was there before
    for (const int kind : {stats_candidates, stats_frequent})
      stats_set(&stats, kind, size, 77);
  EXPECT_EQ(mine(1, 4, INT_MAX), 7);
  // The connected graphs on up to four vertices by edges.
  const int frequent[] = {1, 1, 3, 2, 1, 1};
  for (int size = 1; size <= 6; size++)
    EXPECT_EQ(stats_get(&stats, stats_frequent, size), frequent[size - 1]);
  EXPECT_EQ(stats_get(&stats, stats_candidates, 3), 3);
  EXPECT_EQ(stats_get(&stats, stats_candidates, 7), 0);
  // Sizes that were not tried are left alone.
  EXPECT_EQ(stats_get(&stats, stats_candidates, 2), 77);
  EXPECT_EQ(stats_get(&stats, stats_frequent, 7), 77);
  EXPECT_EQ(stats_get(&stats, stats_candidates, 8), 77);
}

TEST_F(LevelLoop, EmptyLevelsAreCountedAsZero) {
  for (int size = 1; size <= 3; size++)
    stats_set(&stats, stats_frequent, size, 77);
  add(path_graph(2));
  EXPECT_EQ(mine(2), 0);
  EXPECT_EQ(stats_get(&stats, stats_frequent, 1), 0);
  EXPECT_EQ(mine(1), 2);
  EXPECT_EQ(stats_get(&stats, stats_frequent, 1), 1);
  EXPECT_EQ(stats_get(&stats, stats_frequent, 2), 0);
  add(ring_graph(3));
  add(star_graph(4));
  add(path_graph(4));
  EXPECT_EQ(mine(3), 3);
  EXPECT_EQ(stats_get(&stats, stats_frequent, 2), 1);
  EXPECT_EQ(stats_get(&stats, stats_frequent, 3), 0);
}

namespace {

// A level as it is when it is told, and the one below it.
class two_level_checker : public recorder {
public:
  using recorder::recorder;
  sg_set_ptr double_edges(const sg_set *edges) override {
    below = edges;
    return recorder::double_edges(edges);
  }
  void count(sg_set *cand, const sg_set *prev, work_watcher *watcher) override {
    below = prev;
    for (int i = 0; i < sg_set_size(prev); i++) {
      const subgraph *sg = sg_set_get(prev, i);
      EXPECT_TRUE(sg->rows && sg->tid);
    }
    recorder::count(cand, prev, watcher);
  }
  bool level(const sg_set *set) override {
    if (!below)
      return true;
    if (sg_set_get(set, 0)->g->es > 4)
      for (int i = 0; i < sg_set_size(below); i++) {
        const subgraph *sg = sg_set_get(below, i);
        EXPECT_FALSE(sg->rows || sg->tid);
      }
    levels++;
    return true;
  }
  const sg_set *below = nullptr;
  int levels = 0;
};

} // namespace

TEST_F(LevelLoop, WhatCountingNeedsIsFreed) {
  add(complete_graph(4));
  add(complete_graph(4));
  two_level_checker c(transactions.get(), 2);
  EXPECT_EQ(mine_with(&c).last, 7);
  EXPECT_EQ(c.levels, 5); // of sizes 2 to 6
}

TEST_F(LevelLoop, ThreadsDoNotShow) {
  for (int i = 0; i < 3; i++) {
    add(ring_graph(5));
    add(star_graph(5));
    add(complete_graph(4));
  }
  const int last = mine(3);
  const events expected = log;
  for (const int n : {2, 3, 7}) {
    jobs = n;
    EXPECT_EQ(mine(3), last);
    EXPECT_EQ(log, expected);
  }
}

} // namespace kestro
