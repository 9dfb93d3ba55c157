#include "mining/pattern_output.h"

#include <gtest/gtest.h>

#include "support/fatal.h"
#include "support/label_sets.h"
#include "support/records.h"
#include "support/streams.h"

namespace kestro {

// Two patterns of size 2, as they come.
static sg_set_ptr level() {
  sg_set_ptr s(sg_set_create());
  sg_ptr a = record_of(make_graph({1, 0, 0}, {{0, 1, 0}, {0, 2, 1}}));
  a->count = 12;
  set_tids(a.get(), {0, 4, 9});
  sg_add_pid(a.get(), 5);
  sg_add_pid(a.get(), 2);
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
