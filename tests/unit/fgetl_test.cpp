#include "base/fgetl.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "support/fatal.h"
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

} // namespace kestro
