// Canonical labelling against the one carried out step by step, over random and
// symmetric graphs under seven thresholds.
//
// Seeds are fixed.  A graph whose symmetry takes the reference through more
// arrangements than a limit is skipped; how many are is part of the test.

#include <gtest/gtest.h>

#include "reference/cl/canonical_calls.h"
#include "support/engine_comparison.h"

namespace kestro {

namespace {

constexpr int graphs_per_test = 2500;
constexpr int test_count = 24;
constexpr uint64_t leaf_limit = 2000;

using draw_function = drawn_graph (*)(uint64_t seed);

class CanonicalEngines : public testing::TestWithParam<int> {
protected:
  void SetUp() override { before_ = cl_get_stabilizer_threshold(); }
  void TearDown() override { cl_set_stabilizer_threshold(before_); }

  comparison_counts compare_all(draw_function draw) const {
    comparison_counts counts;
    const uint64_t first = static_cast<uint64_t>(GetParam()) * graphs_per_test;
    for (uint64_t seed = first; seed < first + graphs_per_test; seed++) {
      const std::string difference = engine_difference_of(
          draw(seed), seed, threshold_of_seed(seed), leaf_limit, &counts);
      EXPECT_EQ(difference, "");
      if (!difference.empty())
        break;
    }
    return counts;
  }

private:
  int before_ = 0;
};

} // namespace

TEST_P(CanonicalEngines, AgreeOnAllFamilies) {
  const comparison_counts counts = compare_all(draw_graph);
  EXPECT_LT(counts.skipped, graphs_per_test / 20);
  EXPECT_GT(counts.other_order, 0u); // or automorphisms were not looked at
}

TEST_P(CanonicalEngines, AgreeOnSymmetricGraphsWithTwoEdgeLabels) {
  const comparison_counts counts = compare_all(draw_two_label_graph);
  EXPECT_LT(counts.skipped, graphs_per_test / 10);
  EXPECT_GT(counts.variant, 0u); // or nothing was hard
}

TEST_P(CanonicalEngines, AgreeOnGraphsThatAreNotConnected) {
  const comparison_counts counts = compare_all(draw_disconnected_graph);
  EXPECT_LT(counts.skipped, graphs_per_test / 10);
  EXPECT_GT(counts.variant, 0u); // or no cell was passed over
}

INSTANTIATE_TEST_SUITE_P(Seeds, CanonicalEngines,
                         testing::Range(0, test_count / 2));

} // namespace kestro
