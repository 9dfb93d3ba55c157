// Lattice matchers over random databases: they find the patterns that matchers
// find one by one, and in the database that was mined those with its TID.
// Seeds are fixed.

#include <kestro/matcher.h>
#include <kestro/mine.h>

#include <algorithm>
#include <thread>
#include <utility>

#include <gtest/gtest.h>

#include "support/random_database.h"

namespace kestro {

namespace {

using ints = std::vector<int>;

std::string text_of(const std::vector<plain_graph> &graphs) {
  return database_text(graphs, text_style{false, false, false, false});
}

result mined(const database &db, int min_size) {
  mine_options options;
  options.support = minimum_support::fraction(0.3);
  options.min_size = min_size;
  return mine(db, options);
}

// The positions of the patterns that hold tid.
ints with_tid(const result &r, int tid) {
  ints found;
  for (int i = 0; i < r.size(); i++) {
    const auto tids = r[i].tids();
    if (std::binary_search(tids.begin(), tids.end(), tid))
      found.push_back(i);
  }
  return found;
}

ints found_one_by_one(const result &r, graph_view g) {
  ints found;
  for (int i = 0; i < r.size(); i++)
    if (matcher(r[i].graph()).is_in(g))
      found.push_back(i);
  return found;
}

} // namespace

TEST(LibraryLattice, FindsThePatternsOfEveryTransaction) {
  int patterns = 0;
  for (uint64_t seed = 0; seed < 100; seed++) {
    dice chance(seed);
    const database db = database::parse(text_of(random_database(&chance, 7)));
    const result r = mined(db, 1 + static_cast<int>(seed % 3));
    const lattice_matcher lattice(r);
    patterns += r.size();
    for (int tid = 0; tid < db.size(); tid++)
      ASSERT_EQ(lattice.contained(db[tid]), with_tid(r, tid))
          << "seed " << seed << ", graph " << tid;
  }
  EXPECT_GT(patterns, 1000);
}

TEST(LibraryLattice, FindsWhatMatchersFindInOtherGraphs) {
  int found = 0;
  for (uint64_t seed = 0; seed < 40; seed++) {
    dice chance(seed);
    const result r =
        mined(database::parse(text_of(random_database(&chance, 6))), 1);
    const database other = database::parse(
        "t\nv 0 A\nv 1 Zz\nu 0 1 A\n" + text_of(random_database(&chance, 6)));
    const lattice_matcher lattice(r);
    EXPECT_EQ(lattice.contained(other[0]), ints());
    for (int tid = 1; tid < other.size(); tid++) {
      const ints expected = found_one_by_one(r, other[tid]);
      found += static_cast<int>(expected.size());
      ASSERT_EQ(lattice.contained(other[tid]), expected)
          << "seed " << seed << ", graph " << tid;
    }
  }
  EXPECT_GT(found, 100);
}

TEST(LibraryLattice, OutlivesTheResultAndServesThreadsAtOnce) {
  dice chance(5);
  const database db = database::parse(text_of(random_database(&chance, 6)));
  const lattice_matcher lattice(mined(db, 1));
  const ints expected = with_tid(mined(db, 1), 0);
  ASSERT_FALSE(expected.empty());
  std::vector<int> differing(4, 0);
  {
    std::vector<std::jthread> threads;
    for (int &count : differing)
      threads.emplace_back([&] {
        for (int i = 0; i < 50; i++)
          count += lattice.contained(db[0]) != expected;
      });
  }
  EXPECT_EQ(differing, std::vector<int>(4, 0));
}

} // namespace kestro
