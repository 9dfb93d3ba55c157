#include "reference/cl/adjmat_print.h"

#include <gtest/gtest.h>

#include <string>

#include "support/graphs.h"
#include "support/streams.h"

namespace kestro {

static adjmat_ptr filled(const graph *g) {
  adjmat_ptr m(cl_new_adjmat(g->vs));
  cl_graph_to_adjmat(g, m.get());
  return m;
}

TEST(AdjmatPrint, TableFollowsThePositions) {
  const graph_ptr g = make_graph({5, 7, 6}, {{0, 1, 2}, {1, 2, 12}});
  const adjmat_ptr m = filled(g.get());
  cl_swap_positions(m.get(), 0, 2);
  EXPECT_EQ(written_text([&](FILE *out) { cl_print_adjmat(m.get(), out); }),
            "perm: 2  1  0\n"
            "part : 0  3\n"
            "\n"
            "    #| 0  1  2|\n"
            "    r| 2  1  0|\n"
            "    i| 2  1  0|\n"
            "    d| 1  2  1|\n"
            "    l| 6  7  5|\n"
            "    p| 0  0  0|\n"
            "-----+--------+\n"
            " 0  2| 0 13  0| 13->0(1)\n"
            " 1  1|13  0  3| 3->0(2) 13->0(0)\n"
            " 2  0| 0  3  0| 3->0(1)\n");
}

TEST(AdjmatPrint, PartsShowInTheirLines) {
  const adjmat_ptr m = filled(path_graph(2).get());
  m->parts = 2;
  m->part[1] = 1;
  m->part[2] = 2;
  m->vertex[1].part = 1;
  EXPECT_EQ(written_text([&](FILE *out) { cl_print_adjmat(m.get(), out); }),
            "perm:0 1\n"
            "part :0 1 2\n"
            "\n"
            "  #|0 1|\n"
            "  r|0 1|\n"
            "  i|0 1|\n"
            "  d|1 1|\n"
            "  l|0 0|\n"
            "  p|0 1|\n"
            "---+---+\n"
            "0 0|0 1| 1->1(1)\n"
            "1 1|1 0| 1->0(0)\n");
}

TEST(AdjmatPrint, NeighbourNeverFilledShowsAsNull) {
  const adjmat_ptr m = filled(path_graph(3).get());
  m->vertex[1].adj[0].v = nullptr;
  const std::string text =
      written_text([&](FILE *out) { cl_print_adjmat(m.get(), out); });
  EXPECT_NE(text.find("1 1|1 0 1| null 1->0(2)\n"), std::string::npos) << text;
}

TEST(AdjmatPrint, GraphShowsItsKeyFirst) {
  const graph_ptr g = make_graph({0}, {});
  g->vid[0] = -4;
  g->key = 0xabc;
  EXPECT_EQ(written_text([&](FILE *out) { cl_print_graph(g.get(), out); }),
            "key: abc\n"
            "perm: 0\n"
            "part : 0  1\n"
            "\n"
            "    #| 0|\n"
            "    r| 0|\n"
            "    i|-4|\n"
            "    d| 0|\n"
            "    l| 0|\n"
            "    p| 0|\n"
            "-----+--+\n"
            " 0 -4| 0|\n");
}

TEST(AdjmatPrint, WidthHoldsTheLargestNumber) {
  const graph_ptr g = path_graph(2);
  const adjmat_ptr m = filled(g.get());
  EXPECT_EQ(cl_print_width(m.get()), 1);
  m->vertex[0].label = 9;
  EXPECT_EQ(cl_print_width(m.get()), 1);
  m->vertex[0].label = 10;
  EXPECT_EQ(cl_print_width(m.get()), 2);
  m->vertex[0].label = -10;
  EXPECT_EQ(cl_print_width(m.get()), 3);
  m->vertex[1].adj[0].label = 1000;
  EXPECT_EQ(cl_print_width(m.get()), 5);
  m->parts = 10001;
  EXPECT_EQ(cl_print_width(m.get()), 6);
}

TEST(AdjmatPrint, WidthOfALoneZeroIsOne) {
  const graph_ptr g = make_graph({0}, {});
  EXPECT_EQ(cl_print_width(filled(g.get()).get()), 1);
}

} // namespace kestro
