#include "mining/occurrences.h"

#include <gtest/gtest.h>

#include "mining/candidates.h"
#include "mining/first_levels.h"
#include "mining/support.h"
#include "reference/mining/sg_set.h"
#include "reference/mining/subgraph.h"
#include "support/records.h"

namespace kestro {

using ints = std::vector<int>;

// Candidates of three edges over transactions of one label.
class Occurrences : public testing::Test {
protected:
  // The candidate with the graph g, with its bound, over the levels below.
  subgraph *candidate_of(const graph_ptr &g) {
    cores.reset(sg_frequent_edges(database.get(), 1, 1, 1));
    level.reset(sg_frequent_double_edges(cores.get(), database.get(), 1, 1, 1));
    sg_register_children(level.get(), cores.get());
    candidates = sg_generate_candidates(level.get(), cores.get()).candidates;
    sg_filter_candidates_by_support(candidates.get(), level.get(),
                                    database.get(), 1);
    return sg_set_find_record(candidates.get(), canonical_record(g).get());
  }

  // Takes the level's rows away.
  void forget_rows() {
    for (int id = 0; id < sg_set_size(level.get()); id++)
      ksstack_free(std::exchange(sg_set_get(level.get(), id)->rows, nullptr));
  }

  // Finds a star with rows, which show it in the transactions found.
  template <class Image> void expect_rows_of(subgraph *star) {
    star->rows = ksstack_new(5, static_cast<int>(sizeof(Image)) * star->g->vs);
    EXPECT_EQ(finder.find(star, level.get(), 1), 2);
    ASSERT_EQ(star->rows->count, 2);
    for (int i = 0; i < 2; i++) {
      const Image *row = sg_row<Image>(star, i);
      EXPECT_TRUE(is_mapping(star->g,
                             graph_list_at(database.get(), sg_tid_at(star, i)),
                             ints(row, row + 4)));
    }
  }

  // A star, a path, a triangle, a star with a longer arm, two edges.
  graph_list_ptr database =
      database_of(star_graph(4), path_graph(4), ring_graph(3),
                  make_graph({0, 0, 0, 0, 0}, {{0, 1}, {0, 2}, {0, 3}, {3, 4}}),
                  path_graph(3));
  const graph_profiles profiles{database.get()};
  const edge_slots slots{database.get()};
  occurrence_finder finder{&profiles, &slots};
  sg_set_ptr cores, level, candidates;
};

TEST_F(Occurrences, BoundShrinksToWhereTheCandidateIs) {
  subgraph *star = candidate_of(star_graph(4));
  ASSERT_TRUE(star);
  EXPECT_EQ(ids_of(star->tid), (ints{0, 1, 2, 3, 4})); // where its parent is
  EXPECT_EQ(finder.find(star, level.get(), 1), 2);
  EXPECT_EQ(ids_of(star->tid), (ints{0, 3}));
}

TEST_F(Occurrences, OneFinderServesOneCandidateAfterAnother) {
  subgraph *path = candidate_of(path_graph(4));
  subgraph *ring = sg_set_find_record(candidates.get(),
                                      canonical_record(ring_graph(3)).get());
  ASSERT_TRUE(path && ring);
  EXPECT_EQ(finder.find(path, level.get(), 1), 2);
  EXPECT_EQ(ids_of(path->tid), (ints{1, 3}));
  EXPECT_EQ(finder.find(ring, level.get(), 1), 1);
  EXPECT_EQ(ids_of(ring->tid), (ints{2}));
}

TEST_F(Occurrences, WithoutRowsOfParentsASearchFindsTheSame) {
  subgraph *star = candidate_of(star_graph(4));
  forget_rows();
  EXPECT_EQ(finder.find(star, level.get(), 1), 2);
  EXPECT_EQ(ids_of(star->tid), (ints{0, 3}));
}

TEST_F(Occurrences, RowsStandBesideTheTransactionsFound) {
  expect_rows_of<uint8_t>(candidate_of(star_graph(4)));
}

TEST_F(Occurrences, RowsMayBeOfTwoBytesWhereParentsHaveNone) {
  subgraph *star = candidate_of(star_graph(4));
  forget_rows();
  expect_rows_of<uint16_t>(star);
}

TEST_F(Occurrences, SearchEndsWithTheTransactionThatPutsMinsupOutOfReach) {
  subgraph *star = candidate_of(star_graph(4));
  forget_rows();
  // Missing from the two small ones and from 1, it is not looked for in 3,
  // where it is.
  EXPECT_EQ(finder.find(star, level.get(), 3), 1);
  EXPECT_EQ(ids_of(star->tid), (ints{0}));
}

TEST_F(Occurrences, OutOfReachTheRestIsNotSearched) {
  subgraph *star = candidate_of(star_graph(4));
  // It is missing from three of five, so four are out of reach after two.
  EXPECT_LT(finder.find(star, level.get(), 4), 4);
  subgraph *again = candidate_of(star_graph(4));
  EXPECT_EQ(finder.find(again, level.get(), 2), 2); // just reached: exact
  EXPECT_EQ(ids_of(again->tid), (ints{0, 3}));
}

} // namespace kestro
