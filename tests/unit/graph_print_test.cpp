#include "reference/graph/graph_print.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "support/graphs.h"
#include "support/streams.h"

namespace kestro {

static std::string printed(const graph_ptr &g) {
  return written_text([&](FILE *out) { graph_print(g.get(), out); });
}

static graph_ptr labelled_path() {
  graph_ptr g = make_graph({5, 6, 7}, {{0, 1, 3}, {1, 2, 4}});
  g->key = 0x2aff;
  return g;
}

TEST(GraphPrint, EmptyGraphIsKeyNull) {
  EXPECT_EQ(printed(make_graph({}, {})), "key: NULL\n");
}

TEST(GraphPrint, RowsOfCellsPerVertex) {
  EXPECT_EQ(printed(labelled_path()), "key: 2aff\n"
                                      "#: 0|  1|2\n"
                                      "v: 0|  1|3\n"
                                      "V: 5|  6|7\n"
                                      "e: 1|0 2|1\n"
                                      "E: 3|3 4|4\n");
}

TEST(GraphPrint, IdsOnlyWhenTheyDifferFromTheNumbers) {
  const graph_ptr g = labelled_path();
  g->vid[1] = 9;
  EXPECT_EQ(printed(g), "key: 2aff\n"
                        "#: 0|  1|2\n"
                        "id:0|  9|2\n"
                        "v: 0|  1|3\n"
                        "V: 5|  6|7\n"
                        "e: 1|0 2|1\n"
                        "E: 3|3 4|4\n");
}

TEST(GraphPrint, GraphWithoutStoredIdsPrintsAsItsCopy) {
  const graph_ptr g = labelled_path();
  std::vector<int64_t> memory(
      graph_size(g->es, g->vs, graph_ids::own_numbers) / 8 + 1);
  graph *bare = graph_init(memory.data(), g->es, g->vs, graph_ids::own_numbers);
  graph_copy_into(g.get(), bare);
  EXPECT_EQ(written_text([&](FILE *out) { graph_print(bare, out); }),
            printed(g));
}

TEST(GraphPrint, WidestIdWidensEveryCell) {
  const graph_ptr g = labelled_path();
  g->vid[1] = 12;
  EXPECT_EQ(printed(g), "key: 2aff\n"
                        "#:  0|    1| 2\n"
                        "id: 0|   12| 2\n"
                        "v:  0|    1| 3\n"
                        "V:  5|    6| 7\n"
                        "e:  1| 0  2| 1\n"
                        "E:  3| 3  4| 4\n");
}

TEST(GraphPrint, WidthCountsTheDigitsOfPowersOfTen) {
  EXPECT_EQ(printed(make_graph({10, 1}, {{0, 1, 100}})), "key: 0\n"
                                                         "#:   0|  1\n"
                                                         "v:   0|  1\n"
                                                         "V:  10|  1\n"
                                                         "e:   1|  0\n"
                                                         "E: 100|100\n");
  EXPECT_EQ(printed(make_graph({99, 1}, {{0, 1, 0}})), "key: 0\n"
                                                       "#:  0| 1\n"
                                                       "v:  0| 1\n"
                                                       "V: 99| 1\n"
                                                       "e:  1| 0\n"
                                                       "E:  0| 0\n");
}

TEST(GraphPrint, WidthCountsTheSlots) {
  // Five edges make ten slots; every other value has one digit.
  EXPECT_EQ(printed(star_graph(6)), "key: 0\n"
                                    "#:              0| 1| 2| 3| 4| 5\n"
                                    "v:              0| 5| 6| 7| 8| 9\n"
                                    "V:              0| 0| 0| 0| 0| 0\n"
                                    "e:  1  2  3  4  5| 0| 0| 0| 0| 0\n"
                                    "E:  0  0  0  0  0| 0| 0| 0| 0| 0\n");
}

TEST(GraphPrint, MarksAreShownAsStoredInWiderCells) {
  const graph_ptr g = labelled_path();
  graph_toggle(&g->e[2]); // 1-2 and vertex 2
  graph_toggle(&g->e[3]);
  graph_toggle(&g->v[2]);
  EXPECT_EQ(printed(g), "key: 2aff\n"
                        "#:  0|    1| 2\n"
                        "v:  0|    1|-4\n"
                        "V:  5|    6| 7\n"
                        "e:  1| 0 -3|-2\n"
                        "E:  3| 3  4| 4\n");
}

TEST(GraphPrint, LastOffsetIsShownWhenItIsNotTheSlotCount) {
  const graph_ptr g = labelled_path();
  g->v[3] = 3; // vertex 2 loses its slot
  EXPECT_EQ(printed(g), "key: 2aff\n"
                        "#: 0|  1|\n"
                        "v: 0|  1|||3\n"
                        "V: 5|  6|\n"
                        "e: 1|0 2|\n"
                        "E: 3|3 4|\n");
}

TEST(GraphPrint, VertexWithoutSlotsHasNoCells) {
  EXPECT_EQ(printed(make_graph({4}, {})), "key: 0\n"
                                          "#: \n"
                                          "v: \n"
                                          "V: \n"
                                          "e: \n"
                                          "E: \n");
}

} // namespace kestro
