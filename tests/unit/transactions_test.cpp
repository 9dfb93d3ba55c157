#include "graph/transactions.h"

#include <gtest/gtest.h>

#include <iterator>
#include <utility>

#include "reference/graph/graph.h"
#include "reference/graph/transactions.h"
#include "support/fatal.h"
#include "support/graphs.h"
#include "support/label_sets.h"
#include "support/streams.h"
#include "support/temp_file.h"

namespace kestro {

static const label_set *labels() {
  static thread_local const label_set_ptr ls =
      label_set_of({"d", "s"}, {"C", "N", "O"});
  return ls.get();
}

static bool same_graphs(const graph_list *x, const graph_list *y) {
  bool same = x->count == y->count;
  for (int i = 0; same && i < x->count; i++)
    same = same_structure(graph_list_at(x, i), graph_list_at(y, i));
  return same;
}

// Read out of a text in memory, and pass by pass out of a stream.
static graph_list_ptr read(const std::string &text) {
  const temp_file file(text);
  graph_list_ptr list(
      graph_read_transactions(read_file(file.path()), labels()));
  const graph_list_ptr plain(graph_read_transactions(file.path(), labels()));
  EXPECT_TRUE(same_graphs(list.get(), plain.get())) << text;
  return list;
}

// The only transaction of a text.
static graph_ptr read_one(const std::string &text) {
  const graph_list_ptr list = read(text);
  EXPECT_EQ(list->count, 1);
  graph *g = graph_list_at(list.get(), 0);
  graph_check(g);
  list->count = 0;
  return graph_ptr(g);
}

static std::string failure_of(const std::string &text) {
  const temp_file file(text);
  const std::string failure = fatal_text(
      [&] { graph_read_transactions(read_file(file.path()), labels()); });
  EXPECT_EQ(fatal_text([&] { graph_read_transactions(file.path(), labels()); }),
            failure)
      << text;
  return failure;
}

static std::vector<int> vids_of(const graph *g) {
  return std::vector<int>(g->vid, g->vid + g->vs);
}

TEST(Transactions, FourLinesAreOneEdge) {
  const graph_ptr g = read_one("t # 0\nv 0 C\nv 1 O\nu 1 0 s\n");
  EXPECT_TRUE(same_structure(g.get(), make_graph({0, 2}, {{0, 1, 1}}).get()));
  EXPECT_EQ(vids_of(g.get()), (std::vector<int>{0, 1}));
}

TEST(Transactions, NeighbourListsAreSortedByIndex) {
  const graph_ptr g = read_one("t\nv 0 C\nv 1 N\nv 2 O\nv 3 C\n"
                               "u 3 0 d\nu 2 0 s\nu 0 1 d\nu 1 3 s\n");
  EXPECT_TRUE(same_structure(
      g.get(),
      make_graph({0, 1, 2, 0}, {{0, 3, 0}, {0, 2, 1}, {0, 1, 0}, {1, 3, 1}})
          .get()));
}

TEST(Transactions, EveryEdgeLetterInEitherCaseIsTheSameEdge) {
  const graph_ptr expected = make_graph({0, 2}, {{0, 1, 0}});
  for (const char *letter : {"u", "d", "e", "U", "D", "E"}) {
    const graph_ptr g =
        read_one(std::string("T 1\nV 0 C\nV 1 O\n") + letter + " 0 1 d\n");
    EXPECT_TRUE(same_structure(g.get(), expected.get())) << letter;
  }
}

TEST(Transactions, VertexLinesMayFollowTheirEdges) {
  const graph_ptr g = read_one("t\nu 1 0 s\nv 0 C\nv 1 O\n");
  EXPECT_TRUE(same_structure(g.get(), make_graph({0, 2}, {{0, 1, 1}}).get()));
}

TEST(Transactions, IdsNeedNotBeConsecutiveNorSorted) {
  const graph_ptr g =
      read_one("t\nv 70 C\nv -3 O\nv 12 N\nu -3 70 s\nu 12 -3 d\n");
  EXPECT_TRUE(same_structure(
      g.get(), make_graph({0, 2, 1}, {{0, 1, 1}, {1, 2, 0}}).get()));
  EXPECT_EQ(vids_of(g.get()), (std::vector<int>{0, 1, 2}));
}

TEST(Transactions, FirstVertexLineWithAnIdIsTheOneMeant) {
  const graph_ptr g = read_one("t\nv 5 C\nv 5 O\nv 6 N\nu 5 6 s\n");
  EXPECT_TRUE(
      same_structure(g.get(), make_graph({0, 2, 1}, {{0, 2, 1}}).get()));
}

TEST(Transactions, AreReadInTheOrderOfTheFile) {
  const graph_list_ptr list =
      read("t 9\nv 0 C\nt 3\nv 0 O\nv 1 O\nt 3\nv 0 N\nv 1 N\nv 2 N\n");
  ASSERT_EQ(list->count, 3);
  EXPECT_EQ(list->capacity, 128);
  EXPECT_EQ(vlabels_of(graph_list_at(list.get(), 0)), (std::vector<int>{0}));
  EXPECT_EQ(vlabels_of(graph_list_at(list.get(), 1)), (std::vector<int>{2, 2}));
  EXPECT_EQ(vlabels_of(graph_list_at(list.get(), 2)),
            (std::vector<int>{1, 1, 1}));
}

TEST(Transactions, ConsecutiveHeadersGiveEmptyTransactionsThatCount) {
  const graph_list_ptr list = read("t\nt\nv 0 C\nt\n");
  ASSERT_EQ(list->count, 3);
  for (const int i : {0, 2}) {
    EXPECT_EQ(graph_list_at(list.get(), i)->vs, 0);
    EXPECT_EQ(graph_list_at(list.get(), i)->es, 0);
    EXPECT_EQ(graph_list_at(list.get(), i)->v[0], 0);
  }
  EXPECT_EQ(graph_list_at(list.get(), 1)->vs, 1);
}

TEST(Transactions, FileWithoutAHeaderHasNone) {
  EXPECT_EQ(read("")->count, 0);
  EXPECT_EQ(read("# nothing\n")->count, 0);
  EXPECT_EQ(read("v 0 C\nu 0 1 s\n")->count, 0);
}

TEST(Transactions, LinesBeforeTheFirstHeaderBelongToNone) {
  const graph_ptr g = read_one("v 7 C\nu 7 7 no-label\nt\nv 0 O\n");
  EXPECT_EQ(vlabels_of(g.get()), (std::vector<int>{2}));
}

TEST(Transactions, CommentsAreIgnoredEverywhere) {
  const graph_ptr g =
      read_one("# a\nt\n% b\nv 0 C\n # c\nv 1 O\nu 0 1 s\n#\n%\n");
  EXPECT_TRUE(same_structure(g.get(), make_graph({0, 2}, {{0, 1, 1}}).get()));
}

TEST(Transactions, BlanksTrailingTextAndCarriageReturnsAreIgnored) {
  const graph_ptr g = read_one("  t # 0 any text\r\n\tv  0 C more\r\n"
                               "v 1\tO\r\n u 0 1  s and more\r\n");
  EXPECT_TRUE(same_structure(g.get(), make_graph({0, 2}, {{0, 1, 1}}).get()));
}

TEST(Transactions, LastLineNeedsNoNewline) {
  const graph_ptr g = read_one("t\nv 0 C\nv 1 O\nu 0 1 s");
  EXPECT_EQ(g->es, 2);
}

TEST(Transactions, TextBehindAZeroByteIsIgnored) {
  using namespace std::string_literals;
  const graph_ptr g = read_one("t\nv 0 C\0junk\nv 1 O\nu 0 1 s\0\n"s);
  EXPECT_TRUE(same_structure(g.get(), make_graph({0, 2}, {{0, 1, 1}}).get()));
}

TEST(Transactions, LongCommentsOfCommentPiecesAreRead) {
  // Every piece of 1023 characters starts with "#" too.
  const graph_ptr g = read_one("t\n" + std::string(3000, '#') + "\nv 0 C\n");
  EXPECT_EQ(g->vs, 1);
}

TEST(Transactions, LongVertexLineOfBlanksIsReadWhole) {
  // The second piece, which counting sees as a line, is a comment.
  const graph_ptr g =
      read_one("t\nv 0 C" + std::string(1018, ' ') + "# more\nv 1 O\n");
  EXPECT_EQ(vlabels_of(g.get()), (std::vector<int>{0, 2}));
}

// A one-vertex transaction whose label has length bytes, with that label known.
static graph_ptr read_label_of(size_t length) {
  const label_set_ptr ls = label_set_of({}, {std::string(length, 'v')});
  const temp_file file("t\nv 0 " + std::string(length, 'v') + "\n");
  return graph_ptr(graph_read_transaction_file(file.path(), ls.get()));
}

TEST(Transactions, LineOf1022CharactersIsOnePiece) {
  EXPECT_EQ(read_label_of(1022 - 4 - 1)->vs, 1);
}

TEST(Transactions, LineOf1023CharactersIsOnePiece) {
  EXPECT_EQ(read_label_of(1023 - 4 - 1)->vs, 1);
}

TEST(TransactionsCheck, SecondPieceOfALongLineIsCountedAsALine) {
  // Counting sees two vertex lines, the second of them "vvv...".
  for (const size_t length : {1020u, 1022u, 1023u})
    EXPECT_EQ(check_text([&] { read_label_of(length); }),
              "transactions.cpp:N: set_vertex_ids: Assertion `vertices == "
              "g->vs' failed.\n")
        << length;
}

TEST(TransactionsCheck, SecondPieceCountedAsAnEdge) {
  EXPECT_NE(check_text([] {
              read("t\nv 0 C" + std::string(1018, ' ') + "u\n");
            }).find("Assertion `edges_ == g_->es' failed"),
            std::string::npos);
}

TEST(TransactionsCheck, HeaderInASecondPieceEndsTheCount) {
  // Counting stops at the piece "t"; the later passes read on.
  EXPECT_EQ(check_text([] {
              read("t\nv 0 C" + std::string(1018, ' ') + "t\nv 1 O\n");
            }),
            "transactions.cpp:N: set_vertex_ids: Assertion `vertices == g->vs' "
            "failed.\n");
}

TEST(TransactionsCheck, EdgesBeyondTheirCountAreNotWritten) {
  // Counting stops at the piece "t" with one edge, for which there is room.
  EXPECT_NE(check_text([] {
              read("t\nv 0 C\nv 1 O\nv 2 C\nu 0 1 s" + std::string(1016, ' ') +
                   "t\nu 1 2 s\n");
            }).find("Assertion `edges_ == g_->es' failed"),
            std::string::npos);
}

TEST(TransactionsFatal, SecondPieceThatIsNoLine) {
  EXPECT_EQ(failure_of("t\nv 0 C" + std::string(1018, ' ') + "xy\n"),
            "graph.c:N: invalid input line 'xy'\n");
  // A line of 1023 characters and a newline leaves the newline alone.
  EXPECT_EQ(failure_of("t\nv 0 C" + std::string(1018, ' ') + "\nv 1 O\n"),
            "graph.c:N: invalid input line: \n\n");
}

TEST(TransactionsFatal, MissingFile) {
  EXPECT_EQ(fatal_text([] { graph_read_transactions("/no/such", labels()); }),
            "can't open a file '/no/such'\n");
}

TEST(TransactionsFatal, EmptyLineAnywhere) {
  const std::string text = "graph.c:N: invalid input line: \n\n";
  EXPECT_EQ(failure_of("\nt\n"), text);
  EXPECT_EQ(failure_of("t\nv 0 C\n\nt\nv 0 C\n"), text);
  EXPECT_EQ(failure_of("t\nv 0 C\n\n"), text);
  EXPECT_EQ(failure_of("t\nv 0 C\n \t \n"),
            "graph.c:N: invalid input line:  \t \n\n");
}

TEST(TransactionsFatal, UnknownLetter) {
  EXPECT_EQ(failure_of("t\nv 0 C\nx 0 1 s\n"),
            "graph.c:N: invalid input line 'x 0 1 s'\n");
  EXPECT_EQ(failure_of("nothing\nt\n"),
            "graph.c:N: invalid input line 'nothing'\n");
}

TEST(TransactionsFatal, LineThatCannotBeScanned) {
  EXPECT_EQ(failure_of("t\nv zero C\n"),
            "graph.c:N: invalid input line 'v zero C'\n");
}

TEST(TransactionsFatal, LineWithoutALabelExhaustsMemory) {
  EXPECT_EQ(failure_of("t\nv 0\n"), "xmalloc.c:N: not enough memory\n");
  EXPECT_EQ(failure_of("t\nv 0 C\nv 1 C\nu 0 1\n"),
            "xmalloc.c:N: not enough memory\n");
}

TEST(TransactionsFatal, UnknownVertexLabelListsTheVertexLabels) {
  EXPECT_EQ(failure_of("t\nv 0 S\n"),
            "graph.c:N: can't find a vertex label 'S' in the label set\n"
            "C\nN\nO\n");
}

TEST(TransactionsFatal, UnknownEdgeLabelListsTheEdgeLabels) {
  EXPECT_EQ(failure_of("t\nv 0 C\nv 1 C\nu 0 1 C\n"),
            "graph.c:N: can't find an edge label 'C' in the label set\nd\ns\n");
}

TEST(TransactionsFatal, UnknownVertexIdListsTheIds) {
  EXPECT_EQ(failure_of("t\nv 4 C\nv 7 C\nt\nv 9 C\nv 5 C\nu 7 5 s\n"),
            fatal_text([] {
              const graph_ptr g = make_graph({0, 0}, {});
              g->vid[0] = 9;
              g->vid[1] = 5;
              graph_find_vid(g.get(), 7);
            }));
  EXPECT_NE(failure_of("t\nv 9 C\nv 5 C\nu 7 5 s\n")
                .find("can't find a vid '7' in a graph\n"),
            std::string::npos);
}

TEST(TransactionsFatal, SmallerOfTwoUnknownIdsIsNamed) {
  EXPECT_NE(failure_of("t\nv 0 C\nu 8 6 s\n").find("can't find a vid '6'"),
            std::string::npos);
}

TEST(TransactionsFatal, Loop) {
  EXPECT_EQ(failure_of("t\nv 2 C\nu 2 2 s\n"), "graph.c:N: something wrong\n");
  // Seen before the id or the label is looked up.
  EXPECT_EQ(failure_of("t\nu 2 2 x\n"), "graph.c:N: something wrong\n");
}

static const std::string three_vertices = "t\nv 0 C\nv 1 C\nv 2 C\n";

TEST(TransactionsFatal, DuplicateEdgeInEitherOrder) {
  const std::string text = "graph.c:N: duplicated edges (0, 1):s\n";
  EXPECT_EQ(failure_of(three_vertices + "u 0 1 s\nu 0 1 s\n"), text);
  EXPECT_EQ(failure_of(three_vertices + "u 0 1 s\nu 1 0 s\n"), text);
}

TEST(TransactionsFatal, DuplicateEdgeWithAnotherLabel) {
  // The record after that of 0-1 is that of 1-0: label id 1, s, either way.
  EXPECT_EQ(failure_of(three_vertices + "u 0 1 s\nu 0 1 d\n"),
            "graph.c:N: duplicated edges (0, 1):s\n");
  EXPECT_EQ(failure_of(three_vertices + "u 0 1 d\nu 0 1 s\n"),
            "graph.c:N: duplicated edges (0, 1):s\n");
}

TEST(TransactionsFatal, DuplicateNamesIndicesNotIds) {
  EXPECT_EQ(failure_of("t\nv 10 C\nv 20 C\nu 20 10 d\nu 10 20 d\n"),
            "graph.c:N: duplicated edges (0, 1):s\n");
}

TEST(TransactionsFatal, DuplicateShowsTheLabelWhoseIdIsTheNextRecordsStart) {
  // Index 0 has the larger id, so records come as 1-0, 0-1, 1-0, 0-1; the
  // first of the pair 0-1 is the second record, the next one starts at 1.
  EXPECT_EQ(failure_of("t\nv 9 C\nv 3 C\nu 3 9 d\nu 3 9 s\n"),
            "graph.c:N: duplicated edges (0, 1):s\n");
  // The pair 0-1 is found first among records 2-1, 1-2, 1-0, 0-1, 2-0, 0-2,
  // 1-0, 0-1; the record after its first one starts at 2: no such label.
  EXPECT_EQ(failure_of("t\nv 9 C\nv 3 C\nv 1 C\nu 1 3 d\nu 3 9 d\nu 1 9 d\n"
                       "u 3 9 s\n"),
            "stack.c:N: invalid index\n");
}

TEST(TransactionsFatal, DuplicateWhoseFirstIsTheLastRecordShowsLabelZero) {
  // Sorted by label the pair 0-1 starts with the last of the four records.
  EXPECT_EQ(failure_of("t\nv 9 C\nv 3 C\nu 3 9 s\nu 3 9 d\n"),
            "graph.c:N: duplicated edges (0, 1):d\n");
}

TEST(TransactionsFatal, DuplicateWhoseLabelIdDoesNotExist) {
  const label_set_ptr ls = label_set_of({"only"}, {"C"});
  const temp_file file("t\nv 0 C\nv 1 C\nu 0 1 only\nu 0 1 only\n");
  EXPECT_EQ(fatal_text([&] {
              graph_read_transactions(read_file(file.path()), ls.get());
            }),
            "stack.c:N: invalid index\n");
  EXPECT_EQ(fatal_text([&] { graph_read_transactions(file.path(), ls.get()); }),
            "stack.c:N: invalid index\n");
}

TEST(Transactions, ReadNextLeavesTheStreamAtTheNextHeader) {
  const std::string text = "t 1\nv 0 C\n# x\nt 2\nv 0 O\nv 1 O\n";
  const file_ptr stream = reading(text);
  const graph_ptr first(graph_read_next_transaction(stream.get(), labels()));
  EXPECT_EQ(ftell(stream.get()), 14);
  const graph_ptr second(graph_read_next_transaction(stream.get(), labels()));
  EXPECT_EQ(ftell(stream.get()), static_cast<long>(text.size()));
  EXPECT_EQ(first->vs, 1);
  EXPECT_EQ(second->vs, 2);
}

TEST(Transactions, HeaderInALongCommentEndsNone) {
  // Counting stops at the piece "t x"; what is read on begins at the header.
  const std::string first = "t 1\nv 0 C\n#" + std::string(1022, ' ') + "t x\n";
  const graph_list_ptr list = read(first + "t 2\nv 0 O\nv 1 O\n");
  ASSERT_EQ(list->count, 2);
  EXPECT_EQ(vlabels_of(graph_list_at(list.get(), 0)), (std::vector<int>{0}));
  EXPECT_EQ(vlabels_of(graph_list_at(list.get(), 1)), (std::vector<int>{2, 2}));
}

TEST(TransactionsFatal, StreamThatCannotTellWhereItStands) {
  // Only the first question fails, so moving would go wrong without a sign.
  struct cookie {
    std::string rest;
    bool may_tell;
  };
  const auto take = [](void *from, char *to, size_t size) {
    std::string &rest = static_cast<cookie *>(from)->rest;
    const size_t got = rest.copy(to, size);
    rest.erase(0, got);
    return static_cast<ssize_t>(got);
  };
  const auto seek = [](void *in, off64_t *, int) {
    return std::exchange(static_cast<cookie *>(in)->may_tell, true) ? 0 : -1;
  };
  cookie source = {"t # 0\n", false};
  const file_ptr stream(fopencookie(
      &source, "r",
      {.read = take, .write = nullptr, .seek = seek, .close = nullptr}));
  EXPECT_EQ(
      fatal_text([&] { graph_read_next_transaction(stream.get(), labels()); }),
      "can't read a file 'input'\n");
}

TEST(Transactions, ReadFileTakesTheFirstTransactionOnly) {
  const temp_file file("# x\nv 0 C\nt 1\nv 0 O\nt 2\nbroken");
  const graph_ptr g(graph_read_transaction_file(file.path(), labels()));
  EXPECT_EQ(vlabels_of(g.get()), (std::vector<int>{2}));
}

TEST(Transactions, ReadFileWithoutATransactionIsEmpty) {
  const temp_file file("# x\n");
  const graph_ptr g(graph_read_transaction_file(file.path(), labels()));
  EXPECT_EQ(g->vs, 0);
}

TEST(TransactionsFatal, ReadFileOfAMissingFile) {
  EXPECT_EQ(
      fatal_text([] { graph_read_transaction_file("/no/such", labels()); }),
      "can't open a file '/no/such'\n");
}

TEST(Transactions, CountStopsBeforeTheSecondHeader) {
  const std::string text = "t\nv 0 C\nu 0 1 s\ne 1 2 s\nv 1 C\n#\nt\nv 0 C\n";
  const file_ptr stream = reading(text);
  int es = -1;
  int vs = -1;
  graph_count_transaction(stream.get(), &es, &vs);
  EXPECT_EQ(es, 4);
  EXPECT_EQ(vs, 2);
  EXPECT_EQ(ftell(stream.get()), static_cast<long>(text.rfind('t')));
}

TEST(Transactions, CountOfTheLastOneStopsAtTheEnd) {
  const std::string text = "t\nd 0 1 s";
  const file_ptr stream = reading(text);
  int es = -1;
  int vs = -1;
  graph_count_transaction(stream.get(), &es, &vs);
  EXPECT_EQ(es, 2);
  EXPECT_EQ(vs, 0);
}

TEST(Transactions, VertexIdsAreThoseOfTheFile) {
  const std::string text = "t\nv 8 C\nu 8 1 s\nv 1 C\nt\nv 4 C\n";
  const file_ptr stream = reading(text);
  const graph_ptr g(graph_create(2, 2));
  set_vertex_ids(stream.get(), g.get());
  EXPECT_EQ(vids_of(g.get()), (std::vector<int>{8, 1}));
  EXPECT_EQ(ftell(stream.get()), static_cast<long>(text.rfind('v')));
}

TEST(TransactionsCheck, VertexIdsMustBeAsManyAsCounted) {
  const std::string text = "t\nv 8 C\n";
  const file_ptr stream = reading(text);
  const graph_ptr g(graph_create(0, 2));
  EXPECT_EQ(check_text([&] { set_vertex_ids(stream.get(), g.get()); }),
            "transactions.cpp:N: set_vertex_ids: Assertion `vertices == g->vs' "
            "failed.\n");
}

TEST(Transactions, ReaderTakesOneAfterTheOtherOutOfAText) {
  const temp_file file("t\nv 8 C\nv 2 O\nu 2 8 s\n# x\nt\nv 0 N\n");
  const file_text text = read_file(file.path());
  text_lines lines(text);
  transaction_reader reader(labels());
  const graph_ptr first = reader.read(lines);
  EXPECT_TRUE(
      same_structure(first.get(), make_graph({0, 2}, {{0, 1, 1}}).get()));
  EXPECT_EQ(lines.position(), 26u);
  EXPECT_EQ(vlabels_of(reader.read(lines).get()), (std::vector<int>{1}));
  EXPECT_EQ(lines.position(), text.size);
}

TEST(Transactions, FillNeedsTheIdsOnly) {
  const std::string text = "t\nv 8 C\nv 2 O\nu 2 8 s\nt\n";
  const file_ptr stream = reading(text);
  const graph_ptr g(graph_create(2, 2));
  g->vid[0] = 8;
  g->vid[1] = 2;
  graph_fill_transaction(stream.get(), g.get(), labels());
  EXPECT_TRUE(same_structure(g.get(), make_graph({0, 2}, {{0, 1, 1}}).get()));
  EXPECT_EQ(vids_of(g.get()), (std::vector<int>{0, 1}));
  EXPECT_EQ(ftell(stream.get()), static_cast<long>(text.rfind('t')));
}

TEST(Transactions, ReadingAtTheEndOfAStreamLeavesItThere) {
  const temp_file file("t # 0\n");
  const file_ptr stream(fopen(file.path(), "r"));
  fseek(stream.get(), 0, SEEK_END);
  const graph_ptr g(graph_read_next_transaction(stream.get(), labels()));
  EXPECT_EQ(g->vs + g->es, 0);
  EXPECT_EQ(ftell(stream.get()), 6);
}

TEST(TransactionsFatal, LetterOfALaterLineComesBeforeTheFieldsOfAnEarlier) {
  EXPECT_EQ(failure_of("t\nv zero C\nx\n"),
            "graph.c:N: invalid input line 'x'\n");
  EXPECT_EQ(failure_of("t\nv 0\nx\n"), "graph.c:N: invalid input line 'x'\n");
  // But not that of another transaction.
  EXPECT_EQ(failure_of("t\nv zero C\nt\nx\n"),
            "graph.c:N: invalid input line 'v zero C'\n");
}

TEST(TransactionsFatal, FieldsOfALaterLineComeBeforeTheSenseOfAnEarlier) {
  EXPECT_EQ(failure_of("t\nv 0 unknown\nv zero C\n"),
            "graph.c:N: invalid input line 'v zero C'\n");
  EXPECT_EQ(failure_of("t\nu 2 2 s\nu 1\n"),
            "graph.c:N: invalid input line 'u 1'\n");
}

TEST(TransactionsFatal, LaterTransactionsAreAsStrict) {
  EXPECT_NE(failure_of("t\nv 0 C\nv 1 C\nu 0 1 s\nt\nv 3 C\nu 0 3 s\n")
                .find("can't find a vid '0'"),
            std::string::npos);
}

namespace {

// What reading a text with its labels gives: graphs and labels, or an error.
struct outcome {
  label_set_ptr ls{label_set_create()};
  graph_list_ptr graphs;
  std::string failure;   // "" for none
  bool is_check = false; // the failure is one
  long long line = 0;
};

template <class Read> outcome outcome_of(const std::string &text, Read read) {
  outcome found;
  try {
    found.graphs.reset(read(copy_text(text, "text"), found.ls.get()));
  } catch (const error &e) {
    found.failure = e.what() + (" in " + e.path());
    found.is_check = dynamic_cast<const check_failure *>(&e) != nullptr;
    found.line = e.line();
  }
  return found;
}

std::vector<std::string> words_of(const ksstack *labels) {
  std::vector<std::string> words;
  for (int i = 0; i < labels->count; i++)
    words.push_back(ksstack_get<char *>(labels, i));
  return words;
}

// Reads with the labels in one go, and in two passes; tells whether it fails.
bool expect_one_pass_as_two(const std::string &text) {
  const outcome one = outcome_of(text, graph_read_with_labels);
  const outcome two =
      outcome_of(text, [](const file_text &bytes, label_set *ls) {
        label_set_build(bytes, ls);
        return graph_read_transactions(bytes, ls);
      });
  EXPECT_EQ(one.failure, two.failure) << text;
  EXPECT_EQ(one.is_check, two.is_check) << text;
  EXPECT_EQ(one.line, two.line) << text;
  if (two.graphs && one.graphs) {
    EXPECT_EQ(words_of(one.ls->vertex_labels), words_of(two.ls->vertex_labels));
    EXPECT_EQ(words_of(one.ls->edge_labels), words_of(two.ls->edge_labels));
    EXPECT_TRUE(same_graphs(one.graphs.get(), two.graphs.get())) << text;
  }
  return !two.failure.empty();
}

} // namespace

TEST(TransactionsWithLabels, OnePassIsAsTwo) {
  int failures = 0;
  for (const char *text :
       {"", "\n", "# nothing\n", "t\n", "t\nv 0 z\nv 1 a\nu 0 1 y\n",
        "v 0 before\nu 0 1 any\nt\nv 0 C\n", "v 0\nt\nv 0 C\n", "wrong\nt\n",
        "t\nv 0 C\nt\nv 1 B\n# last\n", "t\nv 0 C\nu 0 0 s\n",
        "t\nv 0 C\nv 1 C\nu 0 1 s\nu 1 0 s\nt\nx\n",
        "t\nv 0 C\nv 1 C\nu 0 1 s\nu 1 0 d\nt\nv 0 A\n",
        "t\nu 0 1 s\nv 0 C\nt\nd 0 1 s\n", "t\nv 0 C\nd 0 1 s\nx\n",
        "t\nu 7 8 s\nv 0 C\nt\n1\n", "t\r\nv 0 C\r\n", "t\nv 0 C"})
    failures += expect_one_pass_as_two(text);
  EXPECT_GT(failures, 3);
  EXPECT_LT(failures, 14);
}

TEST(TransactionsWithLabels, OverLongLinesAreReadAsInTwoPasses) {
  int failures = 0; // of labels that are too long
  for (const int length : {900, 1015, 1016, 1017, 1018, 1023, 1024, 5000}) {
    const std::string label(static_cast<size_t>(length), 'a');
    const std::string whole = "t\nv 0 b\nv 1 " + label + "\nu 0 1 s\n";
    failures += expect_one_pass_as_two(whole);
    expect_one_pass_as_two("v 1 " + label + "\nt\nv 0 b\n");
    expect_one_pass_as_two("t\nv 0 b\n#" + label + "\nt\nv 0 c\n");
    expect_one_pass_as_two("t " + label + "\nv 0 b\nt\nv 0 c\n");
    EXPECT_TRUE(expect_one_pass_as_two("t\nv 0 " + label + "\nx\n"));
    expect_one_pass_as_two("t\nv 0 b\nv 1 " + label); // no newline
  }
  EXPECT_GT(failures, 0);
  EXPECT_LT(failures, 8);
}

TEST(TransactionsWithLabels, NulBytesAreReadAsInTwoPasses) {
  int failures = 0;
  using namespace std::string_literals;
  for (const std::string &text :
       {"t\nv 0 a\0b\nv 1 a\n"s, "\0t\nv 0 a\n"s, "t\n\0\nv 0 a\n"s,
        "t\nv 0 \0\n"s, "t\0\nv 0 a\0"s, "v 0 \0b\nt\nv 0 a\n"s})
    failures += expect_one_pass_as_two(text);
  EXPECT_GT(failures, 0);
  EXPECT_LT(failures, 6);
}

TEST(TransactionsWithLabels, OnePassIsAsTwoOnTextsWithMistakes) {
  static const char *const lines[] = {
      "t\n",       "t # 1\n",   "v 0 C\n",     "v 1 B\n",   "v 2 a\n",
      "u 0 1 s\n", "u 1 2 d\n", "u 2 0 1\n",   "e 0 1 s\n", "U 1 2 r\n",
      "# any\n",   "v 0 C x\n", "u 0 1 s\r\n", "d 0 1 s\n", "u 0 1\n",
      "v 1\n",     "\n",        "x\n",         "u 1 1 s\n", "v 1 A\n"};
  constexpr int right = 13; // of them come in most texts
  test_rng rng(11);
  int failures = 0;
  for (int round = 0; round < 3000; round++) {
    std::string text;
    for (int i = 0; i < 14; i++) {
      const bool any = random_below(rng, 30) == 0;
      text += lines[random_below(rng, any ? static_cast<int>(std::size(lines))
                                          : right)];
    }
    failures += expect_one_pass_as_two(text);
  }
  EXPECT_GT(failures, 300);
  EXPECT_LT(failures, 2700);
}

} // namespace kestro
