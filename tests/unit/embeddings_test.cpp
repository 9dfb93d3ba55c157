#include "mining/embeddings.h"

#include <gtest/gtest.h>

#include "support/records.h"

namespace kestro {

using ints = std::vector<int>;
using row = std::vector<row_vertex>;

static constexpr row_vertex none = UINT16_MAX;

// A database of n transactions of one edge, and its size.
static graph_list_ptr edges(int n) {
  graph_list_ptr list(graph_list_new());
  for (int i = 0; i < n; i++)
    graph_list_push(path_graph(2), list.get());
  return list;
}
static int bytes_of(int n) { return n * static_cast<int>(graph_size(2, 2)); }

// Rows of a pattern are as long as its vertices times this.
static constexpr int vertex_bytes = 2;

TEST(EmbeddingBudget, IsTheMemoryOfTheTransactions) {
  const graph_list_ptr database = edges(3);
  const sg_ptr sg = record_of(path_graph(2));
  const int most = bytes_of(3) / (2 * vertex_bytes);
  embedding_budget budget(database.get());
  EXPECT_EQ(budget.take_rows(sg.get(), most + 1), nullptr);
  const ksstack_ptr rows(budget.take_rows(sg.get(), most));
  ASSERT_NE(rows, nullptr);
  EXPECT_EQ(rows->count, 0);
  EXPECT_EQ(rows->element_size, 2 * vertex_bytes);
  EXPECT_GE(rows->capacity, most);
}

TEST(EmbeddingBudget, WhatIsTakenIsGone) {
  const graph_list_ptr database = edges(1);
  const sg_ptr sg = record_of(path_graph(2));
  const int most = bytes_of(1) / (2 * vertex_bytes);
  embedding_budget budget(database.get());
  const ksstack_ptr first(budget.take_rows(sg.get(), most - 3));
  EXPECT_NE(first, nullptr);
  EXPECT_EQ(budget.take_rows(sg.get(), 4), nullptr);
  const ksstack_ptr second(budget.take_rows(sg.get(), 3));
  EXPECT_NE(second, nullptr);
  EXPECT_EQ(budget.take_rows(sg.get(), 1), nullptr);
}

TEST(EmbeddingBudget, LongerRowsTakeMore) {
  const graph_list_ptr database = edges(4);
  const sg_ptr sg = record_of(ring_graph(7));
  const int most = bytes_of(4) / (7 * vertex_bytes);
  embedding_budget budget(database.get());
  EXPECT_EQ(budget.take_rows(sg.get(), most + 1), nullptr);
  const ksstack_ptr rows(budget.take_rows(sg.get(), most));
  ASSERT_NE(rows, nullptr);
  EXPECT_EQ(rows->element_size, 7 * vertex_bytes);
}

TEST(EmbeddingBudget, NoRowsForNoTransactions) {
  const graph_list_ptr database = edges(1);
  const sg_ptr sg = record_of(path_graph(2));
  EXPECT_EQ(embedding_budget(database.get()).take_rows(sg.get(), 0), nullptr);
  const graph_list_ptr empty = edges(0);
  EXPECT_EQ(embedding_budget(empty.get()).take_rows(sg.get(), 1), nullptr);
}

TEST(EmbeddingBudget, RowsGivenBackCanBeTakenAgain) {
  const graph_list_ptr database = edges(1);
  const sg_ptr sg = record_of(path_graph(2));
  const int most = bytes_of(1) / (2 * vertex_bytes);
  embedding_budget budget(database.get());
  sg->rows = budget.take_rows(sg.get(), most);
  const sg_ptr other = record_of(path_graph(2));
  EXPECT_EQ(budget.take_rows(other.get(), 1), nullptr);
  budget.give_back(other.get()); // has none
  EXPECT_EQ(budget.take_rows(other.get(), 1), nullptr);
  budget.give_back(sg.get());
  other->rows = budget.take_rows(other.get(), most);
  EXPECT_NE(other->rows, nullptr);
}

TEST(EmbeddingBudget, RowsThatAreThereAreCharged) {
  const graph_list_ptr database = edges(1);
  const sg_ptr sg = record_of(path_graph(2));
  const int most = bytes_of(1) / (2 * vertex_bytes);
  sg->rows = ksstack_new(most - 1, 2 * vertex_bytes);
  embedding_budget budget(database.get());
  budget.charge(sg.get());
  EXPECT_EQ(budget.take_rows(sg.get(), 2), nullptr);
  const ksstack_ptr rows(budget.take_rows(sg.get(), 1));
  EXPECT_NE(rows, nullptr);
  budget.charge(sg.get()); // more than is left
  EXPECT_EQ(budget.take_rows(sg.get(), 1), nullptr);
}

TEST(EmbeddingBudget, NothingIsChargedForARecordWithoutRows) {
  const graph_list_ptr database = edges(1);
  const sg_ptr sg = record_of(path_graph(2));
  embedding_budget budget(database.get());
  budget.charge(sg.get());
  const ksstack_ptr rows(
      budget.take_rows(sg.get(), bytes_of(1) / (2 * vertex_bytes)));
  EXPECT_NE(rows, nullptr);
}

// A graph without edges.
static graph_ptr isolated(int vs) {
  return make_graph(ints(static_cast<size_t>(vs), 0), {});
}

TEST(EmbeddingBudget, TransactionOfTooManyVerticesLeavesNoRows) {
  const sg_ptr sg = record_of(path_graph(2));
  const graph_list_ptr fitting = database_of(path_graph(2), isolated(65535));
  const ksstack_ptr rows(
      embedding_budget(fitting.get()).take_rows(sg.get(), 1));
  EXPECT_NE(rows, nullptr);
  const graph_list_ptr large = database_of(path_graph(2), isolated(65536));
  EXPECT_EQ(embedding_budget(large.get()).take_rows(sg.get(), 1), nullptr);
}

TEST(SgRow, RowsLieOneBehindTheOther) {
  const sg_ptr sg = record_of(path_graph(3));
  sg->rows = ksstack_new(2, 3 * vertex_bytes);
  for (const row &r : {row{1, 2, 3}, row{4, 5, 65534}})
    ksstack_push(r.data(), sg->rows);
  EXPECT_EQ(row(sg_row(sg.get(), 0), sg_row(sg.get(), 0) + 3), (row{1, 2, 3}));
  EXPECT_EQ(row(sg_row(sg.get(), 1), sg_row(sg.get(), 1) + 3),
            (row{4, 5, 65534}));
}

// The row of pattern g in t by its entry from a parent's row; empty when the
// edge finds no place.
static row extended(const graph_ptr &g, const parent_entry &entry,
                    const row &parent_row, const graph_ptr &t) {
  const sg_ptr sg = record_of(g);
  row r(static_cast<size_t>(g->vs));
  if (!extend_row(sg.get(), entry, parent_row.data(), t.get(), r.data()))
    return {};
  return r;
}

// The path 1 - 0 - 2 and its parent entry: the edge 0-1, vertex 2 is new.
static graph_ptr path(int vlabel, int elabel) {
  return make_graph({0, 0, vlabel}, {{0, 1}, {0, 2, elabel}});
}
static parent_entry new_end() { return parent_entry(0, 0, 2, {0, 1, -1}); }

TEST(ExtendRow, NewVertexIsTheFirstFreeNeighbour) {
  const graph_ptr t = star_graph(4); // hub 0
  EXPECT_EQ(extended(path(0, 0), new_end(), {0, 1}, t), (row{0, 1, 2}));
  EXPECT_EQ(extended(path(0, 0), new_end(), {0, 3}, t), (row{0, 3, 1}));
}

TEST(ExtendRow, NewVertexMustBeFree) {
  EXPECT_EQ(extended(path(0, 0), new_end(), {1, 0}, star_graph(4)), row());
}

TEST(ExtendRow, NewVertexMustHaveItsLabels) {
  const graph_ptr t =
      make_graph({0, 0, 5, 0, 5}, {{0, 1}, {0, 2, 1}, {0, 3, 7}, {0, 4, 7}});
  EXPECT_EQ(extended(path(5, 1), new_end(), {0, 1}, t), (row{0, 1, 2}));
  EXPECT_EQ(extended(path(0, 7), new_end(), {0, 1}, t), (row{0, 1, 3}));
  EXPECT_EQ(extended(path(5, 7), new_end(), {0, 1}, t), (row{0, 1, 4}));
  EXPECT_EQ(extended(path(6, 7), new_end(), {0, 1}, t), row());
  EXPECT_EQ(extended(path(0, 1), new_end(), {0, 1}, t), row());
}

TEST(ExtendRow, NewVertexCanBeTheSmallerEnd) {
  // The edge 0-1 of a path 0 - 1 - 2 is lacking; 1 and 2 are the parent's 1, 0.
  const parent_entry entry(0, 0, 1, {-1, 1, 0});
  EXPECT_EQ(extended(path_graph(3), entry, {2, 0}, star_graph(4)),
            (row{1, 0, 2}));
  EXPECT_EQ(extended(path_graph(3), entry, {0, 2}, star_graph(4)), row());
}

TEST(ExtendRow, EdgeBetweenPlacedVerticesMustBeThereWithItsLabel) {
  // A triangle whose edge 1-2 is lacking in the parent 1 - 0 - 2.
  const graph_ptr g = make_graph({0, 0, 0}, {{0, 1}, {0, 2}, {1, 2, 3}});
  const parent_entry entry(0, 1, 2, {0, 1, 2});
  const graph_ptr t =
      make_graph({0, 0, 0, 0}, {{3, 0}, {3, 1}, {3, 2}, {0, 2, 3}, {0, 1}});
  EXPECT_EQ(extended(g, entry, {3, 0, 2}, t), (row{3, 0, 2}));
  EXPECT_EQ(extended(g, entry, {3, 2, 0}, t), (row{3, 2, 0}));
  EXPECT_EQ(extended(g, entry, {3, 0, 1}, t), row()); // another label
  EXPECT_EQ(extended(g, entry, {3, 1, 2}, t), row()); // no edge
}

TEST(ExtendRow, MapTellsWhichParentVertexIsWhich) {
  const graph_ptr g = make_graph({0, 0, 0}, {{0, 1}, {0, 2}, {1, 2}});
  const parent_entry entry(0, 0, 2, {2, 0, 1});
  EXPECT_EQ(extended(g, entry, {5, 6, 4},
                     make_graph(ints(7, 0), {{4, 5}, {5, 6}, {4, 6}})),
            (row{4, 5, 6}));
}

TEST(ExtendRow, LastVertexThatFitsARowCanBePlaced) {
  graph_ptr t = make_graph(ints(65535, 0), {{0, 1}, {0, 65534}});
  EXPECT_EQ(extended(path(0, 0), new_end(), {0, 1}, t), (row{0, 1, 65534}));
  EXPECT_NE(65534, none);
}

} // namespace kestro
