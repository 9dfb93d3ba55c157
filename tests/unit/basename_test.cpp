#include "base/basename.h"

#include <gtest/gtest.h>

namespace kestro {

TEST(Basename, IsWhatFollowsTheLastSlash) {
  EXPECT_STREQ(kestro::basename("dir/prog"), "prog");
  EXPECT_STREQ(kestro::basename("/a/b/prog"), "prog");
}

TEST(Basename, OfAPathWithoutSlashIsThePath) {
  const char path[] = "prog";
  EXPECT_EQ(kestro::basename(path), path);
}

TEST(Basename, OfADirectoryOrNothingIsEmpty) {
  EXPECT_STREQ(kestro::basename("dir/"), "");
  EXPECT_STREQ(kestro::basename("/"), "");
  EXPECT_STREQ(kestro::basename(""), "");
}

TEST(Basename, PointsIntoThePath) {
  const char path[] = "dir/prog";
  EXPECT_EQ(kestro::basename(path), path + 4);
}

} // namespace kestro
