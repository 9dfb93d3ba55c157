#include "base/chomp_newlines.h"

#include <string>

#include <gtest/gtest.h>

namespace kestro {

TEST(ChompNewlines, EndsTheTextAtItsFirstNewline) {
  char text[] = "one\ntwo";
  EXPECT_EQ(chomp_newlines(text), text);
  EXPECT_STREQ(text, "one");
}

TEST(ChompNewlines, ReplacesEveryNewline) {
  char text[] = "\none\n\ntwo\n";
  chomp_newlines(text);
  EXPECT_EQ(std::string(text, sizeof text),
            std::string("\0one\0\0two\0\0", sizeof text));
}

TEST(ChompNewlines, LeavesATextWithoutNewlines) {
  char text[] = "one\r";
  EXPECT_STREQ(chomp_newlines(text), "one\r");
  char empty[] = "";
  EXPECT_STREQ(chomp_newlines(empty), "");
}

} // namespace kestro
