#include "graph/graph_text.h"

#include <gtest/gtest.h>

#include "graph/transactions.h"
#include "reference/graph/transactions.h"
#include "support/fatal.h"
#include "support/graphs.h"
#include "support/label_sets.h"
#include "support/streams.h"
#include "support/temp_file.h"

namespace kestro {

static label_set_ptr labels() {
  return label_set_of({"a", "b", "c"}, {"A", "B", "C"});
}

static std::string saved(const graph_ptr &g) {
  return written_text(
      [&](FILE *out) { graph_save(g.get(), labels().get(), out); });
}

TEST(GraphText, EdgeIsWrittenOnceFromItsSmallerEnd) {
  EXPECT_EQ(saved(make_graph({2, 0}, {{1, 0, 1}})), "v 0 C\nv 1 A\nu 0 1 b\n");
}

TEST(GraphText, VerticesThenEdgesByVertexAndSlot) {
  EXPECT_EQ(saved(make_graph({0, 1, 2}, {{0, 1, 0}, {0, 2, 1}, {1, 2, 2}})),
            "v 0 A\nv 1 B\nv 2 C\nu 0 1 a\nu 0 2 b\nu 1 2 c\n");
}

TEST(GraphText, GraphWithoutVerticesWritesNothing) {
  EXPECT_EQ(saved(make_graph({}, {})), "");
}

TEST(GraphText, LoneVertexIsWritten) {
  EXPECT_EQ(saved(make_graph({1}, {})), "v 0 B\n");
}

TEST(GraphText, NumbersAreIndicesNotIds) {
  const graph_ptr g = make_graph({0, 1}, {{0, 1, 0}});
  g->vid[0] = 70;
  g->vid[1] = 80;
  EXPECT_EQ(saved(g), "v 0 A\nv 1 B\nu 0 1 a\n");
}

TEST(GraphText, EdgeWithTwoLabelsIsWrittenFromEachEnd) {
  const graph_ptr g = make_graph({0, 1, 2}, {{0, 1, 0}, {1, 2, 1}});
  g->elabel[graph_edge_index(g.get(), 1, 0)] = 2;
  EXPECT_EQ(saved(g), "v 0 A\nv 1 B\nv 2 C\nd 0 1 a\nd 1 0 c\nu 1 2 b\n");
}

TEST(GraphText, WhatIsWrittenReadsBackAsTheSameGraph) {
  const label_set_ptr ls = labels();
  for (unsigned seed = 0; seed < 20; seed++) {
    test_rng rng(seed);
    const graph_ptr g = random_graph(rng, {7, 5, 3, 3, true});
    const temp_file file("t\n" + saved(g));
    const graph_ptr again(graph_read_transaction_file(file.path(), ls.get()));
    EXPECT_TRUE(same_structure(g.get(), again.get())) << "seed " << seed;
  }
}

TEST(GraphTextDeath, SlotWithoutItsOtherEnd) {
  const graph_ptr g = make_graph({0, 0, 0}, {{0, 1, 0}, {1, 2, 0}});
  g->e[0] = 2; // 0 names 2, which does not name 0
  EXPECT_DEATH(saved(g), "Assertion `k < g->v\\[g->e\\[j\\] \\+ 1\\]' failed");
}

TEST(GraphTextFatal, LabelIdWithoutALabel) {
  const graph_ptr g = make_graph({3}, {});
  const label_set_ptr ls = labels();
  const file_ptr out(tmpfile());
  EXPECT_EQ(fatal_text([&] { graph_save(g.get(), ls.get(), out.get()); }),
            "stack.c:N: invalid index\n");
}

} // namespace kestro
