#include <kestro/minimum_support.h>

#include <cmath>
#include <limits>

#include <gtest/gtest.h>

#include "mining/min_support.h"
#include "support/library_error.h"

namespace kestro {

TEST(LibraryMinimumSupport, CountIsTheNumberItselfForAnyDatabase) {
  EXPECT_EQ(minimum_support::count(1).graphs(0), 1);
  EXPECT_EQ(minimum_support::count(7).graphs(3), 7);
  EXPECT_EQ(minimum_support::count(2147483647).graphs(3), 2147483647);
}

TEST(LibraryMinimumSupport, SharesAreRoundedHalvesUp) {
  EXPECT_EQ(minimum_support::fraction(0.375).graphs(4), 2);  // 1.5
  EXPECT_EQ(minimum_support::fraction(0.625).graphs(4), 3);  // 2.5
  EXPECT_EQ(minimum_support::fraction(0.3725).graphs(4), 1); // 1.49
  EXPECT_EQ(minimum_support::percentage(37.5).graphs(4), 2);
  EXPECT_EQ(minimum_support::percentage(62.5).graphs(4), 3);
  EXPECT_EQ(minimum_support::percentage(37.25).graphs(4), 1);
}

TEST(LibraryMinimumSupport, SharesStayWithinOneAndAll) {
  EXPECT_EQ(minimum_support::fraction(0).graphs(1000), 1);
  EXPECT_EQ(minimum_support::fraction(1).graphs(1000), 1000);
  EXPECT_EQ(minimum_support::percentage(0).graphs(1000), 1);
  EXPECT_EQ(minimum_support::percentage(100).graphs(1000), 1000);
  EXPECT_EQ(minimum_support::fraction(1).graphs(0), 1);
  EXPECT_EQ(minimum_support::percentage(100).graphs(0), 1);
}

TEST(LibraryMinimumSupport, PercentagesAreTheProgramsOwn) {
  for (int tenth = 0; tenth <= 1000; tenth++)
    for (const int n : {0, 1, 3, 7, 40, 422, 1000, 98765})
      ASSERT_EQ(minimum_support::percentage(tenth / 10.0).graphs(n),
                min_support_of_share(tenth / 10.0 / 100.0L, n))
          << tenth << " of " << n;
}

TEST(LibraryMinimumSupport, RefusesCountsBelowOne) {
  EXPECT_EQ(error_text([] { minimum_support::count(0); }),
            "a minimum support of 0 graphs is less than 1");
  EXPECT_EQ(error_text([] { minimum_support::count(-3); }),
            "a minimum support of -3 graphs is less than 1");
}

TEST(LibraryMinimumSupport, RefusesSharesOutOfRange) {
  constexpr double infinity = std::numeric_limits<double>::infinity();
  EXPECT_EQ(error_text([] { minimum_support::fraction(1.5); }),
            "a minimum support of 1.5 is not from 0 to 1");
  EXPECT_EQ(error_text([] { minimum_support::fraction(-0.25); }),
            "a minimum support of -0.25 is not from 0 to 1");
  EXPECT_EQ(error_text([] { minimum_support::fraction(std::nan("")); }),
            "a minimum support of nan is not from 0 to 1");
  EXPECT_EQ(error_text([] { minimum_support::percentage(100.5); }),
            "a minimum support of 100.5 is not from 0 to 100 per cent");
  EXPECT_EQ(error_text([] { minimum_support::percentage(-1); }),
            "a minimum support of -1 is not from 0 to 100 per cent");
  EXPECT_EQ(error_text([] { minimum_support::percentage(infinity); }),
            "a minimum support of inf is not from 0 to 100 per cent");
}

} // namespace kestro
