#include <kestro/matcher.h>

#include <optional>
#include <thread>
#include <utility>

#include <gtest/gtest.h>

#include "support/graphs.h"
#include "support/library_error.h"

namespace kestro {

namespace {

using ints = std::vector<int>;
using maps = std::vector<embedding>;

// A hub with leaves of one label; the hub comes at the place given.
database star_of(int leaves, int hub = 0) {
  database_builder builder;
  std::vector<std::string_view> labels(static_cast<size_t>(leaves) + 1, "C");
  labels[static_cast<size_t>(hub)] = "N";
  std::vector<labelled_edge> edges;
  for (int i = 0; i <= leaves; i++)
    if (i != hub)
      edges.push_back({hub, i, "s"});
  builder.add(labels, edges);
  return std::move(builder).build();
}

database one_graph(std::initializer_list<std::string_view> vertices,
                   std::initializer_list<labelled_edge> edges) {
  database_builder builder;
  builder.add(vertices, edges);
  return std::move(builder).build();
}

} // namespace

TEST(LibraryMatcher, FindsAllEmbeddingsInOrder) {
  const database path = one_graph({"C", "C"}, {{0, 1, "s"}});
  const database ring =
      one_graph({"C", "C", "C"}, {{0, 1, "s"}, {1, 2, "s"}, {2, 0, "s"}});
  const matcher m(path[0]);
  EXPECT_TRUE(m.is_in(ring[0]));
  EXPECT_EQ(m.first(ring[0]), (embedding{0, 1}));
  EXPECT_EQ(m.all(ring[0]),
            (maps{{0, 1}, {0, 2}, {1, 0}, {1, 2}, {2, 0}, {2, 1}}));
  EXPECT_EQ(m.count(ring[0]), 6);
}

TEST(LibraryMatcher, FindsNoneWhereThereIsNone) {
  const matcher m(one_graph({"C", "N"}, {{0, 1, "s"}})[0]);
  for (const database &other :
       {one_graph({"C", "C"}, {{0, 1, "s"}}), one_graph({"C", "N"}, {}),
        one_graph({"C", "N"}, {{0, 1, "d"}}), one_graph({}, {}),
        one_graph({"C"}, {})}) {
    EXPECT_FALSE(m.is_in(other[0]));
    EXPECT_EQ(m.first(other[0]), std::nullopt);
    EXPECT_EQ(m.all(other[0]), maps());
    EXPECT_EQ(m.count(other[0]), 0);
  }
}

TEST(LibraryMatcher, TakesAPatternOfOneVertex) {
  const matcher m(one_graph({"N"}, {})[0]);
  const database target = one_graph({"N", "C", "N"}, {{0, 1, "s"}});
  EXPECT_EQ(m.all(target[0]), (maps{{0}, {2}}));
  EXPECT_EQ(m.count(target[0]), 2);
  EXPECT_EQ(m.order(), ints{0});
}

TEST(LibraryMatcher, TakesFurtherEdgesBetweenImages) {
  const matcher m(one_graph({"C", "C", "C"}, {{0, 1, "s"}, {1, 2, "s"}})[0]);
  const database triangle =
      one_graph({"C", "C", "C"}, {{0, 1, "s"}, {1, 2, "s"}, {2, 0, "d"}});
  EXPECT_EQ(m.all(triangle[0]), (maps{{0, 1, 2}, {2, 1, 0}}));
}

TEST(LibraryMatcher, OrderIsBreadthFirst) {
  const matcher m(
      one_graph({"a", "b", "c", "d", "e"},
                {{0, 3, "s"}, {3, 1, "s"}, {0, 4, "s"}, {4, 2, "s"}})[0]);
  EXPECT_EQ(m.order(), (ints{0, 3, 4, 1, 2}));
}

// Vertex 2 comes before vertex 1 in the order.
TEST(LibraryMatcher, FirstIsTheSmallestAlongTheOrder) {
  const matcher m(one_graph({"C", "C", "C"}, {{0, 2, "s"}, {2, 1, "s"}})[0]);
  EXPECT_EQ(m.order(), (ints{0, 2, 1}));
  const database target =
      one_graph({"C", "C", "C", "C"},
                {{0, 3, "s"}, {0, 1, "s"}, {3, 2, "s"}, {1, 2, "s"}});
  EXPECT_EQ(m.first(target[0]), (embedding{0, 2, 1}));
  EXPECT_EQ(m.all(target[0], 1), (maps{{0, 2, 1}}));
}

TEST(LibraryMatcher, GivesTheFirstOfManyOnly) {
  const matcher m(star_of(2)[0]);
  const database target = star_of(4);
  EXPECT_EQ(m.all(target[0], 0), maps());
  EXPECT_EQ(m.all(target[0], 3), (maps{{0, 1, 2}, {0, 1, 3}, {0, 1, 4}}));
  EXPECT_EQ(m.all(target[0], 12).size(), 12u);
  EXPECT_EQ(m.all(target[0], 13).size(), 12u);
  EXPECT_EQ(m.all(target[0]).size(), 12u);
  EXPECT_EQ(m.all(target[0], -5).size(), 12u);
}

TEST(LibraryMatcher, HandsEmbeddingsOverUntilEnoughAreTaken) {
  const matcher m(star_of(2)[0]);
  const database target = star_of(4);
  maps taken;
  const auto take = [&](const embedding &e) {
    taken.push_back(e);
    return taken.size() != 3;
  };
  m.each(target[0], take);
  EXPECT_EQ(taken, m.all(target[0], 3));
  m.each(target[0], take); // goes on to the end
  EXPECT_EQ(taken.size(), 3u + 12u);
}

TEST(LibraryMatcher, IsLeftByWhatTheTakerThrows) {
  const matcher m(star_of(2)[0]);
  const database target = star_of(4);
  int taken = 0;
  const auto take = [&](const embedding &) -> bool {
    if (++taken == 2)
      throw 5;
    return true;
  };
  EXPECT_THROW(m.each(target[0], take), int);
  EXPECT_EQ(taken, 2);
  EXPECT_EQ(m.all(target[0]).size(), 12u);
}

TEST(LibraryMatcher, CountsHubsWithoutListingTheirLeaves) {
  long long factorial = 1;
  for (int i = 2; i <= 18; i++)
    factorial *= i;
  EXPECT_EQ(matcher(star_of(18)[0]).count(star_of(18)[0]), factorial);
  EXPECT_EQ(matcher(star_of(18, 9)[0]).count(star_of(19)[0]), factorial * 19);
}

TEST(LibraryMatcher, CountsLeavesWithoutListingTheirSets) {
  // 12 leaves among 40, in order.
  long long ways = 1;
  for (long long i = 40; i > 28; i--)
    ways *= i;
  EXPECT_EQ(matcher(star_of(12)[0]).count(star_of(40)[0]), ways);
  EXPECT_EQ(matcher(star_of(41)[0]).count(star_of(40)[0]), 0);
}

// A tree with many like leaves, and further edges, in random order.
static database random_hubs(test_rng &rng, int vertices, int more_edges) {
  std::vector<std::string_view> labels;
  std::vector<labelled_edge> edges;
  const auto connect = [&](int u, int w) {
    for (const labelled_edge &edge : edges)
      if (u == w || (edge.from == u && edge.to == w) ||
          (edge.from == w && edge.to == u))
        return;
    edges.push_back({u, w, random_below(rng, 4) == 0 ? "d" : "s"});
  };
  const std::vector<int> place = random_permutation(rng, vertices);
  for (int i = 0; i < vertices; i++)
    labels.push_back(random_below(rng, 4) == 0 ? "N" : "C");
  for (int i = 1; i < vertices; i++)
    connect(place[static_cast<size_t>(random_below(rng, 1 + i / 3))],
            place[static_cast<size_t>(i)]);
  for (int i = 0; i < more_edges; i++)
    connect(random_below(rng, vertices), random_below(rng, vertices));
  database_builder builder;
  builder.add(labels, edges);
  return std::move(builder).build();
}

TEST(LibraryMatcher, CountsAsManyAsItLists) {
  test_rng rng(12);
  int occurring = 0;
  for (int i = 0; i < 1000; i++) {
    const matcher m(random_hubs(rng, 2 + random_below(rng, 5), i % 3)[0]);
    const database target = random_hubs(rng, 3 + random_below(rng, 7), i % 5);
    const auto listed = static_cast<long long>(m.all(target[0]).size());
    EXPECT_EQ(m.count(target[0]), listed) << "round " << i;
    occurring += listed > 0;
  }
  EXPECT_GT(occurring, 200);
  EXPECT_LT(occurring, 900);
}

TEST(LibraryMatcher, RefusesCountsBeyondALongLong) {
  const database star = star_of(21);
  EXPECT_EQ(error_text([&] { matcher(star[0]).count(star[0]); }),
            "there are more embeddings than can be counted");
  EXPECT_EQ(matcher(star[0]).count(star_of(20)[0]), 0);
}

TEST(LibraryMatcher, ComparesLabelsByTheirTexts) {
  const matcher m(one_graph({"C", "N"}, {{0, 1, "s"}})[0]);
  const database other = one_graph({"A", "C", "B", "N", "Z"},
                                   {{1, 3, "s"}, {0, 1, "d"}, {2, 3, "a"}});
  EXPECT_NE(other.label_set().find_vertex_label("C"), 0);
  EXPECT_EQ(m.all(other[0]), (maps{{1, 3}}));
  EXPECT_EQ(m.count(other[0]), 1);
}

// The ids are the pattern's, the texts are not.
TEST(LibraryMatcher, IsNotMisledByEqualIds) {
  const matcher m(one_graph({"C", "N"}, {{0, 1, "s"}})[0]);
  EXPECT_FALSE(m.is_in(one_graph({"C", "O"}, {{0, 1, "s"}})[0]));
  EXPECT_FALSE(m.is_in(one_graph({"N", "C"}, {{0, 1, "t"}})[0]));
}

TEST(LibraryMatcher, SearchesGraphsInParts) {
  const matcher m(one_graph({"N", "C"}, {{0, 1, "s"}})[0]);
  const database parts =
      one_graph({"C", "C", "N", "C", "N"}, {{0, 1, "s"}, {3, 4, "s"}});
  EXPECT_EQ(m.all(parts[0]), (maps{{4, 3}}));
}

TEST(LibraryMatcher, OutlivesThePatternsDatabase) {
  std::optional<database> db = one_graph({"C", "N"}, {{0, 1, "s"}});
  const matcher m((*db)[0]);
  db.reset();
  EXPECT_TRUE(m.is_in(one_graph({"C", "N"}, {{0, 1, "s"}})[0]));
}

TEST(LibraryMatcher, RefusesPatternsInPartsAndEmptyOnes) {
  EXPECT_EQ(error_text([] { matcher(one_graph({}, {})[0]); }),
            "the pattern has no vertex");
  EXPECT_EQ(error_text([] {
              matcher(one_graph({"C", "C"}, {})[0]);
            }),
            "the pattern is not connected");
  EXPECT_EQ(
      error_text([] {
        matcher(one_graph({"C", "C", "C", "C"}, {{0, 1, "s"}, {2, 3, "s"}})[0]);
      }),
      "the pattern is not connected");
}

TEST(LibraryMatcher, ServesThreadsAtOnce) {
  const matcher m(star_of(3)[0]);
  const database same = star_of(5);
  const database other =
      one_graph({"A", "N", "C", "C", "C"},
                {{1, 2, "s"}, {1, 3, "s"}, {1, 4, "s"}, {0, 1, "s"}});
  std::vector<long long> sums(4, 0);
  {
    std::vector<std::jthread> threads;
    for (long long &sum : sums)
      threads.emplace_back([&] {
        for (int i = 0; i < 500; i++) {
          sum += m.count(same[0]) + m.count(other[0]);
          sum += static_cast<long long>(m.all(other[0]).size());
          sum += m.is_in(same[0]);
        }
      });
  }
  EXPECT_EQ(sums, std::vector<long long>(4, 500 * (60 + 6 + 6 + 1)));
}

TEST(LibraryMatcher, StarLiesInItselfInFactoriallyManyWays) {
  database_builder builder;
  std::vector<labelled_edge> edges;
  for (int i = 1; i <= 18; i++)
    edges.push_back({0, i, "s"});
  builder.add(std::vector<std::string>(19, "C"), edges);
  builder.add(std::vector<std::string>(41, "C"), [&] {
    for (int i = 19; i <= 40; i++)
      edges.push_back({0, i, "s"});
    return edges;
  }());
  const database db = std::move(builder).build();
  long long factorial = 1;
  for (int i = 2; i <= 18; i++)
    factorial *= i;
  EXPECT_EQ(matcher(db[0]).count(db[0]), factorial);
  const std::optional<embedding> found = matcher(db[1]).first(db[1]);
  ASSERT_TRUE(found);
  for (int i = 0; i <= 40; i++)
    EXPECT_EQ((*found)[static_cast<size_t>(i)], i);
}

} // namespace kestro
