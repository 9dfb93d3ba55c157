#include "cl/failed_states.h"

#include <gtest/gtest.h>

namespace kestro {

using word = failed_states::word;

TEST(FailedStates, HoldWhatWasAdded) {
  failed_states failed;
  EXPECT_FALSE(failed.has({}));
  EXPECT_FALSE(failed.has({1, 2}));
  failed.add({1, 2});
  EXPECT_TRUE(failed.has({1, 2}));
  EXPECT_FALSE(failed.has({2, 1}));
  EXPECT_FALSE(failed.has({1}));
  EXPECT_FALSE(failed.has({1, 2, 0}));
  failed.add({});
  EXPECT_TRUE(failed.has({}));
  failed.clear();
  EXPECT_FALSE(failed.has({1, 2}));
  EXPECT_FALSE(failed.has({}));
}

TEST(FailedStates, ManyAreKeptApart) {
  failed_states failed;
  for (uint16_t i = 0; i < 40000; i++)
    failed.add(word(i % 50, i));
  int missing = 0;
  for (uint16_t i = 0; i < 40000; i++)
    missing += !failed.has(word(i % 50, i));
  EXPECT_EQ(missing, 0);
  EXPECT_FALSE(failed.has(word(7, 6)));
  failed.clear();
  EXPECT_FALSE(failed.has(word(7, 7)));
}

TEST(FailedStates, NoMoreAreTakenThanThereIsRoomFor) {
  failed_states failed;
  word large(60000);
  int taken = 0;
  for (uint16_t i = 0; i < 400; i++) {
    large[0] = i;
    failed.add(large);
    taken += failed.has(large);
  }
  EXPECT_GT(taken, 200);
  EXPECT_LT(taken, 400);
}

} // namespace kestro
