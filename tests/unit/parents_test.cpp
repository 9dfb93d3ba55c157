#include "mining/parents.h"

#include <algorithm>

#include <gtest/gtest.h>

#include "support/records.h"

namespace kestro {

using ints = std::vector<int>;

// A level whose patterns have these supports, by id.
static sg_set_ptr level_of(const ints &supports) {
  sg_set_ptr level(sg_set_create());
  for (const int support : supports) {
    sg_ptr sg = record_of(path_graph(2));
    sg->count = support;
    sg_set_push(level.get(), std::move(sg));
  }
  return level;
}

// The pids kept of those offered in turn.
static ints kept(const sg_set_ptr &level, const ints &offered) {
  const sg_ptr sg(sg_create(20, 3));
  for (const int pid : offered)
    sg_update_parent_info(sg.get(), parent_entry(pid, 0, 2, {0, 1, -1}),
                          level.get());
  return kept_of(sg.get());
}

TEST(Parents, FirstTwoAreKeptByPidWhateverTheirSupport) {
  EXPECT_EQ(kept(level_of({9, 9, 9}), {2}), (ints{2}));
  EXPECT_EQ(kept(level_of({9, 1, 5}), {2, 0}), (ints{0, 2}));
}

TEST(Parents, FirstEntryOfAParentStays) {
  const sg_set_ptr level = level_of({3, 4});
  const sg_ptr sg(sg_create(20, 3));
  sg_update_parent_info(sg.get(), parent_entry(1, 0, 2, {0, 1, -1}),
                        level.get());
  sg_update_parent_info(sg.get(), parent_entry(1, 0, 1, {1, -1, 0}),
                        level.get());
  ASSERT_EQ(sg_kept_size(sg.get()), 1);
  const sg_parent *entry = sg_kept_at(sg.get(), 0);
  EXPECT_EQ(entry->v, 2);
  EXPECT_EQ(map_of(entry), (ints{0, 1, -1}));
}

TEST(Parents, BetterThanBothReplacesTheWorseOne) {
  EXPECT_EQ(kept(level_of({5, 7, 1}), {0, 1, 2}), (ints{0, 2}));
  EXPECT_EQ(kept(level_of({7, 5, 1}), {0, 1, 2}), (ints{1, 2}));
}

TEST(Parents, BetterThanOneReplacesThatOne) {
  EXPECT_EQ(kept(level_of({7, 1, 5}), {0, 1, 2}), (ints{1, 2}));
  EXPECT_EQ(kept(level_of({1, 7, 5}), {0, 1, 2}), (ints{0, 2}));
}

TEST(Parents, WorseThanBothIsNotKept) {
  EXPECT_EQ(kept(level_of({1, 2, 5}), {0, 1, 2}), (ints{0, 1}));
}

TEST(Parents, OfEquallyFrequentOnesTheSmallerIdIsBetter) {
  EXPECT_EQ(kept(level_of({4, 4, 4}), {0, 1, 2}), (ints{0, 1}));
  EXPECT_EQ(kept(level_of({4, 4, 4}), {1, 2, 0}), (ints{0, 1}));
  EXPECT_EQ(kept(level_of({4, 4, 4}), {0, 2, 1}), (ints{0, 1}));
}

TEST(Parents, NewEntryIsInsertedByPid) {
  EXPECT_EQ(kept(level_of({1, 9, 8, 7}), {1, 2, 0}), (ints{0, 2}));
  EXPECT_EQ(kept(level_of({9, 2, 8, 3}), {0, 3, 1}), (ints{1, 3}));
}

TEST(Parents, KeptOnesAreTheTwoLeastFrequentInAnyOrderOfOffers) {
  const ints supports = {4, 2, 6, 2, 5};
  const sg_set_ptr level = level_of(supports);
  ints offered = identity_of(5);
  do {
    EXPECT_EQ(kept(level, offered), (ints{1, 3}));
  } while (std::next_permutation(offered.begin(), offered.end()));
}

TEST(Parents, EntriesOfFewerVerticesFitAWiderRecord) {
  const sg_set_ptr level = level_of({3, 4});
  for (const int vs : {3, 40, 200}) { // narrower and wider than most
    const sg_ptr sg(sg_create(2 * vs, vs));
    sg_update_parent_info(sg.get(), parent_entry(1, 0, 2, {0, 1, -1}),
                          level.get());
    sg_update_parent_info(sg.get(), parent_entry(0, 0, 1, {1, -1, 0}),
                          level.get());
    ASSERT_EQ(kept_of(sg.get()), (ints{0, 1})) << vs;
    const sg_parent *entry = sg_kept_at(sg.get(), 1);
    EXPECT_EQ(entry->v, 2);
    EXPECT_EQ(entry->vs, 3);
    EXPECT_EQ(map_of(entry), (ints{0, 1, -1}));
  }
}

TEST(ParentsDeath, TwoEntriesOfOneParentAreRefused) {
  const sg_set_ptr level = level_of({1, 2});
  const sg_ptr sg(sg_create(20, 3));
  const parent_entry twin(1, 0, 2, {0, 1, -1});
  for (const int i : {0, 1}) {
    sg_add_parent(sg.get(), twin);
    sg->kept[i] = i;
  }
  EXPECT_DEATH(sg_update_parent_info(
                   sg.get(), parent_entry(0, 0, 1, {0, -1, 1}), level.get()),
               "Assertion `cmpx0 && cmpx1 && cmp01' failed");
}

// The path 1-0-2 with labels 5, 6, 7 of vertices 0, 1, 2.
static sg_ptr path_record() {
  return record_of(make_graph({5, 6, 7}, {{0, 1, 8}, {0, 2, 9}}));
}

TEST(ParentIds, AreThoseOfAllEntriesOnce) {
  const sg_ptr sg = path_record();
  for (const int pid : {7, 3, 7, 300, 0})
    add_parent(sg.get(), pid);
  EXPECT_EQ(sg_parent_size(sg.get()), 5);
  EXPECT_EQ(pids_of(sg.get()), (ints{0, 3, 7, 300}));
  sg_clear_parents(sg.get());
  EXPECT_EQ(pids_of(sg.get()), ints());
}

TEST(ParentEdges, EdgeToAVertexThatWentIsPendantAtTheOtherEnd) {
  const sg_ptr sg = path_record();
  sg_add_parent(sg.get(), parent_entry(3, 0, 1, {1, -1, 0}));
  EXPECT_EQ(sg_parent_edge(sg.get(), sg_parent_at(sg.get(), 0)),
            pendant_extension(3, 1, 8, 6));
  // The same when the smaller end is the one that went.
  const sg_ptr turned =
      record_of(make_graph({6, 5, 7}, {{0, 1, 8}, {1, 2, 9}}));
  sg_add_parent(turned.get(), parent_entry(3, 0, 1, {-1, 1, 0}));
  EXPECT_EQ(sg_parent_edge(turned.get(), sg_parent_at(turned.get(), 0)),
            pendant_extension(3, 1, 8, 6));
}

TEST(ParentEdges, EdgeOnACycleIsClosingWithTheSmallerParentsVertexFirst) {
  const sg_ptr sg =
      record_of(make_graph({5, 6, 7}, {{0, 1, 8}, {0, 2, 9}, {1, 2, 4}}));
  sg_add_parent(sg.get(), parent_entry(3, 0, 1, {2, 1, 0}));
  EXPECT_EQ(sg_parent_edge(sg.get(), sg_parent_at(sg.get(), 0)),
            closing_extension(3, 1, 2, 8));
}

} // namespace kestro
