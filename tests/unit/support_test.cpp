#include "mining/support.h"

#include <gtest/gtest.h>

#include <utility>

#include "mining/embeddings.h"
#include "mining/occurrences.h"
#include "mining/parents.h"
#include "reference/mining/sg_set.h"
#include "reference/mining/support.h"
#include "support/count_level.h"
#include "support/fatal.h"
#include "support/records.h"

namespace kestro {

using ints = std::vector<int>;

static graph_list_ptr paths(const ints &vertices) {
  graph_list_ptr list(graph_list_new());
  for (const int n : vertices)
    graph_list_push(path_graph(n), list.get());
  return list;
}

// A candidate with these parents.
static sg_ptr candidate(const graph_ptr &g, const ints &pids) {
  sg_ptr sg = canonical_record(g);
  for (const int pid : pids)
    add_parent(sg.get(), pid);
  return sg;
}

static ints common_tids(const std::vector<ints> &tids, const ints &pids) {
  const sg_ptr sg = candidate(path_graph(3), pids);
  sg_intersect_parent_tids(sg.get(), level_with_tids(tids).get(),
                           paths({3, 3, 3, 3, 3, 3}).get());
  return ids_of(sg->tid);
}

TEST(IntersectParentTids, AreThoseOfAllParents) {
  const std::vector<ints> tids = {{0, 1, 3, 5}, {1, 2, 3}, {0, 3, 4, 5}};
  EXPECT_EQ(common_tids(tids, {0}), (ints{0, 1, 3, 5}));
  EXPECT_EQ(common_tids(tids, {0, 1}), (ints{1, 3}));
  EXPECT_EQ(common_tids(tids, {0, 1, 2}), (ints{3}));
}

TEST(IntersectParentTids, OfDisjointParentsAreNone) {
  EXPECT_EQ(common_tids({{0, 2, 4}, {1, 3, 5}}, {0, 1}), ints());
}

TEST(IntersectParentTids, WithoutParentsAreNone) {
  EXPECT_EQ(common_tids({{0, 1}}, {}), ints());
}

TEST(IntersectParentTidsFatal, RecordWithoutParentIds) {
  const sg_ptr whole = candidate(path_graph(3), {});
  std::vector<int64_t> memory(sg_size(4, 3) / 8 + 1);
  subgraph *sg = sg_light_copy(whole.get(), memory.data());
  EXPECT_EQ(fatal_text([&] {
              sg_intersect_parent_tids(sg, level_with_tids({{0}}).get(),
                                       paths({3}).get());
            }),
            "subgraph.c:N: null pid\n");
}

TEST(IntersectParentTidsFatal, ListThatRepeatsATransaction) {
  EXPECT_EQ(fatal_text([] {
              common_tids({{1, 1}}, {0});
            }),
            "subgraph.c:N: something wrong\n");
}

TEST(IntersectParentTidsFatal, ParentThatIsNotInTheLevel) {
  EXPECT_EQ(fatal_text([] { common_tids({{1}}, {1}); }),
            "stack.c:N: invalid index\n");
}

TEST(FilterCandidates, DropsThoseWhoseBoundIsTooSmall) {
  const sg_set_ptr prev = level_with_tids({{0, 1, 2}, {1, 2, 3}, {3}});
  const sg_set_ptr cand(sg_set_create());
  sg_set_insert(cand.get(), candidate(path_graph(4), {0, 1}));
  sg_set_insert(cand.get(), candidate(star_graph(4), {1, 2}));
  sg_set_insert(cand.get(), candidate(ring_graph(3), {0, 2}));
  sg_filter_candidates_by_support(cand.get(), prev.get(),
                                  paths({3, 3, 3, 3}).get(), 2);
  ASSERT_EQ(sg_set_size(cand.get()), 1);
  const subgraph *sg = sg_set_get(cand.get(), 0);
  EXPECT_EQ(sg_compare(sg, canonical_record(path_graph(4)).get()), 0);
  EXPECT_EQ(ids_of(sg->tid), (ints{1, 2}));
}

TEST(FilterCandidates, BoundOfExactlyTheMinimumStays) {
  const sg_set_ptr prev = level_with_tids({{0, 1}});
  for (const int minsup : {2, 3}) {
    const sg_set_ptr cand(sg_set_create());
    sg_set_insert(cand.get(), candidate(path_graph(4), {0}));
    sg_filter_candidates_by_support(cand.get(), prev.get(), paths({3, 3}).get(),
                                    minsup);
    EXPECT_EQ(sg_set_size(cand.get()), minsup == 2 ? 1 : 0);
  }
}

TEST(FilterCandidates, RestIsSorted) {
  const sg_set_ptr prev = level_with_tids({{0}});
  const sg_set_ptr cand(sg_set_create());
  for (const graph_ptr &g : {path_graph(4), star_graph(4), ring_graph(3)})
    sg_set_insert(cand.get(), candidate(g, {0}));
  sg_filter_candidates_by_support(cand.get(), prev.get(), paths({3}).get(), 1);
  EXPECT_EQ(sg_set_size(cand.get()), 3);
  sg_set_check(cand.get());
}

TEST(FilterCandidates, EmptySetStaysEmpty) {
  const sg_set_ptr cand(sg_set_create());
  sg_filter_candidates_by_support(cand.get(), level_with_tids({}).get(),
                                  paths({3}).get(), 1);
  EXPECT_EQ(sg_set_size(cand.get()), 0);
}

// The product's count of one record.
static int count_support(subgraph *sg, const sg_set *prev,
                         const graph_list *transactions, int minsup = 0) {
  const graph_profiles profiles(transactions);
  const edge_slots slots(transactions);
  return occurrence_finder(&profiles, &slots).find(sg, prev, minsup);
}

// The support of a record without parent entries, found by search alone, and
// the plain way.
static int counted(const sg_ptr &sg, const graph_list_ptr &database) {
  const sg_set_ptr prev = level_with_tids({});
  const sg_ptr plain(sg_copy(sg.get()));
  const int support = count_support(sg.get(), prev.get(), database.get());
  EXPECT_EQ(sg_count_support(plain.get(), prev.get(), database.get()), support);
  EXPECT_EQ(ids_of(plain->tid), ids_of(sg->tid));
  return support;
}

TEST(CountSupport, KeepsTheTransactionsThatContainThePattern) {
  // Paths of 4 and more vertices contain a path of 4; smaller ones are skipped.
  const graph_list_ptr database = paths({5, 3, 4, 2, 9, 4});
  const sg_ptr sg = candidate(path_graph(4), {});
  set_tids(sg.get(), {0, 1, 2, 3, 5});
  EXPECT_EQ(counted(sg, database), 3);
  EXPECT_EQ(ids_of(sg->tid), (ints{0, 2, 5})); // 4 is not in the bound
}

TEST(CountSupport, WholeBoundCanStay) {
  const graph_list_ptr database = paths({4, 5, 6});
  const sg_ptr sg = candidate(path_graph(4), {});
  set_tids(sg.get(), {0, 1, 2});
  EXPECT_EQ(counted(sg, database), 3);
  EXPECT_EQ(ids_of(sg->tid), (ints{0, 1, 2}));
}

TEST(CountSupport, OfNoTransactionIsZero) {
  const graph_list_ptr database = paths({8, 8});
  const sg_ptr sg = candidate(ring_graph(3), {});
  set_tids(sg.get(), {0, 1});
  EXPECT_EQ(counted(sg, database), 0);
  EXPECT_EQ(ids_of(sg->tid), ints());
  EXPECT_EQ(counted(sg, database), 0);
}

TEST(CountSupport, TransactionsWithEnoughVerticesButTooFewSlotsAreSkipped) {
  const graph_list_ptr database = database_of(
      make_graph({0, 0, 0, 0, 0}, {{0, 1}}), ring_graph(3), path_graph(3));
  const sg_ptr sg = candidate(ring_graph(3), {});
  set_tids(sg.get(), {0, 1, 2});
  EXPECT_EQ(counted(sg, database), 1);
  EXPECT_EQ(ids_of(sg->tid), (ints{1}));
}

TEST(CountSupport, AgreesWithTheSlowMatcher) {
  for (unsigned seed = 0; seed < 60; seed++) {
    test_rng rng(seed);
    const sg_ptr sg = candidate(random_graph(rng, {4, 1, 2, 1, true}), {});
    graph_list_ptr database(graph_list_new());
    ints expected;
    for (int tid = 0; tid < 8; tid++) {
      graph_ptr t = random_graph(rng, {6, 5, 2, 1, false});
      if (!naive_maps(sg->g, t.get()).empty())
        expected.push_back(tid);
      graph_list_push(std::move(t), database.get());
    }
    set_tids(sg.get(), identity_of(8));
    EXPECT_EQ(counted(sg, database), static_cast<int>(expected.size()));
    EXPECT_EQ(ids_of(sg->tid), expected) << "seed " << seed;
  }
}

// The rows of a record, one vector each.
static std::vector<ints> rows_of(const subgraph *sg) {
  std::vector<ints> rows;
  for (int i = 0; i < sg->rows->count; i++)
    rows.emplace_back(sg_row<uint8_t>(sg, i),
                      sg_row<uint8_t>(sg, i) + sg->g->vs);
  return rows;
}

// The only row of a record must place it in t.
static void expect_one_row(const subgraph *sg, const graph *t) {
  ASSERT_EQ(sg->rows->count, 1);
  EXPECT_TRUE(is_mapping(sg->g, t, rows_of(sg)[0]));
}

static void give_rows(subgraph *sg, const std::vector<ints> &rows) {
  const int room =
      std::max(std::max(1, sg_tid_size(sg)), static_cast<int>(rows.size()));
  sg->rows = ksstack_new(room, sg->g->vs);
  for (const ints &images : rows)
    sg_push_row(sg, images.data());
}

// A level of one path 0 - 1 with these transactions and rows.
static sg_set_ptr level_with_rows(const ints &tids,
                                  const std::vector<ints> &rows) {
  sg_set_ptr level = level_with_tids({tids});
  give_rows(sg_set_get(level.get(), 0), rows);
  return level;
}

// The path 1 - 0 - 2 over these transactions, whose edge 0-2 the first pattern
// of prev lacks; its own rows are asked for.
static sg_ptr longer_path(const ints &tids, const sg_set_ptr &prev) {
  sg_ptr sg = candidate(make_graph({0, 0, 0}, {{0, 1}, {0, 2}}), {0});
  set_tids(sg.get(), tids);
  sg_update_parent_info(sg.get(), parent_entry(0, 0, 2, {0, 1, -1}),
                        prev.get());
  give_rows(sg.get(), {});
  return sg;
}

TEST(CountSupport, ExtendsTheRowsOfAParent) {
  // A search would find 0 1 2 in the first star; the parent's row leads to
  // 0 3 1.
  const graph_list_ptr database =
      database_of(star_graph(4), path_graph(2), star_graph(3));
  const sg_set_ptr prev = level_with_rows({0, 1, 2}, {{0, 3}, {0, 1}, {0, 2}});
  const sg_ptr sg = longer_path({0, 1, 2}, prev);
  EXPECT_EQ(count_support(sg.get(), prev.get(), database.get()), 2);
  EXPECT_EQ(ids_of(sg->tid), (ints{0, 2}));
  EXPECT_EQ(rows_of(sg.get()), (std::vector<ints>{{0, 3, 1}, {0, 2, 1}}));
}

TEST(CountSupport, ParentsTransactionsOutsideTheBoundArePassedOver) {
  const graph_list_ptr database =
      database_of(star_graph(3), star_graph(4), star_graph(5), star_graph(6));
  const sg_set_ptr prev =
      level_with_rows({0, 1, 2, 3}, {{0, 1}, {0, 2}, {0, 3}, {0, 4}});
  const sg_ptr sg = longer_path({1, 3}, prev);
  EXPECT_EQ(count_support(sg.get(), prev.get(), database.get()), 2);
  EXPECT_EQ(rows_of(sg.get()), (std::vector<ints>{{0, 2, 1}, {0, 4, 1}}));
}

TEST(CountSupport, SearchFollowsWhereARowLeadsNowhere) {
  // The parent was found at a leaf of the star, where no further edge is.
  const graph_list_ptr database = database_of(star_graph(4));
  const sg_set_ptr prev = level_with_rows({0}, {{2, 0}});
  const sg_ptr sg = longer_path({0}, prev);
  EXPECT_EQ(count_support(sg.get(), prev.get(), database.get()), 1);
  expect_one_row(sg.get(), graph_list_at(database.get(), 0));
}

TEST(CountSupport, ParentWithoutRowsLeavesItToTheSearch) {
  const graph_list_ptr database = database_of(path_graph(2), star_graph(4));
  const sg_set_ptr prev = level_with_tids({{0, 1}});
  const sg_ptr sg = longer_path({0, 1}, prev);
  EXPECT_EQ(count_support(sg.get(), prev.get(), database.get()), 1);
  expect_one_row(sg.get(), graph_list_at(database.get(), 1));
}

// The count stops where minsup is out of reach: exact from minsup on, below it
// otherwise; tid and rows stay parallel.
TEST(CountSupport, IsExactFromMinsupOn) {
  for (unsigned seed = 0; seed < 40; seed++) {
    test_rng rng(seed);
    const graph_ptr g = random_graph(rng, {4, 1, 2, 1, true});
    graph_list_ptr database(graph_list_new());
    int support = 0;
    for (int tid = 0; tid < 10; tid++) {
      graph_ptr t = random_graph(rng, {6, 5, 2, 1, false});
      support += !naive_maps(g.get(), t.get()).empty();
      graph_list_push(std::move(t), database.get());
    }
    for (int minsup = 0; minsup <= 11; minsup++) {
      const sg_ptr sg = record_of(g);
      set_tids(sg.get(), identity_of(10));
      give_rows(sg.get(), {});
      const int count = count_support(sg.get(), level_with_tids({}).get(),
                                      database.get(), minsup);
      if (support >= minsup)
        EXPECT_EQ(count, support) << "seed " << seed;
      else
        EXPECT_LT(count, minsup) << "seed " << seed;
      EXPECT_LE(count, support);
      ASSERT_EQ(sg_tid_size(sg.get()), count);
      ASSERT_EQ(sg->rows->count, count);
      for (int i = 0; i < count; i++)
        EXPECT_TRUE(is_mapping(
            sg->g, graph_list_at(database.get(), sg_tid_at(sg.get(), i)),
            rows_of(sg.get())[static_cast<size_t>(i)]));
    }
  }
}

// A candidate whose bound is tids, with parent entries for pids.
static sg_ptr bounded(const graph_ptr &g, const ints &tids, const ints &pids,
                      const sg_set_ptr &prev) {
  sg_ptr sg = candidate(g, pids);
  set_tids(sg.get(), tids);
  for (const int pid : pids)
    sg_update_parent_info(
        sg.get(), parent_entry(pid, 0, 1, ints(static_cast<size_t>(g->vs))),
        prev.get());
  return sg;
}

TEST(CountFrequents, KeepsFrequentOnesWithExactCounts) {
  const graph_list_ptr database =
      database_of(path_graph(5), star_graph(5), ring_graph(5), star_graph(4));
  const sg_set_ptr prev = level_with_tids({{0, 1, 2, 3}});
  sg_set *cand = sg_set_create();
  // Bounds of 4 and 4, supports of 2 and 2, and a triangle of none.
  sg_set_insert(cand, bounded(path_graph(4), {0, 1, 2, 3}, {0}, prev));
  sg_set_insert(cand, bounded(star_graph(4), {0, 1, 2, 3}, {0}, prev));
  sg_set_insert(cand, bounded(ring_graph(3), {0, 1, 2, 3}, {0}, prev));
  const sg_set_ptr level(count_level(cand, prev.get(), database.get(), 2));
  ASSERT_EQ(sg_set_size(level.get()), 2);
  sg_set_check(level.get());
  const subgraph *path =
      sg_set_find_record(level.get(), canonical_record(path_graph(4)).get());
  const subgraph *star =
      sg_set_find_record(level.get(), canonical_record(star_graph(4)).get());
  ASSERT_TRUE(path && star);
  EXPECT_EQ(path->count, 2);
  EXPECT_EQ(ids_of(path->tid), (ints{0, 2}));
  EXPECT_EQ(star->count, 2);
  EXPECT_EQ(ids_of(star->tid), (ints{1, 3}));
  EXPECT_EQ(ids_of(sg_set_get(prev.get(), 0)->child), (ints{0, 1}));
}

TEST(CountFrequents, AgreesWithThePlainWay) {
  int kept = 0;
  for (unsigned seed = 0; seed < 20; seed++) {
    test_rng rng(seed);
    graph_list_ptr database(graph_list_new());
    for (int tid = 0; tid < 8; tid++)
      graph_list_push(random_graph(rng, {7, 9, 2, 1, true}), database.get());
    const sg_set_ptr prev = level_with_tids({identity_of(8)});
    const sg_set_ptr plain_prev = level_with_tids({identity_of(8)});
    sg_set *cand = sg_set_create();
    sg_set *plain_cand = sg_set_create();
    for (int i = 0; i < 12; i++) {
      const graph_ptr g = random_graph(rng, {4, 1, 2, 1, true});
      if (sg_set_find(cand, canonical_record(g).get()) != -1)
        continue;
      sg_set_insert(cand, bounded(g, identity_of(8), {0}, prev));
      sg_set_insert(plain_cand, bounded(g, identity_of(8), {0}, plain_prev));
    }
    const sg_set_ptr level(count_level(cand, prev.get(), database.get(), 3));
    const sg_set_ptr plain(
        sg_count_frequents(plain_cand, plain_prev.get(), database.get(), 3));
    ASSERT_EQ(sg_set_size(level.get()), sg_set_size(plain.get()));
    for (int id = 0; id < sg_set_size(plain.get()); id++) {
      const subgraph *sg = sg_set_get(level.get(), id);
      const subgraph *expected = sg_set_get(plain.get(), id);
      EXPECT_EQ(sg_compare(sg, expected), 0);
      EXPECT_EQ(sg->count, expected->count);
      EXPECT_EQ(ids_of(sg->tid), ids_of(expected->tid)) << "seed " << seed;
    }
    EXPECT_EQ(ids_of(sg_set_get(prev.get(), 0)->child),
              ids_of(sg_set_get(plain_prev.get(), 0)->child));
    kept += sg_set_size(plain.get());
  }
  EXPECT_GT(kept, 20);
}

TEST(CountFrequents, ChildrenAreRegisteredUnderTheKeptParentsOnly) {
  const graph_list_ptr database = database_of(path_graph(4));
  const sg_set_ptr prev = level_with_tids({{0, 1, 2}, {0}, {0, 1}});
  sg_set *cand = sg_set_create();
  sg_set_insert(cand, bounded(path_graph(4), {0}, {0, 1, 2}, prev));
  const sg_set_ptr level(count_level(cand, prev.get(), database.get(), 1));
  ASSERT_EQ(sg_set_size(level.get()), 1);
  EXPECT_EQ(pids_of(sg_set_get(level.get(), 0)), (ints{0, 1, 2}));
  EXPECT_EQ(ids_of(sg_set_get(prev.get(), 0)->child), ints());
  EXPECT_EQ(ids_of(sg_set_get(prev.get(), 1)->child), (ints{0}));
  EXPECT_EQ(ids_of(sg_set_get(prev.get(), 2)->child), (ints{0}));
}

// A level of the paths above, its only candidate counted.
static sg_set_ptr counted_paths(const graph_list_ptr &database,
                                const sg_set_ptr &prev, const ints &tids) {
  sg_ptr sg = longer_path(tids, prev);
  ksstack_free(sg->rows);
  sg->rows = nullptr;
  sg_set *cand = sg_set_create();
  sg_set_insert(cand, std::move(sg));
  return sg_set_ptr(count_level(cand, prev.get(), database.get(), 1));
}

TEST(CountFrequents, RowsGoFromOneLevelToTheNext) {
  const graph_list_ptr database =
      database_of(star_graph(4), path_graph(2), star_graph(3));
  const sg_set_ptr prev = level_with_rows({0, 1, 2}, {{0, 3}, {0, 1}, {0, 2}});
  const sg_set_ptr level = counted_paths(database, prev, {0, 1, 2});
  ASSERT_EQ(sg_set_size(level.get()), 1);
  EXPECT_EQ(ids_of(sg_set_get(level.get(), 0)->tid), (ints{0, 2}));
  EXPECT_EQ(rows_of(sg_set_get(level.get(), 0)),
            (std::vector<ints>{{0, 3, 1}, {0, 2, 1}}));
}

TEST(CountFrequents, WithoutBudgetThereAreNoRows) {
  const graph_list_ptr database =
      database_of(star_graph(4), make_graph(ints(65537, 0), {}), star_graph(3));
  const sg_set_ptr prev = level_with_tids({{0, 2}});
  const sg_set_ptr level = counted_paths(database, prev, {0, 2});
  ASSERT_EQ(sg_set_size(level.get()), 1);
  EXPECT_EQ(sg_set_get(level.get(), 0)->rows, nullptr);
  EXPECT_EQ(ids_of(sg_set_get(level.get(), 0)->tid), (ints{0, 2}));
}

// Gives the last pattern of prev rows of that many bytes, an even number, and
// cand a last candidate below it, which occurs nowhere, so that they stay until
// all others have been counted.
static void take_budget(long long bytes, const sg_set_ptr &prev, sg_set *cand) {
  const int last = sg_set_size(prev.get()) - 1;
  sg_set_get(prev.get(), last)->rows =
      ksstack_new(static_cast<int>(bytes / 2), 2);
  sg_set_insert(cand, bounded(ring_graph(100), {}, {last}, prev));
}

TEST(CountFrequents, BudgetOfInfrequentCandidatesServesTheOthers) {
  // Before the one that occurs stand more candidates than rows have room for.
  const graph_list_ptr database = database_of(path_graph(4));
  const sg_set_ptr prev = level_with_tids({{0}, {0}});
  embedding_budget budget(database.get());
  for (int alive = 0; alive < 3; alive++)
    budget.add_pattern();
  constexpr int room = 5; // for candidates of four vertices
  sg_set *cand = sg_set_create();
  take_budget((budget.bytes() - 4 * room) / 2 * 2, prev, cand);
  for (int label = 1; label <= 10 * room; label++)
    sg_set_insert(
        cand, bounded(make_graph({0, 0, 0, 0}, {{0, 1, label}, {1, 2}, {2, 3}}),
                      {0}, {0}, prev));
  sg_set_insert(cand, bounded(path_graph(4), {0}, {0}, prev));
  ASSERT_GT(sg_set_find(cand, canonical_record(path_graph(4)).get()), room);
  const sg_set_ptr level(count_level(cand, prev.get(), database.get(), 1));
  ASSERT_EQ(sg_set_size(level.get()), 1);
  const subgraph *sg = sg_set_get(level.get(), 0);
  ASSERT_NE(sg->rows, nullptr);
  expect_one_row(sg, graph_list_at(database.get(), 0));
}

TEST(CountFrequents, LevelBeforeIsFreedOnceItsLastCandidateIsCounted) {
  const graph_list_ptr database = database_of(star_graph(3));
  for (const int jobs : {1, 2}) {
    const sg_set_ptr prev = level_with_rows({0}, {{0, 1}});
    subgraph *parent = sg_set_get(prev.get(), 0);
    add_parent(parent, 3);
    const sg_set_ptr cand(sg_set_create());
    sg_set_insert(cand.get(), longer_path({0}, prev));
    sg_ptr ring = bounded(ring_graph(3), {0}, {0}, prev);
    sg_set_insert(cand.get(), std::move(ring));
    for (int i = 0; i < 2; i++)
      ksstack_free(std::exchange(sg_set_get(cand.get(), i)->rows, nullptr));
    support_counter(database.get(), jobs).count_all(cand.get(), prev.get(), 1);
    ASSERT_EQ(sg_set_size(cand.get()), 1) << jobs;
    EXPECT_EQ(rows_of(sg_set_get(cand.get(), 0)),
              (std::vector<ints>{{0, 1, 2}}));
    EXPECT_EQ(parent->rows, nullptr);
    EXPECT_EQ(parent->tid, nullptr);
    EXPECT_EQ(pids_of(parent), (ints{3}));
    EXPECT_EQ(parent->count, 1);
  }
}

TEST(CountFrequents, RowsOfTheLevelBeforeTakeTheBudget) {
  const graph_list_ptr database = database_of(star_graph(3));
  for (const bool waits : {true, false}) {
    const sg_set_ptr prev = level_with_tids({{0}, {0}});
    sg_ptr sg = longer_path({0}, prev);
    ksstack_free(std::exchange(sg->rows, nullptr));
    sg_set *cand = sg_set_create();
    if (waits)
      take_budget(17 << 20, prev, cand);
    else // nobody needs them
      sg_set_get(prev.get(), 1)->rows = ksstack_new(17 << 19, 2);
    sg_set_insert(cand, std::move(sg));
    const sg_set_ptr level(count_level(cand, prev.get(), database.get(), 1));
    ASSERT_EQ(sg_set_size(level.get()), 1);
    EXPECT_EQ(sg_set_get(level.get(), 0)->rows == nullptr, waits);
    EXPECT_EQ(sg_set_get(prev.get(), 1)->rows, nullptr);
  }
}

// Counts paths of these numbers of vertices over all transactions, behind a
// level of some patterns, whose rows take 16 MiB; returns how many were given
// rows.
static int given_rows(const graph_list_ptr &database, int patterns,
                      const ints &vertices) {
  const sg_set_ptr prev =
      level_with_tids(std::vector<ints>(static_cast<size_t>(patterns), {0}));
  sg_set *cand = sg_set_create();
  for (const int vs : vertices) {
    sg_ptr sg = candidate(path_graph(vs), {});
    set_tids(sg.get(), identity_of(database->count));
    sg_set_insert(cand, std::move(sg));
  }
  take_budget(16 << 20, prev, cand);
  const sg_set_ptr level(count_level(cand, prev.get(), database.get(), 1));
  EXPECT_EQ(sg_set_size(level.get()), static_cast<int>(vertices.size()));
  int given = 0;
  for (int i = 0; i < sg_set_size(level.get()); i++)
    given += sg_set_get(level.get(), i)->rows != nullptr;
  return given;
}

// A path of 60 vertices and ninety-nine single ones.  The rows of a candidate
// of 60 vertices over all of them take more than a quarter of their memory.
static graph_list_ptr path_and_vertices() {
  ints vertices(100, 1);
  vertices[0] = 60;
  return paths(vertices);
}

TEST(CountFrequents, RowsGiveUpTheRoomOfTheBound) {
  ints vertices(400, 1);
  vertices[7] = 3;
  const graph_list_ptr database = paths(vertices);
  const sg_set_ptr prev = level_with_tids({{7}});
  const sg_set_ptr level =
      counted_paths(database, prev, identity_of(database->count));
  ASSERT_EQ(sg_set_size(level.get()), 1);
  const subgraph *sg = sg_set_get(level.get(), 0);
  ASSERT_NE(sg->rows, nullptr);
  EXPECT_EQ(sg->rows->count, 1);
  EXPECT_EQ(sg->rows->capacity, 1);
}

TEST(CountFrequents, PatternsOfTheLevelBeforeMakeRoomForRows) {
  EXPECT_EQ(given_rows(path_and_vertices(), 1, {60}), 0);
  EXPECT_EQ(given_rows(path_and_vertices(), 9, {60}), 1);
}

TEST(CountFrequents, RoomThatACandidateDidNotFillServesTheNext) {
  // There is room for one of them over all transactions; each is in one.
  EXPECT_EQ(given_rows(path_and_vertices(), 6, {59, 60}), 2);
}

TEST(CountFrequents, RowsOfALevelStayWithinTheBudget) {
  // Paths of 49 to 60 vertices, each in all of two hundred paths: a row takes
  // about an eighth of the quarter of a path's memory.
  ints vertices = identity_of(12);
  for (int &vs : vertices)
    vs += 49;
  const int given = given_rows(paths(ints(200, 60)), 1, vertices);
  EXPECT_GT(given, 4);
  EXPECT_LT(given, 12);
}

TEST(CountFrequents, OfNoneIsAnEmptyLevel) {
  const graph_list_ptr database = database_of(path_graph(4));
  const sg_set_ptr prev = level_with_tids({{0}});
  const sg_set_ptr level(
      count_level(sg_set_create(), prev.get(), database.get(), 1));
  EXPECT_EQ(sg_set_size(level.get()), 0);
}

TEST(CountFrequents, OfNoneBehindNoneIsAnEmptyLevel) {
  const graph_list_ptr database = database_of(path_graph(4));
  const sg_set_ptr prev(sg_set_create());
  const sg_set_ptr level(
      count_level(sg_set_create(), prev.get(), database.get(), 1));
  EXPECT_EQ(sg_set_size(level.get()), 0);
}

TEST(CountAll, DropsInPlaceAndRegistersNoChildren) {
  const graph_list_ptr database =
      database_of(path_graph(5), star_graph(5), path_graph(4));
  const sg_set_ptr prev = level_with_tids({{0, 1, 2}});
  const sg_set_ptr cand(sg_set_create());
  sg_set_insert(cand.get(), bounded(path_graph(4), {0, 1, 2}, {0}, prev));
  sg_set_insert(cand.get(), bounded(star_graph(4), {0, 1, 2}, {0}, prev));
  const subgraph *path =
      sg_set_find_record(cand.get(), canonical_record(path_graph(4)).get());
  for (const int jobs : {1, 2}) {
    support_counter(database.get(), jobs).count_all(cand.get(), prev.get(), 2);
    ASSERT_EQ(sg_set_size(cand.get()), 1) << jobs;
    EXPECT_EQ(sg_set_get(cand.get(), 0), path);
    EXPECT_EQ(path->count, 2);
    EXPECT_EQ(ids_of(path->tid), (ints{0, 2}));
    ksstack_free(std::exchange(sg_set_get(cand.get(), 0)->rows, nullptr));
  }
  EXPECT_EQ(ids_of(sg_set_get(prev.get(), 0)->child), ints());
}

} // namespace kestro
