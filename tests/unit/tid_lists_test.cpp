#include "mining/tid_lists.h"

#include <gtest/gtest.h>

#include "mining/parents.h"
#include "support/fatal.h"
#include "support/records.h"

namespace kestro {

using ints = std::vector<int>;

// A candidate with these parents in level, of which it keeps as many as it can.
static sg_ptr candidate(const ints &pids, const sg_set_ptr &level,
                        bool with_entries = true) {
  sg_ptr sg = canonical_record(path_graph(3));
  for (const int pid : pids) {
    add_parent(sg.get(), pid);
    if (with_entries)
      sg_update_parent_info(sg.get(), parent_entry(pid, 0, 1, {0, -1, 1}),
                            level.get());
  }
  return sg;
}

// The transactions common to the parents, with and without parent entries.
static ints common(const std::vector<ints> &tids, const ints &pids,
                   int transactions, int minsup = 0) {
  const sg_set_ptr level = level_with_tids(tids);
  const tid_lists lists(level.get(), transactions);
  tid_lists::workspace work;
  const auto of = [&](const sg_ptr &sg) {
    const xvector<int> &found =
        lists.common_to_parents(sg.get(), minsup, &work);
    return ints(found.begin(), found.end());
  };
  ints found = of(candidate(pids, level));
  EXPECT_EQ(of(candidate(pids, level, false)), found);
  return found;
}

// Few transactions make sets of bits, many that no list has sorted lists.
static const int sizes[] = {6, 100000};

TEST(TidLists, CommonAreThoseOfAllParents) {
  const std::vector<ints> tids = {{0, 1, 3, 5}, {1, 2, 3}, {0, 3, 4, 5}};
  for (const int n : sizes) {
    EXPECT_EQ(common(tids, {0}, n), (ints{0, 1, 3, 5}));
    EXPECT_EQ(common(tids, {0, 1}, n), (ints{1, 3}));
    EXPECT_EQ(common(tids, {0, 2}, n), (ints{0, 3, 5}));
    EXPECT_EQ(common(tids, {0, 1, 2}, n), (ints{3}));
  }
}

TEST(TidLists, DisjointParentsHaveNoneInCommon) {
  for (const int n : sizes)
    EXPECT_EQ(common({{0, 2, 4}, {1, 3, 5}}, {0, 1}, n), ints());
}

TEST(TidLists, WithoutParentsThereAreNone) {
  for (const int n : sizes)
    EXPECT_EQ(common({{0, 1}}, {}, n), ints());
}

TEST(TidLists, LessThanMinsupIsNone) {
  const std::vector<ints> tids = {{0, 1, 3, 5}, {1, 2, 3}, {0, 1, 3}};
  for (const int n : sizes) {
    EXPECT_EQ(common(tids, {0, 1, 2}, n, 2), (ints{1, 3}));
    EXPECT_EQ(common(tids, {0, 1, 2}, n, 3), ints());
    EXPECT_EQ(common(tids, {0, 1, 2}, n, 5), ints());
  }
}

TEST(TidLists, EmptyListsHaveNoneInCommon) {
  for (const int n : {0, 6, 100000}) {
    EXPECT_EQ(common({{}, {}}, {0, 1}, n), ints());
    EXPECT_EQ(common({{}}, {0}, n), ints());
  }
}

TEST(TidLists, TransactionsAtTheEndsOfWordsAreKept) {
  ints all(193);
  for (int i = 0; i < 193; i++)
    all[static_cast<size_t>(i)] = i;
  const ints ends = {0, 63, 64, 127, 128, 191, 192};
  EXPECT_EQ(common({all, ends}, {0, 1}, 193), ends);
  EXPECT_EQ(common({all, all}, {0, 1}, 193), all);
  for (const int tid : ends) {
    EXPECT_EQ(common({all, {tid}}, {0, 1}, 193), ints{tid});
    EXPECT_EQ(common({{tid}}, {0}, tid + 1), ints{tid});
  }
}

TEST(TidLists, WorkspaceServesOneCandidateAfterAnother) {
  for (const int n : sizes) {
    const sg_set_ptr level =
        level_with_tids({{0, 1, 2, 3, 4}, {1, 2, 3}, {4, 5}});
    const tid_lists lists(level.get(), n);
    tid_lists::workspace work;
    const auto of = [&](const ints &pids) {
      const xvector<int> &found =
          lists.common_to_parents(candidate(pids, level).get(), 1, &work);
      return ints(found.begin(), found.end());
    };
    for (int round = 0; round < 2; round++) {
      EXPECT_EQ(of({0, 1}), (ints{1, 2, 3}));
      EXPECT_EQ(of({1, 2}), ints());
      EXPECT_EQ(of({2}), (ints{4, 5}));
      EXPECT_EQ(of({0, 2}), (ints{4}));
    }
  }
}

// Lists as dense and as sparse as they come, against a count of every one.
TEST(TidLists, AgreeWithCountingEveryTransaction) {
  for (unsigned seed = 0; seed < 200; seed++) {
    test_rng rng(seed);
    const int n = 1 + random_below(rng, 300);
    const int one_in = 1 + random_below(rng, 100);
    std::vector<ints> tids(1 + static_cast<size_t>(random_below(rng, 5)));
    for (ints &list : tids)
      for (int tid = 0; tid < n; tid++)
        if (random_below(rng, one_in) == 0)
          list.push_back(tid);
    ints pids;
    for (size_t id = 0; id < tids.size(); id++)
      if (pids.empty() || random_below(rng, 2) == 0)
        pids.push_back(static_cast<int>(id));
    ints expected;
    for (int tid = 0; tid < n; tid++)
      if (std::all_of(pids.begin(), pids.end(), [&](int pid) {
            const ints &list = tids[static_cast<size_t>(pid)];
            return std::find(list.begin(), list.end(), tid) != list.end();
          }))
        expected.push_back(tid);
    EXPECT_EQ(common(tids, pids, n), expected) << "seed " << seed;
    const int minsup = 1 + random_below(rng, 6);
    EXPECT_EQ(common(tids, pids, n, minsup),
              static_cast<int>(expected.size()) < minsup ? ints() : expected)
        << "seed " << seed;
  }
}

TEST(TidListsFatal, ListOutOfOrder) {
  for (const ints &list : {ints{1, 1}, ints{2, 1}, ints{0, 3, 2}}) {
    const sg_set_ptr level = level_with_tids({{0}, list});
    EXPECT_EQ(fatal_text([&] { tid_lists(level.get(), 6); }),
              "subgraph.c:N: something wrong\n");
  }
}

TEST(TidListsFatal, ParentThatIsNotInTheLevel) {
  for (const int n : sizes) {
    const sg_set_ptr level = level_with_tids({{1}});
    sg_ptr sg = candidate({}, level);
    add_parent(sg.get(), 1);
    tid_lists::workspace work;
    EXPECT_EQ(fatal_text([&] {
                tid_lists(level.get(), n).common_to_parents(sg.get(), 0, &work);
              }),
              "stack.c:N: invalid index\n");
  }
}

} // namespace kestro
