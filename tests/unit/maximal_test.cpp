#include "mining/maximal.h"

#include <gtest/gtest.h>

#include "mining/statistics.h"
#include "support/fatal.h"
#include "support/label_sets.h"
#include "support/temp_file.h"

namespace kestro {

using ints = std::vector<int>;
using pairs = std::vector<std::pair<int, int>>;

class Maximal : public testing::Test {
protected:
  void SetUp() override { stats_init(&stats); }

  // The maximal patterns of a PC-list text.
  pairs maximal_in(const std::string &text, int minsize = 1) {
    const temp_file file(text);
    const ksstack_ptr tags(find_maximal_tags(file.path(), minsize, &stats));
    pairs names;
    for (int i = 0; i < tags->count; i++) {
      const auto tag = ksstack_get<pattern_tag>(tags.get(), i);
      EXPECT_EQ(tag.active, 1);
      names.emplace_back(tag.size, tag.id);
    }
    return names;
  }

  statistics stats;
};
using MaximalFatal = Maximal;
using MaximalCheck = Maximal;

static ksstack_ptr tags_of(const pairs &names) {
  ksstack_ptr tags(ksstack_new(4, static_cast<int>(sizeof(pattern_tag))));
  for (const auto &[size, id] : names) {
    const pattern_tag tag = {size, id, 1};
    ksstack_push(&tag, tags.get());
  }
  return tags;
}

// Whether a line names a pattern; its name and parents go to the others.
static bool parsed(const char *line, pattern_tag *tag, ints *ids) {
  const ksstack_ptr parents(ksstack_new(1, sizeof(int)));
  const int old = 99;
  ksstack_push(&old, parents.get());
  const bool names_pattern = get_pattern_and_parents(line, tag, parents.get());
  ids->clear();
  for (int i = 0; i < parents->count; i++)
    ids->push_back(ksstack_get<int>(parents.get(), i));
  return names_pattern;
}

TEST_F(Maximal, TagIsTwelveBytes) { EXPECT_EQ(sizeof(pattern_tag), 12u); }

TEST_F(Maximal, LineGivesThePatternAndItsParents) {
  pattern_tag tag = {0, 0, 0};
  ints ids;
  EXPECT_TRUE(parsed("3-7 2-2 2-5\n", &tag, &ids));
  EXPECT_EQ(tag.size, 3);
  EXPECT_EQ(tag.id, 7);
  EXPECT_EQ(ids, (ints{2, 5}));
}

TEST_F(Maximal, LineMayHaveNoParents) {
  pattern_tag tag = {0, 0, 0};
  ints ids;
  EXPECT_TRUE(parsed("1-0\n", &tag, &ids));
  EXPECT_EQ(ids, ints());
  EXPECT_TRUE(parsed("1-4", &tag, &ids));
  EXPECT_EQ(tag.id, 4);
  EXPECT_TRUE(parsed("1-4  \t\r\n", &tag, &ids));
  EXPECT_EQ(ids, ints());
}

TEST_F(Maximal, BlanksBetweenParentsAreFree) {
  pattern_tag tag = {0, 0, 0};
  ints ids;
  EXPECT_TRUE(parsed("2-1\t1-3   1-4\r\n", &tag, &ids));
  EXPECT_EQ(ids, (ints{3, 4}));
}

TEST_F(Maximal, TextBehindAnIdIsSkippedToTheNextBlank) {
  pattern_tag tag = {0, 0, 0};
  ints ids;
  EXPECT_TRUE(parsed("2-1x 1-3y 1-4\n", &tag, &ids));
  EXPECT_EQ(tag.id, 1);
  EXPECT_EQ(ids, (ints{3, 4}));
}

TEST_F(Maximal, LineThatStartsWithoutAnIdYieldsNothing) {
  pattern_tag tag = {0, 0, 0};
  ints ids;
  for (const char *line : {"# 1-2\n", "text\n", "3 4\n", "3-\n", "\n", ""}) {
    EXPECT_FALSE(parsed(line, &tag, &ids)) << line;
    EXPECT_EQ(ids, ints());
  }
}

TEST_F(Maximal, LineOfASizeBelowAllYieldsNothing) {
  pattern_tag tag = {0, 0, 0};
  ints ids;
  EXPECT_FALSE(parsed("-2147483648-0 1-0\n", &tag, &ids));
  EXPECT_EQ(maximal_in("-2147483648-0\n1-0\n"), (pairs{{1, 0}}));
}

TEST_F(MaximalFatal, ParentThatIsNoIdTellsItsOffsetAndTheLine) {
  pattern_tag tag = {0, 0, 0};
  ints ids;
  EXPECT_EQ(fatal_text([&] { parsed("3-7 2-2 x\n", &tag, &ids); }),
            "subgraph.c:N: invalid input at 8 in 3-7 2-2 x\n");
  EXPECT_EQ(fatal_text([&] { parsed("3-7   2 2-2\n", &tag, &ids); }),
            "subgraph.c:N: invalid input at 6 in 3-7   2 2-2\n");
}

TEST_F(MaximalCheck, ParentOfAnotherSizeThanOneLess) {
  pattern_tag tag = {0, 0, 0};
  ints ids;
  for (const char *line : {"3-7 3-2\n", "3-7 1-2\n", "3-7 2-0 4-0\n"})
    EXPECT_EQ(check_text([&] { parsed(line, &tag, &ids); }),
              "maximal.cpp:N: get_pattern_and_parents: Assertion `size == "
              "pt->size - 1' failed.\n");
}

TEST_F(Maximal, PatternsNamedAsParentsAreNotMaximal) {
  EXPECT_EQ(maximal_in("1-0\n1-1\n1-2\n2-0 1-0\n2-1 1-0 1-2\n3-0 2-1\n"),
            (pairs{{1, 1}, {2, 0}, {3, 0}}));
  EXPECT_EQ(stats_get(&stats, stats_frequent, 1), 1);
  EXPECT_EQ(stats_get(&stats, stats_frequent, 2), 1);
  EXPECT_EQ(stats_get(&stats, stats_frequent, 3), 1);
}

TEST_F(Maximal, OneEdgePatternsAloneAreAllMaximal) {
  EXPECT_EQ(maximal_in("1-0\n1-1\n"), (pairs{{1, 0}, {1, 1}}));
}

TEST_F(Maximal, LastSizeIsAlwaysMaximal) {
  EXPECT_EQ(maximal_in("1-0\n2-0 1-0\n2-1 1-0\n"), (pairs{{2, 0}, {2, 1}}));
}

TEST_F(Maximal, ParentsBelowTheMinimumSizeAreNotLookedUp) {
  EXPECT_EQ(maximal_in("3-0 2-0 2-5\n3-1 2-7\n4-0 3-1\n", 3),
            (pairs{{3, 0}, {4, 0}}));
}

TEST_F(Maximal, CommentsAndOtherLinesArePassedOver) {
  EXPECT_EQ(maximal_in("# 9-9\n1-0\nsome text\n\n1-1\n2-0 1-1\n"),
            (pairs{{1, 0}, {2, 0}}));
}

TEST_F(Maximal, StatisticsOfBothKindsStartAnew) {
  stats_set(&stats, stats_candidates, 3, 8);
  stats_set(&stats, stats_frequent, 5, 8);
  maximal_in("1-0\n1-1\n");
  EXPECT_EQ(stats_largest(&stats, stats_candidates), 0);
  EXPECT_EQ(stats_get(&stats, stats_frequent, 1), 2);
  EXPECT_EQ(stats_largest(&stats, stats_frequent), 1);
}

TEST_F(Maximal, EmptyListHasNoMaximalPattern) {
  EXPECT_EQ(maximal_in(""), pairs());
  EXPECT_EQ(maximal_in("# only this\n"), pairs());
}

TEST_F(MaximalCheck, ParentThatWasNotWritten) {
  EXPECT_EQ(check_text([&] { maximal_in("1-0\n2-0 1-1\n"); }),
            "maximal.cpp:N: deactivate_pattern_tag: Assertion `ptr' failed.\n");
}

TEST_F(MaximalFatal, MissingPcList) {
  EXPECT_EQ(fatal_text([&] { find_maximal_tags("/no/such", 1, &stats); }),
            "can't open a file '/no/such'\n");
}

static label_set_ptr labels() { return label_set_of({"s"}, {"C", "O"}); }

// What a pattern file becomes.
static std::string rewritten(const std::string &text, const pairs &names) {
  const temp_file file(text);
  rewrite_pattern_file(tags_of(names).get(), labels().get(), file.path());
  return file.text();
}

static const std::string edge_0 = "t # 1-0, 9\nv 0 C\nv 1 C\nu 0 1 s\n";
static const std::string edge_1 = "t # 1-1, 8\nv 0 C\nv 1 O\nu 0 1 s\n";
static const std::string path_0 =
    "t # 2-0, 7\nv 0 C\nv 1 C\nv 2 O\nu 0 1 s\nu 0 2 s\n";
static const std::string path_1 =
    "t # 2-1, 6\nv 0 O\nv 1 C\nv 2 C\nu 0 1 s\nu 0 2 s\n";

TEST_F(Maximal, PatternFileKeepsTheWantedPatternsAndTheirIds) {
  EXPECT_EQ(rewritten("# head\n#\n" + edge_0 + edge_1 + path_0 + path_1,
                      {{1, 1}, {2, 1}}),
            "# head\n#\n" + edge_1 + path_1);
}

TEST_F(Maximal, PatternFileKeepsAllWhenAllAreWanted) {
  const std::string text = "# head\n" + edge_0 + edge_1 + path_0 + path_1;
  EXPECT_EQ(rewritten(text, {{1, 0}, {1, 1}, {2, 0}, {2, 1}}), text);
}

TEST_F(Maximal, PatternFileThatStartsWithALargerSize) {
  EXPECT_EQ(rewritten(path_0 + path_1, {{2, 0}}), path_0);
  EXPECT_EQ(rewritten(path_0 + path_1, {{2, 1}}), path_1);
}

TEST_F(Maximal, CommentsAmongThePatternsGoHeadAndFootStay) {
  EXPECT_EQ(rewritten("# a\n" + edge_0 + "# b\n" + edge_1 + "# c\n", {{1, 1}}),
            "# a\n" + edge_1 + "# c\n");
}

TEST_F(Maximal, HeaderIsCopiedAsItIsTheGraphIsWrittenAnew) {
  EXPECT_EQ(rewritten("  T any text\nv 5 C\nv 3 O\ne 3 5 s\n", {{1, 0}}),
            "  T any text\nv 0 C\nv 1 O\nu 0 1 s\n");
}

TEST_F(Maximal, LinesOfNoGraphAndOfOtherLettersArePassedOver) {
  EXPECT_EQ(rewritten("x y\nv 0 C\n# b\n" + edge_0, {{1, 0}}),
            "# b\n" + edge_0);
}

TEST_F(MaximalFatal, BlankLineOfAPatternFile) {
  EXPECT_EQ(fatal_text([] {
              rewritten("# a\n\n" + edge_0, {{1, 0}});
            }),
            "subgraph.c:N: invalid input line: \n\n");
  EXPECT_EQ(fatal_text([] {
              rewritten(" \t\n", {{1, 0}});
            }),
            "subgraph.c:N: invalid input line:  \t\n\n");
}

TEST_F(MaximalFatal, MissingPatternFile) {
  EXPECT_EQ(fatal_text([] {
              rewrite_pattern_file(tags_of({{1, 0}}).get(), labels().get(),
                                   "/no/such");
            }),
            "can't open a file '/no/such'\n");
}

// What a file of id lines becomes.
static std::string filtered(const std::string &text, const pairs &names) {
  const temp_file file(text);
  filter_id_lines(tags_of(names).get(), file.path());
  return file.text();
}

TEST_F(Maximal, IdLinesOfWantedPatternsStay) {
  EXPECT_EQ(filtered("1-0 0 4 9\n1-1 2\n2-0\n2-1 5 6\n", {{1, 1}, {2, 1}}),
            "1-1 2\n2-1 5 6\n");
}

TEST_F(Maximal, IdLinesAreKeptAsTheyAre) {
  EXPECT_EQ(filtered(" 1-0  0 text\r\n1-1\n", {{1, 0}}), " 1-0  0 text\r\n");
  EXPECT_EQ(filtered("", {{1, 0}}), "");
}

TEST_F(Maximal, LongIdLinesAreKeptWhole) {
  std::string line = "1-0";
  for (int tid = 0; tid < 3000; tid++)
    line += " " + std::to_string(tid);
  EXPECT_EQ(filtered("1-1 5\n" + line + "\n1-2 7\n", {{1, 0}}), line + "\n");
}

TEST_F(MaximalFatal, IdLineWithoutAnId) {
  EXPECT_EQ(fatal_text([] {
              filtered("1-0\n# x\n", {{1, 0}});
            }),
            "subgraph.c:N: invalid input line: # x\n\n");
  EXPECT_EQ(fatal_text([] {
              filtered("\n", {{1, 0}});
            }),
            "subgraph.c:N: invalid input line: \n\n");
}

TEST_F(MaximalFatal, MissingIdLines) {
  EXPECT_EQ(fatal_text([] {
              filter_id_lines(tags_of({{1, 0}}).get(), "/no/such");
            }),
            "can't open a file '/no/such'\n");
}

TEST_F(Maximal, SelectionRewritesAllThreeFiles) {
  const temp_file patterns("# head\n" + edge_0 + edge_1 + path_0 + path_1);
  const temp_file pc("1-0\n1-1\n2-0 1-0\n2-1 1-0\n");
  const temp_file tid("1-0 0 1\n1-1 2\n2-0 0\n2-1 1\n");
  select_maximal_patterns(labels().get(), 1, 1, 0, 0, patterns.path(),
                          pc.path(), tid.path(), &stats);
  EXPECT_EQ(patterns.text(), "# head\n" + edge_1 + path_0 + path_1);
  EXPECT_EQ(pc.text(), "1-1\n2-0 1-0\n2-1 1-0\n");
  EXPECT_EQ(tid.text(), "1-1 2\n2-0 0\n2-1 1\n");
  EXPECT_EQ(stats_get(&stats, stats_frequent, 1), 1);
  EXPECT_EQ(stats_get(&stats, stats_frequent, 2), 2);
}

TEST_F(Maximal, SelectionWithoutATidList) {
  const temp_file patterns(edge_0 + path_0);
  const temp_file pc("1-0\n2-0 1-0\n");
  select_maximal_patterns(labels().get(), 1, 0, 1, 1, patterns.path(),
                          pc.path(), nullptr, &stats);
  EXPECT_EQ(patterns.text(), path_0);
  EXPECT_EQ(pc.text(), "2-0 1-0\n");
}

TEST_F(Maximal, SelectionWithoutPatternsLeavesTheFilesAlone) {
  const temp_file patterns("# head\n\nnot even a pattern file");
  const temp_file pc("# x\n");
  const temp_file tid("no id\n");
  select_maximal_patterns(labels().get(), 1, 1, 1, 1, patterns.path(),
                          pc.path(), tid.path(), &stats);
  EXPECT_EQ(patterns.text(), "# head\n\nnot even a pattern file");
  EXPECT_EQ(pc.text(), "# x\n");
  EXPECT_EQ(tid.text(), "no id\n");
}

} // namespace kestro
