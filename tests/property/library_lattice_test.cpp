// Lattice matchers over random databases: they find the patterns that matchers
// find one by one, and in the database that was mined those with its TID.
// Seeds are fixed.

#include <kestro/error.h>
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

namespace {

// The patterns of a result as a database of their own, with their parents.
struct loose_patterns {
  explicit loose_patterns(const result &r) {
    database_builder builder;
    for (int i = 0; i < r.size(); i++) {
      const graph_view g = r[i].graph();
      std::vector<std::string_view> vertices;
      std::vector<labelled_edge> edges;
      for (int v = 0; v < g.vertices(); v++)
        vertices.push_back(g.vertex_label(v));
      for (const edge &e : g.all_edges())
        edges.push_back({e.from, e.to, g.edge_label(e)});
      builder.add(vertices, edges);
      const auto own = r.parents(i);
      parents.insert(parents.end(), own.begin(), own.end());
      first.push_back(static_cast<int64_t>(parents.size()));
    }
    graphs = std::move(builder).build();
  }

  database graphs;
  std::vector<int64_t> first = {0};
  ints parents;
};

} // namespace

TEST(LibraryLattice, TakesPatternsFromADatabase) {
  int patterns = 0;
  for (uint64_t seed = 0; seed < 40; seed++) {
    dice chance(seed);
    const database db = database::parse(text_of(random_database(&chance, 7)));
    const result r = mined(db, 1);
    const loose_patterns loose(r);
    const std::vector<int64_t> none(static_cast<size_t>(r.size()) + 1, 0);
    const lattice_matcher along(loose.graphs, loose.first, loose.parents);
    const lattice_matcher without(loose.graphs, none, {});
    patterns += r.size();
    for (int tid = 0; tid < db.size(); tid++) {
      const ints expected = with_tid(r, tid);
      ASSERT_EQ(along.contained(db[tid]), expected) << "seed " << seed;
      ASSERT_EQ(without.contained(db[tid]), expected) << "seed " << seed;
    }
  }
  EXPECT_GT(patterns, 400);
}

TEST(LibraryLattice, RefusesWhatIsNoPattern) {
  const database apart = database::parse("t\nv 0 A\nt\nv 0 A\nv 1 A\n");
  const database empty = database::parse("t\n");
  const database two = database::parse("t\nv 0 A\nt\nv 0 B\n");
  const std::vector<int64_t> none = {0, 0, 0};
  const std::vector<int64_t> one = {0, 0, 1};
  EXPECT_THROW(lattice_matcher(apart, none, {}), error);
  EXPECT_THROW(lattice_matcher(empty, std::vector<int64_t>{0, 0}, {}), error);
  EXPECT_THROW(lattice_matcher(two, std::vector<int64_t>{0, 0}, {}), error);
  EXPECT_THROW(lattice_matcher(two, one, {}), error);
  EXPECT_THROW(lattice_matcher(two, one, ints{1}), error);
  EXPECT_THROW(lattice_matcher(two, one, ints{-1}), error);
  EXPECT_THROW(lattice_matcher(two, std::vector<int64_t>{0, 2, 1}, ints{0}),
               error);
  // A parent that is missing hides the pattern, in it or not.
  const lattice_matcher hidden(two, one, ints{0});
  EXPECT_EQ(hidden.contained(two[1]), ints());
  EXPECT_EQ(hidden.contained(two[0]), ints{0});
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
