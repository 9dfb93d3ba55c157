#include "mining/first_levels.h"

#include <set>

#include <gtest/gtest.h>

#include "mining/embeddings.h"
#include "mining/parents.h"
#include "reference/mining/sg_set.h"
#include "reference/mining/subgraph.h"
#include "support/records.h"

namespace kestro {

using ints = std::vector<int>;

// The record of a level with the graph of another record, or null.
static const subgraph *found(const sg_set_ptr &level, const sg_ptr &sg) {
  return sg_set_find_record(level.get(), sg.get());
}
static const subgraph *edge_in(const sg_set_ptr &level, int la, int lb, int e) {
  return found(level, sg_ptr(sg_create_edge(la, lb, e)));
}
static const subgraph *path_in(const sg_set_ptr &level, int ea, int eb, int va,
                               int vb, int vc) {
  return found(level, sg_ptr(sg_create_double_edge(ea, eb, va, vb, vc)));
}

static sg_set_ptr edges(const graph_list_ptr &database, int minsup) {
  return sg_set_ptr(sg_frequent_edges(database.get(), minsup, 3, 4));
}
static sg_set_ptr double_edges(const sg_set_ptr &level1,
                               const graph_list_ptr &database, int minsup) {
  sg_set_ptr level2(
      sg_frequent_double_edges(level1.get(), database.get(), minsup, 3, 4));
  sg_register_children(level2.get(), level1.get());
  return level2;
}

TEST(FirstLevels, EdgeRecordHasTheFixedLayout) {
  for (const auto &[la, lb] : {std::pair{1, 3}, std::pair{3, 1}}) {
    const sg_ptr sg(sg_create_edge(la, lb, 2));
    EXPECT_TRUE(same_structure(sg->g, make_graph({1, 3}, {{0, 1, 2}}).get()));
    EXPECT_EQ(sg->g->key, graph_key(sg->g));
    EXPECT_EQ(ints(sg->g->vid, sg->g->vid + 2), (ints{0, 1}));
    EXPECT_EQ(sg->count, 0);
  }
}

TEST(FirstLevels, PathRecordHasTheCentreFirstAndTheSmallerEndNext) {
  const graph_ptr expected = make_graph({0, 1, 3}, {{0, 1, 2}, {0, 2, 1}});
  const sg_ptr sg(sg_create_double_edge(2, 1, 1, 3, 0));
  EXPECT_TRUE(same_structure(sg->g, expected.get()));
  EXPECT_EQ(ints(sg->g->elabel, sg->g->elabel + 4), (ints{2, 1, 2, 1}));
  EXPECT_EQ(sg->g->key, graph_key(sg->g));
  EXPECT_EQ(ints(sg->g->vid, sg->g->vid + 3), (ints{0, 1, 2}));
  const sg_ptr turned(sg_create_double_edge(1, 2, 3, 1, 0));
  EXPECT_TRUE(same_structure(turned->g, expected.get()));
}

TEST(FirstLevels, PathOfEqualEndsHasTheSmallerEdgeLabelFirst) {
  const sg_ptr sg(sg_create_double_edge(2, 1, 3, 3, 0));
  EXPECT_TRUE(same_structure(
      sg->g, make_graph({0, 3, 3}, {{0, 1, 1}, {0, 2, 2}}).get()));
}

TEST(FirstLevels, LayoutsAreTheCanonicalForms) {
  for (int code = 0; code < 3 * 3 * 3 * 2 * 2; code++) {
    const int va = code % 3;
    const int vb = code / 3 % 3;
    const int vc = code / 9 % 3;
    const int ea = code / 27 % 2;
    const int eb = code / 54;
    const sg_ptr path(sg_create_double_edge(ea, eb, va, vb, vc));
    EXPECT_EQ(sg_compare(path.get(),
                         canonical_record(
                             make_graph({va, vc, vb}, {{0, 1, ea}, {1, 2, eb}}))
                             .get()),
              0)
        << code;
    const sg_ptr edge(sg_create_edge(va, vb, ea));
    EXPECT_EQ(
        sg_compare(edge.get(),
                   canonical_record(make_graph({vb, va}, {{0, 1, ea}})).get()),
        0)
        << code;
  }
}

TEST(FirstLevels, EdgesCountTransactionsNotPlaces) {
  // Two edges 0-1 labelled 2 in the first transaction, none in the last.
  const graph_list_ptr database = database_of(
      make_graph({0, 1, 0}, {{0, 1, 2}, {1, 2, 2}}),
      make_graph({1, 0}, {{0, 1, 2}}), make_graph({0, 1}, {{0, 1, 1}}));
  const sg_set_ptr level1 = edges(database, 1);
  ASSERT_EQ(sg_set_size(level1.get()), 2);
  const subgraph *sg = edge_in(level1, 0, 1, 2);
  ASSERT_NE(sg, nullptr);
  EXPECT_EQ(sg->count, 2);
  EXPECT_EQ(ids_of(sg->tid), (ints{0, 1}));
  EXPECT_EQ(ids_of(edge_in(level1, 0, 1, 1)->tid), (ints{2}));
}

TEST(FirstLevels, EdgeBetweenEqualLabelsCountsOnce) {
  const sg_set_ptr level1 =
      edges(database_of(make_graph({3, 3}, {{0, 1, 0}})), 1);
  EXPECT_EQ(edge_in(level1, 3, 3, 0)->count, 1);
}

TEST(FirstLevels, InfrequentEdgesAreLeftOut) {
  const graph_list_ptr database =
      database_of(make_graph({0, 1, 2}, {{0, 1, 0}, {1, 2, 0}}),
                  make_graph({0, 1}, {{0, 1, 0}}));
  const sg_set_ptr level1 = edges(database, 2);
  ASSERT_EQ(sg_set_size(level1.get()), 1);
  EXPECT_NE(edge_in(level1, 0, 1, 0), nullptr);
}

TEST(FirstLevels, WithoutAFrequentEdgeTheLevelIsEmpty) {
  EXPECT_EQ(sg_set_size(edges(database_of(path_graph(2)), 2).get()), 0);
  EXPECT_EQ(sg_set_size(edges(database_of(), 1).get()), 0);
  EXPECT_EQ(sg_set_size(edges(database_of(make_graph({1}, {})), 1).get()), 0);
}

TEST(FirstLevels, LevelsAreSorted) {
  test_rng rng(1);
  const graph_list_ptr database =
      database_of(random_graph(rng, {9, 9, 4, 3, true}),
                  random_graph(rng, {9, 9, 4, 3, true}));
  const sg_set_ptr level1 = edges(database, 1);
  sg_set_check(level1.get());
  sg_set_check(double_edges(level1, database, 1).get());
}

TEST(FirstLevels, TriangleHasAPathPerCentre) {
  const graph_list_ptr database =
      database_of(make_graph({0, 1, 2}, {{0, 1}, {1, 2}, {0, 2}}));
  const sg_set_ptr level1 = edges(database, 1);
  const sg_set_ptr level2 = double_edges(level1, database, 1);
  ASSERT_EQ(sg_set_size(level2.get()), 3);
  EXPECT_NE(path_in(level2, 0, 0, 1, 2, 0), nullptr);
  EXPECT_NE(path_in(level2, 0, 0, 0, 2, 1), nullptr);
  EXPECT_NE(path_in(level2, 0, 0, 0, 1, 2), nullptr);
}

TEST(FirstLevels, WalkNeverReturnsAlongItsEdge) {
  const graph_list_ptr database = database_of(make_graph({0, 0}, {{0, 1}}));
  const sg_set_ptr level1 = edges(database, 1);
  EXPECT_EQ(sg_set_size(double_edges(level1, database, 1).get()), 0);
}

TEST(FirstLevels, PathOfEqualEndsAndTwoEdgeLabelsCountsOnce) {
  const graph_list_ptr database =
      database_of(make_graph({1, 0, 1}, {{0, 1, 2}, {1, 2, 1}}));
  const sg_set_ptr level1 = edges(database, 1);
  const sg_set_ptr level2 = double_edges(level1, database, 1);
  ASSERT_EQ(sg_set_size(level2.get()), 1);
  const subgraph *sg = sg_set_get(level2.get(), 0);
  EXPECT_TRUE(same_structure(
      sg->g, make_graph({0, 1, 1}, {{0, 1, 1}, {0, 2, 2}}).get()));
  EXPECT_EQ(sg->count, 1);
  EXPECT_EQ(ids_of(sg->tid), (ints{0}));
}

TEST(FirstLevels, PathsCountTransactionsAndKeepTheirTids) {
  const graph_list_ptr database =
      database_of(star_graph(5), path_graph(2), path_graph(3), star_graph(3));
  const sg_set_ptr level1 = edges(database, 2);
  const sg_set_ptr level2 = double_edges(level1, database, 2);
  ASSERT_EQ(sg_set_size(level2.get()), 1);
  EXPECT_EQ(sg_set_get(level2.get(), 0)->count, 3);
  EXPECT_EQ(ids_of(sg_set_get(level2.get(), 0)->tid), (ints{0, 2, 3}));
}

TEST(FirstLevels, TwoEqualEdgesHaveOneParent) {
  const graph_list_ptr database = database_of(path_graph(3));
  const sg_set_ptr level1 = edges(database, 1);
  const sg_set_ptr level2 = double_edges(level1, database, 1);
  const subgraph *sg = sg_set_get(level2.get(), 0);
  EXPECT_EQ(pids_of(sg), (ints{0}));
  ASSERT_EQ(sg_kept_size(sg), 1);
  const sg_parent *entry = sg_kept_at(sg, 0);
  EXPECT_EQ(entry->pid, 0);
  EXPECT_EQ(entry->u, 0);
  EXPECT_EQ(entry->v, 2);
  EXPECT_EQ(entry->vs, 3);
  // Labels alike: the centre is the parent's vertex 1.
  EXPECT_EQ(map_of(entry), (ints{1, 0, -1}));
}

TEST(FirstLevels, TwoDifferentEdgesHaveAParentEach) {
  // Centre 1 between 0 (edge 2) and 2 (edge 1).
  const graph_list_ptr database =
      database_of(make_graph({0, 1, 2}, {{0, 1, 2}, {1, 2, 1}}));
  const sg_set_ptr level1 = edges(database, 1);
  const sg_set_ptr level2 = double_edges(level1, database, 1);
  const subgraph *sg = sg_set_get(level2.get(), 0);
  const int first =
      sg_set_find(level1.get(), sg_ptr(sg_create_edge(0, 1, 2)).get());
  EXPECT_EQ(pids_of(sg), (ints{0, 1}));
  ASSERT_EQ(sg_kept_size(sg), 2);
  const sg_parent *to_0 = sg_find_kept(sg, first);
  EXPECT_EQ(to_0->u, 0);
  EXPECT_EQ(to_0->v, 2);
  EXPECT_EQ(map_of(to_0), (ints{1, 0, -1}));
  const sg_parent *to_2 = sg_find_kept(sg, 1 - first);
  EXPECT_EQ(to_2->u, 0);
  EXPECT_EQ(to_2->v, 1);
  EXPECT_EQ(map_of(to_2), (ints{0, -1, 1}));
}

TEST(FirstLevels, EdgeLabelsAloneMakeTwoParents) {
  const graph_list_ptr database =
      database_of(make_graph({0, 0, 0}, {{0, 1, 2}, {1, 2, 1}}));
  const sg_set_ptr level1 = edges(database, 1);
  const sg_set_ptr level2 = double_edges(level1, database, 1);
  EXPECT_EQ(sg_kept_size(sg_set_get(level2.get(), 0)), 2);
  EXPECT_EQ(sg_pid_size(sg_set_get(level2.get(), 0)), 2);
}

TEST(FirstLevels, PathsBecomeChildrenOfTheirParents) {
  const graph_list_ptr database =
      database_of(make_graph({0, 1, 0, 2}, {{0, 1}, {1, 2}, {2, 3}}));
  const sg_set_ptr level1 = edges(database, 1);
  const sg_set_ptr level2 = double_edges(level1, database, 1);
  const int twins = sg_set_find(
      level2.get(), sg_ptr(sg_create_double_edge(0, 0, 0, 0, 1)).get());
  ASSERT_EQ(sg_set_size(level2.get()), 2);
  EXPECT_EQ(ids_of(edge_in(level1, 0, 1, 0)->child), (ints{0, 1}));
  EXPECT_EQ(ids_of(edge_in(level1, 0, 2, 0)->child), (ints{1 - twins}));
}

TEST(FirstLevels, ParentMapsKeepLabels) {
  test_rng rng(3);
  const graph_list_ptr database =
      database_of(random_graph(rng, {10, 8, 4, 3, true}));
  const sg_set_ptr level1 = edges(database, 1);
  const sg_set_ptr level2 = double_edges(level1, database, 1);
  for (int id = 0; id < sg_set_size(level2.get()); id++) {
    const subgraph *sg = sg_set_get(level2.get(), id);
    for (int i = 0; i < sg_kept_size(sg); i++) {
      const sg_parent *entry = sg_kept_at(sg, i);
      const graph *parent = sg_set_get(level1.get(), entry->pid)->g;
      for (int u = 0; u < 3; u++)
        if (entry->image(u) != -1) {
          EXPECT_EQ(sg->g->vlabel[u], parent->vlabel[entry->image(u)]) << id;
        }
    }
  }
}

// Row i of a pattern, whatever the type of its images.
static ints row_of(const subgraph *sg, int i) {
  const auto copied = [sg](const auto *row) {
    return ints(row, row + sg->g->vs);
  };
  return sg_has_byte_rows(sg) ? copied(sg_row<uint8_t>(sg, i))
                              : copied(sg_row<uint16_t>(sg, i));
}

// Every row of a pattern must place it in its transaction.
static void expect_rows(const subgraph *sg, const graph_list_ptr &database) {
  ASSERT_EQ(sg->rows->count, sg_tid_size(sg));
  for (int i = 0; i < sg->rows->count; i++) {
    const ints row = row_of(sg, i);
    const graph *t = graph_list_at(database.get(), sg_tid_at(sg, i));
    EXPECT_TRUE(is_mapping(sg->g, t, row)) << i;
    EXPECT_EQ(std::set<int>(row.begin(), row.end()).size(), row.size()) << i;
  }
}

TEST(FirstLevels, RowsTellWhereThePathsAre) {
  // Labels 1 - 0 - 2, in the second transaction the other way round.
  const graph_list_ptr database =
      database_of(make_graph({1, 0, 2}, {{0, 1, 2}, {1, 2, 1}}), path_graph(3),
                  make_graph({2, 1, 0}, {{0, 2, 1}, {1, 2, 2}}));
  const sg_set_ptr level1 = edges(database, 1);
  const sg_set_ptr level2 = double_edges(level1, database, 1);
  const subgraph *sg = path_in(level2, 2, 1, 1, 2, 0);
  ASSERT_NE(sg, nullptr);
  ASSERT_EQ(ids_of(sg->tid), (ints{0, 2}));
  // Centre first, then the end labelled 1.
  EXPECT_EQ(row_of(sg, 0), (ints{1, 0, 2}));
  EXPECT_EQ(row_of(sg, 1), (ints{2, 1, 0}));
}

TEST(FirstLevels, OneEdgePatternsHaveNoRows) {
  const sg_set_ptr level1 = edges(database_of(path_graph(3)), 1);
  EXPECT_EQ(sg_set_get(level1.get(), 0)->rows, nullptr);
}

TEST(FirstLevels, PathsOfEqualEndsHaveRowsByEdgeLabel) {
  const graph_list_ptr database =
      database_of(make_graph({1, 0, 1}, {{0, 1, 2}, {1, 2, 1}}),
                  make_graph({1, 0, 1}, {{0, 1, 1}, {1, 2, 2}}));
  const sg_set_ptr level1 = edges(database, 1);
  const sg_set_ptr level2 = double_edges(level1, database, 1);
  const subgraph *sg = path_in(level2, 1, 2, 1, 1, 0);
  ASSERT_NE(sg, nullptr);
  EXPECT_EQ(row_of(sg, 0), (ints{1, 2, 0}));
  EXPECT_EQ(row_of(sg, 1), (ints{1, 0, 2}));
}

TEST(FirstLevels, LargeTransactionsHaveNoRows) {
  const graph_list_ptr database =
      database_of(path_graph(3), make_graph(ints(65537, 0), {{0, 1}, {1, 2}}));
  const sg_set_ptr level1 = edges(database, 2);
  const sg_set_ptr level2 = double_edges(level1, database, 2);
  ASSERT_EQ(sg_set_size(level2.get()), 1);
  EXPECT_EQ(sg_set_get(level2.get(), 0)->rows, nullptr);
  EXPECT_EQ(ids_of(sg_set_get(level2.get(), 0)->tid), (ints{0, 1}));
}

TEST(FirstLevels, ImagesOfRowsAreAsWideAsTheLargestTransactionAsks) {
  for (const int vs : {256, 257, 65536}) {
    ints vlabels(static_cast<size_t>(vs), 0);
    vlabels[static_cast<size_t>(vs) - 1] = 1;
    const graph_list_ptr database =
        database_of(make_graph(vlabels, {{0, vs - 2}, {vs - 2, vs - 1}}));
    const sg_set_ptr level1 = edges(database, 1);
    const sg_set_ptr level2 = double_edges(level1, database, 1);
    const subgraph *sg = path_in(level2, 0, 0, 0, 1, 0);
    ASSERT_NE(sg, nullptr);
    ASSERT_NE(sg->rows, nullptr);
    EXPECT_EQ(sg_has_byte_rows(sg), vs == 256);
    EXPECT_EQ(row_of(sg, 0), (ints{vs - 2, 0, vs - 1}));
  }
}

TEST(FirstLevels, RowsEndWithTheBudget) {
  // 40 leaves of labels of their own make 780 paths, whose rows in 4,200 stars,
  // of two bytes an image since one transaction is large, take more than 16
  // MiB, a quarter of the transactions and 896 bytes for each path.
  constexpr int stars = 4200;
  constexpr int paths = 40 * 39 / 2;
  std::vector<test_edge> edges;
  for (int i = 1; i <= 40; i++)
    edges.push_back({0, i});
  const graph_list_ptr database(graph_list_new());
  for (int i = 0; i < stars; i++)
    graph_list_push(make_graph(identity_of(41), edges), database.get());
  graph_list_push(make_graph(ints(257, 0), {}), database.get());
  const sg_set_ptr level1(sg_frequent_edges(database.get(), 1, 1, 41));
  const sg_set_ptr level2(
      sg_frequent_double_edges(level1.get(), database.get(), 1, 1, 41));
  ASSERT_EQ(sg_set_size(level2.get()), paths);
  int with_rows = 0;
  for (int id = 0; id < sg_set_size(level2.get()); id++) {
    const subgraph *sg = sg_set_get(level2.get(), id);
    EXPECT_EQ(ids_of(sg->tid), identity_of(stars));
    if (!sg->rows)
      continue;
    with_rows++;
    if (with_rows % 50 == 0)
      expect_rows(sg, database);
  }
  const long long budget = (stars * static_cast<long long>(graph_size(80, 41)) +
                            static_cast<long long>(graph_size(0, 257))) /
                               4 +
                           896LL * paths + (16 << 20);
  EXPECT_LE(6LL * stars * with_rows, budget);
  EXPECT_GT(6LL * stars * (with_rows + 1), budget);
  EXPECT_LT(with_rows, paths);
}

TEST(FirstLevels, LevelsAgainstAPlainCount) {
  for (unsigned seed = 0; seed < 20; seed++) {
    test_rng rng(seed);
    const graph_list_ptr database =
        database_of(random_graph(rng, {5, 3, 2, 2, true}),
                    random_graph(rng, {5, 3, 2, 2, true}),
                    random_graph(rng, {5, 3, 2, 2, true}));
    const sg_set_ptr level1 = edges(database, 2);
    const sg_set_ptr level2 = double_edges(level1, database, 2);
    for (const sg_set_ptr *level : {&level1, &level2})
      for (int id = 0; id < sg_set_size(level->get()); id++) {
        const subgraph *sg = sg_set_get(level->get(), id);
        ints tids;
        for (int tid = 0; tid < 3; tid++)
          if (!naive_maps(sg->g, graph_list_at(database.get(), tid)).empty())
            tids.push_back(tid);
        EXPECT_EQ(ids_of(sg->tid), tids) << "seed " << seed;
        EXPECT_EQ(sg->count, static_cast<int>(tids.size()));
        if (level == &level2)
          expect_rows(sg, database);
      }
  }
}

TEST(FirstLevels, BothLevelsAreInvariant) {
  test_rng rng(3);
  const graph_list_ptr database =
      database_of(random_graph(rng, {10, 8, 4, 3, true}));
  const sg_set_ptr level1 = edges(database, 1);
  const sg_set_ptr level2 = double_edges(level1, database, 1);
  for (const sg_set_ptr *level : {&level1, &level2})
    for (int id = 0; id < sg_set_size(level->get()); id++)
      EXPECT_TRUE(sg_set_get(level->get(), id)->invariant);
  EXPECT_EQ(sg_parent_size(sg_set_get(level1.get(), 0)), 0);
}

TEST(FirstLevels, EachEdgeOfAPathHasAnEntryEvenOfTwoEqualOnes) {
  const graph_list_ptr database = database_of(path_graph(3));
  const sg_set_ptr level1 = edges(database, 1);
  const sg_set_ptr level2 = double_edges(level1, database, 1);
  const subgraph *sg = sg_set_get(level2.get(), 0);
  ASSERT_EQ(sg_parent_size(sg), 2);
  const sg_parent *first = sg_parent_at(sg, 0);
  EXPECT_EQ((ints{first->pid, first->u, first->v}), (ints{0, 0, 1}));
  EXPECT_EQ(map_of(first), (ints{1, -1, 0}));
  const sg_parent *second = sg_parent_at(sg, 1);
  EXPECT_EQ((ints{second->pid, second->u, second->v}), (ints{0, 0, 2}));
  EXPECT_EQ(map_of(second), (ints{1, 0, -1}));
}

TEST(FirstLevels, EntriesLeadToTheParentWithoutTheirEdge) {
  // Centre 1 between 0 (edge 2) and 2 (edge 1), in the record after it.
  const graph_list_ptr database =
      database_of(make_graph({0, 1, 2}, {{0, 1, 2}, {1, 2, 1}}));
  const sg_set_ptr level1 = edges(database, 1);
  const sg_set_ptr level2 = double_edges(level1, database, 1);
  const int to_0 =
      sg_set_find(level1.get(), sg_ptr(sg_create_edge(0, 1, 2)).get());
  const subgraph *sg = sg_set_get(level2.get(), 0);
  ASSERT_EQ(sg_parent_size(sg), 2);
  // Without the edge to 0 the edge 1-2 is left, whose vertex 0 is the centre.
  EXPECT_EQ(sg_parent_at(sg, 0)->pid, 1 - to_0);
  EXPECT_EQ(sg_parent_edge(sg, sg_parent_at(sg, 0)),
            pendant_extension(1 - to_0, 0, 2, 0));
  EXPECT_EQ(sg_parent_at(sg, 1)->pid, to_0);
  EXPECT_EQ(sg_parent_edge(sg, sg_parent_at(sg, 1)),
            pendant_extension(to_0, 1, 1, 2));
}

TEST(FirstLevelsDeath, ParentsOfWhatIsNoPathOfTwoEdges) {
  const sg_set_ptr level1(sg_set_create());
  const sg_ptr sg = record_of(path_graph(2));
  EXPECT_DEATH(setup_double_edge_subgraph_parent_info(sg.get(), level1.get()),
               "Assertion `sg->g->es == 4 && sg->g->vs == 3' failed");
}

TEST(FirstLevelsDeath, ParentThatIsNotInTheLevel) {
  const sg_set_ptr level1(sg_set_create());
  const sg_ptr sg(sg_create_double_edge(0, 0, 0, 0, 0));
  EXPECT_DEATH(setup_double_edge_subgraph_parent_info(sg.get(), level1.get()),
               "Assertion `index != -1' failed");
}

} // namespace kestro
