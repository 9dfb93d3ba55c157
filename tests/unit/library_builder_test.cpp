#include <kestro/database.h>

#include <utility>

#include <gtest/gtest.h>

#include "support/library_error.h"
#include "support/same_database.h"

namespace kestro {

namespace {

using vertex_list = std::initializer_list<std::string_view>;
using edge_list = std::initializer_list<labelled_edge>;

} // namespace

// What a builder says to a second graph; it must build as if it had not come.
static std::string refusal(vertex_list vertices, edge_list edges) {
  database_builder builder;
  builder.add({"C", "N"}, {{0, 1, "s"}});
  const std::string text = error_text([&] { builder.add(vertices, edges); });
  EXPECT_EQ(builder.size(), 1);
  EXPECT_EQ(difference(std::move(builder).build(),
                       database::parse("t\nv 0 C\nv 1 N\nu 0 1 s\n")),
            "");
  return text;
}

TEST(LibraryBuilder, BuildsWhatReadingTheTextGives) {
  database_builder builder;
  EXPECT_EQ(builder.size(), 0);
  EXPECT_EQ(builder.add({"O", "b", "C", "B"},
                        {{3, 2, "="}, {0, 2, "-"}, {1, 0, "-"}, {3, 0, "="}}),
            0);
  EXPECT_EQ(builder.add({}, {}), 1);
  EXPECT_EQ(builder.add({"\xc3\xa4", "C"}, {{0, 1, "#"}}), 2);
  EXPECT_EQ(builder.size(), 3);
  EXPECT_EQ(difference(std::move(builder).build(),
                       database::parse("t\nv 0 O\nv 1 b\nv 2 C\nv 3 B\n"
                                       "u 3 2 =\nu 0 2 -\nu 1 0 -\nu 3 0 =\n"
                                       "t\n"
                                       "t\nv 0 \xc3\xa4\nv 1 C\nu 0 1 #\n")),
            "");
}

TEST(LibraryBuilder, BuildsNothingFromNothing) {
  EXPECT_EQ(difference(database_builder().build(), database()), "");
}

TEST(LibraryBuilder, IsEmptyAfterwards) {
  database_builder builder;
  builder.add({"C", "N"}, {{0, 1, "s"}});
  std::move(builder).build();
  EXPECT_EQ(builder.size(), 0); // NOLINT(bugprone-use-after-move)
  builder.add({"O"}, {});
  EXPECT_EQ(
      difference(std::move(builder).build(), database::parse("t\nv 0 O\n")),
      "");
}

TEST(LibraryBuilder, MayBeMoved) {
  database_builder first;
  first.add({"C"}, {});
  database_builder second = std::move(first);
  second.add({"N"}, {});
  first = std::move(second);
  EXPECT_EQ(first.size(), 2);
  EXPECT_EQ(difference(std::move(first).build(),
                       database::parse("t\nv 0 C\nt\nv 0 N\n")),
            "");
}

TEST(LibraryBuilder, TakesIdsFromTheLabelsGiven) {
  const char text[] = "t\nv 0 A\nv 1 C\nv 2 Z\nu 0 1 x\nu 1 2 y\n";
  const labels known = database::parse(text).label_set();
  database_builder builder(known);
  for (int round = 0; round < 2; round++) { // the labels stay behind build()
    builder.add({"Z", "C"}, {{1, 0, "y"}});
    EXPECT_EQ(difference(std::move(builder).build(),
                         database::parse("t\nv 0 Z\nv 1 C\nu 0 1 y\n", known)),
              "");
  }
}

TEST(LibraryBuilder, RefusesLabelsThatAreNotAmongThoseGiven) {
  const labels known =
      database::parse("t\nv 0 C\nv 1 C\nu 0 1 s\n").label_set();
  database_builder builder(known);
  EXPECT_EQ(error_text([&] {
              builder.add({"C", "N"}, {});
            }),
            "graph 0, vertex 1: 'N' is none of the labels given");
  EXPECT_EQ(error_text([&] {
              builder.add({"C", "C"}, {{0, 1, "C"}});
            }),
            "graph 0, edge 0: 'C' is none of the labels given");
  EXPECT_EQ(builder.size(), 0);
}

TEST(LibraryBuilder, RefusesLabelsThatAFileCannotHold) {
  const std::string unclean =
      "graph 1, vertex 1: the label holds a blank or a control character";
  for (const std::string_view label :
       {" ", "a b", "a\t", "\n", "a\rb", "\v", "\f", "\x1b", "\x7f"})
    EXPECT_EQ(refusal({"C", label}, {}), unclean) << label;
  EXPECT_EQ(refusal({"C", std::string_view("a\0b", 3)}, {}), unclean);
  EXPECT_EQ(refusal({""}, {}), "graph 1, vertex 0: the label is empty");
  EXPECT_EQ(refusal({"x", "y"}, {{0, 1, ""}}),
            "graph 1, edge 0: the label is empty");
  EXPECT_EQ(refusal({"x", "y", "z"}, {{0, 1, "p"}, {1, 2, "q r"}}),
            "graph 1, edge 1: the label holds a blank or a control character");
}

TEST(LibraryBuilder, RefusesLabelsLongerThanALineHoldsForCertain) {
  const std::string longest(998, 'x');
  const std::string longer(999, 'x');
  const std::string why = ": the label is longer than 998 bytes";
  EXPECT_EQ(refusal({"C", longer}, {}), "graph 1, vertex 1" + why);
  EXPECT_EQ(refusal({"C", "C"}, {{0, 1, longer}}), "graph 1, edge 0" + why);
  database_builder builder;
  builder.add({longest, "C"}, {{0, 1, longest}});
  EXPECT_EQ(difference(std::move(builder).build(),
                       database::parse("t\nv 2147483646 " + longest +
                                       "\nv 2147483647 C\n"
                                       "u 2147483646 2147483647 " +
                                       longest + "\n")),
            "");
}

TEST(LibraryBuilder, CopiesWhateverLabelsFilesHold) {
  for (const std::string &label :
       {std::string(1000, 'x'), std::string("a\x01"), std::string("\x7f")}) {
    const database read =
        database::parse("t\nv 0 " + label + "\nv 1 C\nu 0 1 s\n");
    ASSERT_EQ(read[0].vertex_label(0), label);
    database_builder builder(label_rule::readable);
    builder.add({label, "C"}, {{0, 1, "s"}});
    EXPECT_EQ(difference(std::move(builder).build(), read), "");
    EXPECT_NE(refusal({label}, {}), "");
  }
}

TEST(LibraryBuilder, RefusesWhatNoFileHolds) {
  database_builder builder(label_rule::readable);
  builder.add({std::string(1023, 'x')}, {});
  const auto refused = [&](const std::string &label) {
    return error_text([&] { builder.add({label}, {}); });
  };
  EXPECT_EQ(refused(std::string(1024, 'x')),
            "graph 1, vertex 0: the label is longer than 1023 bytes");
  for (const char c : {'\0', ' ', '\t', '\n', '\v', '\f', '\r'})
    EXPECT_EQ(refused(std::string("a") + c),
              "graph 1, vertex 0: the label holds a blank or a control "
              "character");
  EXPECT_EQ(refused(""), "graph 1, vertex 0: the label is empty");
  EXPECT_EQ(builder.size(), 1);
}

TEST(LibraryBuilder, RefusesEndsOutOfRange) {
  EXPECT_EQ(refusal({"x", "y"}, {{0, 1, "p"}, {0, 2, "p"}}),
            "graph 1, edge 1: there is no vertex 2, only 2 of them");
  EXPECT_EQ(refusal({"x", "y"}, {{-1, 0, "p"}}),
            "graph 1, edge 0: there is no vertex -1, only 2 of them");
  EXPECT_EQ(refusal({}, {{0, 1, "p"}}),
            "graph 1, edge 0: there is no vertex 0, only 0 of them");
}

TEST(LibraryBuilder, RefusesLoops) {
  EXPECT_EQ(refusal({"x", "y"}, {{1, 1, "p"}}),
            "graph 1, edge 0: it leads from vertex 1 to itself");
}

TEST(LibraryBuilder, RefusesASecondEdgeInEitherDirection) {
  EXPECT_EQ(refusal({"x", "y", "z"}, {{0, 1, "p"}, {1, 2, "p"}, {0, 1, "q"}}),
            "graph 1, edge 2: vertices 0 and 1 have an edge already");
  EXPECT_EQ(refusal({"x", "y", "z"},
                    {{1, 2, "p"}, {2, 1, "p"}, {0, 1, "p"}, {0, 1, "q"}}),
            "graph 1, edge 1: vertices 1 and 2 have an edge already");
}

TEST(LibraryBuilder, TakesLabelsAndEdgesInAnyForm) {
  database_builder builder;
  const std::vector<std::string> strings = {"C", "O"};
  const std::vector<std::string_view> views = {"C", "O"};
  const std::vector<labelled_edge> edges = {{0, 1, "s"}};
  builder.add(strings, edges);
  builder.add(views, edges);
  builder.add({"C", "O"}, edges);
  builder.add({"C", "O"}, {{0, 1, "s"}});
  const database db = std::move(builder).build();
  for (int i = 0; i < db.size(); i++) {
    EXPECT_EQ(db[i].vertex_label(1), "O");
    for (const edge &e : db[i].all_edges())
      EXPECT_EQ(db[i].edge_label(e), "s");
    EXPECT_EQ(db[i].edges(), 1);
  }
}

} // namespace kestro
