#include "base/file_text.h"

#include <string>

#include <gtest/gtest.h>

#include "support/fatal.h"
#include "support/streams.h"
#include "support/temp_file.h"

namespace kestro {

static std::string string_of(const file_text &text) {
  return std::string(text.bytes.get(), text.size);
}

TEST(FileText, HoldsEveryByteOfAFile) {
  using namespace std::string_literals;
  const std::string text = "one\n\0two\r\n\xff no newline"s;
  EXPECT_EQ(string_of(read_file(temp_file(text).path())), text);
}

TEST(FileText, EmptyFileHasRoomForATerminatorOnly) {
  const file_text text = read_file(temp_file().path());
  ASSERT_NE(text.bytes, nullptr);
  EXPECT_EQ(text.size, 0u);
  text.bytes.get()[0] = '\0';
}

TEST(FileText, ByteBehindTheTextIsThere) {
  for (const size_t size : {1u, 4095u, 4096u, 65535u, 65536u, 131072u}) {
    const file_text text = read_file(temp_file(std::string(size, 'x')).path());
    ASSERT_EQ(text.size, size);
    text.bytes.get()[size] = '\0';
    EXPECT_EQ(std::string(text.bytes.get()), std::string(size, 'x'));
  }
}

TEST(FileText, FolderIsEmpty) {
  EXPECT_EQ(read_file(testing::TempDir().c_str()).size, 0u);
}

TEST(FileText, StreamIsReadFromItsPosition) {
  const temp_file file("abcdef");
  const file_ptr stream(open_file(file.path(), "r"));
  fseek(stream.get(), 2, SEEK_SET);
  EXPECT_EQ(string_of(read_text(stream.get(), "text")), "cdef");
  EXPECT_EQ(string_of(read_text(stream.get(), "text")), "");
}

// A stream whose size cannot be asked for.
TEST(FileText, StreamWithoutASizeIsReadToItsEnd) {
  std::string text;
  for (int i = 0; i < 40000; i++)
    text += std::to_string(i) + "\n";
  const file_ptr stream = reading(text);
  EXPECT_EQ(string_of(read_text(stream.get(), "text")), text);
}

TEST(FileText, PipeIsReadToItsEnd) {
  struct pipe_closer {
    void operator()(FILE *pipe) const { pclose(pipe); }
  };
  const std::unique_ptr<FILE, pipe_closer> stream(
      popen("printf 'a\\nb'; printf c", "r"));
  EXPECT_EQ(string_of(read_text(stream.get(), "text")), "a\nbc");
}

TEST(FileText, CopyHoldsAllBytesUnderItsName) {
  const std::string bytes("a\0b\n", 4);
  const file_text text = copy_text(bytes, "db.g");
  EXPECT_EQ(text.size, 4u);
  EXPECT_EQ(std::string(text.bytes.get(), text.size), bytes);
  EXPECT_EQ(*text.name, "db.g");
  EXPECT_EQ(copy_text("", "").size, 0u);
}

TEST(FileText, KnowsTheNameOfItsFile) {
  const temp_file file("abc");
  EXPECT_EQ(*read_file(file.path()).name, file.path());
}

TEST(FileTextFatal, MissingFile) {
  EXPECT_EQ(fatal_text([] { read_file("/no/such"); }),
            "can't open a file '/no/such'\n");
}

} // namespace kestro
