// The slow miner is judged by hand before anything is judged by it.

#include "support/reference_miner.h"

#include <gtest/gtest.h>

#include "support/random_database.h"

namespace kestro {

static std::vector<size_t> sizes_of(const size_lists &lists) {
  std::vector<size_t> sizes;
  for (const std::vector<int> &list : lists)
    sizes.push_back(list.size());
  return sizes;
}

static const char *const k4_text = "t\nv 0 a\nv 1 a\nv 2 a\nv 3 a\n"
                                   "u 0 1 x\nu 0 2 x\nu 0 3 x\n"
                                   "u 1 2 x\nu 1 3 x\nu 2 3 x\n";

TEST(ReferenceMiner, ListsTheSubgraphsOfTheCompleteGraphOnFourVertices) {
  const class_table table = reference_classes(plain_read(k4_text), 6);
  // Path, star and triangle; ring and triangle with tail; ring with chord.
  EXPECT_EQ(sizes_of(reference_frequent(table, 1)),
            (std::vector<size_t>{0, 1, 1, 3, 2, 1, 1}));
}

TEST(ReferenceMiner, CountsTransactionsNotPlaces) {
  const class_table table = reference_classes(
      plain_read("t\nv 0 a\nv 1 a\nv 2 b\nu 0 1 x\nu 1 2 x\n"
                 "t\nv 7 b\nv 5 a\nv 6 b\nu 5 6 x\nu 7 5 x\nt\n"),
      9);
  const plain_graph edge = plain_read("t\nv 1 b\nv 2 a\nu 1 2 x\n").front();
  const int number = class_find(table, edge);
  ASSERT_GE(number, 0);
  EXPECT_EQ(table.classes[static_cast<size_t>(number)].tids,
            (std::vector<int>{0, 1}));
  EXPECT_EQ(sizes_of(reference_frequent(table, 2)),
            (std::vector<size_t>{0, 1}));
  EXPECT_EQ(sizes_of(reference_frequent(table, 1)),
            (std::vector<size_t>{0, 2, 2}));
}

TEST(ReferenceMiner, RoundsTheSupportAndKeepsItWithinTheDatabase) {
  EXPECT_EQ(reference_min_count(2.5, 1000), 25);
  EXPECT_EQ(reference_min_count(50, 5), 3);
  EXPECT_EQ(reference_min_count(0, 5), 1);
  EXPECT_EQ(reference_min_count(120, 5), 5);
}

TEST(ReferenceMiner, ParentsOfAPathAreWhatItsEndsLeave) {
  const std::vector<plain_graph> path =
      plain_read("t\nv 0 a\nv 1 b\nv 2 c\nv 3 d\n"
                 "u 0 1 x\nu 1 2 x\nu 2 3 x\n");
  const class_table table = reference_classes(path, 3);
  std::vector<plain_graph> parents;
  for (const int number : reference_parents(table, path[0]))
    parents.push_back(table.classes[static_cast<size_t>(number)].graph);
  ASSERT_EQ(parents.size(), 2U);
  EXPECT_TRUE(plain_isomorphic(
      parents[0],
      plain_read("t\nv 0 c\nv 1 b\nv 2 a\nu 0 1 x\nu 1 2 x\n").front()));
  EXPECT_TRUE(plain_isomorphic(
      parents[1],
      plain_read("t\nv 0 b\nv 1 c\nv 2 d\nu 0 1 x\nu 1 2 x\n").front()));
}

// Out of the path a-a-a come the path and the star of three edges and the
// triangle; out of the path a-b-a only the star around b, since the path
// a-b-a-b needs b-a-b as well.
TEST(ReferenceMiner, CandidatesAreClosedDownward) {
  const class_table plain =
      reference_classes(plain_read("t\nv 0 a\nv 1 a\nv 2 a\n"
                                   "u 0 1 x\nu 1 2 x\n"),
                        2);
  EXPECT_EQ(reference_candidates(plain, reference_frequent(plain, 1), 3)
                .classes.size(),
            3U);
  const class_table mixed =
      reference_classes(plain_read("t\nv 0 a\nv 1 b\nv 2 a\n"
                                   "u 0 1 x\nu 1 2 x\n"),
                        2);
  const class_table star =
      reference_candidates(mixed, reference_frequent(mixed, 1), 3);
  ASSERT_EQ(star.classes.size(), 1U);
  EXPECT_TRUE(plain_isomorphic(star.classes[0].graph,
                               plain_read("t\nv 0 a\nv 1 a\nv 2 a\nv 3 b\n"
                                          "u 0 3 x\nu 1 3 x\nu 2 3 x\n")
                                   .front()));
}

TEST(ReferenceMiner, MaximalPatternsDependOnTheSizesReported) {
  const class_table table = reference_classes(plain_read(k4_text), 6);
  const size_lists frequent = reference_frequent(table, 1);
  EXPECT_EQ(reference_maximal(table, frequent, 1, 6), frequent[6]);
  // Every one of size 3 lies in one of size 4.
  EXPECT_EQ(reference_maximal(table, frequent, 1, 4), frequent[4]);
  EXPECT_EQ(reference_maximal(table, frequent, 3, 3), frequent[3]);
}

TEST(ReferenceMiner, ReadsWhatTheDatabaseTextSays) {
  dice chance(1);
  for (int i = 0; i < 50; i++) {
    const std::vector<plain_graph> database = random_database(&chance, 9);
    const std::vector<plain_graph> read =
        plain_read(database_text(database, {true, true, true, false}));
    ASSERT_EQ(read.size(), database.size());
    for (size_t j = 0; j < read.size(); j++) {
      EXPECT_EQ(read[j].vertices, database[j].vertices);
      EXPECT_EQ(plain_text(read[j]), plain_text(database[j]));
    }
  }
}

TEST(ShrinkDatabase, LeavesOnlyWhatTheFailureNeeds) {
  dice chance(2);
  const std::vector<plain_graph> database = random_database(&chance, 9);
  const auto has_three_edges = [](const std::vector<plain_graph> &d) {
    for (const plain_graph &g : d)
      if (g.edges.size() >= 3)
        return true;
    return false;
  };
  ASSERT_TRUE(has_three_edges(database));
  const std::vector<plain_graph> small =
      shrink_database(database, has_three_edges);
  ASSERT_EQ(small.size(), 1U);
  EXPECT_EQ(small[0].edges.size(), 3U);
  EXPECT_EQ(plain_part(small[0], 7).vertices, small[0].vertices);
}

} // namespace kestro
