#include "base/interruption.h"

#include <string>

#include <gtest/gtest.h>

namespace kestro {

using std::chrono::hours;
using clock = interruption::clock;

// The cause with which check() ends, as text; empty when it does not.
static std::string end_of(const interruption &stop) {
  try {
    stop.check();
  } catch (const interrupted &end) {
    const bool by_request = end.cause() == interruption_cause::stop_requested;
    EXPECT_STREQ(end.what(), by_request ? "stop requested" : "out of time");
    EXPECT_TRUE(stop.requested());
    return end.what();
  }
  EXPECT_FALSE(stop.requested());
  return "";
}

TEST(Interruption, ByDefaultNeverEndsAnything) {
  EXPECT_EQ(end_of(interruption()), "");
}

TEST(Interruption, EndsOnceAStopIsRequested) {
  std::stop_source source;
  const interruption stop(source.get_token());
  EXPECT_EQ(end_of(stop), "");
  source.request_stop();
  EXPECT_EQ(end_of(stop), "stop requested");
  EXPECT_EQ(end_of(stop), "stop requested");
}

TEST(Interruption, ATokenWithoutSourceIsNeverRequested) {
  EXPECT_EQ(end_of(interruption(std::stop_token())), "");
}

TEST(Interruption, EndsFromTheDeadlineOn) {
  EXPECT_EQ(end_of(interruption({}, clock::now())), "out of time");
  EXPECT_EQ(end_of(interruption({}, clock::time_point::min())), "out of time");
  EXPECT_EQ(end_of(interruption({}, clock::time_point::max())), "");
  EXPECT_EQ(end_of(interruption({}, clock::now() + hours(1000))), "");
}

TEST(Interruption, ARequestGoesBeforeTheDeadline) {
  std::stop_source source;
  source.request_stop();
  EXPECT_EQ(end_of(interruption(source.get_token(), clock::time_point::min())),
            "stop requested");
  EXPECT_EQ(end_of(interruption(source.get_token(), clock::time_point::max())),
            "stop requested");
}

TEST(Interruption, NullIsNeverRequested) {
  EXPECT_NO_THROW(check_interruption(nullptr));
  const interruption past({}, clock::time_point::min());
  EXPECT_THROW(check_interruption(&past), interrupted);
}

namespace {

class Poll : public testing::Test {
protected:
  Poll() : stop(source.get_token()) {}

  // How many steps of that cost go well.
  static int steps(interruption_poll *poll, int most, int64_t cost = 1) {
    for (int i = 0; i < most; i++) {
      try {
        poll->step(cost);
      } catch (const interrupted &) {
        return i;
      }
    }
    return most;
  }

  std::stop_source source;
  interruption stop;
};

} // namespace

TEST_F(Poll, LooksOnceInAnInterval) {
  interruption_poll poll(&stop, 10);
  EXPECT_EQ(steps(&poll, 25), 25);
  source.request_stop();
  EXPECT_EQ(steps(&poll, 100), 4);
  EXPECT_EQ(steps(&poll, 100), 9);
}

TEST_F(Poll, CostlyStepsAreCountedAsSuch) {
  source.request_stop();
  interruption_poll poll(&stop, 10);
  EXPECT_EQ(steps(&poll, 100, 4), 2);
  EXPECT_EQ(steps(&poll, 100, 5), 1);
  EXPECT_EQ(steps(&poll, 100, 11), 0);
  EXPECT_EQ(steps(&poll, 100, int64_t{1} << 40), 0);
  EXPECT_EQ(steps(&poll, 100, 0), 100);
}

TEST_F(Poll, WithoutASourceNeverEnds) {
  interruption_poll poll;
  EXPECT_EQ(steps(&poll, 10000), 10000);
  interruption_poll often(nullptr, 1);
  EXPECT_EQ(steps(&often, 100), 100);
}

TEST_F(Poll, ACopyLooksByItself) {
  source.request_stop();
  interruption_poll poll(&stop, 10);
  EXPECT_EQ(steps(&poll, 6), 6);
  interruption_poll copy = poll;
  EXPECT_EQ(steps(&copy, 100), 3);
  EXPECT_EQ(steps(&poll, 100), 3);
}

} // namespace kestro
