#include "reference/mining/automorphisms.h"

#include <set>

#include <gtest/gtest.h>

#include "support/graphs.h"

namespace kestro {

using ints = std::vector<int>;

// The permutations of a core in the order of the cache.
static std::vector<ints> perms_of(automorphism_cache *cache, int core,
                                  const graph_ptr &g) {
  std::vector<ints> perms;
  int i = automorphism_cache_find(cache, core, g.get());
  while (const int *perm = automorphism_cache_perm(cache, i++, core))
    perms.push_back(ints(perm, perm + g->vs));
  return perms;
}

static std::vector<ints> perms_of(const graph_ptr &g) {
  const automorphism_cache_ptr cache(automorphism_cache_create());
  return perms_of(cache.get(), 0, g);
}

TEST(Automorphisms, CacheIsCreatedEmptyWithRoomForOne) {
  const automorphism_cache_ptr cache(automorphism_cache_create());
  EXPECT_EQ(cache->entries->count, 0);
  EXPECT_EQ(cache->entries->capacity, 1);
}

TEST(Automorphisms, FreeOfNullDoesNothing) {
  EXPECT_NO_THROW(automorphism_cache_free(nullptr));
}

TEST(Automorphisms, RigidGraphHasTheIdentityOnly) {
  EXPECT_EQ(perms_of(make_graph({0, 1, 2}, {{0, 1}, {1, 2}})),
            (std::vector<ints>{{0, 1, 2}}));
}

TEST(Automorphisms, PathHasTwo) {
  EXPECT_EQ(perms_of(path_graph(3)), (std::vector<ints>{{0, 1, 2}, {2, 1, 0}}));
}

TEST(Automorphisms, LabelsBreakSymmetry) {
  EXPECT_EQ(perms_of(make_graph({0, 0, 0}, {{0, 1, 1}, {1, 2, 2}})),
            (std::vector<ints>{{0, 1, 2}}));
}

TEST(Automorphisms, AreThoseOfTheSlowMatcherInOrder) {
  for (unsigned seed = 0; seed < 40; seed++) {
    test_rng rng(seed);
    const graph_ptr g = random_graph(rng, {5, 3, 2, 1, true});
    EXPECT_EQ(perms_of(g), naive_maps(g.get(), g.get())) << "seed " << seed;
  }
  EXPECT_EQ(perms_of(complete_graph(4)).size(), 24u);
}

TEST(Automorphisms, CoresFollowOneAnotherById) {
  const automorphism_cache_ptr cache(automorphism_cache_create());
  const graph_ptr path = path_graph(2);
  const graph_ptr ring = ring_graph(3);
  EXPECT_EQ(perms_of(cache.get(), 7, path).size(), 2u);
  EXPECT_EQ(perms_of(cache.get(), 3, ring).size(), 6u);
  EXPECT_EQ(automorphism_cache_find(cache.get(), 3, ring.get()), 0);
  EXPECT_EQ(automorphism_cache_find(cache.get(), 7, path.get()), 6);
  EXPECT_EQ(perms_of(cache.get(), 7, path).size(), 2u);
}

TEST(Automorphisms, AreComputedOnce) {
  const automorphism_cache_ptr cache(automorphism_cache_create());
  perms_of(cache.get(), 0, ring_graph(4));
  EXPECT_EQ(cache->entries->count, 8);
  // A second graph under the same core is not looked at.
  EXPECT_EQ(automorphism_cache_find(cache.get(), 0, path_graph(2).get()), 0);
  EXPECT_EQ(cache->entries->count, 8);
}

TEST(Automorphisms, PermIsNullBehindTheCoreAndBehindTheEnd) {
  const automorphism_cache_ptr cache(automorphism_cache_create());
  const graph_ptr path = path_graph(2);
  automorphism_cache_find(cache.get(), 1, path.get());
  automorphism_cache_find(cache.get(), 2, path.get());
  EXPECT_NE(automorphism_cache_perm(cache.get(), 1, 1), nullptr);
  EXPECT_EQ(automorphism_cache_perm(cache.get(), 2, 1), nullptr);
  EXPECT_EQ(automorphism_cache_perm(cache.get(), 4, 2), nullptr);
}

static int compared(const ints &a, const ints &b) {
  const int *x = a.data();
  const int *y = b.data();
  return compare_automorphisms(&x, &y);
}

TEST(Automorphisms, OrderIsByCoreThenPermutation) {
  EXPECT_EQ(compared({1, 2, 1, 0}, {3, 3, 0, 1, 2}), -2);
  EXPECT_EQ(compared({1, 2, 0, 1}, {1, 2, 0, 1}), 0);
  EXPECT_LT(compared({1, 2, 0, 1}, {1, 2, 1, 0}), 0);
  EXPECT_GT(compared({1, 3, 1, 2, 0}, {1, 3, 1, 0, 2}), 0);
}

TEST(AutomorphismsDeath, EntriesOfOneCoreWithDifferentVertexCounts) {
  EXPECT_DEATH(compared({1, 2, 0, 1}, {1, 3, 0, 1, 2}),
               "Assertion `x\\[1\\] == y\\[1\\]' failed");
}

} // namespace kestro
