#include "mining/edge_slots.h"

#include <algorithm>
#include <vector>

#include <gtest/gtest.h>

#include "support/graphs.h"
#include "support/records.h"

namespace kestro {

using ints = std::vector<int>;

// The ends of u's slots in transaction tid.
static ints ends_of(const edge_slots &slots, int tid, int u) {
  ints ends;
  const edge_slots::range found = slots.of(tid, u);
  for (const uint32_t *slot = found.first; slot < found.last; slot++)
    ends.push_back(edge_slots::end_of(*slot));
  return ends;
}

TEST(EdgeSlots, LieAtBothEndsInOrder) {
  const graph_list_ptr database =
      database_of(star_graph(4), make_graph({0}, {}), ring_graph(3));
  const edge_slots slots(database.get());
  EXPECT_EQ(ends_of(slots, 0, 0), (ints{1, 2, 3}));
  EXPECT_EQ(ends_of(slots, 0, 3), (ints{0}));
  EXPECT_EQ(ends_of(slots, 1, 0), ints());
  EXPECT_EQ(ends_of(slots, 2, 1), (ints{0, 2}));
}

TEST(EdgeSlots, AKindIsTheEdgesLabelAndTheEnds) {
  const graph_list_ptr database =
      database_of(make_graph({5, 7, 5}, {{0, 1, 2}, {1, 2, 3}}));
  const edge_slots slots(database.get());
  const auto kind = [&](int u, ptrdiff_t i) {
    return edge_slots::kind_in(slots.of(0, u).first[i]);
  };
  EXPECT_EQ(kind(0, 0), slots.kind_of(2, 7));
  EXPECT_EQ(kind(1, 0), slots.kind_of(2, 5));
  EXPECT_EQ(kind(1, 1), slots.kind_of(3, 5));
  EXPECT_EQ(kind(2, 0), slots.kind_of(3, 7));
  EXPECT_EQ(slots.kind_of(2, 2), -1);
  EXPECT_EQ(slots.kind_of(5, 7), -1);
}

// With more kinds than there are numbers, the last ones share one, and the
// transaction tells them apart.
TEST(EdgeSlots, KindsWithoutANumberOfTheirOwnShareOne) {
  const int leaves = edge_slots::other_kinds + 3;
  std::vector<test_edge> edges;
  graph_list_ptr database(graph_list_new());
  for (int first = 0; first < leaves; first += 1000) {
    ints labels = {0};
    edges.clear();
    for (int leaf = first; leaf < std::min(leaves, first + 1000); leaf++) {
      edges.push_back({0, static_cast<int>(labels.size())});
      labels.push_back(leaf);
    }
    graph_list_push(make_graph(labels, edges), database.get());
  }
  const edge_slots slots(database.get());
  EXPECT_EQ(slots.kind_of(0, 0), 0);
  EXPECT_EQ(slots.kind_of(0, edge_slots::other_kinds - 1),
            edge_slots::other_kinds - 1);
  for (int i = 0; i < 3; i++)
    EXPECT_EQ(slots.kind_of(0, edge_slots::other_kinds + i),
              edge_slots::other_kinds);
  const int tid = edge_slots::other_kinds / 1000;
  const int at = edge_slots::other_kinds % 1000; // the first of these slots
  EXPECT_TRUE(slots.is_of_kind(tid, 0, at + 1, 0, edge_slots::other_kinds + 1));
  EXPECT_FALSE(slots.is_of_kind(tid, 0, at + 1, 0, edge_slots::other_kinds));
  EXPECT_FALSE(
      slots.is_of_kind(tid, 0, at + 1, 1, edge_slots::other_kinds + 1));
}

TEST(EdgeSlots, AreNoneWhereATransactionIsTooLarge) {
  const graph_list_ptr database = database_of(
      make_graph({0, 0}, {{0, 1}}),
      make_graph(ints(static_cast<size_t>(edge_slots::max_vertices) + 1, 0),
                 {{0, 1}}));
  EXPECT_EQ(edge_slots(database.get()).kind_of(0, 0), -1);
}

} // namespace kestro
