#include "base/fgetl.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "support/fatal.h"
#include "support/graphs.h"
#include "support/streams.h"

namespace kestro {

// A reader of text whose buffer starts at the given size.
//
// With size 4 the first piece holds up to 3 characters, the following ones 5,
// 5, 10 and 20.
struct line_reader {
  std::string text;
  int size;
  char *buffer = static_cast<char *>(xmalloc(static_cast<size_t>(size)));
  file_ptr stream = reading(text);

  line_reader(std::string content, int first_size)
      : text(std::move(content)), size(first_size) {}
  line_reader(const line_reader &) = delete;
  line_reader &operator=(const line_reader &) = delete;
  ~line_reader() { xfree(buffer); }

  std::string next() {
    const char *line = fgetl(&buffer, &size, stream.get());
    EXPECT_TRUE(!line || line == buffer);
    return line ? line : "(end)";
  }
};

static std::string letters(size_t count) { return std::string(count, 'a'); }

TEST(Fgetl, EmptyInputIsTheEnd) {
  line_reader in("", 4);
  EXPECT_EQ(in.next(), "(end)");
  EXPECT_EQ(in.size, 4);
}

TEST(Fgetl, ShortLinesAreExact) {
  line_reader in("a\n\nbc\n", 16);
  EXPECT_EQ(in.next(), "a\n");
  EXPECT_EQ(in.next(), "\n");
  EXPECT_EQ(in.next(), "bc\n");
  EXPECT_EQ(in.next(), "(end)");
  EXPECT_EQ(in.size, 16);
}

TEST(Fgetl, FinalLineShorterThanTheBufferNeedsNoNewline) {
  line_reader in("ab\nc", 16);
  EXPECT_EQ(in.next(), "ab\n");
  EXPECT_EQ(in.next(), "c");
  EXPECT_EQ(in.next(), "(end)");
}

TEST(Fgetl, LineThatFillsTheFirstBufferIsExact) {
  line_reader in("ab\ncd\n", 4);
  EXPECT_EQ(in.next(), "ab\n");
  EXPECT_EQ(in.next(), "cd\n");
  EXPECT_EQ(in.size, 4);
}

TEST(Fgetl, SecondPieceUpToThreeCharactersEndsTheLine) {
  line_reader in("abcde\nx\n", 4); // abc, de\n
  EXPECT_EQ(in.next(), "abcde\n");
  EXPECT_EQ(in.size, 9);
  EXPECT_EQ(in.next(), "x\n");
}

TEST(Fgetl, SecondPieceOfFourCharactersWithNewlineEndsTheLine) {
  line_reader in("abcdef\nx\n", 4); // abc, def\n
  EXPECT_EQ(in.next(), "abcdef\n");
  EXPECT_EQ(in.size, 9);
  EXPECT_EQ(in.next(), "x\n");
}

TEST(Fgetl, SecondPieceThatFillsItsRoomTakesTheNextLineIn) {
  line_reader in("abcdefg\nxy\nz\n", 4); // abc, defg\n, xy\n
  EXPECT_EQ(in.next(), "abcdefg\nxy\n");
  EXPECT_EQ(in.size, 14);
  EXPECT_EQ(in.next(), "z\n");
}

TEST(Fgetl, PieceThatFillsItsRoomAtTheEndOfInputLosesTheLine) {
  line_reader in("abcdefg\n", 4); // abc, defg\n, nothing
  EXPECT_EQ(in.next(), "(end)");
  EXPECT_EQ(in.size, 14);
}

TEST(Fgetl, PieceOneShortOfItsRoomWithoutNewlineLosesTheLine) {
  line_reader in("abcdefg", 4); // abc, defg, nothing
  EXPECT_EQ(in.next(), "(end)");
  EXPECT_EQ(in.size, 14);
}

TEST(Fgetl, PieceTwoShortOfItsRoomWithoutNewlineEndsTheInput) {
  line_reader in("abcdef", 4); // abc, def
  EXPECT_EQ(in.next(), "abcdef");
  EXPECT_EQ(in.size, 9);
}

TEST(Fgetl, FinalLineThatFillsTheFirstBufferWithoutNewlineIsLost) {
  line_reader in("abc", 4); // abc, nothing
  EXPECT_EQ(in.next(), "(end)");
  EXPECT_EQ(in.size, 9);
}

TEST(Fgetl, PiecesGrowByFiveFiveTenTwenty) {
  // Sizes 4, 9, 14, 24, 44; before the last piece 3 + 5 + 5 + 10 = 23
  // characters are read.
  line_reader third(letters(3 + 5) + "\nx\n", 4); // third piece: \n
  EXPECT_EQ(third.next(), letters(8) + "\n");
  EXPECT_EQ(third.size, 14);
  line_reader fourth(letters(3 + 5 + 5) + "\nx\n", 4);
  EXPECT_EQ(fourth.next(), letters(13) + "\n");
  EXPECT_EQ(fourth.size, 24);
  line_reader fifth(letters(3 + 5 + 5 + 10) + "\nx\n", 4);
  EXPECT_EQ(fifth.next(), letters(23) + "\n");
  EXPECT_EQ(fifth.size, 44);
}

TEST(Fgetl, PieceOfNineOutOfTenWithNewlineEndsTheLine) {
  line_reader in(letters(13 + 8) + "\nx\n", 4);
  EXPECT_EQ(in.next(), letters(21) + "\n");
  EXPECT_EQ(in.size, 24);
  EXPECT_EQ(in.next(), "x\n");
}

TEST(Fgetl, PieceOfTenOutOfTenTakesTheNextLineIn) {
  line_reader in(letters(13 + 9) + "\nx\ny\n", 4);
  EXPECT_EQ(in.next(), letters(22) + "\nx\n");
  EXPECT_EQ(in.size, 44);
  EXPECT_EQ(in.next(), "y\n");
}

TEST(Fgetl, PieceOfNineOutOfTenWithoutNewlineLosesTheLine) {
  line_reader in(letters(13 + 9), 4);
  EXPECT_EQ(in.next(), "(end)");
  EXPECT_EQ(in.size, 44);
}

TEST(Fgetl, TakesTheLinesInThatFillEveryRoom) {
  // abc, defg\n (full), 1234\n (full), 5\n.
  line_reader in("abcdefg\n1234\n5\n6\n", 4);
  EXPECT_EQ(in.next(), "abcdefg\n1234\n5\n");
  EXPECT_EQ(in.size, 24);
  EXPECT_EQ(in.next(), "6\n");
}

TEST(Fgetl, EnlargedBufferServesTheNextLines) {
  line_reader in("abcdef\nABCDEFG\nxyz\n", 4);
  EXPECT_EQ(in.next(), "abcdef\n"); // the buffer holds 8 characters now
  EXPECT_EQ(in.next(), "ABCDEFG\n");
  EXPECT_EQ(in.size, 9);
  EXPECT_EQ(in.next(), "xyz\n");
}

TEST(Fgetl, BufferOfTwoReadsOneCharacterFirst) {
  line_reader in("\nab\n", 2);
  EXPECT_EQ(in.next(), "\n");
  EXPECT_EQ(in.size, 2);
  EXPECT_EQ(in.next(), "ab\n"); // a, b\n
  EXPECT_EQ(in.size, 7);
}

TEST(Fgetl, LineOfTwoThousandCharactersLeavesTheBufferEnlarged) {
  line_reader in(letters(1999) + "\nshort\n", 1024);
  EXPECT_EQ(in.next(), letters(1999) + "\n");
  // 1024 + 5 + 5 + 10 + 20 + 40 + 80 + 160 + 320 + 640
  EXPECT_EQ(in.size, 2304);
  EXPECT_EQ(in.next(), "short\n");
  EXPECT_EQ(in.size, 2304);
}

TEST(Fgetl, LineBufferStartsAtItsFirstSizeAndIsEnlarged) {
  const std::string text = letters(2000) + "\n";
  const file_ptr stream = reading(text);
  line_buffer line;
  EXPECT_EQ(line.size, 1024);
  EXPECT_EQ(fgetl(line, stream.get()), text);
  EXPECT_EQ(line.size, 2304);
  EXPECT_EQ(fgetl(line, stream.get()), nullptr);
}

TEST(Fgetl, NullBufferSuppliedIsFatal) {
  const file_ptr stream = reading("a\n");
  char *buffer = nullptr;
  int size = 10;
  EXPECT_EQ(fatal_text([&] { fgetl(&buffer, &size, stream.get()); }),
            "fgetl.c:N: null buffer supplied\n");
}

TEST(Fgetl, InputBufferSizeMustBeGreaterThanOne) {
  for (const int size : {1, 0, -1}) {
    line_reader in("a\n", 4);
    in.size = size;
    EXPECT_EQ(fatal_text([&] { in.next(); }),
              "fgetl.c:N: input buffer size must be greater than 1\n");
  }
}

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
    line_reader reader(content, 2 + random_below(rng, 8));
    const file_text text = text_of(content);
    text_lines lines(text);
    int size = reader.size;
    if (content.empty())
      continue; // which no stream in memory can be
    for (;;) {
      const char *expected =
          fgetl(&reader.buffer, &reader.size, reader.stream.get());
      const char *line = lines.next(&size);
      ASSERT_EQ(size, reader.size);
      ASSERT_EQ(line == nullptr, expected == nullptr) << content;
      if (!line)
        break;
      ASSERT_STREQ(line, expected) << content;
      ASSERT_EQ(static_cast<long>(lines.position()),
                ftell(reader.stream.get()));
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
