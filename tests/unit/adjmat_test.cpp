#include "reference/cl/adjmat.h"

#include <gtest/gtest.h>

#include "base/xmalloc.h"
#include "support/graphs.h"

namespace kestro {

static adjmat_ptr filled(const graph *g) {
  adjmat_ptr m(cl_new_adjmat(g->vs));
  cl_graph_to_adjmat(g, m.get());
  return m;
}

// Refreshes iperm after a test has written perm.
static void invert_perm(adjmat *m) {
  for (int i = 0; i < m->vs; i++)
    m->iperm[m->perm[i]] = i;
}

static bool inside(const void *address, const adjmat *m) {
  const char *begin = reinterpret_cast<const char *>(m);
  const char *at = static_cast<const char *>(address);
  return begin <= at && at < begin + m->size;
}

TEST(Adjmat, NewStandsInOnePartAtOwnPositions) {
  const adjmat_ptr m(cl_new_adjmat(3));
  EXPECT_EQ(m->size, cl_adjmat_size(3));
  EXPECT_EQ(m->vs, 3);
  EXPECT_EQ(m->parts, 1);
  EXPECT_EQ(m->part[0], 0);
  EXPECT_EQ(m->part[1], 3);
  for (int i = 0; i < 3; i++) {
    EXPECT_EQ(m->perm[i], i);
    EXPECT_EQ(m->iperm[i], i);
    EXPECT_EQ(m->vertex[i].row, i);
    EXPECT_EQ(m->sorted[i], &m->vertex[i]);
    EXPECT_EQ(m->rows[i], m->cells + 3 * i);
    EXPECT_EQ(m->vertex[i].adj, m->vertex[0].adj + 3 * i);
  }
}

TEST(Adjmat, ArraysDoNotOverlapAndEndWithTheBlock) {
  for (int n = 1; n < 6; n++) {
    const adjmat_ptr m(cl_new_adjmat(n));
    const auto address = [](const void *p) {
      return reinterpret_cast<uintptr_t>(p);
    };
    const std::vector<std::pair<uintptr_t, uintptr_t>> arrays = {
        {address(m.get()), address(m.get() + 1)},
        {address(m->vertex), address(m->vertex + n)},
        {address(m->sorted), address(m->sorted + n)},
        {address(m->cells), address(m->cells + n * n)},
        {address(m->rows), address(m->rows + n)},
        {address(m->part), address(m->part + n + 1)},
        {address(m->new_part_start), address(m->new_part_start + n + 1)},
        {address(m->start_perm), address(m->start_perm + n)},
        {address(m->perm), address(m->perm + n)},
        {address(m->iperm), address(m->iperm + n)},
        {address(m->vertex[0].adj), address(m->vertex[0].adj + n * n)},
        {address(m->vertex_scratch), address(m->vertex_scratch + n)},
        {address(m->edge_scratch), address(m->edge_scratch + n)}};
    for (size_t i = 1; i < arrays.size(); i++)
      EXPECT_LE(arrays[i - 1].second, arrays[i].first) << n << " " << i;
    EXPECT_EQ(arrays.back().second, address(m.get()) + m->size);
  }
}

TEST(Adjmat, InitLaysOutInCallerMemory) {
  const xptr<adjmat> memory(static_cast<adjmat *>(xmalloc(cl_adjmat_size(2))));
  cl_init_adjmat(memory.get(), 2);
  const graph_ptr g = make_graph({4, 5}, {{0, 1, 6}});
  cl_graph_to_adjmat(g.get(), memory.get());
  EXPECT_EQ(memory->rows[1][0], 7);
  EXPECT_EQ(memory->vertex[1].label, 5);
}

TEST(Adjmat, GraphFillsCellsVerticesAndLists) {
  const graph_ptr g = make_graph({5, 7, 6}, {{0, 1, 2}, {1, 2, 12}});
  g->vid[2] = 40;
  const adjmat_ptr m = filled(g.get());
  const std::vector<int> cells(m->cells, m->cells + 9);
  EXPECT_EQ(cells, (std::vector<int>{0, 3, 0, 3, 0, 13, 0, 13, 0}));
  EXPECT_EQ(m->vertex[2].id, 40);
  EXPECT_EQ(m->vertex[2].degree, 1);
  EXPECT_EQ(m->vertex[2].label, 6);
  EXPECT_EQ(m->vertex[2].part, 0);
  EXPECT_EQ(m->vertex[1].degree, 2);
  EXPECT_EQ(m->vertex[1].adj[0].label, 3);
  EXPECT_EQ(m->vertex[1].adj[0].v, &m->vertex[0]);
  EXPECT_EQ(m->vertex[1].adj[1].label, 13);
  EXPECT_EQ(m->vertex[1].adj[1].v, &m->vertex[2]);
  EXPECT_EQ(cl_count_edges(m.get()), 4);
}

TEST(Adjmat, FillingAgainForgetsTheFormerGraph) {
  const adjmat_ptr m = filled(complete_graph(4).get());
  m->perm[0] = m->iperm[0] = 3;
  const graph_ptr path = path_graph(4);
  cl_graph_to_adjmat(path.get(), m.get());
  EXPECT_EQ(cl_count_edges(m.get()), 6);
  EXPECT_EQ(m->perm[0], 0);
  EXPECT_EQ(m->iperm[0], 0);
}

TEST(Adjmat, OneVertexGraphGoesAndReturns) {
  const graph_ptr g = make_graph({3}, {});
  const adjmat_ptr m = filled(g.get());
  EXPECT_EQ(m->parts, 1);
  EXPECT_EQ(m->part[0], 0);
  EXPECT_EQ(m->part[1], 1);
  EXPECT_EQ(m->cells[0], 0);
  g->v[0] = g->v[1] = g->vlabel[0] = 9;
  cl_adjmat_to_graph(m.get(), g.get());
  EXPECT_EQ(g->v[0], 0);
  EXPECT_EQ(g->v[1], 0);
  EXPECT_EQ(g->vlabel[0], 3);
}

TEST(Adjmat, ReturnsTheGraphInOrderOfPositions) {
  test_rng rng(1);
  for (int round = 0; round < 50; round++) {
    const graph_ptr g = random_graph(rng, {.vs = 6, .extra_edges = 5});
    const std::vector<int> to = random_permutation(rng, 6);
    const graph_ptr expected = relabelled(g.get(), to);
    const adjmat_ptr m = filled(g.get());
    for (int i = 0; i < 6; i++)
      m->perm[to[static_cast<size_t>(i)]] = i;
    invert_perm(m.get());
    cl_adjmat_to_graph(m.get(), g.get());
    EXPECT_TRUE(same_structure(g.get(), expected.get())) << round;
    EXPECT_TRUE(std::equal(g->vid, g->vid + 6, expected->vid)) << round;
  }
}

TEST(AdjmatDeathTest, WritingBackNeedsEqualSizes) {
  const adjmat_ptr m = filled(path_graph(3).get());
  const graph_ptr more_edges = ring_graph(3);
  EXPECT_DEATH(cl_adjmat_to_graph(m.get(), more_edges.get()),
               "es == g->es && m->vs == g->vs");
  const graph_ptr more_vertices = make_graph({0, 0, 0, 0}, {{0, 1}, {1, 2}});
  EXPECT_DEATH(cl_adjmat_to_graph(m.get(), more_vertices.get()),
               "es == g->es && m->vs == g->vs");
}

TEST(Adjmat, CopyPointsOnlyIntoItself) {
  const graph_ptr g = complete_graph(4);
  const adjmat_ptr m = filled(g.get());
  std::swap(m->sorted[0], m->sorted[3]);
  const adjmat_ptr copy(cl_dup_adjmat(m.get()));
  for (int i = 0; i < 4; i++) {
    EXPECT_TRUE(inside(copy->sorted[i], copy.get()));
    EXPECT_EQ(copy->sorted[i]->row, m->sorted[i]->row);
    EXPECT_TRUE(inside(copy->vertex[i].adj, copy.get()));
    for (int k = 0; k < 3; k++) {
      EXPECT_TRUE(inside(copy->vertex[i].adj[k].v, copy.get()));
      EXPECT_EQ(copy->vertex[i].adj[k].v->row, m->vertex[i].adj[k].v->row);
      EXPECT_EQ(copy->vertex[i].adj[k].label, m->vertex[i].adj[k].label);
    }
  }
}

TEST(Adjmat, CopyTakesEveryField) {
  const graph_ptr g = make_graph({5, 7, 6}, {{0, 1, 2}, {1, 2, 12}});
  const adjmat_ptr m = filled(g.get());
  m->parts = 2;
  m->new_parts = 3;
  for (int i = 0; i < 3; i++) {
    m->perm[i] = (i + 1) % 3;
    m->start_perm[i] = 2 - i;
    m->vertex[i].part = 10 + i;
    m->vertex[i].new_part = 20 + i;
  }
  invert_perm(m.get());
  for (int i = 0; i <= 3; i++) {
    m->part[i] = 30 + i;
    m->new_part_start[i] = 40 + i;
  }
  const adjmat_ptr copy(cl_new_adjmat(3));
  cl_copy_adjmat2(m.get(), copy.get());
  EXPECT_EQ(copy->parts, 2);
  EXPECT_EQ(copy->new_parts, 3);
  EXPECT_TRUE(std::equal(m->perm, m->perm + 3, copy->perm));
  EXPECT_TRUE(std::equal(m->iperm, m->iperm + 3, copy->iperm));
  EXPECT_TRUE(std::equal(m->start_perm, m->start_perm + 3, copy->start_perm));
  EXPECT_TRUE(std::equal(m->cells, m->cells + 9, copy->cells));
  EXPECT_TRUE(std::equal(m->part, m->part + 4, copy->part));
  EXPECT_EQ(copy->new_part_start[3], 43);
  EXPECT_EQ(copy->vertex[2].id, 2);
  EXPECT_EQ(copy->vertex[2].label, 6);
  EXPECT_EQ(copy->vertex[2].degree, 1);
  EXPECT_EQ(copy->vertex[2].part, 12);
  EXPECT_EQ(copy->vertex[2].new_part, 22);
}

TEST(Adjmat, CopyKeepsNullNeighbours) {
  const adjmat_ptr m = filled(path_graph(2).get());
  m->vertex[0].adj[0].v = nullptr;
  const adjmat_ptr copy(cl_dup_adjmat(m.get()));
  EXPECT_EQ(copy->vertex[0].adj[0].v, nullptr);
  EXPECT_EQ(copy->vertex[1].adj[0].v, &copy->vertex[0]);
}

TEST(Adjmat, RoomForMoreVerticesServesFewer) {
  const adjmat_ptr m(cl_new_adjmat(7));
  cl_reset_adjmat(m.get(), 3);
  const graph_ptr g = ring_graph(3);
  cl_graph_to_adjmat(g.get(), m.get());
  EXPECT_EQ(m->size, cl_adjmat_size(7));
  EXPECT_EQ(m->part[1], 3);
  EXPECT_EQ(m->rows[1], m->cells + 3);
  EXPECT_EQ(m->vertex[1].adj, m->vertex[0].adj + 7);
  const adjmat_ptr copy(cl_dup_adjmat(m.get()));
  EXPECT_EQ(copy->size, m->size);
  const graph_ptr back = path_graph(3);
  const graph_ptr ring(graph_create(6, 3));
  cl_adjmat_to_graph(copy.get(), ring.get());
  EXPECT_TRUE(same_structure(ring.get(), g.get()));
}

TEST(Adjmat, PermAloneIsCopied) {
  const adjmat_ptr a(cl_new_adjmat(3));
  const adjmat_ptr b(cl_new_adjmat(3));
  a->parts = 2;
  cl_swap_positions(a.get(), 0, 2);
  copy_adjmat_perm(a.get(), b.get());
  EXPECT_EQ(b->perm[0], 2);
  EXPECT_EQ(b->iperm[2], 0);
  EXPECT_EQ(b->parts, 1);
}

TEST(Adjmat, PartitioningIsCopiedButForThePartCount) {
  const adjmat_ptr a = filled(path_graph(3).get());
  const adjmat_ptr b = filled(path_graph(3).get());
  a->parts = 2;
  a->part[1] = 1;
  a->part[2] = a->part[3] = 3;
  a->vertex[0].part = a->vertex[2].part = 1;
  copy_adjmat_partitioning(a.get(), b.get());
  EXPECT_EQ(b->parts, 1);
  EXPECT_EQ(b->part[1], 1);
  EXPECT_EQ(b->part[3], 3);
  EXPECT_EQ(b->vertex[0].part, 1);
  EXPECT_EQ(b->vertex[1].part, 0);
}

TEST(AdjmatDeathTest, CopiesNeedEqualSizes) {
  const adjmat_ptr a(cl_new_adjmat(2));
  const adjmat_ptr b(cl_new_adjmat(3));
  EXPECT_DEATH(cl_copy_adjmat2(a.get(), b.get()), "dst->vs == src->vs");
  EXPECT_DEATH(copy_adjmat_perm(a.get(), b.get()), "src->vs == dst->vs");
  EXPECT_DEATH(copy_adjmat_partitioning(a.get(), b.get()),
               "src->vs == dst->vs");
}

TEST(Adjmat, SwapExchangesTheSameEntriesOfBothArrays) {
  const adjmat_ptr m(cl_new_adjmat(4));
  const std::vector<int> perm = {1, 2, 3, 0};
  std::copy(perm.begin(), perm.end(), m->perm);
  invert_perm(m.get()); // 3 0 1 2
  cl_swap_positions(m.get(), 0, 1);
  EXPECT_EQ(std::vector<int>(m->perm, m->perm + 4),
            (std::vector<int>{2, 1, 3, 0}));
  EXPECT_EQ(std::vector<int>(m->iperm, m->iperm + 4),
            (std::vector<int>{0, 3, 1, 2}));
}

} // namespace kestro
