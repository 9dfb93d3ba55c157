#include "base/text_lines.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "base/fgetl.h"
#include "support/graphs.h"
#include "support/streams.h"

namespace kestro {

// A text in memory.
static file_text text_of(const std::string &content) {
  const file_ptr stream = reading(content);
  return content.empty() ? read_file("/dev/null")
                         : read_text(stream.get(), "text");
}

// The strings that text_lines takes out of content.
static std::vector<std::string> lines_of(const std::string &content, int size) {
  const file_text text = text_of(content);
  text_lines lines(text);
  std::vector<std::string> found;
  while (const char *line = lines.next(&size))
    found.emplace_back(line);
  EXPECT_EQ(lines.next(&size), nullptr);
  return found;
}

TEST(TextLines, AreTheLinesOfAText) {
  using strings = std::vector<std::string>;
  EXPECT_EQ(lines_of("", 1024), strings{});
  EXPECT_EQ(lines_of("\n", 1024), strings{"\n"});
  EXPECT_EQ(lines_of("a\n\nbc", 1024), (strings{"a\n", "\n", "bc"}));
}

TEST(TextLines, AreThoseThatFgetlReads) {
  test_rng rng(11);
  for (int round = 0; round < 3000; round++) {
    std::string content;
    for (int n = random_below(rng, 60); n > 0; n--)
      content += "ab\n"[random_below(rng, 3)];
    if (random_below(rng, 3) == 0 && !content.empty())
      content[static_cast<size_t>(
          random_below(rng, static_cast<int>(content.size())))] = '\0';
    if (content.empty())
      continue; // no stream in memory can be empty
    line_buffer buffer;
    buffer.size = 2 + random_below(rng, 8); // of more bytes, as a first size
    const file_ptr stream = reading(content);
    const file_text text = text_of(content);
    text_lines lines(text);
    int size = buffer.size;
    for (;;) {
      const char *expected = fgetl(buffer, stream.get());
      const char *line = lines.next(&size);
      ASSERT_EQ(size, buffer.size);
      ASSERT_EQ(line == nullptr, expected == nullptr) << content;
      if (!line)
        break;
      ASSERT_STREQ(line, expected) << content;
      ASSERT_EQ(static_cast<long>(lines.position()), ftell(stream.get()));
    }
  }
}

TEST(TextLines, PiecesAreThoseThatFgetsReads) {
  using namespace std::string_literals;
  const std::string content = "abcdefg\nhi\n\0jklmn\n\n"s;
  for (int size = 2; size < 12; size++) {
    const file_text text = text_of(content);
    text_lines lines(text);
    const file_ptr stream = reading(content);
    char piece[16];
    while (fgets(piece, size, stream.get())) {
      ASSERT_STREQ(lines.next_piece(size), piece);
      ASSERT_EQ(static_cast<long>(lines.position()), ftell(stream.get()));
    }
    EXPECT_EQ(lines.next_piece(size), nullptr);
  }
}

TEST(TextLines, SeekGoesBackToTheSameLines) {
  const file_text text = text_of("one\ntwo\nthree\n");
  text_lines lines(text);
  int size = 1024;
  lines.next(&size);
  const size_t second = lines.position();
  EXPECT_STREQ(lines.next(&size), "two\n");
  lines.next(&size);
  lines.seek(second);
  EXPECT_STREQ(lines.next(&size), "two\n");
  EXPECT_STREQ(lines.next(&size), "three\n");
}

TEST(TextLines, TextIsAsItWasWhenTheReaderEnds) {
  const std::string content = "one\ntwo\nthree";
  const file_text text = text_of(content);
  {
    text_lines lines(text);
    int size = 1024;
    EXPECT_STREQ(lines.next(&size), "one\n");
    EXPECT_STREQ(text.bytes.get(), "one\n");
  }
  EXPECT_EQ(std::string(text.bytes.get(), text.size), content);
}

// The number that lines.locate() tells.
template <class... Byte>
static long long located(text_lines &lines, Byte... byte) {
  fatal_error e("wrong");
  lines.locate(&e, byte...);
  EXPECT_EQ(e.path(), "db.g");
  return e.line();
}

TEST(TextLines, LocateAnErrorAtTheLineReadLast) {
  const file_text text = copy_text("a\n\n\nb\nc", "db.g");
  text_lines lines(text);
  int size = line_buffer::first_size;
  EXPECT_EQ(located(lines), 1); // nothing read
  for (int number = 1; number <= 5; number++) {
    ASSERT_TRUE(lines.next(&size));
    EXPECT_EQ(located(lines), number);
  }
}

TEST(TextLines, LocateAnErrorAtAnyByte) {
  const file_text text = copy_text("a b\n\nc d\n", "db.g");
  text_lines lines(text);
  const char *const first = lines.at();
  int size = line_buffer::first_size;
  lines.next(&size);
  EXPECT_EQ(located(lines, first + 2), 1);
  EXPECT_EQ(located(lines, first + 4), 2); // where a zero stands meanwhile
  EXPECT_EQ(located(lines, first + 7), 3);
}

TEST(TextLines, LocateLeavesAnErrorThatHasAPlace) {
  const file_text text = copy_text("a\nb\n", "db.g");
  text_lines lines(text);
  fatal_error e("wrong");
  set_error_place(&e, nullptr, 7);
  lines.locate(&e);
  EXPECT_EQ(e.line(), 7);
  EXPECT_EQ(e.path(), "");
}

// A long line is read in pieces, of which one may end where a line does.
TEST(TextLines, LocateCountsNewlinesHoweverLinesWereRead) {
  const file_text text = copy_text("abcdefg\nx\ny\n", "db.g");
  text_lines lines(text);
  int size = 4; // pieces of 3, 5, 5
  EXPECT_STREQ(lines.next(&size), "abcdefg\nx\n");
  EXPECT_EQ(located(lines), 1);
  EXPECT_STREQ(lines.next(&size), "y\n");
  EXPECT_EQ(located(lines), 3);
}

} // namespace kestro
