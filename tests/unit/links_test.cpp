#include "mining/links.h"

#include <gtest/gtest.h>

#include "support/fatal.h"
#include "support/records.h"

namespace kestro {

using ints = std::vector<int>;

// The path 1-0-2 with labels 5, 6, 7 of vertices 0, 1, 2.
static sg_ptr path_record() {
  sg_ptr sg = record_of(make_graph({5, 6, 7}, {{0, 1, 8}, {0, 2, 9}}));
  sg->links = sg_links_create(3);
  return sg;
}

TEST(Links, StackFitsTheVerticesAndKeepsHeadersAligned) {
  for (const int vs : {2, 3, 10, link_max_vertices}) {
    const ksstack_ptr links(sg_links_create(vs));
    ASSERT_NE(links, nullptr);
    EXPECT_EQ(links->count, 0);
    EXPECT_GE(links->element_size, 4 + 2 + vs);
    EXPECT_EQ(links->element_size % static_cast<int>(alignof(sg_link)), 0);
  }
}

TEST(Links, AreNotMadeForVerticesThatNoByteHolds) {
  EXPECT_EQ(sg_links_create(link_max_vertices + 1), nullptr);
}

TEST(Links, ARecordWithoutAStackTakesNone) {
  const sg_ptr sg = record_of(path_graph(3));
  EXPECT_EQ(sg_link_size(sg.get()), 0);
  sg_add_link(sg.get(), parent_entry(0, 0, 1, {0, -1, 1}));
  EXPECT_EQ(sg->links, nullptr);
  EXPECT_EQ(sg_link_size(sg.get()), 0);
  sg_clear_links(sg.get());
  sg_free_links(sg.get());
  EXPECT_EQ(sg->links, nullptr);
}

TEST(Links, TellWhatTheParentEntrySaid) {
  const sg_ptr sg = path_record();
  sg_add_link(sg.get(), parent_entry(300, 0, 1, {1, -1, 0}));
  sg_add_link(sg.get(), parent_entry(70000, 0, 2, {0, 1, -1}));
  ASSERT_EQ(sg_link_size(sg.get()), 2);
  const sg_link *link = sg_link_at(sg.get(), 0);
  EXPECT_EQ(link->pid, 300);
  EXPECT_EQ(link->u, 0);
  EXPECT_EQ(link->v, 1);
  EXPECT_EQ(ints(link->map, link->map + 3), (ints{1, link_gone, 0}));
  link = sg_link_at(sg.get(), 1);
  EXPECT_EQ(link->pid, 70000);
  EXPECT_EQ(link->v, 2);
  EXPECT_EQ(ints(link->map, link->map + 3), (ints{0, 1, link_gone}));
  EXPECT_EQ(fatal_text([&] { sg_link_at(sg.get(), 2); }),
            "stack.c:N: invalid index\n");
}

TEST(Links, OneParentMayHaveSeveral) {
  const sg_ptr sg = path_record();
  sg_add_link(sg.get(), parent_entry(3, 0, 1, {1, -1, 0}));
  sg_add_link(sg.get(), parent_entry(3, 0, 2, {1, 0, -1}));
  EXPECT_EQ(sg_link_size(sg.get()), 2);
}

TEST(Links, HoldTheMostVerticesThereCanBe) {
  const int vs = link_max_vertices;
  const sg_ptr sg = record_of(path_graph(vs));
  sg->links = sg_links_create(vs);
  ints map = identity_of(vs);
  map.back() = -1;
  for (int i = 0; i < 5; i++) // beyond the first capacity
    sg_add_link(sg.get(), parent_entry(i, vs - 2, vs - 1, map));
  const sg_link *link = sg_link_at(sg.get(), 4);
  EXPECT_EQ(link->pid, 4);
  EXPECT_EQ(link->u, vs - 2);
  EXPECT_EQ(link->v, vs - 1);
  EXPECT_EQ(link->map[vs - 2], vs - 2);
  EXPECT_EQ(link->map[vs - 1], link_gone);
  EXPECT_EQ(sg_link_edge(sg.get(), link), pendant_extension(4, vs - 2, 0, 0));
}

TEST(Links, ClearKeepsTheStackAndFreeEndsIt) {
  const sg_ptr sg = path_record();
  sg_add_link(sg.get(), parent_entry(3, 0, 1, {1, -1, 0}));
  sg_clear_links(sg.get());
  EXPECT_EQ(sg_link_size(sg.get()), 0);
  EXPECT_NE(sg->links, nullptr);
  sg_free_links(sg.get());
  EXPECT_EQ(sg->links, nullptr);
}

TEST(Links, EdgeToAVertexThatWentIsPendantAtTheOtherEnd) {
  const sg_ptr sg = path_record();
  sg_add_link(sg.get(), parent_entry(3, 0, 1, {1, -1, 0}));
  EXPECT_EQ(sg_link_edge(sg.get(), sg_link_at(sg.get(), 0)),
            pendant_extension(3, 1, 8, 6));
  // The same when the smaller end is the one that went.
  const sg_ptr turned =
      record_of(make_graph({6, 5, 7}, {{0, 1, 8}, {1, 2, 9}}));
  turned->links = sg_links_create(3);
  sg_add_link(turned.get(), parent_entry(3, 0, 1, {-1, 1, 0}));
  EXPECT_EQ(sg_link_edge(turned.get(), sg_link_at(turned.get(), 0)),
            pendant_extension(3, 1, 8, 6));
}

TEST(Links, EdgeOnACycleIsClosingWithTheSmallerParentsVertexFirst) {
  const sg_ptr sg =
      record_of(make_graph({5, 6, 7}, {{0, 1, 8}, {0, 2, 9}, {1, 2, 4}}));
  sg->links = sg_links_create(3);
  sg_add_link(sg.get(), parent_entry(3, 0, 1, {2, 1, 0}));
  EXPECT_EQ(sg_link_edge(sg.get(), sg_link_at(sg.get(), 0)),
            closing_extension(3, 1, 2, 8));
}

} // namespace kestro
