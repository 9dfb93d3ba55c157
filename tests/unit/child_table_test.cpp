#include "mining/child_table.h"

#include <gtest/gtest.h>

#include "mining/parents.h"
#include "support/mined_levels.h"
#include "support/plain_generation.h"
#include "support/records.h"

namespace kestro {

// The first two levels of a database, with minimum support 1.
class ChildTable : public testing::Test {
protected:
  template <class... Graph> void mine(Graph... graphs) {
    database = database_of(std::move(graphs)...);
    levels = first_two_levels(database.get(), 1, 3, 4);
  }
  void go_up_once() {
    go_up(&levels, candidates_of(levels), database.get(), 1);
  }
  child_table table() {
    groups = parent_groups(levels);
    return child_table(levels.children.get(), levels.cores.get(), &groups);
  }
  const subgraph *child(int id) const {
    return sg_set_get(levels.children.get(), id);
  }
  // Where the automorphism found for x brings the edge of the found entry.
  extension brought_to(const child_table &children, const extension &x) const {
    const found_child *found = children.find(x);
    const subgraph *sg = child(found->child);
    extension place = sg_parent_edge(sg, sg_parent_at(sg, found->entry));
    const graph *core = sg_set_get(levels.cores.get(), x.pattern)->g;
    xvector<const int *> steps;
    children.find_steps(x, &steps);
    for (size_t s = steps.size(); s-- > 0;) {
      EXPECT_TRUE(is_mapping(core, core, {steps[s], steps[s] + core->vs}));
      place = image_of(place, steps[s]);
    }
    return place;
  }

  graph_list_ptr database;
  two_levels levels;
  pattern_groups groups;
};

TEST_F(ChildTable, FindsAPathByEitherOfItsEdges) {
  // Edges 0-1 (label 2) and 1-2 (label 1) meet in the vertex labelled 1.
  mine(make_graph({0, 1, 2}, {{0, 1, 2}, {1, 2, 1}}));
  const child_table children = table();
  const int first =
      sg_set_find(levels.cores.get(), sg_ptr(sg_create_edge(0, 1, 2)).get());
  const int second = 1 - first;
  // In the record of an edge the smaller label comes first.
  ASSERT_NE(children.find(pendant_extension(first, 1, 1, 2)), nullptr);
  EXPECT_EQ(children.find(pendant_extension(first, 1, 1, 2))->child, 0);
  ASSERT_NE(children.find(pendant_extension(second, 0, 2, 0)), nullptr);
  EXPECT_EQ(children.find(pendant_extension(first, 0, 1, 2)), nullptr);
  EXPECT_EQ(children.find(pendant_extension(first, 1, 2, 2)), nullptr);
  EXPECT_EQ(children.find(pendant_extension(second, 1, 2, 0)), nullptr);
}

TEST_F(ChildTable, FindsAChildWhereverAnAutomorphismBringsItsEdge) {
  mine(path_graph(3)); // one edge, whose ends are alike
  const child_table children = table();
  for (const int end : {0, 1}) {
    const found_child *found = children.find(pendant_extension(0, end, 0, 0));
    ASSERT_NE(found, nullptr);
    EXPECT_EQ(found->child, 0);
    EXPECT_EQ(brought_to(children, pendant_extension(0, end, 0, 0)),
              pendant_extension(0, end, 0, 0));
  }
}

TEST_F(ChildTable, GroupsOfCoresWithChildrenAreThere) {
  mine(path_graph(3), make_graph({2, 2}, {{0, 1}})); // the latter has no child
  const child_table children = table();
  const sg_ptr edge(sg_create_edge(0, 0, 0));
  const int with_child = sg_set_find(levels.cores.get(), edge.get());
  EXPECT_EQ(groups.at(with_child).count, 1);
  EXPECT_EQ(groups.at(1 - with_child).count, 0);
}

// What a plain look says: the child whose form core plus edge has, -1 for none.
static int plain_child(const graph *core, const extension &x,
                       const std::map<graph_form, int> &ids) {
  std::vector<int> vlabels = vlabels_of(core);
  std::vector<test_edge> edges = edges_of(core);
  edges.push_back({x.from, x.to == -1 ? core->vs : x.to, x.elabel});
  if (x.to == -1)
    vlabels.push_back(x.vlabel);
  const auto found = ids.find(plain_form(make_graph(vlabels, edges).get()));
  return found == ids.end() ? -1 : found->second;
}

TEST_F(ChildTable, EveryExtensionIsFoundIfItsFormIsInTheLevel) {
  test_rng rng(4);
  for (int round = 0; round < 10; round++) {
    mine(random_graph(rng, {5, 2, 2, 2, true}));
    for (int k = 3; k <= 5 && sg_set_size(levels.children.get()) > 0; k++) {
      const child_table children = table();
      const auto ids = ids_by_form(levels.children.get());
      for (int p = 0; p < sg_set_size(levels.cores.get()); p++) {
        const graph *core = sg_set_get(levels.cores.get(), p)->g;
        const auto check = [&](const extension &x) {
          const found_child *found = children.find(x);
          ASSERT_EQ(found ? found->child : -1, plain_child(core, x, ids))
              << "round " << round << " size " << k;
          if (found) {
            ASSERT_EQ(brought_to(children, x), x) << "round " << round;
          }
        };
        for (int code = 0; code < core->vs * 4; code++)
          check(pendant_extension(p, code / 4, code % 4 / 2, code % 2));
        for (int u = 0; u < core->vs; u++)
          for (int w = 0; w < u; w++)
            for (int elabel = 0; elabel < 2; elabel++)
              if (!graph_has_edge(core, u, w))
                check(closing_extension(p, u, w, elabel));
      }
      go_up_once();
    }
  }
}

} // namespace kestro
