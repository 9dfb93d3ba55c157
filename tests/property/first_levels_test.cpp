// The first two levels against a plain count, slot by slot, of all edges and
// paths; with few labels and many, where most edges are infrequent.  Seeds are
// fixed.

#include "mining/first_levels.h"

#include <algorithm>
#include <array>
#include <map>

#include <gtest/gtest.h>

#include "mining/embeddings.h"
#include "mining/path_arms.h"
#include "mining/subgraph.h"
#include "support/records.h"

namespace kestro {
namespace {

using ints = std::vector<int>;

// Labels as a record has them: the ends', the edge's; the centre's, the ends',
// the edges'.
using edge_labels = std::array<int, 3>;
using path_labels = std::array<int, 5>;

// Where a pattern occurs, and its first place in each transaction.
struct occurrences {
  ints tids;
  std::vector<ints> places;
  void add(int tid, const ints &place) {
    if (!tids.empty() && tids.back() == tid)
      return;
    tids.push_back(tid);
    places.push_back(place);
  }
};

std::map<edge_labels, occurrences> count_edges(const graph_list *transactions) {
  std::map<edge_labels, occurrences> counts;
  for (int tid = 0; tid < transactions->count; tid++) {
    const graph *t = graph_list_at(transactions, tid);
    for (const test_edge &edge : edges_of(t)) {
      const auto [la, lb] = std::minmax(t->vlabel[edge.u], t->vlabel[edge.w]);
      counts[{la, lb, edge.label}].add(tid, {});
    }
  }
  return counts;
}

std::map<path_labels, occurrences> count_paths(const graph_list *transactions) {
  std::map<path_labels, occurrences> counts;
  for (int tid = 0; tid < transactions->count; tid++) {
    const graph *t = graph_list_at(transactions, tid);
    for (int w = 0; w < t->vs; w++)
      for (int j = t->v[w]; j < t->v[w + 1]; j++)
        for (int k = j + 1; k < t->v[w + 1]; k++) {
          std::array<int, 3> a = {t->vlabel[t->e[j]], t->elabel[j], t->e[j]};
          std::array<int, 3> b = {t->vlabel[t->e[k]], t->elabel[k], t->e[k]};
          if (std::pair(b[0], b[1]) < std::pair(a[0], a[1]))
            std::swap(a, b);
          counts[{t->vlabel[w], a[0], b[0], a[1], b[1]}].add(tid,
                                                             {w, a[2], b[2]});
        }
  }
  return counts;
}

edge_labels labels_of_edge(const graph *g) {
  return {g->vlabel[0], g->vlabel[1], g->elabel[0]};
}
path_labels labels_of_path(const graph *g) {
  return {g->vlabel[0], g->vlabel[1], g->vlabel[2], g->elabel[0], g->elabel[1]};
}

template <class Labels, class LabelsOf>
void expect_level(const sg_set *level,
                  const std::map<Labels, occurrences> &counts, int minsup,
                  LabelsOf labels_of) {
  const auto frequent =
      std::count_if(counts.begin(), counts.end(), [&](const auto &entry) {
        return static_cast<int>(entry.second.tids.size()) >= minsup;
      });
  ASSERT_EQ(sg_set_size(level), frequent);
  for (int id = 0; id < sg_set_size(level); id++) {
    const subgraph *sg = sg_set_get(level, id);
    const auto found = counts.find(labels_of(sg->g));
    ASSERT_NE(found, counts.end());
    ASSERT_EQ(ids_of(sg->tid), found->second.tids);
    ASSERT_EQ(sg->count, static_cast<int>(found->second.tids.size()));
    if (!sg->rows)
      continue;
    ASSERT_TRUE(sg_has_byte_rows(sg));
    for (int i = 0; i < sg->rows->count; i++) {
      const uint8_t *row = sg_row<uint8_t>(sg, i);
      ASSERT_EQ(ints(row, row + 3),
                found->second.places[static_cast<size_t>(i)]);
    }
  }
}

struct level_counts {
  int paths = 0;
  int with_rows = 0;
  int dropped = 0; // infrequent edges
};

void check_database(const graph_list *transactions, int minsup, int nel,
                    int nvl, level_counts *seen) {
  const sg_set_ptr edges(sg_frequent_edges(transactions, minsup, nel, nvl));
  const auto all_edges = count_edges(transactions);
  expect_level(edges.get(), all_edges, minsup, labels_of_edge);
  const sg_set_ptr paths(
      sg_frequent_double_edges(edges.get(), transactions, minsup, nel, nvl));
  expect_level(paths.get(), count_paths(transactions), minsup, labels_of_path);
  seen->paths += sg_set_size(paths.get());
  seen->dropped +=
      static_cast<int>(all_edges.size()) - sg_set_size(edges.get());
  for (int id = 0; id < sg_set_size(paths.get()); id++)
    seen->with_rows += sg_set_get(paths.get(), id)->rows != nullptr;
}

// A graph whose vertices hang on few others, with labels of which the low ones
// are the most frequent.
graph_ptr draw_graph(test_rng &rng, int nel, int nvl) {
  const auto draw_label = [&](int n) {
    return std::min(random_below(rng, n), random_below(rng, n));
  };
  const int vs = 2 + random_below(rng, 12);
  const int hubs = 1 + random_below(rng, 4);
  ints vlabels;
  std::vector<test_edge> edges;
  for (int u = 0; u < vs; u++) {
    vlabels.push_back(draw_label(nvl));
    if (u > 0)
      edges.push_back(
          {random_below(rng, std::min(u, hubs)), u, draw_label(nel)});
  }
  const graph_ptr g = make_graph(vlabels, edges);
  return relabelled(g.get(), random_permutation(rng, vs));
}

} // namespace

TEST(FirstLevelsProperty, GiveWhatAPlainCountGives) {
  level_counts seen;
  for (unsigned seed = 1; seed <= 1000 && !HasFailure(); seed++) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    test_rng rng(seed);
    constexpr int choices[] = {1, 2, 5, 40, 5000};
    const int nel = choices[random_below(rng, 4)];
    const int nvl = choices[random_below(rng, 5)];
    const graph_list_ptr transactions(graph_list_new());
    for (int i = random_below(rng, 12); i >= 0; i--)
      graph_list_push(draw_graph(rng, nel, nvl), transactions.get());
    check_database(transactions.get(), 1 + random_below(rng, 4), nel, nvl,
                   &seen);
  }
  EXPECT_GT(seen.paths, 10000);
  EXPECT_GT(seen.with_rows, 10000);
  EXPECT_GT(seen.dropped, 5000);
}

TEST(FirstLevelsProperty, PathsThatNeedAHashTableGiveWhatAPlainCountGives) {
  // A hub with so many kinds of arms that an array of their pairs would take
  // more than the transactions.
  constexpr int arms = 150;
  const graph_list_ptr transactions(graph_list_new());
  for (unsigned seed = 1; seed <= 3; seed++) {
    test_rng rng(seed);
    ints vlabels = {0};
    std::vector<test_edge> edges;
    for (int i = 0; i < arms; i++) {
      vlabels.push_back(1 + random_below(rng, arms));
      edges.push_back({0, i + 1, random_below(rng, 2)});
    }
    graph_list_push(make_graph(vlabels, edges), transactions.get());
  }
  const int nvl = arms + 1;
  const sg_set_ptr edges(sg_frequent_edges(transactions.get(), 1, 2, nvl));
  const size_t limit = counters_limit(transactions.get());
  const path_arms numbered(edges.get(), 2, nvl, limit);
  ASSERT_FALSE(path_table(numbered.paths(), limit).is_dense());
  level_counts seen;
  for (const int minsup : {1, 2, 3})
    check_database(transactions.get(), minsup, 2, nvl, &seen);
  EXPECT_GT(seen.paths, 1000);
}

TEST(FirstLevelsProperty, EdgesThatNeedAHashTableGiveWhatAPlainCountGives) {
  constexpr int many_labels = 50000;
  level_counts seen;
  for (unsigned seed = 1; seed <= 50; seed++) {
    test_rng rng(seed);
    const graph_list_ptr transactions(graph_list_new());
    for (int i = 0; i < 6; i++)
      graph_list_push(draw_graph(rng, 3, 4), transactions.get());
    ASSERT_FALSE(edge_table({many_labels, many_labels},
                            counters_limit(transactions.get()))
                     .is_dense());
    check_database(transactions.get(), 2, many_labels, many_labels, &seen);
  }
  EXPECT_GT(seen.paths, 300);
}

} // namespace kestro
