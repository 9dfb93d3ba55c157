#include "base/open_table.h"

#include <bit>
#include <stop_token>
#include <unordered_map>

#include <gtest/gtest.h>

#include "support/graphs.h"

namespace kestro {
namespace {

struct spread_out {
  static uint64_t hash(int key) { return mixed(0, static_cast<uint32_t>(key)); }
};

// Few hashes, the last of all among them, so that runs are long and go on at
// the first slot.
struct crowded {
  static uint64_t hash(int key) { return key % 3 ? UINT64_MAX : 0; }
};

template <class Hash> struct pair_slot {
  int key = -1; // of a free slot
  int value = 0;

  bool in_use() const { return key != -1; }
  uint64_t hash() const { return Hash::hash(key); }
};

template <class Hash> class int_map {
public:
  explicit int_map(const interruption *stop = nullptr) : table(stop) {}

  // The value, -1 for none.
  int find(int key) const {
    const auto &found = table.look_up(Hash::hash(key), has(key));
    return found.in_use() ? found.value : -1;
  }
  bool insert(int key, int value) {
    return table.insert({key, value}, has(key));
  }

  open_table<pair_slot<Hash>> table;

private:
  static auto has(int key) {
    return [key](const pair_slot<Hash> &s) { return s.key == key; };
  }
};

// Inserts, looks up and now and then clears, prunes or makes room, here and in
// a standard map.
template <class Hash> void compare_with_standard_map(int steps, int keys) {
  test_rng rng(11);
  int_map<Hash> map;
  std::unordered_map<int, int> plain;
  for (int i = 0; i < steps; i++) {
    const int key = random_below(rng, keys);
    const auto known = plain.find(key);
    ASSERT_EQ(map.find(key), known == plain.end() ? -1 : known->second) << i;
    const int what = random_below(rng, 4000);
    if (what == 0) {
      map.table.clear(static_cast<size_t>(random_below(rng, 300)));
      plain.clear();
    } else if (what < 4) {
      map.table.reserve(static_cast<size_t>(random_below(rng, 2 * keys)));
    } else if (what < 8) {
      const int rest = random_below(rng, 7); // of keys that go
      map.table.keep_only([&](const auto &s) { return s.key % 7 != rest; });
      std::erase_if(plain, [&](const auto &p) { return p.first % 7 == rest; });
    } else if (what < 2000) {
      ASSERT_EQ(map.insert(key, i), plain.try_emplace(key, i).second) << i;
    }
    ASSERT_EQ(map.table.size(), plain.size()) << i;
  }
  for (int key = 0; key < keys; key++) {
    const auto known = plain.find(key);
    EXPECT_EQ(map.find(key), known == plain.end() ? -1 : known->second) << key;
  }
}

} // namespace

// Of the last word the highest bit can reach one bit only; the others are
// spread.
TEST(Mixed, EveryBitOfEveryWordReachesTheUpperHalf) {
  const uint64_t words[] = {3, 0, 0x123456789abcdef};
  const auto upper_half = [&](int word, int bit) {
    uint64_t hash = 0;
    for (int i = 0; i < 3; i++)
      hash = mixed(hash, words[i] ^ uint64_t{i == word} << bit);
    return hash >> 32;
  };
  const uint64_t plain = upper_half(3, 0);
  for (int word = 0; word < 3; word++)
    for (int bit = 0; bit < 64; bit++)
      EXPECT_GE(std::popcount(upper_half(word, bit) ^ plain), word < 2 ? 4 : 1)
          << word << ' ' << bit;
}

TEST(Mixed, OrderOfWordsCounts) {
  EXPECT_NE(mixed(mixed(0, 1), 2), mixed(mixed(0, 2), 1));
}

TEST(OpenTable, EmptyOneGivesAFreeSlot) {
  const int_map<spread_out> map;
  EXPECT_EQ(map.find(0), -1);
  EXPECT_EQ(map.table.size(), 0U);
}

TEST(OpenTable, FirstOfEqualOnesStays) {
  int_map<spread_out> map;
  EXPECT_TRUE(map.insert(5, 8));
  EXPECT_FALSE(map.insert(5, 9));
  EXPECT_EQ(map.find(5), 8);
  EXPECT_EQ(map.table.size(), 1U);
}

TEST(OpenTable, EqualsAStandardMap) {
  compare_with_standard_map<spread_out>(60000, 1500);
}

TEST(OpenTable, EqualsAStandardMapWhereHashesCollide) {
  compare_with_standard_map<crowded>(12000, 300);
}

// Several pieces long, when it grows and when it is filled anew.
TEST(OpenTable, LargeOnesKeepAllTheyHold) {
  constexpr int keys = 100000;
  int_map<spread_out> map;
  for (int key = 0; key < keys; key++)
    ASSERT_TRUE(map.insert(key, keys - key));
  for (int key = 0; key < keys; key++)
    ASSERT_EQ(map.find(key), keys - key);
  EXPECT_EQ(map.find(keys), -1);
}

// A table without a free slot would be searched for ever.
TEST(OpenTable, AnyRoomMadeBeforehandCanBeOutgrown) {
  for (const bool anew : {false, true})
    for (size_t room = 0; room < 200; room++) {
      int_map<crowded> map;
      if (anew)
        map.table.clear(room);
      else
        map.table.reserve(room);
      for (int key = 0; key < 210; key++)
        ASSERT_TRUE(map.insert(key, key)) << room;
      ASSERT_EQ(map.find(210), -1) << room;
      ASSERT_EQ(map.find(0), 0) << room;
    }
}

TEST(OpenTable, WhatIsKeptCanGrowByAQuarter) {
  for (const int kept : {0, 1, 47, 48, 49, 500}) {
    int_map<spread_out> map;
    for (int key = 0; key < 1000; key++)
      map.insert(key, key);
    map.table.keep_only([&](const auto &s) { return s.key < kept; });
    EXPECT_EQ(map.table.size(), static_cast<size_t>(kept));
    for (int key = 1000; key < 1000 + kept / 4; key++) {
      EXPECT_FALSE(map.table.is_full()) << kept;
      map.insert(key, key);
    }
    EXPECT_EQ(map.find(kept - 1), kept - 1);
    EXPECT_EQ(map.find(kept), -1);
  }
}

TEST(OpenTable, ClearedOneHoldsNothing) {
  int_map<spread_out> map;
  for (int key = 0; key < 1000; key++)
    map.insert(key, key);
  map.table.clear(2);
  EXPECT_EQ(map.table.size(), 0U);
  for (int key = 0; key < 1000; key++)
    ASSERT_EQ(map.find(key), -1);
  EXPECT_TRUE(map.insert(7, 3));
  EXPECT_EQ(map.find(7), 3);
}

TEST(OpenTable, RoomMadeBeforehandIsEnough) {
  for (const int room : {1, 48, 49, 96, 97, 1000, 98304, 98305}) {
    std::stop_source source;
    const interruption stop(source.get_token());
    int_map<spread_out> map(&stop);
    map.table.reserve(static_cast<size_t>(room));
    source.request_stop(); // growing would throw
    for (int key = 0; key < room; key++)
      ASSERT_NO_THROW(map.insert(key, key)) << room;
  }
}

namespace {

// Asks for a stop when the hashes of so many slots have been taken, as growing
// does for each.
struct hash_with_stop {
  static inline int left = 0;
  static inline std::stop_source *source = nullptr;

  static uint64_t hash(int key) {
    if (left > 0 && --left == 0)
      source->request_stop();
    return spread_out::hash(key);
  }
};

// Fills a table up to the edge of growth, has a stop requested at the n-th
// hash from there, and tells whether growing ended by it.
bool is_interrupted_at(int n, int held) {
  std::stop_source source;
  const interruption stop(source.get_token());
  hash_with_stop::source = &source;
  int_map<hash_with_stop> map(&stop);
  for (int key = 0; key < held; key++)
    EXPECT_TRUE(map.insert(key, key + 1));
  bool ended = false;
  hash_with_stop::left = n;
  try {
    map.insert(held, held + 1);
  } catch (const interrupted &) {
    ended = true;
  }
  hash_with_stop::left = 0;
  EXPECT_EQ(map.table.size(), static_cast<size_t>(held + (ended ? 0 : 1)));
  for (int key = 0; key < held; key++)
    EXPECT_EQ(map.find(key), key + 1);
  EXPECT_EQ(map.find(held), ended ? -1 : held + 1);
  return ended;
}

} // namespace

TEST(OpenTable, InterruptedGrowthChangesNothing) {
  for (const int held : {48, 96, 49152}) {
    EXPECT_TRUE(is_interrupted_at(1, held)) << held;
    EXPECT_TRUE(is_interrupted_at(held / 2, held)) << held;
    EXPECT_TRUE(is_interrupted_at(held, held)) << held;
    EXPECT_FALSE(is_interrupted_at(held + 1, held)) << held; // the new key's
    EXPECT_FALSE(is_interrupted_at(1, held - 1)) << held;    // no growth
  }
}

TEST(OpenTable, InterruptedReservationChangesNothing) {
  std::stop_source source;
  const interruption stop(source.get_token());
  int_map<spread_out> map(&stop);
  map.insert(1, 2);
  source.request_stop();
  EXPECT_THROW(map.table.reserve(1000), interrupted);
  EXPECT_EQ(map.find(1), 2);
  EXPECT_TRUE(map.insert(3, 4));
  EXPECT_EQ(map.find(3), 4);
}

} // namespace kestro
