#include <kestro/graph_view.h>

#include <algorithm>
#include <iterator>
#include <tuple>

#include <gtest/gtest.h>

#include <kestro/database.h>

#include "support/library_error.h"

namespace kestro {

namespace {

using ints = std::vector<int>;
using edge_list = std::vector<std::tuple<int, int, std::string>>;

ints list_of(std::span<const int> s) { return {s.begin(), s.end()}; }

edge_list edges_of(graph_view g) {
  edge_list found;
  for (const edge &e : g.all_edges())
    found.emplace_back(e.from, e.to, g.edge_label(e.label));
  return found;
}

} // namespace

static_assert(std::input_iterator<graph_view::edge_iterator>);

// A square with a tail, vertices out of order in the file.
static const char square[] = "t # 0\n"
                             "v 10 C\nv 20 O\nv 30 C\nv 40 N\nv 50 C\n"
                             "u 40 10 s\nu 10 20 s\nu 30 20 d\nu 40 30 d\n"
                             "u 50 40 s\n";

TEST(LibraryGraphView, ShowsVerticesWithTheirLabels) {
  const database db = database::parse(square);
  const graph_view g = db[0];
  ASSERT_EQ(g.vertices(), 5);
  std::string texts;
  for (int u = 0; u < g.vertices(); u++) {
    texts += g.vertex_label(u);
    EXPECT_EQ(db.label_set().vertex_label(g.vertex_label_id(u)),
              g.vertex_label(u));
  }
  EXPECT_EQ(texts, "COCNC");
}

TEST(LibraryGraphView, ShowsNeighboursAscendingWithTheLabelsOfTheEdges) {
  const database db = database::parse(square);
  const graph_view g = db[0];
  EXPECT_EQ(list_of(g.neighbours(3)), (ints{0, 2, 4}));
  EXPECT_EQ(list_of(g.neighbour_labels(3)), (ints{1, 0, 1})); // d s
  EXPECT_EQ(list_of(g.neighbours(4)), (ints{3}));
}

TEST(LibraryGraphView, WalksEveryEdgeOnceInOrder) {
  const database db = database::parse(square);
  EXPECT_EQ(db[0].edges(), 5);
  EXPECT_EQ(
      edges_of(db[0]),
      (edge_list{
          {0, 1, "s"}, {0, 3, "s"}, {1, 2, "d"}, {2, 3, "d"}, {3, 4, "s"}}));
}

TEST(LibraryGraphView, WalksNoEdgeWhereThereIsNone) {
  const database db = database::parse("t\nt\nv 0 C\nv 1 C\n");
  EXPECT_EQ(db[0].vertices(), 0);
  EXPECT_EQ(db[0].edges(), 0);
  EXPECT_EQ(edges_of(db[0]), edge_list());
  EXPECT_EQ(edges_of(db[1]), edge_list());
  EXPECT_EQ(list_of(db[1].neighbours(1)), ints());
}

TEST(LibraryGraphView, WalksPastVerticesWithoutEdges) {
  const database db =
      database::parse("t\nv 0 C\nv 1 C\nv 2 C\nv 3 C\nv 4 C\nu 3 1 s\n");
  EXPECT_EQ(edges_of(db[0]), (edge_list{{1, 3, "s"}}));
}

TEST(LibraryGraphView, IteratorsCompareByPlace) {
  const database db = database::parse(square);
  const auto edges = db[0].all_edges();
  auto at = edges.begin();
  EXPECT_EQ(at, edges.begin());
  EXPECT_EQ((*at++).to, 1);
  EXPECT_NE(at, edges.begin());
  EXPECT_EQ((*at).to, 3);
  EXPECT_EQ(std::distance(edges.begin(), edges.end()), 5);
  EXPECT_EQ(graph_view::edge_iterator(), graph_view::edge_iterator());
}

TEST(LibraryGraphView, RefusesNumbersOutOfRange) {
  const database db = database::parse(square);
  const graph_view g = db[0];
  const std::string vertex = "there is no vertex 5, only 5 of them";
  EXPECT_EQ(error_text([&] { g.vertex_label(5); }), vertex);
  EXPECT_EQ(error_text([&] { g.vertex_label_id(5); }), vertex);
  EXPECT_EQ(error_text([&] { g.neighbours(5); }), vertex);
  EXPECT_EQ(error_text([&] { g.neighbour_labels(5); }), vertex);
  EXPECT_EQ(error_text([&] { g.neighbours(-1); }),
            "there is no vertex -1, only 5 of them");
  EXPECT_EQ(error_text([&] { g.edge_label(2); }),
            "there is no edge label 2, only 2 of them");
}

} // namespace kestro
