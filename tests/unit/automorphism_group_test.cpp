#include "cl/automorphism_group.h"

#include <gtest/gtest.h>

#include "support/generated_group.h"
#include "support/graphs.h"

namespace kestro {

using ints = std::vector<int>;

TEST(AutomorphismSearch, RigidGraphsHaveNoGenerators) {
  EXPECT_EQ(generators_of(make_graph({0}, {}).get()).size(), 0u);
  EXPECT_EQ(generators_of(make_graph({0, 1, 2}, {{0, 1}, {1, 2}}).get()).size(),
            0u);
  EXPECT_EQ(
      generators_of(make_graph({0, 0, 0}, {{0, 1, 1}, {1, 2, 2}}).get()).size(),
      0u);
}

TEST(AutomorphismSearch, TheSmallestAsymmetricRegularGraphHasNone) {
  // The Frucht graph: every vertex has degree 3, refinement tells none apart.
  const graph_ptr g = make_graph(ints(12, 0), {{0, 1},
                                               {1, 2},
                                               {2, 3},
                                               {3, 4},
                                               {4, 5},
                                               {5, 6},
                                               {6, 0},
                                               {0, 7},
                                               {1, 7},
                                               {2, 8},
                                               {3, 9},
                                               {4, 9},
                                               {5, 10},
                                               {6, 10},
                                               {7, 11},
                                               {8, 9},
                                               {8, 11},
                                               {10, 11}});
  EXPECT_EQ(generators_of(g.get()).size(), 0u);
}

TEST(AutomorphismSearch, TwinsAreExchanged) {
  // The leaves of a star, and those of a complete graph.
  EXPECT_EQ(generators_of(star_graph(4).get()),
            (std::vector<ints>{{0, 2, 1, 3}, {0, 3, 2, 1}}));
  EXPECT_EQ(generators_of(complete_graph(3).get()),
            (std::vector<ints>{{1, 0, 2}, {2, 1, 0}}));
}

TEST(AutomorphismSearch, ClassesOfTwinsAreExchangedAsAWhole) {
  // Two hubs with two leaves each.
  const graph_ptr g =
      make_graph({0, 0, 0, 0, 0, 0}, {{0, 1}, {0, 2}, {0, 3}, {1, 4}, {1, 5}});
  EXPECT_EQ(generators_of(g.get()),
            (std::vector<ints>{
                {0, 1, 3, 2, 4, 5}, {0, 1, 2, 3, 5, 4}, {1, 0, 4, 5, 2, 3}}));
}

TEST(AutomorphismSearch, GeneratesTheGroupsOfKnownOrder) {
  EXPECT_EQ(generated_group(path_graph(5).get()).size(), 2u);
  EXPECT_EQ(generated_group(ring_graph(7).get()).size(), 14u);
  EXPECT_EQ(generated_group(star_graph(7).get()).size(), 720u);
  EXPECT_EQ(generated_group(complete_graph(6).get()).size(), 720u);
  // Spider of four legs of two edges; two triangles beside a ring of four.
  EXPECT_EQ(
      generated_group(
          make_graph(
              ints(9, 0),
              {{0, 1}, {0, 2}, {0, 3}, {0, 4}, {1, 5}, {2, 6}, {3, 7}, {4, 8}})
              .get())
          .size(),
      24u);
  EXPECT_EQ(generated_group(make_graph(ints(10, 0), {{0, 1},
                                                     {1, 2},
                                                     {2, 0},
                                                     {3, 4},
                                                     {4, 5},
                                                     {5, 3},
                                                     {6, 7},
                                                     {7, 8},
                                                     {8, 9},
                                                     {9, 6}})
                                .get())
                .size(),
            6u * 6 * 2 * 8);
}

TEST(AutomorphismSearch, GeneratorsAreFewerThanVertices) {
  EXPECT_EQ(generators_of(star_graph(200).get()).size(), 198u);
  EXPECT_LT(generators_of(ring_graph(60).get()).size(), 4u);
}

TEST(AutomorphismSearch, AppendsToWhatIsThere) {
  automorphism_search search;
  xvector<int> perms = {7};
  EXPECT_EQ(search.find(path_graph(2).get(), &perms), 1);
  EXPECT_EQ(search.find(path_graph(3).get(), &perms), 1);
  EXPECT_EQ(ints(perms.begin(), perms.end()), (ints{7, 1, 0, 2, 1, 0}));
}

} // namespace kestro
