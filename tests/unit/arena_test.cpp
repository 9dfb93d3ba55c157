#include "base/arena.h"

#include <cstddef>
#include <cstdint>
#include <cstring>

#include <gtest/gtest.h>

namespace kestro {

static constexpr size_t unit = alignof(std::max_align_t);

static char *taken(arena &from, size_t size) {
  char *place = static_cast<char *>(from.take(size));
  memset(place, 0x5a, size); // an overrun shows under a sanitizer
  return place;
}

TEST(Arena, PiecesFollowOneAnotherAligned) {
  arena a;
  const char *first = taken(a, 2 * unit);
  const char *second = taken(a, 1);
  const char *third = taken(a, unit);
  EXPECT_EQ(second - first, static_cast<ptrdiff_t>(2 * unit));
  EXPECT_EQ(third - second, static_cast<ptrdiff_t>(unit));
  EXPECT_EQ(reinterpret_cast<uintptr_t>(third) % unit, 0u);
  EXPECT_EQ(a.taken(), 4 * unit);
}

TEST(Arena, FullChunkIsFollowedByADoubledOne) {
  arena a;
  const char *first = taken(a, arena::smallest_chunk - unit);
  const char *second = taken(a, arena::smallest_chunk);
  EXPECT_NE(second - first,
            static_cast<ptrdiff_t>(arena::smallest_chunk - unit));
  const char *third = taken(a, arena::smallest_chunk - unit);
  EXPECT_EQ(third - second, static_cast<ptrdiff_t>(arena::smallest_chunk));
}

TEST(Arena, PieceLargerThanAnyChunkHasRoom) {
  arena a;
  EXPECT_NE(taken(a, 5 * arena::largest_chunk), nullptr);
  EXPECT_NE(taken(a, 16), nullptr);
  EXPECT_EQ(a.taken(), 5 * arena::largest_chunk + 16);
}

// Pieces stay where they are, whoever owns the chunks.
TEST(Arena, AbsorbTakesAllPiecesOver) {
  for (const size_t own : {size_t{0}, size_t{100}})
    for (const size_t others : {size_t{0}, size_t{100}, arena::largest_chunk}) {
      arena a;
      char *mine = own ? taken(a, own) : nullptr;
      {
        arena b;
        char *piece = others ? taken(b, others) : nullptr;
        const size_t sum = a.taken() + b.taken();
        a.absorb(&b);
        EXPECT_EQ(a.taken(), sum);
        EXPECT_EQ(b.taken(), 0u);
        EXPECT_NE(taken(b, 10), nullptr);
        mine = piece ? piece : mine;
      }
      if (mine) {
        EXPECT_EQ(*mine, 0x5a);
      }
      EXPECT_NE(taken(a, 10), nullptr);
    }
}

TEST(Arena, MoveLeavesAnEmptyOne) {
  arena a;
  const char *piece = taken(a, 32);
  arena b(std::move(a));
  EXPECT_EQ(*piece, 0x5a);
  EXPECT_EQ(b.taken(), 32u);
  a = arena();
  EXPECT_EQ(a.taken(), 0u);
  b = std::move(a);
  EXPECT_EQ(b.taken(), 0u);
}

// What an arena had serves the next one of its pool, but where it is freed to
// let the address sanitizer see who still reads it.
TEST(ChunkPool, KeepsChunksForOthers) {
  constexpr bool kept = !chunk_pool::is_checked;
  chunk_pool pool;
  const void *large = nullptr;
  const void *small = nullptr;
  {
    arena a(&pool);
    small = a.take(16);
    large = a.take(arena::largest_chunk);
  }
  arena b(&pool);
  EXPECT_EQ(b.take(arena::largest_chunk) == large, kept);
  arena c(&pool);
  EXPECT_EQ(c.take(16) == small, kept);
}

TEST(ChunkPool, KeepsNoMoreThanItsMost) {
  constexpr bool kept = !chunk_pool::is_checked;
  chunk_pool pool(2 * arena::smallest_chunk);
  {
    arena a(&pool);
    a.take(arena::largest_chunk); // more than may be kept
    arena b(&pool);
    b.take(16);
    arena c(&pool);
    c.take(16);
    arena d(&pool);
    d.take(16); // goes back first
  }
  EXPECT_EQ(pool.kept(), kept ? 2 * arena::smallest_chunk : 0u);
  arena e(&pool);
  e.take(16);
  EXPECT_EQ(pool.kept(), kept ? arena::smallest_chunk : 0u);
}

TEST(ChunkPool, GivesANewChunkWhereNoneIsLargeEnough) {
  chunk_pool pool;
  const void *small = arena(&pool).take(16);
  arena a(&pool);
  EXPECT_NE(taken(a, 2 * arena::smallest_chunk), small);
}

TEST(ChunkPool, ServesArenasThatMoveAndAbsorb) {
  chunk_pool pool;
  arena a(&pool);
  {
    arena b(&pool);
    taken(b, 100);
    a.absorb(&b);
    EXPECT_EQ(b.pool(), &pool);
    taken(b, arena::largest_chunk);
  }
  const arena moved(std::move(a));
  EXPECT_EQ(moved.taken(), 112u);
  EXPECT_EQ(moved.pool(), &pool);
}

} // namespace kestro
