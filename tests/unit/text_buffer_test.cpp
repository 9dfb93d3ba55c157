#include "base/text_buffer.h"

#include <climits>
#include <stdexcept>
#include <string>

#include <gtest/gtest.h>

#include "support/streams.h"
#include "support/temp_file.h"

namespace kestro {

TEST(TextBuffer, WritesWhatIsAddedInOrder) {
  EXPECT_EQ(written_text([](FILE *out) {
              text_buffer text(out);
              text.add("v ");
              text.add(7);
              text.add(' ');
              text.add("");
              text.add("label\n");
            }),
            "v 7 label\n");
}

TEST(TextBuffer, NumbersAreDecimal) {
  const int numbers[] = {0, 9, 10, -1, -10, 12345, INT_MAX, INT_MIN};
  std::string expected;
  for (const int number : numbers)
    expected += std::to_string(number) + ",";
  EXPECT_EQ(written_text([&](FILE *out) {
              text_buffer text(out);
              for (const int number : numbers) {
                text.add(number);
                text.add(',');
              }
            }),
            expected);
}

TEST(TextBuffer, NumbersUpToFourDigitsAreDecimal) {
  std::string expected;
  EXPECT_EQ(written_text([&](FILE *out) {
              text_buffer text(out);
              for (int number = -1100; number <= 1100; number++) {
                text.add(number);
                text.add('\n');
                expected += std::to_string(number) + "\n";
              }
            }),
            expected);
}

TEST(TextBuffer, NothingAddedIsNothingWritten) {
  EXPECT_EQ(written_text([](FILE *out) {
              text_buffer text(out);
              text.flush();
            }),
            "");
}

TEST(TextBuffer, LongTextsComeOutWhole) {
  std::string expected;
  const std::string text = written_text([&](FILE *out) {
    text_buffer buffer(out);
    for (int i = 0; i < 100000; i++) {
      buffer.add(i);
      buffer.add('\n');
      expected += std::to_string(i) + "\n";
    }
    const std::string word(300000, 'w');
    buffer.add(word.c_str());
    expected += word;
  });
  EXPECT_EQ(text == expected, true);
}

TEST(TextBuffer, FlushReachesTheFile) {
  const temp_file file;
  const file_ptr stream(open_file(file.path(), "w"));
  text_buffer text(stream.get());
  text.add("first");
  EXPECT_EQ(file.text(), "");
  text.flush();
  EXPECT_EQ(file.text(), "first");
  text.add("second");
  text.flush();
  EXPECT_EQ(file.text(), "firstsecond");
}

TEST(TextBuffer, WhatWasAddedBeforeAFailureIsWritten) {
  const temp_file file;
  EXPECT_THROW(
      {
        const file_ptr stream(open_file(file.path(), "w"));
        text_buffer text(stream.get());
        text.add("kept");
        throw std::runtime_error("failure");
      },
      std::runtime_error);
  EXPECT_EQ(file.text(), "kept");
}

} // namespace kestro
