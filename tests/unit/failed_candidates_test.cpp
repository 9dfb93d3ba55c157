#include "mining/failed_candidates.h"

#include <cstddef>
#include <cstring>

#include <gtest/gtest.h>

#include "support/records.h"

namespace kestro {

static char *taken(copy_arena &arena, size_t size) {
  char *place = static_cast<char *>(arena.allocate(size));
  memset(place, 0x5a, size); // an overrun shows under a sanitizer
  return place;
}

TEST(CopyArena, FirstChunkIsAMebibyte) {
  EXPECT_EQ(copy_arena::first_chunk, 1048576u);
}

TEST(CopyArena, PiecesFollowOneAnotherAligned) {
  copy_arena arena;
  const size_t unit = alignof(std::max_align_t);
  const char *first = taken(arena, 2 * unit);
  const char *second = taken(arena, 1);
  const char *third = taken(arena, unit);
  EXPECT_EQ(second - first, static_cast<ptrdiff_t>(2 * unit));
  EXPECT_EQ(third - second, static_cast<ptrdiff_t>(unit));
  EXPECT_EQ(reinterpret_cast<uintptr_t>(third) % unit, 0u);
}

TEST(CopyArena, ChunkThatWouldBeFullIsFollowedByADoubledOne) {
  copy_arena arena;
  const char *half = taken(arena, copy_arena::first_chunk / 2);
  const char *second = taken(arena, copy_arena::first_chunk / 2);
  // In the new chunk three more halves fit behind it, but not a fourth.
  EXPECT_NE(second - half, static_cast<ptrdiff_t>(copy_arena::first_chunk / 2));
  const char *third = taken(arena, copy_arena::first_chunk / 2);
  const char *fourth = taken(arena, copy_arena::first_chunk / 2);
  EXPECT_EQ(third - second,
            static_cast<ptrdiff_t>(copy_arena::first_chunk / 2));
  EXPECT_EQ(fourth - third,
            static_cast<ptrdiff_t>(copy_arena::first_chunk / 2));
}

TEST(CopyArena, PieceLargerThanAChunkHasRoom) {
  copy_arena arena;
  EXPECT_NE(taken(arena, 5 * copy_arena::first_chunk), nullptr);
  EXPECT_NE(taken(arena, 16), nullptr);
}

TEST(FailedCandidates, AreFoundByTheirGraph) {
  failed_candidates failed;
  const sg_ptr path = canonical_record(path_graph(4));
  const sg_ptr star = canonical_record(star_graph(4));
  EXPECT_FALSE(failed.contains(path.get()));
  failed.insert(path.get());
  EXPECT_TRUE(failed.contains(path.get()));
  EXPECT_FALSE(failed.contains(star.get()));
  EXPECT_TRUE(failed.contains(canonical_record(path_graph(4)).get()));
  EXPECT_EQ(failed.size(), 1);
}

TEST(FailedCandidates, KeepCopiesOfTheirOwn) {
  failed_candidates failed;
  sg_ptr sg = canonical_record(path_graph(4));
  failed.insert(sg.get());
  sg->g->vlabel[0] = 9;
  EXPECT_FALSE(failed.contains(sg.get()));
  sg.reset();
  EXPECT_TRUE(failed.contains(canonical_record(path_graph(4)).get()));
}

TEST(FailedCandidates, ManyAreAllFoundAcrossChunks) {
  failed_candidates failed;
  for (int label = 0; label < 6000; label++)
    failed.insert(
        canonical_record(make_graph({0, label, 1}, {{0, 1}, {1, 2}})).get());
  EXPECT_EQ(failed.size(), 6000);
  for (int label = 0; label < 6000; label += 7)
    EXPECT_TRUE(failed.contains(
        canonical_record(make_graph({1, label, 0}, {{0, 1}, {1, 2}})).get()));
}

TEST(FailedCandidatesDeath, InsertTwice) {
  failed_candidates failed;
  const sg_ptr sg = canonical_record(path_graph(4));
  failed.insert(sg.get());
  EXPECT_DEATH(failed.insert(sg.get()), "Assertion `is_new' failed");
}

} // namespace kestro
