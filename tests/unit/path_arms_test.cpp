#include "mining/path_arms.h"

#include <gtest/gtest.h>

#include "mining/first_levels.h"
#include "support/records.h"

namespace kestro {
namespace {

constexpr int nel = 6;
constexpr int nvl = 10;
constexpr size_t limits[] = {0, size_t{1} << 20}; // hashed, and in an array

// Edges 7-7 labelled 5 and 2, and 3-7 labelled 5.
sg_set_ptr some_edges() {
  const graph_list_ptr database =
      database_of(make_graph({7, 7, 7, 3}, {{0, 1, 5}, {1, 2, 2}, {2, 3, 5}}));
  return sg_set_ptr(sg_frequent_edges(database.get(), 1, nel, nvl));
}

} // namespace

TEST(PathArms, LabelsInUseAreNumberedAscending) {
  const sg_set_ptr edges = some_edges();
  for (const size_t limit : limits) {
    const path_arms arms(edges.get(), nel, nvl, limit);
    ASSERT_EQ(arms.centres(), 2);
    for (int label = 0; label < nvl; label++)
      EXPECT_EQ(arms.centre_of(label), label == 3 ? 0 : label == 7 ? 1 : -1);
    EXPECT_EQ(arms.vlabel_of(0), 3);
    EXPECT_EQ(arms.vlabel_of(1), 7);
  }
}

TEST(PathArms, ArmsOfACentreAreNumberedByVertexLabelThenEdgeLabel) {
  const sg_set_ptr edges = some_edges();
  for (const size_t limit : limits) {
    const path_arms arms(edges.get(), nel, nvl, limit);
    EXPECT_EQ(arms.most_arms(), 3);
    EXPECT_EQ(arms.arm_of(0, 5, 7), 0);
    EXPECT_EQ(arms.arm_of(1, 5, 3), 0);
    EXPECT_EQ(arms.arm_of(1, 2, 7), 1);
    EXPECT_EQ(arms.arm_of(1, 5, 7), 2);
    for (int centre = 0; centre < 2; centre++)
      for (int number = 0; number < (centre == 0 ? 1 : 3); number++) {
        const path_arm arm = arms.arm(centre, number);
        EXPECT_EQ(arms.arm_of(centre, arm.elabel, arm.vlabel), number);
      }
  }
}

TEST(PathArms, WhatIsNoFrequentEdgeIsNoArm) {
  const sg_set_ptr edges = some_edges();
  for (const size_t limit : limits) {
    const path_arms arms(edges.get(), nel, nvl, limit);
    EXPECT_EQ(arms.arm_of(0, 2, 7), -1); // 3-7 is labelled 5 only
    EXPECT_EQ(arms.arm_of(0, 5, 3), -1);
    EXPECT_EQ(arms.arm_of(1, 4, 7), -1); // a label of no frequent edge
    EXPECT_EQ(arms.arm_of(1, 5, 8), -1);
  }
}

TEST(PathArms, PathsAreThePairsOfArmsOfEachCentre) {
  const sg_set_ptr edges = some_edges();
  const path_arms arms(edges.get(), nel, nvl, limits[1]);
  EXPECT_EQ(arms.paths().places(), 1u + 6u);
}

TEST(PathArms, WithoutEdgesThereAreNone) {
  const sg_set_ptr none(sg_set_create());
  const path_arms arms(none.get(), nel, nvl, limits[1]);
  EXPECT_EQ(arms.centres(), 0);
  EXPECT_EQ(arms.most_arms(), 0);
  EXPECT_EQ(arms.paths().places(), 0u);
  EXPECT_EQ(arms.centre_of(3), -1);
}

} // namespace kestro
