#include "mining/parent_images.h"

#include <gtest/gtest.h>

#include "support/graphs.h"
#include "support/plain_generation.h"

namespace kestro {

// Enters one edge of a graph, its map by hand, and looks at what follows.
class ParentImages : public testing::Test {
protected:
  void set(graph_ptr graph) {
    g = std::move(graph);
    images.set(g.get(), edges.of(g.get()));
  }
  size_t count() { return edges.of(g.get()).size(); }
  // Enters edge i, whose rest is numbered as it is left.
  graph_ptr enter(size_t i, int pid) {
    sg_parent *entry = images.at(i);
    graph_ptr rest = plain_without(g.get(), entry->u, entry->v);
    entry->pid = pid;
    for (int u = 0; u < g->vs; u++)
      entry->set_image(u, -1);
    for (int j = 0; j < rest->vs; j++)
      entry->set_image(rest->vid[j], j);
    images.enter_with_images(i);
    return rest;
  }
  std::vector<size_t> entered() {
    std::vector<size_t> found;
    for (size_t i = 0; i < count(); i++)
      if (images.has(i))
        found.push_back(i);
    return found;
  }

  graph_ptr g;
  removable_edges edges;
  parent_images images;
};

using indices = std::vector<size_t>;

TEST_F(ParentImages, AreAllEdgesOfARing) {
  set(ring_graph(7));
  EXPECT_EQ(entered(), indices{});
  const graph_ptr rest = enter(3, 5);
  ASSERT_EQ(entered().size(), 7u);
  for (size_t i = 0; i < 7; i++) {
    const sg_parent *entry = images.at(i);
    EXPECT_EQ(entry->pid, 5);
    EXPECT_EQ(entry->u, edges.of(g.get())[i].u);
    EXPECT_EQ(entry->v, edges.of(g.get())[i].w);
    EXPECT_EQ(entry->vs, 7);
    EXPECT_TRUE(
        is_map_onto_rest(g.get(), entry->u, entry->v, rest.get(), entry));
  }
}

TEST_F(ParentImages, TakeTheVertexThatIsLacking) {
  set(star_graph(5)); // vertices, four of them leaves
  const graph_ptr rest = enter(0, 0);
  ASSERT_EQ(entered().size(), 4u);
  for (size_t i = 0; i < 4; i++) {
    const sg_parent *entry = images.at(i);
    EXPECT_EQ(entry->image(entry->v), -1);
    EXPECT_TRUE(
        is_map_onto_rest(g.get(), entry->u, entry->v, rest.get(), entry));
  }
}

TEST_F(ParentImages, StayInTheOrbit) {
  // A ring of four, a leaf on one of its vertices: two edges of the ring lie
  // beside the leaf's, two do not.
  set(make_graph({0, 0, 0, 0, 0}, {{0, 1}, {1, 2}, {2, 3}, {0, 3}, {0, 4}}));
  ASSERT_EQ(count(), 5u); // 0-1, 0-3, 0-4, 1-2, 2-3
  enter(1, 0);
  EXPECT_EQ(entered(), (indices{0, 1}));
  enter(3, 0);
  EXPECT_EQ(entered(), (indices{0, 1, 3, 4}));
}

TEST_F(ParentImages, LeaveEntriesThatAreThere) {
  set(ring_graph(4));
  enter(2, 1);
  enter(0, 7);
  EXPECT_EQ(images.at(1)->pid, 1);
  EXPECT_EQ(images.at(3)->pid, 1);
}

TEST_F(ParentImages, AreForgotten) {
  set(ring_graph(4));
  enter(0, 0);
  set(make_graph({0, 1, 2}, {{0, 1}, {1, 2}, {0, 2}}));
  EXPECT_EQ(entered(), indices{});
  enter(1, 0);
  EXPECT_EQ(entered(), indices{1}); // the identity is the only automorphism
}

} // namespace kestro
