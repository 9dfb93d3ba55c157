#include <kestro/error.h>

#include <memory>
#include <new>
#include <type_traits>

#include <gtest/gtest.h>

#include "base/error.h"
#include "base/xmalloc.h"

namespace kestro {

static_assert(std::is_nothrow_copy_constructible_v<error>);
static_assert(std::is_nothrow_copy_assignable_v<error>);
static_assert(std::is_base_of_v<std::exception, error>);

TEST(LibraryError, HoldsTextPathAndLine) {
  const error e("wrong", "dir/db.g", 12);
  EXPECT_STREQ(e.what(), "wrong");
  EXPECT_EQ(e.path(), "dir/db.g");
  EXPECT_EQ(e.line(), 12);
}

TEST(LibraryError, MayHaveNoPlace) {
  const error e("wrong");
  EXPECT_EQ(e.path(), "");
  EXPECT_EQ(e.line(), 0);
}

TEST(LibraryError, CopiesOutliveTheOriginal) {
  auto original = std::make_unique<error>(std::string(300, 'x'), "db.g", 3);
  const error copy = *original;
  original.reset();
  EXPECT_EQ(copy.what(), std::string(300, 'x'));
  EXPECT_EQ(copy.path(), "db.g");
  EXPECT_EQ(copy.line(), 3);
}

TEST(LibraryError, IsWhatTheLibraryDiesOf) {
  try {
    die("graph.c", "something wrong\n");
  } catch (const error &e) {
    EXPECT_EQ(std::string(e.what()).substr(0, 8), "graph.c:");
    EXPECT_EQ(std::string(e.what()).back(), 'g') << "a newline at the end";
    return;
  }
  FAIL() << "die returned";
}

TEST(LibraryError, IsWhatAFailedCheckThrows) {
  EXPECT_THROW(fail_check("x", "f.cpp", 1, "f"), error);
}

// A copy as the base class has no room for the line of the source.
TEST(LibraryError, OfMemoryThatHasRunOutHasATextHoweverItIsCaught) {
  try {
    die_out_of_memory(7);
  } catch (const error &e) {
    EXPECT_STREQ(e.what(), "xmalloc.c:7: not enough memory");
    const error sliced = e; // NOLINT(cppcoreguidelines-slicing)
    EXPECT_STREQ(sliced.what(), "not enough memory");
    return;
  }
  FAIL() << "no error";
}

TEST(LibraryError, PlaceCanBeToldAfterwards) {
  fatal_error e("wrong\n");
  set_error_place(&e, std::make_shared<const std::string>("db.g"), 5);
  EXPECT_STREQ(e.what(), "wrong");
  EXPECT_EQ(e.path(), "db.g");
  EXPECT_EQ(e.line(), 5);
}

} // namespace kestro
