// The first two levels counted in dense tables and in sparse ones, whose choice
// depends on the numbers of labels alone.

#include "mining/first_levels.h"

#include <gtest/gtest.h>

#include "mining/label_table.h"
#include "mining/subgraph.h"
#include "support/mined_levels.h"
#include "support/random_database.h"
#include "support/records.h"

namespace kestro {
namespace {

constexpr int many_labels = 50000; // far too many for a dense table

void expect_equal(const sg_set *dense, const sg_set *sparse) {
  ASSERT_EQ(sg_set_size(dense), sg_set_size(sparse));
  for (int id = 0; id < sg_set_size(dense); id++) {
    const subgraph *a = sg_set_get(dense, id);
    const subgraph *b = sg_set_get(sparse, id);
    EXPECT_EQ(sg_compare(a, b), 0);
    EXPECT_EQ(a->count, b->count);
    EXPECT_EQ(ids_of(a->tid), ids_of(b->tid));
    ASSERT_EQ(sg_pid_size(a), sg_pid_size(b));
    for (int i = 0; i < sg_pid_size(a); i++)
      EXPECT_EQ(sg_pid_at(a, i), sg_pid_at(b, i));
  }
}

} // namespace

TEST(FirstLevelsProperty, SparseTablesGiveWhatDenseOnesGive) {
  ASSERT_FALSE(
      is_dense<edge_key>(many_labels, many_labels, dense_tables_limit));
  for (uint64_t seed = 1; seed <= 200; seed++) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    dice chance(seed);
    const numbered_database database = number(random_database(&chance, 12));
    const graph_list *transactions = database.transactions.get();
    const int nel = database.edge_labels;
    const int nvl = database.vertex_labels;
    ASSERT_TRUE(is_dense<path_key>(nel, nvl, dense_tables_limit));
    const int minsup = chance.between(1, 3);
    const sg_set_ptr edges(sg_frequent_edges(transactions, minsup, nel, nvl));
    const sg_set_ptr sparse_edges(
        sg_frequent_edges(transactions, minsup, many_labels, many_labels));
    expect_equal(edges.get(), sparse_edges.get());
    const sg_set_ptr paths(
        sg_frequent_double_edges(edges.get(), transactions, minsup, nel, nvl));
    const sg_set_ptr sparse_paths(sg_frequent_double_edges(
        sparse_edges.get(), transactions, minsup, many_labels, many_labels));
    expect_equal(paths.get(), sparse_paths.get());
  }
}

} // namespace kestro
