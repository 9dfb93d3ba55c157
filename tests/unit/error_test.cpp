#include "base/error.h"

#include <fcntl.h>
#include <unistd.h>

#include <csignal>
#include <cstring>
#include <string>

#include <gtest/gtest.h>

#include "support/fatal.h"

namespace kestro {

TEST(Error, DieCarriesModuleLineAndFormattedText) {
  const int line = __LINE__ + 2;
  try {
    die("some.c", "wrong line '%s' at %d\n", "a b", 7);
  } catch (const fatal_error &error) {
    const std::string place = "some.c:" + std::to_string(line) + ": ";
    EXPECT_EQ(error.what(), place + "wrong line 'a b' at 7");
    return;
  }
  FAIL() << "die returned";
}

TEST(Error, DieKeepsTextsOfAnyLength) {
  const std::string quoted(5000, 'x');
  EXPECT_EQ(fatal_text([&] { die("some.c", "'%s'\n", quoted.c_str()); }),
            "some.c:N: '" + quoted + "'\n");
}

TEST(Error, MessageTextIsTheTextOfDie) {
  EXPECT_EQ(masked_line(message_text("some.c", "%d%%\n", 50)),
            "some.c:N: 50%\n");
}

TEST(Error, FatalErrorMayGoWithoutAPlace) {
  EXPECT_STREQ(fatal_error("can't open\n").what(), "can't open");
}

TEST(Error, FatalErrorLeavesOutOneNewlineAtTheEnd) {
  EXPECT_STREQ(fatal_error("blank line: \n\n").what(), "blank line: \n");
  EXPECT_STREQ(fatal_error("two\nlines").what(), "two\nlines");
  EXPECT_STREQ(fatal_error("\n").what(), "");
  EXPECT_STREQ(fatal_error("").what(), "");
}

TEST(Error, BriefFatalErrorHoldsPlaceAndText) {
  const fatal_error error(place("some.c", 12), "not enough");
  EXPECT_STREQ(error.what(), "some.c:12: not enough");
}

TEST(Error, BriefFatalErrorCutsWhatDoesNotFit) {
  const std::string text(200, 'y');
  const fatal_error error(place("some.c", 12), text.c_str());
  const std::string whole = "some.c:12: " + text;
  EXPECT_LT(strlen(error.what()), whole.size());
  EXPECT_EQ(whole.compare(0, strlen(error.what()), error.what()), 0);
}

TEST(Error, CopiesOfAFatalErrorKeepItsText) {
  const std::string quoted(300, 'z');
  fatal_error copy("");
  {
    const fatal_error original(quoted);
    copy = original;
  }
  EXPECT_EQ(copy.what(), quoted);
}

TEST(Error, CheckThatHoldsDoesNothing) {
  const int one = 1;
  EXPECT_NO_THROW(KESTRO_CHECK(one == 1));
}

TEST(Error, CheckThatFailsThrowsTheReportOfAnAssertion) {
  const auto broken = [] {
    const int one = 1;
    KESTRO_CHECK(one == 2);
  };
  EXPECT_EQ(check_text(broken), "error_test.cpp:N: operator(): "
                                "Assertion `one == 2' failed.\n");
}

TEST(Error, CheckReportsFileLineAndFunction) {
  const check_failure *caught = nullptr;
  try {
    fail_check("a < b", "dir/file.cpp", 34, "make");
  } catch (const check_failure &failure) {
    caught = &failure;
    EXPECT_STREQ(failure.what(),
                 "dir/file.cpp:34: make: Assertion `a < b' failed.");
  }
  EXPECT_NE(caught, nullptr);
}

TEST(Error, CheckFailureIsNoFatalError) {
  EXPECT_THROW(fail_check("x", "f.cpp", 1, "f"), check_failure);
  try {
    fail_check("x", "f.cpp", 1, "f");
  } catch (const fatal_error &) {
    FAIL() << "a failed check must not exit with status 1";
  } catch (const std::exception &) {
  }
}

// Panics with standard output sent elsewhere: death tests see standard error.
[[noreturn]] static void panic_with_stdout_at(int descriptor) {
  dup2(descriptor, STDOUT_FILENO);
  panic("some.c", "wrong by %d\n", 3);
}

TEST(ErrorDeathTest, PanicPrintsOnStandardOutputAndAborts) {
  EXPECT_EXIT(panic_with_stdout_at(STDERR_FILENO),
              testing::KilledBySignal(SIGABRT),
              "^some\\.c:[0-9]+: wrong by 3\n$");
}

TEST(ErrorDeathTest, PanicPrintsNothingOnStandardError) {
  EXPECT_EXIT(panic_with_stdout_at(open("/dev/null", O_WRONLY)),
              testing::KilledBySignal(SIGABRT), "^$");
}

} // namespace kestro
