#include "graph/graph_text.h"

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

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

static void write_to(FILE *stream, const graph_ptr &g, const label_set *ls) {
  text_buffer out(stream);
  graph_writer(ls).write(g.get(), out);
}

static std::string saved(const graph_ptr &g,
                         const label_set_ptr &ls = labels()) {
  return written_text([&](FILE *out) { write_to(out, g, ls.get()); });
}

// The same, slot by slot, each label and other slot looked up.
static std::string saved_plainly(const graph *g, const label_set *ls) {
  std::string text;
  for (int i = 0; i < g->vs; i++)
    text += "v " + std::to_string(i) + " " +
            label_set_vertex_label(ls, g->vlabel[i]) + "\n";
  for (int i = 0; i < g->vs; i++)
    for (int j = g->v[i]; j < g->v[i + 1]; j++) {
      const int to = g->e[j];
      const bool both_ways = graph_edge_label(g, to, i) == g->elabel[j];
      if (!both_ways || i < to)
        text += (both_ways ? "u " : "d ") + std::to_string(i) + " " +
                std::to_string(to) + " " +
                label_set_edge_label(ls, g->elabel[j]) + "\n";
    }
  return text;
}

static void expect_plain(const graph_ptr &g, const label_set_ptr &ls) {
  EXPECT_EQ(saved(g, ls), saved_plainly(g.get(), ls.get()));
}

// Labels of every length up to most, and one much longer, by id.
static label_set_ptr labels_up_to(int most) {
  std::vector<std::string> words;
  for (int length = 1; length <= most; length++)
    words.emplace_back(static_cast<size_t>(length), 'x');
  words.emplace_back(1023, 'y');
  return label_set_of(words, words);
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

TEST(GraphText, LabelsOfAnyLengthAreWrittenWhole) {
  const int most = 40;
  const label_set_ptr ls = labels_up_to(most);
  EXPECT_EQ(saved(make_graph({13, 12}, {{0, 1, 14}}), ls),
            "v 0 " + std::string(14, 'x') + "\nv 1 " + std::string(13, 'x') +
                "\nu 0 1 " + std::string(15, 'x') + "\n");
  std::vector<int> vlabels = identity_of(most + 1);
  std::vector<test_edge> edges;
  for (int i = 0; i < most; i++)
    edges.push_back({i, i + 1, i});
  edges.push_back({0, most, most});
  expect_plain(make_graph(vlabels, edges), ls);
  std::reverse(vlabels.begin(), vlabels.end());
  expect_plain(make_graph(vlabels, edges), ls);
}

// Whether a line has such a label or not, room is made line by line then.
TEST(GraphText, LinesBesideAHugeLabel) {
  const std::string huge(300000, 'x');
  const label_set_ptr ls = label_set_of({"a", huge}, {"A", huge});
  test_rng rng(23);
  for (const int labels : {1, 2}) {
    const graph_ptr g = random_graph(
        rng, {.vs = 9, .extra_edges = 5, .vlabels = labels, .elabels = labels});
    expect_plain(g, ls);
  }
}

TEST(GraphText, IndicesOfAnyLength) {
  const int n = 10102;
  std::vector<test_edge> edges;
  for (const int i : {8, 9, 10, 98, 99, 100, 998, 999, 1000, 9999, 10000})
    for (const int to : {i + 1, i + 101})
      edges.push_back({i, to});
  const graph_ptr g =
      make_graph(std::vector<int>(static_cast<size_t>(n), 0), edges);
  const std::string text = saved(g);
  for (const char *line :
       {"v 9 A\nv 10 A\n", "v 99 A\nv 100 A\n", "v 999 A\nv 1000 A\n",
        "u 9 10 a\nu 9 110 a\n", "u 999 1000 a\nu 999 1100 a\nu 1000 1001 a\n",
        "u 10000 10001 a\nu 10000 10101 a\n"})
    EXPECT_NE(text.find(line), std::string::npos) << line;
  EXPECT_EQ(text == saved_plainly(g.get(), labels().get()), true);
}

TEST(GraphText, OneWriterWritesGraphAfterGraph) {
  const label_set_ptr ls = labels_up_to(20);
  std::string expected;
  EXPECT_EQ(written_text([&](FILE *stream) {
              text_buffer out(stream);
              graph_writer writer(ls.get());
              test_rng rng(3);
              for (int round = 0; round < 300; round++) {
                const graph_ptr g =
                    random_graph(rng, {.vs = 1 + random_below(rng, 30),
                                       .extra_edges = random_below(rng, 40),
                                       .vlabels = 21,
                                       .elabels = 21,
                                       .connected = round % 3 != 0});
                writer.write(g.get(), out);
                expected += saved_plainly(g.get(), ls.get());
              }
            }),
            expected);
}

TEST(GraphText, LinesOfAnyEdgesWithTwoLabels) {
  const label_set_ptr ls = labels_up_to(20);
  test_rng rng(17);
  for (int round = 0; round < 200; round++) {
    const graph_ptr g = random_graph(
        rng, {.vs = 2 + round % 12, .extra_edges = 8, .elabels = 21});
    for (int changes = 1 + round % 4; changes > 0; changes--)
      g->elabel[random_below(rng, g->es)] = random_below(rng, 21);
    expect_plain(g, ls);
  }
}

TEST(GraphTextDeath, SlotWithoutItsOtherEnd) {
  const graph_ptr g = make_graph({0, 0, 0}, {{0, 1, 0}, {1, 2, 0}});
  g->e[0] = 2; // 0 names 2, which does not name 0
  EXPECT_DEATH(saved(g),
               "Assertion `k < v\\[to \\+ 1\\] && e\\[k\\] == i' failed");
}

TEST(GraphTextDeath, ListThatDescends) {
  const graph_ptr g = path_graph(3);
  std::swap(g->e[1], g->e[2]); // the neighbours of the middle
  EXPECT_DEATH(saved(g), "Assertion `k < v.*' failed");
}

// The lines in front of it are written.
TEST(GraphTextFatal, LabelIdWithoutALabel) {
  const auto text_before = [](const graph_ptr &g) {
    const temp_file file;
    const file_ptr stream(open_file(file.path(), "w"));
    EXPECT_EQ(fatal_text([&] { write_to(stream.get(), g, labels().get()); }),
              "stack.c:N: invalid index\n");
    fflush(stream.get());
    return file.text();
  };
  EXPECT_EQ(text_before(make_graph({3}, {})), "");
  EXPECT_EQ(text_before(make_graph({2, 3}, {})), "v 0 C\n");
  EXPECT_EQ(text_before(make_graph({2, 0, 0}, {{0, 1, 1}, {1, 2, 3}})),
            "v 0 C\nv 1 A\nv 2 A\nu 0 1 b\n");
  const graph_ptr g = path_graph(3);
  g->elabel[0] = 1; // so that what follows is written in the general way
  g->elabel[2] = g->elabel[3] = 3;
  EXPECT_EQ(text_before(g), "v 0 A\nv 1 A\nv 2 A\nd 0 1 b\nd 1 0 a\n");
}

} // namespace kestro
