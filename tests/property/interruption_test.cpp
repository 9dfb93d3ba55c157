// Runs that are asked to stop: whatever was received before is a prefix of what
// the whole run gives, and every step that can take long ends.

#include "base/interruption.h"

#include <algorithm>
#include <climits>
#include <functional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "cl/automorphism_group.h"
#include "cl/domain_search.h"
#include "cl/search_plan.h"
#include "mining/child_table.h"
#include "mining/failed_candidates.h"
#include "mining/level_loop.h"
#include "mining/tid_lists.h"
#include "mining/transaction_counter.h"
#include "reference/mining/automorphisms.h"
#include "reference/mining/subgraph.h"
#include "support/mined_levels.h"
#include "support/records.h"

namespace kestro {

namespace {

// Random graphs of few labels, many enough for levels of hundreds of patterns.
numbered_database drawn_database(int graphs, int vertices) {
  test_rng rng(7);
  graph_list_ptr list(graph_list_new());
  for (int i = 0; i < graphs; i++)
    graph_list_push(
        random_graph(
            rng,
            {.vs = vertices, .extra_edges = 3, .vlabels = 3, .elabels = 2}),
        list.get());
  return {std::move(list), 2, 3};
}

// What a level holds, as numbers.
std::vector<int> contents(const sg_set *set) {
  std::vector<int> all;
  for (int i = 0; i < sg_set_size(set); i++) {
    const subgraph *sg = sg_set_get(set, i);
    all.insert(all.end(), {sg->count, sg_tid_size(sg), sg_pid_size(sg),
                           sg->g->vs, static_cast<int>(sg->g->key)});
  }
  return all;
}

// Counts what happens at the seams, and asks for a stop at the n-th event,
// before the real counter goes to work on it.
class stopping_seams : public level_receiver, public candidate_counter {
public:
  stopping_seams(const numbered_database &db, int minsup, int jobs, int n)
      : stop(source_.get_token()), n_(n),
        counter_(db.transactions.get(), db.edge_labels, db.vertex_labels,
                 minsup, jobs, &stop) {}

  void candidates(const sg_set *) override { happen(); }
  bool level(const sg_set *set) override {
    levels.push_back(contents(set));
    happen();
    return true;
  }
  sg_set_ptr edges() override {
    happen();
    return counter_.edges();
  }
  sg_set_ptr double_edges(const sg_set *edges) override {
    happen();
    return counter_.double_edges(edges);
  }
  void bound(sg_set *cand, const sg_set *prev, work_watcher *watcher) override {
    happen();
    counter_.bound(cand, prev, watcher);
  }
  void count(sg_set *cand, const sg_set *prev, work_watcher *watcher) override {
    happen();
    counter_.count(cand, prev, watcher);
  }
  // How often a thread tells of work within a size differs from run to run.
  void advanced(const progress &now) override {
    if (now.at == progress::step::complete)
      happen();
  }

  int events = 0;
  std::vector<std::vector<int>> levels; // received

private:
  void happen() {
    if (++events == n_)
      source_.request_stop();
  }

  std::stop_source source_;

public:
  const interruption stop;

private:
  int n_;
  transaction_counter counter_;
};

// Whether the run ended by the request.
bool is_interrupted(stopping_seams *seams, int jobs, int maxsize) {
  statistics stats;
  stats_init(&stats);
  const mining_run run = {1,     maxsize, {.jobs = jobs}, seams,
                          seams, &stats,  &seams->stop};
  try {
    mine_levels(&run);
  } catch (const interrupted &end) {
    EXPECT_EQ(end.cause(), interruption_cause::stop_requested);
    return true;
  }
  return false;
}

void stop_everywhere(const numbered_database &db, int minsup, int jobs,
                     int maxsize = INT_MAX) {
  stopping_seams whole(db, minsup, jobs, 0);
  EXPECT_FALSE(is_interrupted(&whole, jobs, maxsize));
  EXPECT_GT(whole.levels.size(), 3U);
  for (int n = 1; n <= whole.events; n++) {
    stopping_seams seams(db, minsup, jobs, n);
    const bool ended = is_interrupted(&seams, jobs, maxsize);
    // Behind the last count only its level and progress are told.
    if (!ended) {
      EXPECT_GE(n, whole.events - 2) << jobs << " jobs";
      EXPECT_EQ(seams.levels, whole.levels) << n << ", " << jobs << " jobs";
      continue;
    }
    ASSERT_LE(seams.levels.size(), whole.levels.size());
    EXPECT_TRUE(std::equal(seams.levels.begin(), seams.levels.end(),
                           whole.levels.begin()))
        << "stopped at event " << n << ", " << jobs << " jobs";
    EXPECT_LE(seams.events, n + 2); // a level that was complete is told
  }
}

} // namespace

TEST(Interruption, LevelsReceivedAreAPrefix) {
  const numbered_database db = drawn_database(12, 8);
  for (const int jobs : {1, 3})
    stop_everywhere(db, 2, jobs);
}

TEST(Interruption, LevelsReceivedAreAPrefixWhereSizesEnd) {
  const numbered_database db = drawn_database(12, 8);
  for (const int jobs : {1, 3})
    stop_everywhere(db, 2, jobs, 4);
}

TEST(Interruption, LevelsReceivedAreAPrefixWhereStepsTakeLong) {
  const numbered_database db = drawn_database(120, 12);
  for (const int jobs : {1, 3})
    stop_everywhere(db, 8, jobs);
}

TEST(Interruption, NothingIsMinedBehindTheDeadline) {
  const numbered_database db = drawn_database(12, 8);
  const interruption past({}, interruption::clock::time_point::min());
  stopping_seams seams(db, 4, 1, 0);
  statistics stats;
  stats_init(&stats);
  const mining_run run = {1, INT_MAX, {}, &seams, &seams, &stats, &past};
  try {
    mine_levels(&run);
    ADD_FAILURE() << "not interrupted";
  } catch (const interrupted &end) {
    EXPECT_EQ(end.cause(), interruption_cause::out_of_time);
  }
  EXPECT_EQ(seams.events, 0);
}

namespace {

// A database whose every step takes long enough to be ended, with the levels 3
// and 4, the candidates of size 5, and a stop requested already.
class LongSteps : public testing::Test {
protected:
  static constexpr int minsup = 8;

  LongSteps() : db(drawn_database(1500, 12)), stop(requested()) {
    levels = first_two_levels(transactions(), minsup, db.edge_labels,
                              db.vertex_labels);
    for (int k = 3; k <= 4; k++)
      go_up(&levels, candidates_of(levels), transactions(), minsup);
    made = candidates_of(levels);
  }
  static interruption requested() {
    std::stop_source source;
    source.request_stop();
    return interruption(source.get_token());
  }
  const graph_list *transactions() const { return db.transactions.get(); }
  // Ends, and leaves as many candidates to be freed as it says.
  void bound(int jobs) {
    sg_filter_candidates_by_support(made.get(), levels.children.get(),
                                    transactions(), minsup, jobs, &stop);
  }

  numbered_database db;
  const interruption stop;
  two_levels levels;
  sg_set_ptr made;
};

} // namespace

TEST_F(LongSteps, FirstLevelsEnd) {
  EXPECT_THROW(sg_frequent_edges(transactions(), 1, db.edge_labels,
                                 db.vertex_labels, &stop),
               interrupted);
  const sg_set_ptr edges(
      sg_frequent_edges(transactions(), 1, db.edge_labels, db.vertex_labels));
  EXPECT_THROW(sg_frequent_double_edges(edges.get(), transactions(), 1,
                                        db.edge_labels, db.vertex_labels,
                                        &stop),
               interrupted);
}

TEST_F(LongSteps, PreparingTheCountEnds) {
  EXPECT_THROW(graph_profiles(transactions(), &stop), interrupted);
  EXPECT_THROW(support_counter(transactions(), 1, &stop), interrupted);
}

TEST_F(LongSteps, GeneratingCandidatesEnds) {
  for (const int jobs : {1, 3})
    EXPECT_THROW(sg_generate_candidates(levels.children.get(),
                                        levels.cores.get(),
                                        {.jobs = jobs, .stop = &stop}),
                 interrupted);
}

TEST_F(LongSteps, PreparingGenerationEnds) {
  EXPECT_THROW(core_links(levels.cores.get(), levels.children.get(), 1, &stop),
               interrupted);
  const core_links links = links_of(levels);
  EXPECT_THROW(child_table(levels.children.get(), &links, &stop), interrupted);
  EXPECT_THROW(seen_extensions(levels.children.get(), &links, 1, &stop),
               interrupted);
  EXPECT_THROW(closure_filter(levels.children.get(), &stop), interrupted);
}

TEST_F(LongSteps, JoiningEnds) {
  const core_links links = links_of(levels);
  const child_table table(levels.children.get(), &links);
  derived_parents known(levels.children.get(), &table);
  registration registry(levels.children.get(), labeller(), &known);
  seen_extensions seen(levels.children.get(), &links);
  join_context context(levels.children.get(), &links, &registry, &seen);
  context.poll = interruption_poll(&stop, 1);
  for (int id = 0; id < sg_set_size(levels.cores.get()); id++) {
    const subgraph *core = sg_set_get(levels.cores.get(), id);
    if (core->rigid || sg_child_size(core) == 0)
      continue;
    const int child = sg_child_at(core, 0);
    const subgraph *sg = sg_set_get(levels.children.get(), child);
    const sg_parent *entry = sg_find_kept(sg, id);
    const edge_place place = sg_place_in_core(entry);
    EXPECT_THROW(sg_join(child, child, entry, entry, {&place, 1}, &context),
                 interrupted);
    return;
  }
  ADD_FAILURE() << "no core to join through";
}

TEST_F(LongSteps, CandidatesOfSeveralThreadsStillHaveAnOwner) {
  candidate_set to(&stop);
  candidate_set from;
  const int n = sg_set_size(made.get());
  ASSERT_GT(n, 1024);
  for (int i = 0; i < n; i++)
    from.insert(sg_set_get(made.get(), i));
  EXPECT_THROW(to.take_over(&from), interrupted);
  EXPECT_GT(to.size(), 0);
  EXPECT_LT(to.size(), n);
}

TEST_F(LongSteps, CompactingLeavesEveryRecordAnOwner) {
  const sg_set_ptr set(sg_set_create());
  const int n = sg_set_size(made.get());
  for (int i = 0; i < n; i++)
    sg_set_push(set.get(),
                sg_ptr(sg_copy(sg_set_get(made.get(), i), &set->blocks)));
  set->blocks.take(2 * set->blocks.taken()); // as of records that are gone
  const std::vector<int> before = contents(set.get());
  EXPECT_THROW(sg_set_compact(set.get(), &stop), interrupted);
  EXPECT_EQ(contents(set.get()), before);
}

TEST_F(LongSteps, SortingLeavesTheSetAsItWas) {
  std::reverse(ksstack_array<subgraph *>(made.get()),
               ksstack_array<subgraph *>(made.get()) + sg_set_size(made.get()));
  const std::vector<int> before = contents(made.get());
  EXPECT_THROW(sg_set_sort(made.get(), &stop), interrupted);
  EXPECT_EQ(contents(made.get()), before);
}

TEST_F(LongSteps, GrowingTablesStayAsTheyWere) {
  extension_set seen(&stop);
  int added = 0;
  const auto add_all = [&] {
    for (;; added++)
      seen.insert(closing_extension(added, 0, 1, 0));
  };
  EXPECT_THROW(add_all(), interrupted);
  for (int i = 0; i < added; i++)
    EXPECT_TRUE(seen.contains(closing_extension(i, 0, 1, 0)));
  EXPECT_FALSE(seen.contains(closing_extension(added, 0, 1, 0)));
}

TEST_F(LongSteps, GrowingSetsOfWordsStayAsTheyWere) {
  word_set words(&stop);
  uint64_t added = 0;
  const auto add_all = [&] {
    for (;; added++)
      words.insert(added + 1);
  };
  EXPECT_THROW(add_all(), interrupted);
  for (uint64_t w = 1; w <= added; w++)
    EXPECT_TRUE(words.contains(w));
  EXPECT_FALSE(words.contains(added + 1));
}

TEST_F(LongSteps, BoundsEndOnAnyNumberOfThreads) {
  for (const int jobs : {1, 3}) {
    EXPECT_THROW(bound(jobs), interrupted);
    made = candidates_of(levels);
  }
  EXPECT_THROW(tid_lists(levels.children.get(), transactions()->count, &stop),
               interrupted);
}

TEST_F(LongSteps, CountingEndsOnAnyNumberOfThreads) {
  for (const int jobs : {1, 3}) {
    std::stop_source source;
    const interruption later(source.get_token());
    support_counter counter(transactions(), jobs, &later);
    // Counting frees TID lists of the level below, also where it ends early.
    const sg_set_ptr children(sg_set_create());
    for (int i = 0; i < sg_set_size(levels.children.get()); i++)
      sg_set_push(children.get(),
                  sg_ptr(sg_copy(sg_set_get(levels.children.get(), i))));
    sg_filter_candidates_by_support(made.get(), children.get(), transactions(),
                                    minsup);
    source.request_stop();
    EXPECT_THROW(counter.count_all(made.get(), children.get(), minsup),
                 interrupted);
    made = candidates_of(levels);
  }
}

TEST_F(LongSteps, ListingChildrenEnds) {
  sg_set_ptr many(sg_set_create());
  for (int i = 0; i < 5000; i++)
    sg_set_push(many.get(), sg_ptr(sg_copy(sg_set_get(made.get(), 0))));
  EXPECT_THROW(core_links(levels.children.get(), many.get(), 1, &stop),
               interrupted);
}

// Searches that would take hours, or longer than anyone waits.
TEST_F(LongSteps, OneSearchInOneTransactionEnds) {
  constexpr int m = 9;
  const int n = 2 * m + 2;
  std::vector<test_edge> edges;
  for (int u = 0; u < m; u++)
    for (int w = m; w < n; w++)
      edges.push_back({u, w});
  const graph_ptr sides = make_graph(std::vector<int>(n, 0), edges);
  const graph_ptr path = path_graph(n);
  search_plan plan(path.get(), identity_of(n).data(), &stop);
  std::vector<int> image(n);
  EXPECT_THROW(plan.find(sides.get(), image.data()), interrupted);
  // The plan can be used again.
  const graph_ptr small = path_graph(3);
  plan.set(small.get(), identity_of(3).data());
  ASSERT_TRUE(plan.find(sides.get(), image.data()));
  EXPECT_EQ(image[0], 0);
  EXPECT_EQ(image[1], m);
  EXPECT_EQ(image[2], 1);
}

TEST_F(LongSteps, FindingGeneratorsEnds) {
  automorphism_search search(&stop);
  xvector<int> perms;
  EXPECT_THROW(search.find(ring_graph(3000).get(), &perms), interrupted);
}

TEST_F(LongSteps, PreparingASearchWithDomainsEnds) {
  const graph_ptr path = path_graph(5);
  const graph_ptr complete = complete_graph(400);
  domain_search search(&stop);
  search.set(path.get(), {0, 1, 2, 3, 4}, complete.get());
  EXPECT_THROW(search.find(0), interrupted);
  // It can be used again.
  const graph_ptr ring = ring_graph(6);
  search.set(path.get(), {0, 1, 2, 3, 4}, ring.get());
  ASSERT_EQ(search.find(1), domain_search::answer::found);
  EXPECT_EQ(std::vector<int>(search.image(), search.image() + 5),
            (std::vector<int>{1, 0, 5, 4, 3}));
}

TEST_F(LongSteps, ListingAutomorphismsEnds) {
  const graph_ptr star = star_graph(25);
  const automorphism_cache_ptr cache(automorphism_cache_create());
  interruption_poll poll(&stop, 100000);
  EXPECT_THROW(automorphism_cache_find(cache.get(), 0, star.get(), &poll),
               interrupted);
}

TEST_F(LongSteps, CanonicalFormsEnd) {
  // All vertices look alike, but some are in complete graphs and some are not:
  // cells are no orbits, so searches have to try them.
  std::vector<test_edge> edges;
  int n = 0;
  for (int part = 0; part < 20; part++, n += 4)
    for (int u = 0; u < 4; u++)
      for (int w = u + 1; w < 4; w++)
        edges.push_back({n + u, n + w});
  for (int part = 0; part < 20; part++, n += 6)
    for (int u = 0; u < 3; u++)
      for (int w = 3; w < 6; w++)
        edges.push_back({n + u, n + w});
  const graph_ptr g =
      make_graph(std::vector<int>(static_cast<size_t>(n), 0), edges);
  labeller stepwise(labeller::default_threshold, form::prescribed, &stop);
  EXPECT_THROW(stepwise.canonicalize(g.get()), interrupted);
  labeller exhaustive(1000, form::prescribed, &stop);
  EXPECT_THROW(exhaustive.canonicalize(g.get()), interrupted);
  labeller exact(labeller::default_threshold, form::exact, &stop);
  EXPECT_THROW(exact.canonicalize(g.get()), interrupted);
  EXPECT_EQ(g->vid[0], 0);
  graph_check(g.get());
}

} // namespace kestro
