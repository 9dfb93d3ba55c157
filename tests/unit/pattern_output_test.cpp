#include "mining/pattern_output.h"

#include <gtest/gtest.h>

#include "support/fatal.h"
#include "support/label_sets.h"
#include "support/records.h"
#include "support/streams.h"
#include "support/temp_file.h"

namespace kestro {

// Two patterns of size 2, as they come.
static sg_set_ptr level() {
  sg_set_ptr s(sg_set_create());
  sg_ptr a = record_of(make_graph({1, 0, 0}, {{0, 1, 0}, {0, 2, 1}}));
  a->count = 12;
  set_tids(a.get(), {0, 4, 9});
  add_parent(a.get(), 5);
  add_parent(a.get(), 2);
  sg_set_push(s.get(), std::move(a));
  sg_set_push(s.get(),
              record_of(make_graph({0, 1, 1}, {{0, 1, 1}, {0, 2, 1}})));
  return s;
}

static label_set_ptr labels() { return label_set_of({"d", "s"}, {"C", "O"}); }

TEST(PatternOutput, PatternsAreHeadersWithCountsAndGraphs) {
  EXPECT_EQ(written_text([](FILE *out) {
              sg_set_write_patterns(level().get(), labels().get(), out);
            }),
            "t # 2-0, 12\n"
            "v 0 O\nv 1 C\nv 2 C\nu 0 1 d\nu 0 2 s\n"
            "t # 2-1, 0\n"
            "v 0 C\nv 1 O\nv 2 O\nu 0 1 s\nu 0 2 s\n");
}

TEST(PatternOutput, TidLinesNameThePatternAndItsTransactions) {
  EXPECT_EQ(written_text(
                [](FILE *out) { sg_set_write_tid_list(level().get(), out); }),
            "2-0 0 4 9\n2-1\n");
}

TEST(PatternOutput, PcLinesNameThePatternAndItsParents) {
  EXPECT_EQ(
      written_text([](FILE *out) { sg_set_write_pc_list(level().get(), out); }),
      "2-0 1-2 1-5\n2-1\n");
}

TEST(PatternOutput, EmptyLevelWritesNothing) {
  const sg_set_ptr s(sg_set_create());
  EXPECT_EQ(written_text([&](FILE *out) {
              sg_set_write_patterns(s.get(), labels().get(), out);
              sg_set_write_tid_list(s.get(), out);
              sg_set_write_pc_list(s.get(), out);
            }),
            "");
}

TEST(PatternOutput, LongTidListsAreWrittenWhole) {
  std::vector<int> tids;
  std::string expected = "1-0";
  for (int tid = 0; tid < 60000; tid += 3) {
    tids.push_back(tid);
    expected += " " + std::to_string(tid);
  }
  sg_set_ptr s(sg_set_create());
  sg_ptr sg = record_of(make_graph({0, 0}, {{0, 1, 0}}));
  set_tids(sg.get(), tids);
  sg_set_push(s.get(), std::move(sg));
  EXPECT_EQ(
      written_text([&](FILE *out) { sg_set_write_tid_list(s.get(), out); }),
      expected + "\n");
}

TEST(PatternOutputFatal, LinesInFrontOfAFailureAreWritten) {
  sg_set_ptr s = level();
  sg_set_get(s.get(), 1)->g->vlabel[1] = 9;
  const temp_file file;
  {
    const file_ptr out(open_file(file.path(), "w"));
    EXPECT_EQ(fatal_text([&] {
                sg_set_write_patterns(s.get(), labels().get(), out.get());
              }),
              "stack.c:N: invalid index\n");
  }
  EXPECT_EQ(file.text(), "t # 2-0, 12\nv 0 O\nv 1 C\nv 2 C\nu 0 1 d\nu 0 2 s\n"
                         "t # 2-1, 0\nv 0 C\n");
}

TEST(PatternOutputFatal, NoStream) {
  const std::string text = "subgraph.c:N: no output file specified\n";
  EXPECT_EQ(fatal_text([] {
              sg_set_write_patterns(level().get(), labels().get(), nullptr);
            }),
            text);
  EXPECT_EQ(fatal_text([] { sg_set_write_tid_list(level().get(), nullptr); }),
            text);
  EXPECT_EQ(fatal_text([] { sg_set_write_pc_list(level().get(), nullptr); }),
            text);
}

} // namespace kestro
