#include "graph/graph_line.h"

#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "base/fgetl.h"
#include "reference/graph/graph_line.h"
#include "support/fatal.h"
#include "support/graphs.h"

namespace kestro {

// What graph_parse_line() makes of a line; ids are -77 where it sets none.
struct parsed {
  int kind;
  int a = -77;
  int b = -77;
  std::string label;

  explicit parsed(const std::string &line) {
    line_buffer buffer;
    buffer.text[0] = '\0';
    kind = graph_parse_line(line.c_str(), &a, &b, &buffer.text, &buffer.size);
    label = buffer.text;
    EXPECT_EQ(buffer.size, line_buffer::first_size);
  }
};

static std::string failure_of(const std::string &line) {
  return fatal_text([&] { parsed{line}; });
}

// What sscanf makes of a line: the conversions made and the fields.
struct scanned {
  int count;
  int a = -77;
  int b = -77;
  char label[1024] = "";

  explicit scanned(const std::string &line) {
    char letter = '\0';
    sscanf(line.c_str(), " %c", &letter);
    count =
        strchr("vV", letter)
            ? sscanf(line.c_str(), " %c %d %1023s ", &letter, &a, label) + 1
            : sscanf(line.c_str(), " %c %d %d %1023s ", &letter, &a, &b, label);
  }
};

TEST(GraphLine, FieldsAreThoseThatScanfReads) {
  const std::vector<std::string> pieces = {" ",
                                           "\t",
                                           "\v",
                                           "\r",
                                           "+",
                                           "-",
                                           "0",
                                           "12",
                                           "2147483648",
                                           "x",
                                           "C",
                                           ":",
                                           "\x01",
                                           "9223372036854775806",
                                           "9223372036854775807",
                                           "99999999999999999999",
                                           "-9223372036854775809",
                                           "0x1f",
                                           "1e3",
                                           ".",
                                           "\xc3\xa4",
                                           std::string(1030, 'l')};
  test_rng rng(5);
  for (int i = 0; i < 20000; i++) {
    std::string line(1, "vVuUdDeE"[random_below(rng, 8)]);
    for (int n = random_below(rng, 8); n > 0; n--)
      line += pieces[static_cast<size_t>(
          random_below(rng, static_cast<int>(pieces.size())))];
    line += "\n";
    const scanned plain(line);
    if (plain.count < 4) {
      const std::string text = failure_of(line);
      EXPECT_EQ(text, plain.count == 3
                          ? "xmalloc.c:N: not enough memory\n"
                          : "graph.c:N: invalid input line '" +
                                line.substr(0, line.size() - 1) + "'\n");
      continue;
    }
    const parsed ours(line);
    EXPECT_EQ(ours.a, plain.a) << line;
    EXPECT_EQ(ours.b, plain.b) << line;
    EXPECT_EQ(ours.label, plain.label) << line;
  }
}

TEST(GraphLine, KindsHaveTheirNumbers) {
  EXPECT_EQ(graph_line_kind("# text\n"), 0);
  EXPECT_EQ(graph_line_kind("% text\n"), 0);
  EXPECT_EQ(graph_line_kind("v 0 C\n"), 1);
  EXPECT_EQ(graph_line_kind("t # 0\n"), 16);
  for (const char *line : {"u 0 1 s\n", "d 0 1 s\n", "e 0 1 s\n"})
    EXPECT_EQ(graph_line_kind(line), 10) << line;
}

TEST(GraphLine, UpperCaseLettersAreAccepted) {
  EXPECT_EQ(graph_line_kind("V 0 C\n"), 1);
  EXPECT_EQ(graph_line_kind("T\n"), 16);
  for (const char *line : {"U 0 1 s\n", "D 0 1 s\n", "E 0 1 s\n"})
    EXPECT_EQ(graph_line_kind(line), 10) << line;
}

TEST(GraphLine, KindSkipsLeadingBlanks) {
  EXPECT_EQ(graph_line_kind(" \t v 0 C\n"), 1);
  EXPECT_EQ(graph_line_kind("\r\n#"), 0);
}

TEST(GraphLine, KindLooksAtTheFirstLetterOnly) {
  EXPECT_EQ(graph_line_kind("victory\n"), 1);
  EXPECT_EQ(graph_line_kind("the end"), 16);
}

TEST(GraphLine, EdgeKindsAreTheTwoWithBitTwoAndMore) {
  EXPECT_TRUE(graph_line_is_edge(10));
  EXPECT_TRUE(graph_line_is_edge(6));
  for (const int kind : {0, 1, 2, 14, 16})
    EXPECT_FALSE(graph_line_is_edge(kind)) << kind;
  EXPECT_TRUE(graph_line_edge & graph_line_edge_bit);
  EXPECT_TRUE(graph_line_single_edge & graph_line_edge_bit);
  EXPECT_FALSE(graph_line_transaction & graph_line_edge_bit);
}

TEST(GraphLine, VertexLineGivesItsIdAndLabel) {
  const parsed p("v 12 C\n");
  EXPECT_EQ(p.kind, graph_line_vertex);
  EXPECT_EQ(p.a, 12);
  EXPECT_EQ(p.b, -77);
  EXPECT_EQ(p.label, "C");
}

TEST(GraphLine, EdgeLineGivesItsEndsAsWrittenAndLabel) {
  for (const char letter : {'u', 'd', 'e', 'U', 'D', 'E'}) {
    const parsed p(std::string(1, letter) + " 7 3 double\n");
    EXPECT_EQ(p.kind, graph_line_edge);
    EXPECT_EQ(p.a, 7);
    EXPECT_EQ(p.b, 3);
    EXPECT_EQ(p.label, "double");
  }
}

TEST(GraphLine, CommentSetsBothIdsToMinusOne) {
  const parsed p("# v 1 C\n");
  EXPECT_EQ(p.kind, graph_line_comment);
  EXPECT_EQ(p.a, -1);
  EXPECT_EQ(p.b, -1);
}

TEST(GraphLine, TransactionLineSetsNothing) {
  const parsed p("t # 5\n");
  EXPECT_EQ(p.kind, graph_line_transaction);
  EXPECT_EQ(p.a, -77);
  EXPECT_EQ(p.label, "");
}

TEST(GraphLine, IdsMayBeNegativeOrSigned) {
  EXPECT_EQ(parsed("v -5 C").a, -5);
  EXPECT_EQ(parsed("u +4 -9 s").a, 4);
  EXPECT_EQ(parsed("u +4 -9 s").b, -9);
}

TEST(GraphLine, BlanksAreFreeAndTrailingTextIsIgnored) {
  const parsed p("  u\t 1   2\tsingle and what follows\n");
  EXPECT_EQ(p.a, 1);
  EXPECT_EQ(p.b, 2);
  EXPECT_EQ(p.label, "single");
}

TEST(GraphLine, LetterAndIdMayTouch) {
  const parsed p("v3 C\n");
  EXPECT_EQ(p.a, 3);
  EXPECT_EQ(p.label, "C");
}

TEST(GraphLine, LabelMayTouchTheIdWhenItIsNoDigit) {
  const parsed p("u 1 2s\n");
  EXPECT_EQ(p.b, 2);
  EXPECT_EQ(p.label, "s");
}

TEST(GraphLine, CarriageReturnIsNoPartOfALabel) {
  EXPECT_EQ(parsed("v 0 C\r\n").label, "C");
  EXPECT_EQ(parsed("u 0 1 s\r\n").label, "s");
}

TEST(GraphLine, LineEndsAtAZeroByte) {
  using namespace std::string_literals;
  EXPECT_EQ(parsed("v 0 C\0D\n"s).label, "C");
  EXPECT_EQ(failure_of("v \0 0 C\n"s), "graph.c:N: invalid input line 'v '\n");
}

TEST(GraphLine, LabelsUpTo1023BytesAreWholeLongerOnesCut) {
  for (const size_t length : {1u, 1022u, 1023u, 1024u, 1025u, 4000u}) {
    const std::string label(length, 'x');
    const size_t kept = std::min<size_t>(length, 1023);
    EXPECT_EQ(parsed("v 0 " + label + "\n").label.size(), kept);
    EXPECT_EQ(parsed("u 0 1 " + label + "\n").label.size(), kept);
  }
}

TEST(GraphLine, WidthIsThatOfTheCallersBuffer) {
  int a;
  int b;
  char text[8];
  char *label = text;
  int size = sizeof text;
  graph_parse_line("v 0 abcdefghij", &a, &b, &label, &size);
  EXPECT_STREQ(text, "abcdefg");
  EXPECT_EQ(size, 8);
}

TEST(GraphLine, ScannedLabelStandsInTheLine) {
  const char text[] = " v 12 label and more\n";
  const graph_line line = graph_scan_line(text, 1023);
  EXPECT_EQ(line.kind, graph_line_vertex);
  EXPECT_EQ(line.a, 12);
  EXPECT_EQ(line.b, 0);
  EXPECT_EQ(line.label, text + 6);
  EXPECT_EQ(line.label_length, 5);
  EXPECT_EQ(graph_scan_line(text, 3).label_length, 3);
  EXPECT_EQ(graph_scan_line("u 3 -4 s", 1023).b, -4);
}

TEST(GraphLine, ScannedCommentsAndHeadersHaveNoLabel) {
  EXPECT_EQ(graph_scan_line("# v 1 C\n", 1023).label, nullptr);
  EXPECT_EQ(graph_scan_line("# v 1 C\n", 1023).a, -1);
  EXPECT_EQ(graph_scan_line("t # 1 C\n", 1023).label, nullptr);
  EXPECT_EQ(graph_scan_line("t # 1 C\n", 1023).a, 0);
}

TEST(GraphLine, NumbersOfAnyLength) {
  EXPECT_EQ(parsed("v 999999999 C").a, 999999999);
  EXPECT_EQ(parsed("v -2147483648 C").a, INT_MIN);
  EXPECT_EQ(parsed("v 0000000000000000000000012 C").a, 12);
  EXPECT_EQ(parsed("v 4294967301 C").a, 5); // the low 32 bits
  EXPECT_EQ(parsed("v 9223372036854775807 C").a, -1);
  EXPECT_EQ(parsed("v 9223372036854775808 C").a, -1);
  EXPECT_EQ(parsed("v -9223372036854775809 C").a, 0);
}

TEST(GraphLineFatal, LineWithoutACharacterIsQuotedAsRead) {
  EXPECT_EQ(fatal_text([] { graph_line_kind("\n"); }),
            "graph.c:N: invalid input line: \n\n");
  EXPECT_EQ(fatal_text([] { graph_line_kind(" \t\r\n"); }),
            "graph.c:N: invalid input line:  \t\r\n\n");
  EXPECT_EQ(fatal_text([] { graph_line_kind(""); }),
            "graph.c:N: invalid input line: \n");
  EXPECT_EQ(failure_of("\n"), "graph.c:N: invalid input line: \n\n");
}

TEST(GraphLineFatal, UnknownLetterIsQuotedWithoutNewline) {
  EXPECT_EQ(fatal_text([] { graph_line_kind("x 0 1\n"); }),
            "graph.c:N: invalid input line 'x 0 1'\n");
  EXPECT_EQ(fatal_text([] { graph_line_kind("0 v C\r\n"); }),
            "graph.c:N: invalid input line '0 v C\r'\n");
  EXPECT_EQ(fatal_text([] { graph_line_kind("\xe9\n"); }),
            "graph.c:N: invalid input line '\xe9'\n");
  EXPECT_EQ(failure_of("w 0 C\n"), "graph.c:N: invalid input line 'w 0 C'\n");
}

TEST(GraphLineFatal, IdThatIsNoNumber) {
  EXPECT_EQ(failure_of("v C 0\n"), "graph.c:N: invalid input line 'v C 0'\n");
  EXPECT_EQ(failure_of("u x 0 s\n"),
            "graph.c:N: invalid input line 'u x 0 s'\n");
  EXPECT_EQ(failure_of("u 0 s\n"), "graph.c:N: invalid input line 'u 0 s'\n");
  EXPECT_EQ(failure_of("v\n"), "graph.c:N: invalid input line 'v'\n");
  EXPECT_EQ(failure_of("e 1\n"), "graph.c:N: invalid input line 'e 1'\n");
}

TEST(GraphLineFatal, LineWithoutALabelExhaustsMemory) {
  EXPECT_EQ(failure_of("v 0\n"), "xmalloc.c:N: not enough memory\n");
  EXPECT_EQ(failure_of("v 0  \r\n"), "xmalloc.c:N: not enough memory\n");
  EXPECT_EQ(failure_of("u 0 1\n"), "xmalloc.c:N: not enough memory\n");
}

} // namespace kestro
