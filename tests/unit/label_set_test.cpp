#include "graph/label_set.h"

#include <gtest/gtest.h>

#include "reference/graph/label_set.h"
#include "support/fatal.h"
#include "support/label_sets.h"
#include "support/temp_file.h"

namespace kestro {

using strings = std::vector<std::string>;

static label_set_ptr loaded(const std::string &text) {
  const temp_file file(text);
  return label_set_ptr(label_set_load(file.path()));
}

static label_set_ptr built(const std::string &text) {
  const temp_file file(text);
  label_set_ptr ls(label_set_create());
  label_set_build(read_file(file.path()), ls.get());
  return ls;
}

TEST(LabelSet, IsCreatedEmptyWithRoomFor128OfAKind) {
  const label_set_ptr ls(label_set_create());
  EXPECT_EQ(label_set_edge_labels(ls.get()), 0);
  EXPECT_EQ(label_set_vertex_labels(ls.get()), 0);
  EXPECT_EQ(ls->edge_labels->capacity, 128);
  EXPECT_EQ(ls->vertex_labels->capacity, 128);
}

TEST(LabelSet, FreeOfNullDoesNothing) {
  EXPECT_NO_THROW(label_set_free(nullptr));
}

TEST(LabelSet, IdsFollowByteOrderWithUpperCaseFirst) {
  const label_set_ptr ls = label_set_of({"B", "a", "A"}, {"a", "B", "A"});
  EXPECT_EQ(edge_labels_of(ls), (strings{"A", "B", "a"}));
  EXPECT_EQ(vertex_labels_of(ls), (strings{"A", "B", "a"}));
  EXPECT_EQ(label_set_edge_label_id(ls.get(), "A"), 0);
  EXPECT_EQ(label_set_edge_label_id(ls.get(), "B"), 1);
  EXPECT_EQ(label_set_vertex_label_id(ls.get(), "a"), 2);
}

TEST(LabelSet, BytesAbove127ComeLastAndPrefixesFirst) {
  const label_set_ptr ls = label_set_of({"\xc3\xa9", "z", "zz", "10", "9"}, {});
  EXPECT_EQ(edge_labels_of(ls), (strings{"10", "9", "z", "zz", "\xc3\xa9"}));
}

TEST(LabelSet, RepeatsAreKeptOnce) {
  const label_set_ptr ls = label_set_of({"x", "x"}, {"x", "y", "x"});
  EXPECT_EQ(edge_labels_of(ls), (strings{"x"}));
  EXPECT_EQ(vertex_labels_of(ls), (strings{"x", "y"}));
}

TEST(LabelSet, OneLabelOfBothKindsHasAnIdInEach) {
  const label_set_ptr ls = label_set_of({"C", "s"}, {"A", "B", "C"});
  EXPECT_EQ(label_set_edge_label_id(ls.get(), "C"), 0);
  EXPECT_EQ(label_set_vertex_label_id(ls.get(), "C"), 2);
}

TEST(LabelSet, KeepsCopiesOfItsStrings) {
  const label_set_ptr ls(label_set_create());
  std::string s = "one";
  label_set_add_edge_label(ls.get(), s.c_str());
  s[0] = 'X';
  EXPECT_STREQ(label_set_edge_label(ls.get(), 0), "one");
}

TEST(LabelSet, GrowsBeyondItsFirstRoomAndStaysSorted) {
  const label_set_ptr ls(label_set_create());
  for (int i = 0; i < 300; i++) // every number below 300, jumbled
    label_set_add_vertex_label(ls.get(),
                               std::to_string(1000 + i * 7 % 300).c_str());
  ASSERT_EQ(label_set_vertex_labels(ls.get()), 300);
  for (int i = 0; i < 300; i++)
    EXPECT_EQ(label_set_vertex_label(ls.get(), i), std::to_string(1000 + i));
}

TEST(LabelSetFatal, AbsentEdgeLabelListsTheEdgeLabels) {
  const label_set_ptr ls = label_set_of({"b", "a"}, {"v"});
  EXPECT_EQ(fatal_text([&] { label_set_edge_label_id(ls.get(), "v"); }),
            "graph.c:N: can't find an edge label 'v' in the label set\na\nb\n");
}

TEST(LabelSetFatal, AbsentVertexLabelListsTheVertexLabels) {
  const label_set_ptr ls = label_set_of({"b"}, {"w", "v"});
  EXPECT_EQ(
      fatal_text([&] { label_set_vertex_label_id(ls.get(), "b"); }),
      "graph.c:N: can't find a vertex label 'b' in the label set\nv\nw\n");
}

TEST(LabelSetFatal, AbsentFromAnEmptySetListsNothing) {
  const label_set_ptr ls = label_set_of({}, {});
  EXPECT_EQ(fatal_text([&] { label_set_vertex_label_id(ls.get(), "C"); }),
            "graph.c:N: can't find a vertex label 'C' in the label set\n");
}

TEST(LabelSetFatal, IdWithoutALabel) {
  const label_set_ptr ls = label_set_of({"b"}, {});
  EXPECT_EQ(fatal_text([&] { label_set_edge_label(ls.get(), 1); }),
            "stack.c:N: invalid index\n");
  EXPECT_EQ(fatal_text([&] { label_set_vertex_label(ls.get(), 0); }),
            "stack.c:N: invalid index\n");
}

TEST(LabelSetBuild, TakesTheLabelsOfVertexAndEdgeLines) {
  const label_set_ptr ls = built("t # 0\nv 0 C\nv 1 O\nu 1 0 s\n"
                                 "t # 1\nv 0 C\nv 1 N\ne 0 1 d\nd 0 1 q\n");
  EXPECT_EQ(vertex_labels_of(ls), (strings{"C", "N", "O"}));
  EXPECT_EQ(edge_labels_of(ls), (strings{"d", "q", "s"}));
}

TEST(LabelSetBuild, TakesLinesBeforeTheFirstTransactionToo) {
  const label_set_ptr ls = built("v 9 early\nu 1 1 x\nt\n");
  EXPECT_EQ(vertex_labels_of(ls), (strings{"early"}));
  EXPECT_EQ(edge_labels_of(ls), (strings{"x"}));
}

TEST(LabelSetBuild, CommentsGiveNoLabels) {
  const label_set_ptr ls = built("# v 0 C\n% u 0 1 s\nt 0\n");
  EXPECT_EQ(label_set_vertex_labels(ls.get()), 0);
  EXPECT_EQ(label_set_edge_labels(ls.get()), 0);
}

TEST(LabelSetBuild, EmptyFileGivesAnEmptySet) {
  EXPECT_EQ(label_set_vertex_labels(built("").get()), 0);
}

TEST(LabelSetBuild, AddsToWhatTheSetHolds) {
  const temp_file file("v 0 b\n");
  const label_set_ptr ls = label_set_of({}, {"a", "c"});
  label_set_build(read_file(file.path()), ls.get());
  EXPECT_EQ(vertex_labels_of(ls), (strings{"a", "b", "c"}));
}

TEST(LabelSetBuild, LabelsOf1022And1023BytesAreWholeLongerOnesCut) {
  for (const size_t length : {1022u, 1023u, 1024u, 5000u}) {
    // Text behind the line: a long one may be read together with the next.
    const label_set_ptr ls =
        built("v 0 " + std::string(length, 'x') + "\nt\nt\n");
    ASSERT_EQ(label_set_vertex_labels(ls.get()), 1) << length;
    EXPECT_EQ(vertex_labels_of(ls)[0],
              std::string(std::min<size_t>(length, 1023), 'x'));
  }
}

TEST(LabelSetFatal, BuildFromAMissingFile) {
  const label_set_ptr ls(label_set_create());
  EXPECT_EQ(fatal_text([&] { label_set_build("/no/such", ls.get()); }),
            "can't open a file '/no/such'\n");
}

TEST(LabelSetFatal, BuildAtAMalformedLine) {
  EXPECT_EQ(fatal_text([] { built("t\nx y\n"); }),
            "graph.c:N: invalid input line 'x y'\n");
  EXPECT_EQ(fatal_text([] { built("t\n\nt\n"); }),
            "graph.c:N: invalid input line: \n\n");
}

TEST(LabelSetFatal, BuildAtALineWithoutALabel) {
  EXPECT_EQ(fatal_text([] { built("t\nv 0\n"); }),
            "xmalloc.c:N: not enough memory\n");
}

TEST(LabelSetSave, WritesTheCountsThenEdgeThenVertexLabelsById) {
  const label_set_ptr ls = label_set_of({"s", "d"}, {"O", "C", "N"});
  const temp_file file("what was there before");
  label_set_save(ls.get(), file.path());
  EXPECT_EQ(file.text(), "# 2 edge labels, 3 vertex labels\n"
                         "E d\nE s\nV C\nV N\nV O\n");
}

TEST(LabelSetSave, EmptySetIsItsHeader) {
  const label_set_ptr ls(label_set_create());
  const temp_file file;
  label_set_save(ls.get(), file.path());
  EXPECT_EQ(file.text(), "# 0 edge labels, 0 vertex labels\n");
}

TEST(LabelSetSave, LoadsToTheSameIds) {
  const label_set_ptr ls = label_set_of({"b", "a", "B"}, {"#", "V", "E", "%"});
  const temp_file file;
  label_set_save(ls.get(), file.path());
  const label_set_ptr again(label_set_load(file.path()));
  EXPECT_EQ(edge_labels_of(again), (strings{"B", "a", "b"}));
  EXPECT_EQ(vertex_labels_of(again), (strings{"#", "%", "E", "V"}));
}

TEST(LabelSetFatal, SaveToAMissingFolder) {
  const label_set_ptr ls(label_set_create());
  EXPECT_EQ(fatal_text([&] { label_set_save(ls.get(), "/no/such/file"); }),
            "can't open a file '/no/such/file'\n");
}

TEST(LabelSetLoad, ShuffledAndRepeatedLinesGiveTheSameSet) {
  const label_set_ptr ls = loaded("V O\nE s\nV C\nE d\nV C\nE s\nV O\n");
  EXPECT_EQ(edge_labels_of(ls), (strings{"d", "s"}));
  EXPECT_EQ(vertex_labels_of(ls), (strings{"C", "O"}));
}

TEST(LabelSetLoad, CommentsAndTheirCountsAreIgnored) {
  const label_set_ptr ls = loaded("# 7 edge labels, 9 vertex labels\nV C\n#\n");
  EXPECT_EQ(label_set_edge_labels(ls.get()), 0);
  EXPECT_EQ(vertex_labels_of(ls), (strings{"C"}));
}

TEST(LabelSetLoad, TrailingTextBlanksAndCarriageReturnsAreIgnored) {
  const label_set_ptr ls = loaded("V C and more\nV \t N\r\nEs\n");
  EXPECT_EQ(vertex_labels_of(ls), (strings{"C", "N"}));
  EXPECT_EQ(edge_labels_of(ls), (strings{"s"}));
}

TEST(LabelSetLoad, LongLabelsAreWhole) {
  const std::string label(5000, 'x');
  EXPECT_EQ(vertex_labels_of(loaded("V " + label + "\n")), (strings{label}));
}

TEST(LabelSetFatal, LoadFromAMissingFile) {
  EXPECT_EQ(fatal_text([] { label_set_load("/no/such"); }),
            "can't open a file '/no/such'\n");
}

TEST(LabelSetFatal, LoadOfALowerCaseLineTellsItsNumber) {
  EXPECT_EQ(fatal_text([] { loaded("# head\nE x\ne x\n"); }),
            "graph.c:N: invalid line at 3\n");
}

TEST(LabelSetFatal, LoadOfAnEmptyLineTellsItsNumber) {
  EXPECT_EQ(fatal_text([] { loaded("E x\n\nV y\n"); }),
            "graph.c:N: invalid line at 2\n");
}

TEST(LabelSetFatal, LoadOfALineThatIsACommentInTransactionsOnly) {
  EXPECT_EQ(fatal_text([] { loaded("E x\n% no comment here\n"); }),
            "graph.c:N: invalid line at 2\n");
}

TEST(LabelSetFatal, LoadOfAnIndentedLine) {
  EXPECT_EQ(fatal_text([] { loaded(" E x\n"); }),
            "graph.c:N: invalid line at 1\n");
}

TEST(LabelSetFatal, LoadOfALineWithoutALabelTellsItsNumber) {
  EXPECT_EQ(fatal_text([] { loaded("E x\nV\n"); }),
            "graph.c:N: wrong formatted line at 2\n");
  EXPECT_EQ(fatal_text([] { loaded("E  \n"); }),
            "graph.c:N: wrong formatted line at 1\n");
}

TEST(LabelSet, BuildFromATextInMemory) {
  const temp_file file("t\nv 0 O\nv 1 C\nu 0 1 s\n");
  const file_text text = read_file(file.path());
  const label_set_ptr ls(label_set_create());
  label_set_build(text, ls.get());
  EXPECT_EQ(vertex_labels_of(ls), (std::vector<std::string>{"C", "O"}));
  EXPECT_EQ(edge_labels_of(ls), (std::vector<std::string>{"s"}));
}

TEST(LabelSet, BuildOfManyLabelsIsSorted) {
  std::string text = "t\n";
  for (int i = 0; i < 3000; i++)
    text += "v 0 " + std::to_string(i * 7 % 1000 + 1000) + "\n";
  const label_set_ptr ls = built(text);
  ASSERT_EQ(label_set_vertex_labels(ls.get()), 1000);
  for (int i = 0; i < 1000; i++)
    EXPECT_EQ(label_set_vertex_label(ls.get(), i), std::to_string(1000 + i));
}

TEST(LabelSetFatal, FailedBuildLeavesTheSetAsItWas) {
  const temp_file file("v 0 b\nx\n");
  const label_set_ptr ls = label_set_of({}, {"a"});
  EXPECT_EQ(
      fatal_text([&] { label_set_build(read_file(file.path()), ls.get()); }),
      "graph.c:N: invalid input line 'x'\n");
  EXPECT_EQ(vertex_labels_of(ls), (std::vector<std::string>{"a"}));
}

} // namespace kestro
