#include <kestro/database.h>

#include <optional>
#include <thread>
#include <utility>

#include <gtest/gtest.h>

#include "graph/transactions.h"
#include "support/library_error.h"
#include "support/same_database.h"
#include "support/temp_file.h"

namespace kestro {

static const char untidy[] = "% head\n"
                             "# more\n"
                             " \tT first\n"
                             " v -7 C\nv 5 O\n  v 007 C more\nv 3 N\n"
                             "u  -7   +5  s more\nD 5 7 d\nE 7 3 s\n"
                             "t\n"
                             "u 1 2 s\n"
                             "v 1 C\nv 2 O\nv 3 C\nv 4 N\n"
                             "u 2 3 d\nu 3 4 s";

// The error of parsing text as the file "db.g".
static std::string refusal(const std::string &text) {
  return error_text([&] { database::parse(text, "db.g"); });
}

TEST(LibraryDatabase, IsEmptyByDefault) {
  const database none;
  EXPECT_EQ(none.size(), 0);
  EXPECT_EQ(none.label_set().vertex_labels(), 0);
  EXPECT_EQ(error_text([&] { none[0]; }),
            "there is no graph 0, only 0 of them");
}

TEST(LibraryDatabase, ReadsWhatTheProgramReads) {
  const temp_file file(untidy);
  const database db = database::read(file.path());
  label_set_ptr ls(label_set_create());
  label_set_build(read_file(file.path()), ls.get());
  const graph_list_ptr graphs(
      graph_read_transactions(read_file(file.path()), ls.get()));
  ASSERT_EQ(db.size(), graphs->count);
  ASSERT_EQ(db.size(), 2);
  for (int tid = 0; tid < db.size(); tid++)
    EXPECT_TRUE(same_structure(access::graph_of(db[tid]),
                               graph_list_at(graphs.get(), tid)));
  EXPECT_EQ(db[0].vertex_label(3), "N");
}

TEST(LibraryDatabase, ParsesBytesAsItReadsAFile) {
  const temp_file file(untidy);
  EXPECT_EQ(difference(database::parse(untidy), database::read(file.path())),
            "");
  const labels known = database::parse(untidy).label_set();
  EXPECT_EQ(difference(database::parse(untidy, known),
                       database::read(file.path(), known)),
            "");
  EXPECT_EQ(database::parse("").size(), 0);
}

TEST(LibraryDatabase, LeavesTheBytesAsTheyAre) {
  const std::string text = untidy;
  database::parse(text);
  EXPECT_EQ(text, untidy);
}

TEST(LibraryDatabase, TakesIdsFromTheLabelsGiven) {
  const temp_file file("V A\nV C\nV N\nV O\nV Z\nE d\nE s\n");
  const labels known = labels::of_label_file(file.path());
  const database db = database::parse(untidy, known);
  EXPECT_EQ(db[0].vertex_label_id(0), 1);
  EXPECT_EQ(db[0].vertex_label_id(3), 2);
  EXPECT_EQ(db.label_set().vertex_labels(), 5);
  EXPECT_EQ(db.label_set().vertex_label(4).data(),
            known.vertex_label(4).data());
}

TEST(LibraryDatabase, RefusesLabelsThatAreNotAmongThoseGiven) {
  const database known = database::parse("t\nv 0 C\nv 1 C\nu 0 1 s\n");
  const auto parse = [&](const char *text) {
    return error_text(
        [&] { database::parse(text, known.label_set(), "db.g"); });
  };
  EXPECT_EQ(parse("t\nv 0 C\n\tv 1 N\n"),
            "graph.c:N: can't find a vertex label 'N' in the label set\nC "
            "at db.g:3");
  EXPECT_EQ(parse("t\nv 0 C\nv 1 C\n# more\nu 0 1 d\n"),
            "graph.c:N: can't find an edge label 'd' in the label set\ns "
            "at db.g:5");
}

TEST(LibraryDatabase, TellsTheLineThatCannotBeRead) {
  EXPECT_EQ(refusal("t\nv 0 C\n# more\nx\n"),
            "graph.c:N: invalid input line 'x' at db.g:4");
  EXPECT_EQ(refusal("y\nt\nv 0 C\n"),
            "graph.c:N: invalid input line 'y' at db.g:1");
  EXPECT_EQ(refusal("t\nv 0 C\nt\nv zero C\n"),
            "graph.c:N: invalid input line 'v zero C' at db.g:4");
  EXPECT_EQ(refusal("t\nv 0 C\nv 1\n"),
            "xmalloc.c:N: not enough memory at db.g:3");
}

TEST(LibraryDatabase, TellsTheLineOfAnEdgeThatMakesNoSense) {
  EXPECT_EQ(refusal("t\nv 0 C\nv 1 C\nu 0 1 s\nu 1 1 s\n"),
            "graph.c:N: something wrong at db.g:5");
  EXPECT_EQ(refusal("t\nu 0 7 s\nv 0 C\n"),
            "graph.c:N: can't find a vid '7' in a graph\n0  at db.g:2");
}

// Of the lines with one edge the second is told, whatever the text says.
TEST(LibraryDatabase, TellsTheLineThatRepeatsAnEdge) {
  EXPECT_EQ(refusal("t\nv 0 C\nv 1 C\n\tu 0 1 s\nv 2 C\nu 2 1 t\n"
                    "u 1 0 s\nu 0 1 s\n"),
            "graph.c:N: duplicated edges (0, 1):t at db.g:7");
  EXPECT_EQ(refusal("t\nv 0 C\nv 1 C\nu 0 1 s\n# more\nu 0 1 s\n"),
            "stack.c:N: invalid index at db.g:6");
}

TEST(LibraryDatabase, TellsTheTransactionWhereCountingIsUpset) {
  // A vertex line read as two, the second of which begins with a "v" again.
  std::string line = "v 0 " + std::string(1019, 'C') + "v 1 C";
  EXPECT_EQ(refusal("t\nv 0 C\nt\nv 1 C\n" + line + "\n"),
            "transactions.cpp:N: set_vertex_ids: Assertion `vertices == "
            "g->vs' failed. at db.g:3");
}

// Newlines are counted, not what the reader takes for lines.
TEST(LibraryDatabase, CountsLongLinesOnce) {
  const std::string comment = "#" + std::string(5000, '#') + "\n";
  EXPECT_EQ(refusal("t\n" + comment + comment + "v 0 C\nx\n"),
            "graph.c:N: invalid input line 'x' at db.g:5");
}

TEST(LibraryDatabase, TellsTheFileThatCannotBeRead) {
  EXPECT_EQ(error_text([] { database::read("/no/such"); }),
            "can't open a file '/no/such' at /no/such:0");
  const temp_file file("t\nx\n");
  EXPECT_EQ(error_text([&] { database::read(file.path()); }),
            "graph.c:N: invalid input line 'x' at " + std::string(file.path()) +
                ":2");
  EXPECT_EQ(error_text([&] { database::read(file.path(), labels()); }),
            "graph.c:N: invalid input line 'x' at " + std::string(file.path()) +
                ":2");
  EXPECT_EQ(error_text([] { database::parse("t\nx\n"); }),
            "graph.c:N: invalid input line 'x' at :2");
  const std::string name("db\0.g", 5);
  EXPECT_EQ(error_text([&] { database::read(name); }),
            "the name of a file holds a zero byte at " + name + ":0");
}

TEST(LibraryDatabase, RefusesNumbersOutOfRange) {
  const database db = database::parse(untidy);
  EXPECT_EQ(error_text([&] { db[2]; }), "there is no graph 2, only 2 of them");
  EXPECT_EQ(error_text([&] { db[-1]; }),
            "there is no graph -1, only 2 of them");
}

TEST(LibraryDatabase, CopiesShareTheirGraphs) {
  std::optional<database> first = database::parse(untidy);
  const database second = *first;
  const graph_view g = (*first)[1];
  EXPECT_EQ(access::graph_of(g), access::graph_of(second[1]));
  first.reset();
  EXPECT_EQ(g.vertex_label(3), "N");
}

TEST(LibraryDatabase, LabelsOutliveIt) {
  std::optional<database> db = database::parse(untidy);
  const labels kept = db->label_set();
  db.reset();
  EXPECT_EQ(kept.vertex_label(0), "C");
}

TEST(LibraryDatabase, WhatWasMovedFromStaysAsItWas) {
  database first = database::parse(untidy);
  const database second = std::move(first);
  EXPECT_EQ(first.size(), 2); // NOLINT(bugprone-use-after-move)
  EXPECT_EQ(second.size(), 2);
}

TEST(LibraryDatabase, ServesThreadsAtOnce) {
  const database db = database::parse(untidy);
  std::vector<int> sums(4, 0);
  {
    std::vector<std::jthread> threads;
    for (int &sum : sums)
      threads.emplace_back([copy = db, &sum] {
        for (int i = 0; i < 1000; i++) {
          const database mine = copy;
          for (const edge &e : mine[i % 2].all_edges())
            sum += e.to;
        }
      });
  }
  EXPECT_EQ(sums, std::vector<int>(4, 6000));
}

} // namespace kestro
