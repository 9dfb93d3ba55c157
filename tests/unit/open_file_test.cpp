#include "base/open_file.h"

#include <gtest/gtest.h>

#include "support/fatal.h"

namespace kestro {

TEST(OpenFile, OpensWhatExists) {
  const file_ptr stream(open_file("/dev/null", "r"));
  ASSERT_NE(stream, nullptr);
  EXPECT_EQ(fgetc(stream.get()), EOF);
}

TEST(OpenFile, CantOpenAFileIsFatalWithoutAPlace) {
  EXPECT_EQ(fatal_text([] { open_file("/no/such/dir/in", "r"); }),
            "can't open a file '/no/such/dir/in'\n");
}

TEST(CheckRead, EndOfFileAndFoldersAreNoErrors) {
  for (const char *path : {"/dev/null", "/"}) {
    const file_ptr stream(open_file(path, "r"));
    EXPECT_EQ(fgetc(stream.get()), EOF);
    EXPECT_NO_THROW(check_read(stream.get(), path));
  }
}

TEST(CheckRead, ErrorOfReadingIsFatal) {
  const file_ptr stream(open_file("/proc/self/mem", "r"));
  EXPECT_EQ(fgetc(stream.get()), EOF); // nothing is mapped at address 0
  EXPECT_EQ(fatal_text([&] { check_read(stream.get(), "db.g"); }),
            "can't read a file 'db.g'\n");
}

} // namespace kestro
