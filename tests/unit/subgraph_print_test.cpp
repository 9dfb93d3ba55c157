#include "reference/mining/subgraph_print.h"

#include <gtest/gtest.h>

#include "reference/graph/graph_print.h"
#include "reference/mining/subgraph.h"
#include "support/records.h"
#include "support/streams.h"

namespace kestro {

static sg_ptr edge_record() {
  return record_of(make_graph({5, 6}, {{0, 1, 7}}));
}

template <class Print>
static std::string printed(const sg_ptr &sg, Print print) {
  return written_text([&](FILE *out) { print(sg.get(), out); });
}

TEST(SubgraphPrint, RecordIsItsGraphAndALinePerField) {
  const sg_ptr sg = edge_record();
  sg->count = 12;
  sg_add_parent(sg.get(), parent_entry(4, 0, 1, {0, -1}));
  sg->kept[0] = 0;
  for (const int id : {3, 1})
    sg_add_child(sg.get(), id);
  add_parent(sg.get(), 8);
  const std::string graph_text =
      written_text([&](FILE *out) { graph_print(sg->g, out); });
  EXPECT_EQ(printed(sg, sg_print),
            graph_text + "count: 12\nparent: 4\nchild: 1 3\npid: 4 8\n");
}

TEST(SubgraphPrint, EmptySetsEndAtTheirColon) {
  const std::string text = printed(edge_record(), sg_print);
  EXPECT_EQ(text.substr(text.find("count")),
            "count: 0\nparent:\nchild:\npid:\n");
}

TEST(SubgraphPrint, AbsentSetIsNull) {
  const sg_ptr sg = edge_record();
  ksstack_free(sg->child);
  sg->child = nullptr;
  const std::string text = printed(sg, sg_print);
  EXPECT_EQ(text.substr(text.find("count")),
            "count: 0\nparent:\nchild: NULL\npid:\n");
}

TEST(SubgraphPrint, ChildLine) {
  const sg_ptr sg = edge_record();
  EXPECT_EQ(printed(sg, sg_print_child), "child: \n");
  for (const int id : {7, 2})
    sg_add_child(sg.get(), id);
  EXPECT_EQ(printed(sg, sg_print_child), "child: 2 7 \n");
  ksstack_free(sg->child);
  sg->child = nullptr;
  EXPECT_EQ(printed(sg, sg_print_child), "child: NULL\n");
}

TEST(SubgraphPrint, PidAndCoverLines) {
  const sg_ptr sg = edge_record();
  EXPECT_EQ(printed(sg, sg_print_pid), "\n");
  for (const int id : {7, 2})
    add_parent(sg.get(), id);
  sg_add_cover(sg.get(), 30);
  EXPECT_EQ(printed(sg, sg_print_pid), "2 7 \n");
  EXPECT_EQ(printed(sg, sg_print_cover), "30 \n");
}

TEST(SubgraphPrint, ParentEntryIsItsPidEdgeAndMap) {
  const parent_entry entry(5, 1, 3, {2, 0, 1, -1});
  EXPECT_EQ(written_text([&](FILE *out) { sg_print_parent(entry, out); }),
            "5(1,3): 2 0 1 -1 \n");
}

} // namespace kestro
