#include "mining/subgraph.h"

#include <cstring>
#include <utility>

#include <gtest/gtest.h>

#include "reference/mining/subgraph.h"
#include "support/fatal.h"
#include "support/records.h"

namespace kestro {

using ints = std::vector<int>;

TEST(Subgraph, OneEdgeRecordHasItsFirstCapacities) {
  const sg_ptr sg(sg_create(2, 2));
  EXPECT_EQ(sg->count, 0);
  EXPECT_EQ(sg->child->capacity, 2);
  EXPECT_EQ(sg->child->element_size, 4);
  EXPECT_EQ(sg->parents_room, 1);
  EXPECT_EQ(sg_parent_size(sg.get()) + sg_kept_size(sg.get()), 0);
  EXPECT_EQ(sg->tid->capacity, 1);
  EXPECT_EQ(sg->cover->capacity, 1);
  for (const ksstack *s : {sg->child, sg->tid, sg->cover})
    EXPECT_EQ(s->count, 0);
}

TEST(Subgraph, CapacitiesFollowTheSizes) {
  const sg_ptr sg(sg_create(10, 4));
  EXPECT_EQ(sg->child->capacity, 4);
  EXPECT_EQ(sg->entry_bytes, 4 + 3 * 2 + 4 + 2);
  EXPECT_EQ(sg->parents_room, 5);
}

TEST(Subgraph, GraphFollowsTheHeaderInOneBlock) {
  const sg_ptr sg(sg_create(4, 3));
  EXPECT_EQ(static_cast<void *>(sg->g), static_cast<void *>(sg.get() + 1));
  EXPECT_EQ(sg->g->es, 4);
  EXPECT_EQ(sg->g->vs, 3);
  EXPECT_EQ(sg->g->key, 0u);
  EXPECT_EQ(sg_size(4, 3), sizeof(subgraph) + graph_size(4, 3));
}

TEST(Subgraph, InitUsesTheCallersMemory) {
  std::vector<int64_t> memory(sg_size(4, 3) / 8 + 1);
  subgraph *sg = sg_init(memory.data(), 4, 3);
  EXPECT_EQ(static_cast<void *>(sg), static_cast<void *>(memory.data()));
  for (const ksstack *s : {sg->child, sg->tid, sg->cover, sg->rows})
    EXPECT_EQ(s, nullptr);
  EXPECT_EQ(sg->parents_room, 0);
}

static sg_ptr filled_record() {
  sg_ptr sg = record_of(make_graph({5, 6}, {{0, 1, 7}}));
  sg->g->key = 99;
  sg->count = 4;
  sg_add_child(sg.get(), 1);
  add_parent(sg.get(), 2);
  sg_add_parent(sg.get(), parent_entry(5, 0, 1, {1, -1}));
  sg->kept[0] = 1;
  sg_add_tid(sg.get(), 3);
  sg_add_cover(sg.get(), 4);
  return sg;
}

TEST(Subgraph, CopyHasTheSameContentsOfItsOwn) {
  const sg_ptr sg = filled_record();
  const sg_ptr copy(sg_copy(sg.get()));
  EXPECT_NE(copy->g, sg->g);
  EXPECT_TRUE(same_structure(copy->g, sg->g));
  EXPECT_EQ(copy->g->key, 99u);
  EXPECT_EQ(copy->count, 4);
  sg_add_child(sg.get(), 11);
  add_parent(sg.get(), 12);
  sg_add_tid(sg.get(), 13);
  sg_add_cover(sg.get(), 14);
  sg_clear_parents(sg.get());
  EXPECT_EQ(ids_of(copy->child), (ints{1}));
  EXPECT_EQ(pids_of(copy.get()), (ints{2, 5}));
  EXPECT_EQ(ids_of(copy->tid), (ints{3}));
  EXPECT_EQ(ids_of(copy->cover), (ints{4}));
  ASSERT_EQ(sg_kept_size(copy.get()), 1);
  const sg_parent *entry = sg_kept_at(copy.get(), 0);
  EXPECT_EQ(entry->pid, 5);
  EXPECT_EQ(entry->u, 0);
  EXPECT_EQ(entry->v, 1);
  EXPECT_EQ(entry->vs, 2);
  EXPECT_EQ(entry->image(0), 1);
  EXPECT_EQ(entry->image(1), -1);
}

// Images of the largest pattern whose maps are of bytes, and of larger ones.
TEST(Subgraph, MapsHoldAllImagesWhateverTheirType) {
  for (const int vs : {126, 127, 128, 129, 300}) {
    std::vector<int> map;
    for (int i = 0; i < vs; i++)
      map.push_back(vs - 2 - i); // down to -1
    const sg_ptr sg(sg_create(2, vs));
    sg_add_parent(sg.get(), parent_entry(0, 0, 1, map));
    const sg_parent *entry = sg_parent_at(sg.get(), 0);
    EXPECT_EQ(entry->has_bytes(), vs <= 127);
    EXPECT_EQ(map_of(entry), map);
    EXPECT_EQ(map_of(sg_parent_at(sg_ptr(sg_copy(sg.get())).get(), 0)), map);
  }
}

TEST(Subgraph, NewRecordHasNoRows) {
  const sg_ptr sg(sg_create(2, 2));
  EXPECT_EQ(sg->rows, nullptr);
  EXPECT_EQ(sg_ptr(sg_copy(sg.get()))->rows, nullptr);
}

TEST(Subgraph, RowsAreCopiedAndFreedWithTheRecord) {
  const sg_ptr sg = filled_record();
  const uint16_t row[] = {8, 9};
  sg->rows = ksstack_new(1, sizeof row);
  ksstack_push(row, sg->rows);
  const sg_ptr copy(sg_copy(sg.get()));
  ASSERT_NE(copy->rows, nullptr);
  EXPECT_NE(copy->rows, sg->rows);
  ASSERT_EQ(copy->rows->count, 1);
  EXPECT_EQ(memcmp(copy->rows->data, row, sizeof row), 0);
}

TEST(Subgraph, CopyOfARecordWithoutACoverHasNone) {
  const sg_ptr sg = filled_record();
  ksstack_free(sg->cover);
  sg->cover = nullptr;
  const sg_ptr copy(sg_copy(sg.get()));
  EXPECT_EQ(copy->cover, nullptr);
  EXPECT_NE(copy->tid, nullptr);
}

TEST(Subgraph, RecordWithoutAnySetIsCopiedAndFreed) {
  const sg_ptr sg = filled_record();
  for (ksstack **s : {&sg->child, &sg->tid, &sg->cover}) {
    ksstack_free(*s);
    *s = nullptr;
  }
  const sg_ptr copy(sg_copy(sg.get()));
  EXPECT_EQ(copy->child, nullptr);
  EXPECT_EQ(copy->tid, nullptr);
  EXPECT_EQ(copy->count, 4);
}

TEST(Subgraph, CopyTakesOverWhatIsKnownOfTheForm) {
  const sg_ptr sg = filled_record();
  EXPECT_FALSE(sg->invariant);
  EXPECT_FALSE(sg->rigid);
  sg->invariant = true;
  sg->rigid = true;
  const sg_ptr copy(sg_copy(sg.get()));
  EXPECT_TRUE(copy->invariant);
  EXPECT_TRUE(copy->rigid);
}

TEST(Subgraph, CopyHasNoRoomToSpare) {
  const sg_ptr sg = filled_record();
  const sg_ptr copy(sg_copy(sg.get()));
  EXPECT_EQ(copy->parents_room, 2);
  EXPECT_EQ(sg_block_bytes(copy.get()),
            sizeof(subgraph) + graph_size(2, 2, graph_ids::own_numbers) +
                2 * sg_parent_bytes(2));
}

TEST(Subgraph, CopyAndMoveIntoAnArenaLeaveTheBlockToIt) {
  arena memory;
  const sg_ptr copy(sg_copy(filled_record().get(), &memory));
  EXPECT_EQ(memory.taken(), (sg_block_bytes(copy.get()) + 15) / 16 * 16);
  arena other;
  sg_ptr record = filled_record();
  const ksstack *tid = record->tid;
  for (arena *to : {&memory, &other}) {
    record.reset(sg_move(record.release(), to));
    EXPECT_TRUE(record->in_arena);
    EXPECT_EQ(record->tid, tid);
    EXPECT_EQ(pids_of(record.get()), (ints{2, 5}));
    EXPECT_EQ(kept_of(record.get()), (ints{5}));
    EXPECT_EQ(sg_compare(record.get(), copy.get()), 0);
  }
}

TEST(SubgraphDeath, MoreParentsThanThereIsRoomFor) {
  const sg_ptr sg(sg_create(2, 2));
  add_parent(sg.get(), 1);
  EXPECT_DEATH(add_parent(sg.get(), 2), "sg->parents < sg->parents_room");
}

TEST(Subgraph, LightCopyHasGraphAndCountButNoSets) {
  const sg_ptr sg = filled_record();
  std::vector<int64_t> memory(sg_size(2, 2) / 8 + 1);
  const subgraph *copy = sg_light_copy(sg.get(), memory.data());
  EXPECT_EQ(sg_compare(copy, sg.get()), 0);
  EXPECT_EQ(copy->count, 4);
  EXPECT_EQ(sg_parent_size(copy), 0);
  for (const ksstack *s : {copy->child, copy->tid, copy->cover, copy->rows})
    EXPECT_EQ(s, nullptr);
}

TEST(Subgraph, FreeOfNullDoesNothing) { EXPECT_NO_THROW(sg_free(nullptr)); }

TEST(Subgraph, SupportIsTheSizeOfTheTidListNotTheCount) {
  const sg_ptr sg = filled_record();
  EXPECT_EQ(sg_support(sg.get()), 1);
  sg_append_tid(sg.get(), 8);
  EXPECT_EQ(sg_support(sg.get()), 2);
}

// sg_compare of two graphs with the keys given.
static int compared(const graph_ptr &x, uint32_t key_x, const graph_ptr &y,
                    uint32_t key_y) {
  const sg_ptr a = record_of(x);
  const sg_ptr b = record_of(y);
  a->g->key = key_x;
  b->g->key = key_y;
  const int forth = sg_compare(a.get(), b.get());
  EXPECT_EQ(sg_compare(b.get(), a.get()), -forth);
  return forth;
}

TEST(SgCompare, SlotsComeFirst) {
  EXPECT_EQ(compared(path_graph(4), 1, ring_graph(4), 0), 6 - 8);
}

TEST(SgCompare, ThenVertices) {
  EXPECT_EQ(compared(path_graph(4), 0, ring_graph(3), 1), 4 - 3);
}

TEST(SgCompare, ThenKeysAsSignedNumbers) {
  EXPECT_EQ(compared(path_graph(3), 1, path_graph(3), 7), -1);
  EXPECT_EQ(compared(path_graph(3), 0xffffffff, path_graph(3), 0), -1);
  EXPECT_EQ(compared(path_graph(3), 0x80000000, path_graph(3), 0x7fffffff), -1);
}

TEST(SgCompare, ThenOffsetsBeforeTheLabelsBehindThem) {
  // v = 0 2 3 4 and 0 1 3 4: the offset of vertex 1 decides, not its label.
  EXPECT_EQ(compared(make_graph({0, 0, 0}, {{0, 1}, {0, 2}}), 0,
                     make_graph({0, 9, 0}, {{0, 1}, {1, 2}}), 0),
            2 - 1);
}

TEST(SgCompare, LabelOfAVertexComesBeforeTheNextOffset) {
  EXPECT_EQ(compared(make_graph({3, 0, 0}, {{0, 1}, {0, 2}}), 0,
                     make_graph({8, 0, 0}, {{0, 1}, {1, 2}}), 0),
            3 - 8);
}

TEST(SgCompare, ThenNeighbours) {
  // Both have offsets 0 1 2 3 4: 0-1 2-3 and 0-2 1-3.
  EXPECT_EQ(compared(make_graph({0, 0, 0, 0}, {{0, 1, 9}, {2, 3}}), 0,
                     make_graph({0, 0, 0, 0}, {{0, 2, 0}, {1, 3}}), 0),
            1 - 2);
}

TEST(SgCompare, GraphsThatDifferInOneEdgeLabelDifferWithEqualKeys) {
  EXPECT_EQ(compared(make_graph({0, 0, 0}, {{0, 1, 4}, {1, 2, 4}}), 5,
                     make_graph({0, 0, 0}, {{0, 1, 4}, {1, 2, 6}}), 5),
            4 - 6);
}

TEST(SgCompare, EqualGraphsAreEqualWhateverTheRest) {
  const sg_ptr a = filled_record();
  const sg_ptr b = record_of(make_graph({5, 6}, {{0, 1, 7}}));
  b->g->key = 99;
  b->g->vid[0] = 77;
  EXPECT_EQ(sg_compare(a.get(), b.get()), 0);
}

// The family of one id set.
struct id_set {
  const char *name;
  int (*size)(const subgraph *);
  int (*at)(const subgraph *, int);
  void (*add)(subgraph *, int);
  void (*clear)(subgraph *);
};

class IdSets : public testing::TestWithParam<id_set> {};

TEST_P(IdSets, StaySortedWithoutRepeats) {
  const id_set &set = GetParam();
  const sg_ptr sg(sg_create(2, 2));
  for (const int id : {5, 1, 9, 5, -3, 1, 0, 9, 7, 7})
    set.add(sg.get(), id);
  ints ids;
  for (int i = 0; i < set.size(sg.get()); i++)
    ids.push_back(set.at(sg.get(), i));
  EXPECT_EQ(ids, (ints{-3, 0, 1, 5, 7, 9}));
}

TEST_P(IdSets, ClearEmptiesAndKeepsTheRoom) {
  const id_set &set = GetParam();
  const sg_ptr sg(sg_create(2, 2));
  set.add(sg.get(), 5);
  set.clear(sg.get());
  EXPECT_EQ(set.size(sg.get()), 0);
  set.add(sg.get(), 6);
  EXPECT_EQ(set.at(sg.get(), 0), 6);
}

TEST_P(IdSets, AnAbsentOneIsEmptyAndComesWithTheFirstId) {
  const id_set &set = GetParam();
  const sg_ptr sg(sg_create(2, 2));
  for (ksstack **s : {&sg->child, &sg->tid, &sg->cover})
    ksstack_free(std::exchange(*s, nullptr));
  EXPECT_EQ(set.size(sg.get()), 0);
  set.clear(sg.get());
  EXPECT_EQ(set.size(sg.get()), 0);
  for (int id = 20; id > 0; id--) // beyond the first room
    set.add(sg.get(), id);
  EXPECT_EQ(set.size(sg.get()), 20);
  for (int i = 0; i < 20; i++)
    EXPECT_EQ(set.at(sg.get(), i), i + 1);
}

TEST_P(IdSets, IndexBeyondTheEndIsFatal) {
  const id_set &set = GetParam();
  const sg_ptr sg(sg_create(2, 2));
  EXPECT_EQ(fatal_text([&] { set.at(sg.get(), 0); }),
            "stack.c:N: invalid index\n");
}

static std::string set_name(const testing::TestParamInfo<id_set> &param) {
  return param.param.name;
}

INSTANTIATE_TEST_SUITE_P(
    All, IdSets,
    testing::Values(id_set{"child", sg_child_size, sg_child_at, sg_add_child,
                           sg_clear_child},
                    id_set{"tid", sg_tid_size, sg_tid_at, sg_add_tid,
                           sg_clear_tid},
                    id_set{"cover", sg_cover_size, sg_cover_at, sg_add_cover,
                           sg_clear_cover}),
    set_name);

TEST(Subgraph, AppendTidTakesWhatComes) {
  const sg_ptr sg(sg_create(2, 2));
  for (const int tid : {0, 4, 9})
    sg_append_tid(sg.get(), tid);
  EXPECT_EQ(ids_of(sg->tid), (ints{0, 4, 9}));
}

TEST(Subgraph, CoverFindsAndRemovesItsIds) {
  const sg_ptr sg(sg_create(2, 2));
  for (const int id : {2, 4, 6})
    sg_add_cover(sg.get(), id);
  EXPECT_TRUE(sg_in_cover(sg.get(), 4));
  EXPECT_FALSE(sg_in_cover(sg.get(), 3));
  sg_remove_cover(sg.get(), 4);
  EXPECT_FALSE(sg_in_cover(sg.get(), 4));
  sg_remove_cover(sg.get(), 4);
  EXPECT_EQ(ids_of(sg->cover), (ints{2, 6}));
}

TEST(Subgraph, AppendTidAndCoverServeAbsentSets) {
  const sg_ptr sg(sg_create(2, 2));
  for (ksstack **s : {&sg->child, &sg->tid, &sg->cover})
    ksstack_free(std::exchange(*s, nullptr));
  EXPECT_EQ(sg_support(sg.get()), 0);
  EXPECT_FALSE(sg_in_cover(sg.get(), 4));
  sg_remove_cover(sg.get(), 4);
  EXPECT_EQ(sg->cover, nullptr);
  sg_append_tid(sg.get(), 3);
  sg_append_tid(sg.get(), 8);
  EXPECT_EQ(ids_of(sg->tid), (ints{3, 8}));
}

TEST(Subgraph, KeptParentsAreFoundByPid) {
  const sg_ptr sg = record_of(path_graph(2));
  for (const int pid : {8, 5, 3})
    add_parent(sg.get(), pid);
  sg->kept[0] = 2;
  EXPECT_EQ(kept_of(sg.get()), (ints{3}));
  sg->kept[1] = 0;
  EXPECT_EQ(kept_of(sg.get()), (ints{3, 8}));
  EXPECT_EQ(sg_find_kept(sg.get(), 8), sg_parent_at(sg.get(), 0));
  for (const int absent : {2, 5, 9})
    EXPECT_EQ(sg_find_kept(sg.get(), absent), nullptr);
  sg_clear_parents(sg.get());
  EXPECT_EQ(sg_find_kept(sg.get(), 3), nullptr);
  EXPECT_EQ(sg_parent_size(sg.get()), 0);
}

} // namespace kestro
