#include "mining/embeddings.h"

#include <gtest/gtest.h>

#include "base/parallel.h"
#include "support/records.h"

namespace kestro {

using ints = std::vector<int>;

// A database of n transactions of one edge, and the budget for its rows while
// no pattern is alive.
static graph_list_ptr edges(int n) {
  graph_list_ptr list(graph_list_new());
  for (int i = 0; i < n; i++)
    graph_list_push(path_graph(2), list.get());
  return list;
}
static int bytes_of(int n) {
  return n * static_cast<int>(graph_size(2, 2)) / 4 + (16 << 20);
}

// Rows of a pattern are as long as its vertices times this.
static constexpr int vertex_bytes = 1;

TEST(EmbeddingBudget, IsAQuarterOfTheTransactionsAndSixteenMebibytes) {
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

TEST(EmbeddingBudget, EveryPatternAliveMakesRoom) {
  const graph_list_ptr database = edges(1);
  const sg_ptr sg = record_of(path_graph(2));
  const int most = bytes_of(1) / (2 * vertex_bytes);
  embedding_budget budget(database.get());
  budget.add_pattern();
  const int more = most + 896 / (2 * vertex_bytes);
  EXPECT_EQ(budget.take_rows(sg.get(), more + 1), nullptr);
  sg->rows = budget.take_rows(sg.get(), more);
  ASSERT_NE(sg->rows, nullptr);
  budget.give_back(sg.get());
  budget.remove_pattern();
  EXPECT_EQ(budget.take_rows(sg.get(), most + 1), nullptr);
  const ksstack_ptr rows(budget.take_rows(sg.get(), most));
  EXPECT_NE(rows, nullptr);
}

TEST(EmbeddingBudget, IsTwoSharesWhereOneIsMoreThanSixteenMebibytes) {
  const graph_list_ptr database = edges(8);
  const long long quarter = 2 * static_cast<long long>(graph_size(2, 2));
  constexpr long long sixteen = 16LL << 20;
  embedding_budget budget(database.get());
  EXPECT_EQ(budget.bytes(), quarter + sixteen);
  int patterns = 0;
  for (; quarter + 896LL * patterns <= sixteen; patterns++) {
    ASSERT_EQ(budget.bytes(), quarter + 896LL * patterns + sixteen);
    budget.add_pattern();
  }
  EXPECT_EQ(budget.bytes(), 2 * (quarter + 896LL * patterns));
  budget.add_pattern();
  EXPECT_EQ(budget.bytes(), 2 * (quarter + 896LL * (patterns + 1)));
}

TEST(EmbeddingBudget, RowsTakenDoNotChangeTheBudget) {
  const graph_list_ptr database = edges(1);
  const sg_ptr sg = record_of(path_graph(2));
  embedding_budget budget(database.get());
  const long long before = budget.bytes();
  const ksstack_ptr rows(budget.take_rows(sg.get(), 100));
  ASSERT_NE(rows, nullptr);
  EXPECT_EQ(budget.bytes(), before);
}

TEST(EmbeddingBudget, IsThereWithoutAnyTransactions) {
  const graph_list_ptr empty = edges(0);
  embedding_budget budget(empty.get());
  EXPECT_EQ(budget.bytes(), 16LL << 20);
  budget.add_pattern();
  EXPECT_EQ(budget.bytes(), (16LL << 20) + 896);
}

TEST(EmbeddingBudget, CopyHasABudgetOfItsOwn) {
  const graph_list_ptr database = edges(1);
  const sg_ptr sg = record_of(path_graph(2));
  const int most = bytes_of(1) / (2 * vertex_bytes);
  const embedding_budget budget(database.get());
  for (int i = 0; i < 2; i++) {
    embedding_budget copy(budget);
    EXPECT_EQ(copy.image_bytes(), 1);
    const ksstack_ptr rows(copy.take_rows(sg.get(), most));
    EXPECT_NE(rows, nullptr);
    EXPECT_EQ(copy.take_rows(sg.get(), 1), nullptr);
  }
}

TEST(EmbeddingBudget, ThreadsTogetherTakeNoMoreThanThereIs) {
  const graph_list_ptr database = edges(40);
  const sg_ptr sg = record_of(path_graph(2));
  // What is left has room for forty more.
  const int most = bytes_of(40) / (2 * vertex_bytes);
  embedding_budget budget(database.get());
  const ksstack_ptr others(budget.take_rows(sg.get(), most - 40));
  ASSERT_NE(others, nullptr);
  std::atomic<int> taken = 0;
  parallel_for(
      3, 80,
      [&](int, int) {
        const ksstack_ptr rows(budget.take_rows(sg.get(), 1));
        taken += rows != nullptr;
      },
      [](int) {});
  // A thread may be refused what another is about to put back, but only at the
  // end of the budget.
  EXPECT_LE(taken, 40);
  EXPECT_GE(taken, 40 - 3);
}

// A graph without edges.
static graph_ptr isolated(int vs) {
  return make_graph(ints(static_cast<size_t>(vs), 0), {});
}

// The bytes of an image where the largest transaction has that many vertices.
static int image_bytes(int vs) {
  const graph_list_ptr database =
      database_of(path_graph(2), isolated(vs), path_graph(3));
  const sg_ptr sg = record_of(path_graph(2));
  embedding_budget budget(database.get());
  const ksstack_ptr rows(budget.take_rows(sg.get(), 1));
  EXPECT_EQ(rows ? rows->element_size : 0, 2 * budget.image_bytes());
  return budget.image_bytes();
}

TEST(EmbeddingBudget, ImagesAreBytesUpTo256Vertices) {
  EXPECT_EQ(image_bytes(1), 1);
  EXPECT_EQ(image_bytes(255), 1);
  EXPECT_EQ(image_bytes(256), 1);
}

TEST(EmbeddingBudget, ImagesAreTwoBytesUpTo65536Vertices) {
  EXPECT_EQ(image_bytes(257), 2);
  EXPECT_EQ(image_bytes(65536), 2);
}

TEST(EmbeddingBudget, TransactionOfMoreVerticesLeavesNoRows) {
  EXPECT_EQ(image_bytes(65537), 0);
}

// A record of a path of three vertices with room for n rows of that type.
template <class Image> static sg_ptr path_with_rows(int n) {
  sg_ptr sg = record_of(path_graph(3));
  sg->rows = ksstack_new(n, 3 * static_cast<int>(sizeof(Image)));
  return sg;
}

template <class Image> static ints row_of(const sg_ptr &sg, int i) {
  const Image *row = sg_row<Image>(sg.get(), i);
  return ints(row, row + sg->g->vs);
}

TEST(SgRow, RowsOfBytesLieOneBehindTheOther) {
  const sg_ptr sg = path_with_rows<uint8_t>(2);
  EXPECT_TRUE(sg_has_byte_rows(sg.get()));
  sg_push_row(sg.get(), ints{1, 2, 3}.data());
  sg_push_row(sg.get(), ints{4, 0, 255}.data());
  EXPECT_EQ(sg->rows->count, 2);
  EXPECT_EQ(row_of<uint8_t>(sg, 0), (ints{1, 2, 3}));
  EXPECT_EQ(row_of<uint8_t>(sg, 1), (ints{4, 0, 255}));
}

TEST(SgRow, RowsOfTwoBytesLieOneBehindTheOther) {
  const sg_ptr sg = path_with_rows<uint16_t>(2);
  EXPECT_FALSE(sg_has_byte_rows(sg.get()));
  sg_push_row(sg.get(), ints{1, 2, 256}.data());
  sg_push_row(sg.get(), ints{4, 0, 65535}.data());
  EXPECT_EQ(sg->rows->count, 2);
  EXPECT_EQ(row_of<uint16_t>(sg, 0), (ints{1, 2, 256}));
  EXPECT_EQ(row_of<uint16_t>(sg, 1), (ints{4, 0, 65535}));
}

} // namespace kestro
