#include "cl/vertex_orbits.h"

#include <gtest/gtest.h>

namespace kestro {

TEST(VertexOrbits, AreSinglesAtFirst) {
  vertex_orbits orbits;
  orbits.reset(3);
  EXPECT_TRUE(orbits.same(1, 1));
  EXPECT_FALSE(orbits.same(0, 1));
  EXPECT_FALSE(orbits.same(1, 2));
}

TEST(VertexOrbits, PermutationsJoinAlongTheirCycles) {
  vertex_orbits orbits;
  orbits.reset(6);
  orbits.join({1, 2, 0, 3, 5, 4});
  EXPECT_TRUE(orbits.same(0, 2));
  EXPECT_TRUE(orbits.same(5, 4));
  EXPECT_FALSE(orbits.same(2, 3));
  EXPECT_FALSE(orbits.same(2, 4));
  orbits.join({0, 1, 3, 2, 4, 5});
  EXPECT_TRUE(orbits.same(0, 3));
  EXPECT_FALSE(orbits.same(3, 4));
}

TEST(VertexOrbits, ResetForgets) {
  vertex_orbits orbits;
  orbits.reset(2);
  orbits.join(0, 1);
  EXPECT_TRUE(orbits.same(0, 1));
  orbits.reset(2);
  EXPECT_FALSE(orbits.same(0, 1));
}

} // namespace kestro
