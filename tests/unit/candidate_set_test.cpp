#include "mining/candidate_set.h"

#include <set>

#include <gtest/gtest.h>

#include "support/records.h"

namespace kestro {

using ints = std::vector<int>;

// A record that is told apart by its key, or, of one key, by a label.
static sg_ptr keyed(int key, int label = 0) {
  sg_ptr sg = record_of(make_graph({label, 0}, {{0, 1}}));
  sg->g->key = static_cast<uint32_t>(key);
  return sg;
}

static ints keys_of(const sg_set_ptr &s) {
  ints keys;
  for (int i = 0; i < sg_set_size(s.get()); i++)
    keys.push_back(static_cast<int>(sg_set_get(s.get(), i)->g->key));
  return keys;
}

TEST(CandidateSet, IsEmptyAtFirst) {
  candidate_set set;
  EXPECT_EQ(set.size(), 0);
  EXPECT_FALSE(set.contains(keyed(1).get()));
  EXPECT_EQ(keys_of(sg_set_ptr(set.release_sorted())), ints{});
}

TEST(CandidateSet, ContainsWhatEqualsARecord) {
  candidate_set set;
  set.insert(keyed(5).get());
  EXPECT_TRUE(set.contains(keyed(5).get()));
  EXPECT_FALSE(set.contains(keyed(6).get()));
  EXPECT_EQ(set.size(), 1);
}

TEST(CandidateSet, RecordsOfOneKeyAreToldApartByTheirGraphs) {
  candidate_set set;
  for (int label = 0; label < 400; label++) // also while it grows
    set.insert(keyed(5, label).get());
  for (int label = 0; label < 400; label++)
    EXPECT_TRUE(set.contains(keyed(5, label).get())) << label;
  EXPECT_FALSE(set.contains(keyed(5, 400).get()));
  EXPECT_FALSE(set.contains(keyed(6, 0).get()));
}

TEST(CandidateSet, HandsOverItsRecordsSorted) {
  candidate_set set;
  for (const int key : {4, -2, 8, 0})
    set.insert(keyed(key).get());
  EXPECT_EQ(keys_of(sg_set_ptr(set.release_sorted())), (ints{-2, 0, 4, 8}));
}

TEST(CandidateSet, EqualsAStandardSetWhileItGrows) {
  test_rng rng(3);
  candidate_set set;
  std::set<int> plain;
  for (int i = 0; i < 3000; i++) {
    const int key = random_below(rng, 2000) * 4096; // equal low bits
    sg_ptr sg = keyed(key);
    ASSERT_EQ(set.contains(sg.get()), plain.count(key) > 0) << i;
    if (plain.insert(key).second)
      set.insert(sg.get());
  }
  EXPECT_EQ(set.size(), static_cast<int>(plain.size()));
  EXPECT_EQ(keys_of(sg_set_ptr(set.release_sorted())),
            ints(plain.begin(), plain.end()));
}

TEST(CandidateSet, TakesOverWhatItHasNot) {
  candidate_set set;
  candidate_set other;
  for (const int key : {1, 2})
    set.insert(keyed(key).get());
  for (const int key : {0, 2, 3})
    other.insert(keyed(key).get());
  set.take_over(&other);
  EXPECT_EQ(other.size(), 0);
  EXPECT_FALSE(other.contains(keyed(0).get()));
  other.insert(keyed(7).get()); // still of use
  EXPECT_TRUE(other.contains(keyed(7).get()));
  EXPECT_EQ(keys_of(sg_set_ptr(set.release_sorted())), (ints{0, 1, 2, 3}));
}

TEST(CandidateSet, TakesOverIntoAnEmptyOne) {
  candidate_set set;
  candidate_set other;
  other.insert(keyed(4).get());
  set.take_over(&other);
  set.take_over(&other);
  EXPECT_TRUE(set.contains(keyed(4).get()));
  EXPECT_EQ(set.size(), 1);
}

} // namespace kestro
