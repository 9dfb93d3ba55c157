#include "mining/candidates.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <utility>

#include "mining/first_levels.h"
#include "mining/support.h"
#include "reference/mining/joins.h"
#include "reference/mining/subgraph.h"
#include "support/count_level.h"
#include "support/records.h"

namespace kestro {

using ints = std::vector<int>;

// The first two levels of a database, with minimum support 1.
class Candidates : public testing::Test {
protected:
  template <class... Graph> void mine(Graph... graphs) {
    mine_list(database_of(std::move(graphs)...).get());
  }
  void mine_list(const graph_list *database) {
    cores.reset(sg_frequent_edges(database, 1, 3, 6));
    children.reset(sg_frequent_double_edges(cores.get(), database, 1, 3, 6));
    sg_register_children(children.get(), cores.get());
  }
  // The candidates; sets counts.
  sg_set_ptr generate(const generation_options &options = {}) {
    generation made =
        sg_generate_candidates(children.get(), cores.get(), options);
    counts = made.counts;
    return std::move(made.candidates);
  }
  static bool has(const sg_set_ptr &s, const graph_ptr &g) {
    return sg_set_find(s.get(), canonical_record(g).get()) != -1;
  }

  sg_set_ptr cores;
  sg_set_ptr children;
  registration_counts counts;
};

static graph_ptr labelled_path(const ints &vlabels) {
  std::vector<test_edge> edges;
  for (int i = 1; i < static_cast<int>(vlabels.size()); i++)
    edges.push_back({i - 1, i});
  return make_graph(vlabels, edges);
}

static void expect_same(const subgraph *a, const subgraph *b) {
  EXPECT_TRUE(same_structure(a->g, b->g));
  EXPECT_EQ(a->g->key, b->g->key);
  EXPECT_EQ(pids_of(a), pids_of(b));
  EXPECT_EQ(kept_of(a), kept_of(b));
  EXPECT_EQ(a->invariant, b->invariant);
  EXPECT_EQ(a->rigid, b->rigid);
  EXPECT_EQ(sg_parent_size(a), sg_parent_size(b));
}

TEST_F(Candidates, OfOneLabelArePathStarAndTriangle) {
  mine(path_graph(3));
  const sg_set_ptr out = generate();
  EXPECT_EQ(out->capacity, 1024);
  ASSERT_EQ(sg_set_size(out.get()), 3);
  EXPECT_TRUE(has(out, path_graph(4)));
  EXPECT_TRUE(has(out, star_graph(4)));
  EXPECT_TRUE(has(out, ring_graph(3)));
  sg_set_check(out.get());
  // The core's two automorphisms give one candidate and two.
  EXPECT_EQ(counts.attempts, 3);
  EXPECT_EQ(counts.accepted, 3);
}

TEST_F(Candidates, HaveParentsAndNothingElse) {
  mine(path_graph(3));
  const sg_set_ptr out = generate();
  for (int id = 0; id < 3; id++) {
    const subgraph *sg = sg_set_get(out.get(), id);
    EXPECT_EQ(pids_of(sg), (ints{0}));
    EXPECT_EQ(kept_of(sg), (ints{0}));
    EXPECT_EQ(sg->count, 0);
    EXPECT_EQ(sg_tid_size(sg) + sg_child_size(sg) + sg_cover_size(sg), 0);
  }
}

TEST_F(Candidates, CoreOfNChildrenJoinsEveryPairAndEachWithItself) {
  // Paths 1-0-x: the edge 0-1 has three children, each edge 0-x one; all are
  // rigid, so each of the 6 + 3 pairs gives one candidate, a star around 0.
  mine(labelled_path({1, 0, 2}), labelled_path({1, 0, 3}),
       labelled_path({1, 0, 4}));
  EXPECT_EQ(sg_set_size(generate().get()), 0);
  EXPECT_EQ(counts.attempts, 6 + 3);
  EXPECT_EQ(counts.newly_rejected, 6 + 3);
}

TEST_F(Candidates, WithoutASurvivorTheSetIsEmpty) {
  mine(labelled_path({1, 0, 2}));
  EXPECT_EQ(sg_set_size(generate().get()), 0);
  EXPECT_EQ(counts.accepted, 0);
}

TEST_F(Candidates, CoresWithoutChildrenGiveNoJoins) {
  mine(path_graph(3));
  for (int &kept : sg_set_get(children.get(), 0)->kept)
    kept = -1;
  EXPECT_EQ(sg_set_size(generate().get()), 0);
  EXPECT_EQ(counts.attempts, 0);
}

TEST_F(Candidates, DuplicatesAreKeptOnce) {
  // Each edge of the triangle 0-1-2 is the core of two paths.  Joined with each
  // other they give a path of their own and close the triangle, which so comes
  // three times; joined with itself each gives a star of an infrequent part.
  mine(make_graph({0, 1, 2}, {{0, 1}, {1, 2}, {0, 2}}));
  const sg_set_ptr out = generate();
  EXPECT_EQ(sg_set_size(out.get()), 3 + 1);
  EXPECT_TRUE(has(out, labelled_path({2, 0, 1, 2})));
  EXPECT_TRUE(has(out, labelled_path({0, 1, 2, 0})));
  EXPECT_TRUE(has(out, labelled_path({1, 2, 0, 1})));
  EXPECT_TRUE(has(out, make_graph({0, 1, 2}, {{0, 1}, {1, 2}, {0, 2}})));
  EXPECT_EQ(counts.accepted, 3 + 1);
  // Its form does not depend on how it is built, so the other ways to build it
  // are known from the first time on.
  EXPECT_EQ(counts.duplicates, 0);
  EXPECT_EQ(counts.newly_rejected, 6);
}

TEST_F(Candidates, CountsStartAnewWithEveryGeneration) {
  mine(path_graph(3));
  generate();
  generate();
  EXPECT_EQ(counts.attempts, 3);
}

TEST_F(Candidates, EveryAttemptHasOneOutcome) {
  test_rng rng(2);
  registration_counts all;
  for (int round = 0; round < 12; round++) {
    const graph_list_ptr database =
        database_of(random_graph(rng, {6, 3, 1 + round % 3, 1, true}),
                    random_graph(rng, {6, 3, 1 + round % 3, 1, true}));
    mine_list(database.get());
    for (int k = 3; k <= 5; k++) {
      sg_set_ptr out = generate();
      EXPECT_EQ(counts.accepted, sg_set_size(out.get()));
      EXPECT_EQ(counts.attempts, counts.already_rejected + counts.duplicates +
                                     counts.newly_rejected + counts.accepted);
      all.already_rejected += counts.already_rejected;
      all.duplicates += counts.duplicates;
      sg_filter_candidates_by_support(out.get(), children.get(), database.get(),
                                      1, 1);
      sg_set_ptr level(
          count_level(out.release(), children.get(), database.get(), 1));
      cores = std::exchange(children, std::move(level));
    }
  }
  EXPECT_GT(all.already_rejected, 0);
  EXPECT_GT(all.duplicates, 0);
}

TEST_F(Candidates, SeveralThreadsMakeTheSameRecords) {
  test_rng rng(1);
  for (int round = 0; round < 5; round++) {
    mine(random_graph(rng, {9, 4, 3, 2, true}),
         random_graph(rng, {9, 4, 3, 2, true}));
    const sg_set_ptr alone = generate();
    for (const int jobs : {2, 3, 7}) {
      const sg_set_ptr out = generate({.jobs = jobs});
      ASSERT_EQ(sg_set_size(out.get()), sg_set_size(alone.get())) << jobs;
      EXPECT_EQ(counts.accepted >= sg_set_size(out.get()), true);
      for (int i = 0; i < sg_set_size(out.get()); i++)
        expect_same(sg_set_get(out.get(), i), sg_set_get(alone.get(), i));
    }
  }
}

TEST_F(Candidates, SeveralThreadsCountAllAttempts) {
  // Six cores of different labels, as many joins whoever makes them: each path
  // has cores of its own, under which it is joined with itself.
  mine(labelled_path({0, 1, 2}), labelled_path({3, 4, 5}));
  generate();
  const long long attempts = counts.attempts;
  const sg_set_ptr again = generate({.jobs = 3});
  EXPECT_EQ(sg_set_size(again.get()), 0);
  EXPECT_EQ(counts.attempts, attempts);
  EXPECT_EQ(counts.newly_rejected, attempts);
}

TEST_F(Candidates, ThreadsLabelUnderTheThresholdAskedFor) {
  // With threshold 1 no form is searched exhaustively; four candidates or not,
  // all threads must agree on it.
  mine(path_graph(3), ring_graph(4));
  const sg_set_ptr alone = generate({.stabilizer_threshold = 1});
  const sg_set_ptr out = generate({.jobs = 7, .stabilizer_threshold = 1});
  ASSERT_EQ(sg_set_size(out.get()), sg_set_size(alone.get()));
  for (int i = 0; i < sg_set_size(out.get()); i++)
    expect_same(sg_set_get(out.get(), i), sg_set_get(alone.get(), i));
}

// What joining patterns of two edges needs.
struct pair_joiner {
  pair_joiner(const sg_set *children, const sg_set *cores)
      : links(cores, children), table(children, &links),
        derived(children, &table), registry(children, labeller(), &derived),
        seen(children, &links), context(children, &links, &registry, &seen) {}

  core_links links;
  child_table table;
  derived_parents derived;
  registration registry;
  seen_extensions seen;
  join_context context;
};

TEST_F(Candidates, JoinPairLooksForTheCoreInBothPatterns) {
  mine(labelled_path({1, 0, 2}), labelled_path({1, 0, 3}));
  pair_joiner joiner(children.get(), cores.get());
  const int core =
      sg_set_find(cores.get(), sg_ptr(sg_create_edge(0, 2, 0)).get());
  const bool first_has =
      sg_find_kept(sg_set_get(children.get(), 0), core) != nullptr;
  const int with = first_has ? 0 : 1;
  const int without = 1 - with;
  sg_join_pair(with, without, core, cores.get(), &joiner.context);
  sg_join_pair(without, with, core, cores.get(), &joiner.context);
  EXPECT_EQ(joiner.registry.counts.attempts, 0);
  sg_join_pair(with, with, core, cores.get(), &joiner.context);
  EXPECT_EQ(joiner.registry.counts.attempts, 1);
}

TEST_F(Candidates, JoinPairBuildsUponTheSecond) {
  // Two paths share the edge with labels 0 and 1; 2 and 3 stand at the other
  // end.
  mine(labelled_path({1, 0, 2}), labelled_path({1, 0, 3}));
  pair_joiner joiner(children.get(), cores.get());
  const int core =
      sg_set_find(cores.get(), sg_ptr(sg_create_edge(0, 1, 0)).get());
  const graph *first = sg_set_get(children.get(), 0)->g;
  const bool first_has_2 = std::count(first->vlabel, first->vlabel + 3, 2) != 0;
  const int with_2 = first_has_2 ? 0 : 1;
  const int with_3 = 1 - with_2;
  sg_join_pair(with_2, with_3, core, cores.get(), &joiner.context);
  EXPECT_FALSE(joiner.seen.contains(pendant_extension(with_2, 0, 0, 3)));
  EXPECT_TRUE(joiner.seen.contains(pendant_extension(with_3, 0, 0, 2)));
}

static ints map_of(const parent_entry &ea, const parent_entry &eb,
                   const ints &perm) {
  ints map(5, -77);
  setup_map(ea, eb, perm.data(), static_cast<int>(perm.size()), map.data());
  return map;
}

TEST(SetupMap, GoesThroughBothCoresAndThePermutation) {
  const parent_entry ea(0, 0, 2, {1, 0, -1});
  const parent_entry eb(0, 0, 1, {0, -1, 1});
  EXPECT_EQ(map_of(ea, eb, {0, 1}), (ints{2, 0, -1, -77, -77}));
  EXPECT_EQ(map_of(ea, eb, {1, 0}), (ints{0, 2, -1, -77, -77}));
}

TEST(SetupMap, WithoutAVertexOfItsOwnEveryVertexIsMapped) {
  const parent_entry ea(0, 0, 2, {2, 0, 1});
  const parent_entry eb(0, 2, 3, {0, 1, 2, -1});
  EXPECT_EQ(map_of(ea, eb, {0, 1, 2}), (ints{2, 0, 1, -77, -77}));
}

TEST(SetupMapDeath, CoreVertexBeyondTheCore) {
  const parent_entry good(0, 0, 2, {1, 0, -1});
  const parent_entry bad(0, 0, 2, {2, 0, -1});
  EXPECT_DEATH(map_of(good, bad, {0, 1}),
               "Assertion `g2_to_core2\\[i\\] < core_vs' failed");
  EXPECT_DEATH(map_of(bad, good, {0, 1}),
               "Assertion `g1_to_core1\\[i\\] < core_vs' failed");
  EXPECT_DEATH(map_of(good, good, {0, 2}),
               "Assertion `g1_to_core2\\[i\\] < core_vs' failed");
}

} // namespace kestro
