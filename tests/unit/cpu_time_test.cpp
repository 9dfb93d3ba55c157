#include "base/cpu_time.h"

#include <ctime>

#include <gtest/gtest.h>

#include "reference/base/cpu_time.h"

namespace kestro {

static void use_cpu_time() {
  const clock_t start = clock();
  while (clock() - start < CLOCKS_PER_SEC / 50) {
  }
}

TEST(CpuTime, UserTimeNeverRunsBackwards) {
  const double before = user_cpu_time();
  EXPECT_GE(before, 0.0);
  use_cpu_time();
  EXPECT_GE(user_cpu_time(), before);
}

TEST(CpuTime, TotalTimeIsInSecondsAndGrowsWithWork) {
  const double before = cpu_time();
  use_cpu_time();
  const double used = cpu_time() - before;
  EXPECT_GT(used, 0.0);
  EXPECT_LT(used, 10.0);
}

TEST(CpuTime, TotalTimeHoldsTheUserTime) {
  const double user = user_cpu_time();
  EXPECT_GE(cpu_time(), user);
}

} // namespace kestro
