#include "mining/failed_candidates.h"

#include <gtest/gtest.h>

#include "support/records.h"

namespace kestro {

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
