#include "mining/sg_set.h"

#include <gtest/gtest.h>

#include "reference/mining/sg_set.h"
#include "support/fatal.h"
#include "support/records.h"

namespace kestro {

// A record that is told apart by its key.
static sg_ptr keyed(int key) {
  sg_ptr sg = record_of(path_graph(2));
  sg->g->key = static_cast<uint32_t>(key);
  return sg;
}

static std::vector<int> keys_of(const sg_set_ptr &s) {
  std::vector<int> keys;
  for (int i = 0; i < sg_set_size(s.get()); i++)
    keys.push_back(static_cast<int>(sg_set_get(s.get(), i)->g->key));
  return keys;
}

static sg_set_ptr set_of(std::initializer_list<int> keys) {
  sg_set_ptr s(sg_set_create());
  for (const int key : keys)
    sg_set_insert(s.get(), keyed(key));
  return s;
}

using ints = std::vector<int>;

TEST(SgSet, IsCreatedEmptyWithRoomFor1024) {
  const sg_set_ptr s(sg_set_create());
  EXPECT_EQ(sg_set_size(s.get()), 0);
  EXPECT_EQ(s->capacity, 1024);
}

TEST(SgSet, PushAppendsAndDoublesWhenFull) {
  const sg_set_ptr s(sg_set_create());
  for (int i = 0; i <= 1024; i++)
    sg_set_push(s.get(), keyed(2000 - i));
  EXPECT_EQ(sg_set_size(s.get()), 1025);
  EXPECT_EQ(s->capacity, 2048);
  EXPECT_EQ(sg_set_get(s.get(), 1024)->g->key, 2000u - 1024u);
}

TEST(SgSet, InsertKeepsTheOrder) {
  EXPECT_EQ(keys_of(set_of({5, -1, 9, 0, 7})), (ints{-1, 0, 5, 7, 9}));
}

TEST(SgSet, InsertGoesBehindEqualRecords) {
  const sg_set_ptr s = set_of({1, 2, 3});
  sg_ptr twin = keyed(2);
  const subgraph *address = twin.get();
  sg_set_insert(s.get(), std::move(twin));
  EXPECT_EQ(keys_of(s), (ints{1, 2, 2, 3}));
  EXPECT_EQ(sg_set_get(s.get(), 2), address);
}

TEST(SgSet, SortOrdersWhatWasPushed) {
  const sg_set_ptr s(sg_set_create());
  for (const int key : {4, -2, 8, 0})
    sg_set_push(s.get(), keyed(key));
  sg_set_sort(s.get());
  EXPECT_EQ(keys_of(s), (ints{-2, 0, 4, 8}));
}

TEST(SgSet, SortIsThatOfRepeatedInsertion) {
  test_rng rng(2);
  const sg_set_ptr pushed(sg_set_create());
  const sg_set_ptr inserted(sg_set_create());
  for (int i = 0; i < 300; i++) {
    // Few keys, of both signs, on graphs of several sizes and labels.
    const graph_ptr g = random_graph(rng, {2 + i % 4, 1, 2, 1, true});
    g->key = static_cast<uint32_t>(random_below(rng, 5) - 2);
    for (const sg_set_ptr *s : {&pushed, &inserted}) {
      sg_ptr sg = record_of(g);
      sg->count = i; // tells equal ones apart
      s == &pushed ? sg_set_push(s->get(), std::move(sg))
                   : sg_set_insert(s->get(), std::move(sg));
    }
  }
  sg_set_sort(pushed.get());
  for (int i = 0; i < 300; i++)
    ASSERT_EQ(sg_set_get(pushed.get(), i)->count,
              sg_set_get(inserted.get(), i)->count)
        << i;
}

TEST(SgSet, SortOfAnEmptySet) {
  const sg_set_ptr s(sg_set_create());
  sg_set_sort(s.get());
  EXPECT_EQ(sg_set_size(s.get()), 0);
}

TEST(SgSet, FindGivesThePositionOrRecord) {
  const sg_set_ptr s = set_of({10, 20, 30});
  const sg_ptr present = keyed(20);
  const sg_ptr absent = keyed(25);
  EXPECT_EQ(sg_set_find(s.get(), present.get()), 1);
  EXPECT_EQ(sg_set_find(s.get(), absent.get()), -1);
  EXPECT_EQ(sg_set_find_record(s.get(), present.get()), sg_set_get(s.get(), 1));
  EXPECT_EQ(sg_set_find_record(s.get(), absent.get()), nullptr);
}

TEST(SgSet, FindInAnEmptySet) {
  const sg_set_ptr s(sg_set_create());
  EXPECT_EQ(sg_set_find(s.get(), keyed(1).get()), -1);
}

TEST(SgSet, RemoveTakesTheRecordOutAndClosesTheGap) {
  const sg_set_ptr s = set_of({10, 20, 30});
  const subgraph *in_set = sg_set_get(s.get(), 1);
  const sg_ptr removed = sg_remove_sg_from_set(keyed(20).get(), s.get());
  EXPECT_EQ(removed.get(), in_set);
  EXPECT_EQ(keys_of(s), (ints{10, 30}));
}

TEST(SgSetDeath, RemoveOfWhatIsNotThere) {
  const sg_set_ptr s = set_of({10, 30});
  const sg_ptr absent = keyed(20);
  EXPECT_DEATH(sg_remove_sg_from_set(absent.get(), s.get()),
               "Assertion `index != -1' failed");
}

TEST(SgSet, ClearThenFreeLeavesTheRecordsAlive) {
  sg_set_ptr s = set_of({10});
  const sg_ptr survivor(sg_set_get(s.get(), 0));
  sg_set_clear(s.get());
  EXPECT_EQ(sg_set_size(s.get()), 0);
  s.reset();
  EXPECT_EQ(survivor->g->key, 10u);
}

// Records in the set's blocks, each with a TID list and one parent.
static sg_set_ptr set_in_blocks(int n) {
  sg_set_ptr s(sg_set_create());
  for (int key = 0; key < n; key++) {
    const sg_ptr sg = keyed(key);
    set_tids(sg.get(), {key, key + 1});
    add_parent(sg.get(), 3 * key);
    sg_set_push(s.get(), sg_ptr(sg_copy(sg.get(), &s->blocks)));
  }
  return s;
}

static void drop_all_but_every(int step, sg_set *s) {
  xvector<sg_ptr> records = sg_set_take_records(s);
  for (size_t i = 0; i < records.size(); i += static_cast<size_t>(step))
    sg_set_push(s, std::move(records[i]));
}

TEST(SgSet, CompactKeepsRecordsAndFreesWhatIsGone) {
  const sg_set_ptr s = set_in_blocks(100);
  const size_t full = s->blocks.taken();
  drop_all_but_every(3, s.get());
  const subgraph *before = sg_set_get(s.get(), 1);
  sg_set_compact(s.get());
  EXPECT_EQ(s->blocks.taken(), full / 100 * 34);
  ASSERT_EQ(sg_set_size(s.get()), 34);
  EXPECT_NE(sg_set_get(s.get(), 1), before);
  for (int i = 0; i < 34; i++) {
    const subgraph *sg = sg_set_get(s.get(), i);
    EXPECT_EQ(sg->g->key, static_cast<uint32_t>(3 * i));
    EXPECT_EQ(ids_of(sg->tid), (ints{3 * i, 3 * i + 1}));
    EXPECT_EQ(sg_pid_at(sg, 0), 9 * i);
  }
}

TEST(SgSet, CompactMovesNothingWhereHalfIsLeft) {
  const sg_set_ptr s = set_in_blocks(100);
  const size_t full = s->blocks.taken();
  drop_all_but_every(1, s.get());
  const subgraph *before = sg_set_get(s.get(), 1);
  sg_set_compact(s.get());
  EXPECT_EQ(s->blocks.taken(), full);
  EXPECT_EQ(sg_set_get(s.get(), 1), before);
}

TEST(SgSet, CompactOfRecordsWithBlocksOfTheirOwn) {
  const sg_set_ptr s = set_of({10, 20});
  const subgraph *before = sg_set_get(s.get(), 1);
  sg_set_compact(s.get());
  EXPECT_EQ(keys_of(s), (ints{10, 20}));
  EXPECT_EQ(sg_set_get(s.get(), 1), before);
}

TEST(SgSet, KeepLinksLeavesTheSets) {
  const sg_set_ptr s = set_in_blocks(50);
  sg_set_push(s.get(), keyed(50)); // with a block of its own
  sg_add_child(sg_set_get(s.get(), 7), 70);
  sg_set_get(s.get(), 7)->rigid = true;
  sg_set_get(s.get(), 8)->invariant = true;
  sg_set_get(s.get(), 8)->count = 3;
  sg_set_keep_links(s.get());
  ASSERT_EQ(sg_set_size(s.get()), 51);
  EXPECT_LT(s->blocks.taken(),
            51 * (sizeof(subgraph) + alignof(std::max_align_t)));
  for (int i = 0; i < 51; i++) {
    const subgraph *sg = sg_set_get(s.get(), i);
    EXPECT_EQ(sg->g, nullptr);
    EXPECT_EQ(sg_parent_size(sg), 0);
    EXPECT_EQ(sg_kept_size(sg), 0);
    EXPECT_EQ(ids_of(sg->tid), i == 50 ? ints{} : (ints{i, i + 1}));
    EXPECT_EQ(sg_child_size(sg), i == 7 ? 1 : 0);
    EXPECT_EQ(sg->rigid, i == 7);
    EXPECT_EQ(sg->invariant, i == 8);
    EXPECT_EQ(sg->count, i == 8 ? 3 : 0);
  }
}

TEST(SgSet, FreeOfNullDoesNothing) { EXPECT_NO_THROW(sg_set_free(nullptr)); }

TEST(SgSetFatal, IndexBeyondTheEnd) {
  const sg_set_ptr s = set_of({10});
  EXPECT_EQ(fatal_text([&] { sg_set_get(s.get(), 1); }),
            "stack.c:N: invalid index\n");
}

TEST(SgSet, CheckAcceptsAscendingRecords) {
  sg_set_check(set_of({}).get());
  sg_set_check(set_of({1, 2, 5}).get());
}

TEST(SgSetDeath, CheckSeesRepeatsAndDisorder) {
  const sg_set_ptr repeats = set_of({1, 2, 2});
  EXPECT_DEATH(sg_set_check(repeats.get()), "Assertion .* failed");
  const sg_set_ptr disorder = set_of({1, 2});
  sg_set_push(disorder.get(), keyed(0));
  EXPECT_DEATH(sg_set_check(disorder.get()), "Assertion .* failed");
}

} // namespace kestro
