#include "mining/registration.h"

#include <gtest/gtest.h>

#include "support/records.h"

namespace kestro {

using ints = std::vector<int>;

// Registration into an empty level over a previous level of given graphs.
class Registration : public testing::Test {
protected:
  void SetUp() override { *sg_registration_counts() = {}; }

  template <class... Graph> void set_prev(const Graph &...graphs) {
    (sg_set_insert(prev.get(), canonical_record(graphs)), ...);
  }
  void offer(const graph_ptr &g) {
    const sg_ptr cand = record_of(g);
    sg_register_candidate(cand.get(), &failed, out.get(), prev.get());
  }
  const subgraph *kept(const graph_ptr &g) const {
    return sg_set_find_record(out.get(), canonical_record(g).get());
  }
  // Attempts, already rejected, duplicates, newly rejected, accepted.
  static ints outcomes() {
    const registration_counts *c = sg_registration_counts();
    ints values;
    for (const long long value :
         {c->attempts, c->already_rejected, c->duplicates, c->newly_rejected,
          c->accepted})
      values.push_back(static_cast<int>(value));
    return values;
  }

  sg_set_ptr prev{sg_set_create()};
  sg_set_ptr out{sg_set_create()};
  failed_candidates failed;
};

TEST_F(Registration, ClosedCandidateIsKeptInCanonicalForm) {
  set_prev(path_graph(3));
  offer(path_graph(4));
  ASSERT_EQ(sg_set_size(out.get()), 1);
  const subgraph *sg = sg_set_get(out.get(), 0);
  EXPECT_EQ(sg_compare(sg, canonical_record(path_graph(4)).get()), 0);
  EXPECT_EQ(ints(sg->g->vid, sg->g->vid + 4), identity_of(4));
  EXPECT_EQ(sg->count, 0);
  for (const ksstack *s : {sg->tid, sg->child, sg->cover})
    EXPECT_EQ(s->count, 0);
  EXPECT_EQ(outcomes(), (ints{1, 0, 0, 0, 1}));
}

TEST_F(Registration, InnerEdgesOfAPathAreNotTested) {
  // Without the inner edge two single edges would be left: in no level.
  set_prev(make_graph({0, 1, 2}, {{0, 1}, {1, 2}}),
           make_graph({1, 2, 3}, {{0, 1}, {1, 2}}));
  offer(make_graph({0, 1, 2, 3}, {{0, 1}, {1, 2}, {2, 3}}));
  ASSERT_EQ(sg_set_size(out.get()), 1);
  EXPECT_EQ(ids_of(sg_set_get(out.get(), 0)->pid), (ints{0, 1}));
}

TEST_F(Registration, IsomorphicCandidatesAreDuplicates) {
  set_prev(path_graph(3));
  offer(path_graph(4));
  offer(make_graph({0, 0, 0, 0}, {{0, 2}, {2, 1}, {1, 3}}));
  EXPECT_EQ(sg_set_size(out.get()), 1);
  EXPECT_EQ(outcomes(), (ints{2, 0, 1, 0, 1}));
}

TEST_F(Registration, CandidateWithAnInfrequentPartIsDropped) {
  set_prev(path_graph(3));
  offer(make_graph({0, 0, 0, 1}, {{0, 1}, {1, 2}, {2, 3}}));
  EXPECT_EQ(sg_set_size(out.get()), 0);
  EXPECT_EQ(failed.size(), 1);
  EXPECT_EQ(outcomes(), (ints{1, 0, 0, 1, 0}));
}

TEST_F(Registration, FailedCandidateIsNotTestedAgain) {
  set_prev(path_graph(3));
  const graph_ptr g = make_graph({0, 0, 0, 1}, {{0, 1}, {1, 2}, {2, 3}});
  offer(g);
  // Even if its parts had come in since.
  set_prev(make_graph({0, 0, 1}, {{0, 1}, {1, 2}}));
  offer(g);
  EXPECT_EQ(sg_set_size(out.get()), 0);
  EXPECT_EQ(failed.size(), 1);
  EXPECT_EQ(outcomes(), (ints{2, 1, 0, 1, 0}));
}

TEST_F(Registration, CandidatesAreInsertedInOrder) {
  set_prev(path_graph(3));
  offer(ring_graph(3));
  offer(star_graph(4));
  offer(path_graph(4));
  EXPECT_EQ(sg_set_size(out.get()), 3);
  sg_set_check(out.get());
}

TEST_F(Registration, ParentIsReachedThroughTheFirstEdgeThatLeadsThere) {
  set_prev(path_graph(3));
  offer(ring_graph(3));
  const subgraph *sg = kept(ring_graph(3));
  ASSERT_NE(sg, nullptr);
  EXPECT_EQ(ids_of(sg->pid), (ints{0}));
  ASSERT_EQ(sg_parent_size(sg), 1);
  EXPECT_EQ(sg_parent_at(sg, 0)->u, 0);
  EXPECT_EQ(sg_parent_at(sg, 0)->v, 1);
}

TEST_F(Registration, AllParentsAreNamedTwoAreKept) {
  // A star of three different leaves: three parents, the most frequent one is
  // not kept.
  set_prev(make_graph({0, 1, 2}, {{0, 1}, {0, 2}}),
           make_graph({0, 1, 3}, {{0, 1}, {0, 2}}),
           make_graph({0, 2, 3}, {{0, 1}, {0, 2}}));
  const ints tids[] = {{0}, {0, 1}, {0, 1, 2}};
  for (int id = 0; id < 3; id++)
    set_tids(sg_set_get(prev.get(), id), tids[id]);
  offer(make_graph({0, 1, 2, 3}, {{0, 1}, {0, 2}, {0, 3}}));
  ASSERT_EQ(sg_set_size(out.get()), 1);
  const subgraph *sg = sg_set_get(out.get(), 0);
  EXPECT_EQ(ids_of(sg->pid), (ints{0, 1, 2}));
  EXPECT_EQ(ids_of(sg->parent), (ints{0, 1}));
}

TEST_F(Registration, MapsLeadToTheParentWithoutTheDeletedEdge) {
  for (unsigned seed = 0; seed < 20; seed++) {
    test_rng rng(seed);
    const graph_ptr g = random_graph(rng, {5, 2, 2, 2, true});
    const sg_ptr cand = canonical_record(g);
    const std::vector<test_edge> all = edges_of(cand->g);
    // Every graph that lacks one edge and is connected but for a lone vertex.
    sg_set_ptr level(sg_set_create());
    for (size_t i = 0; i < all.size(); i++) {
      std::vector<test_edge> rest = all;
      rest.erase(rest.begin() + static_cast<ptrdiff_t>(i));
      ints index(5, -1);
      ints vlabels;
      for (test_edge &edge : rest)
        for (int *end : {&edge.u, &edge.w}) {
          int &to = index[static_cast<size_t>(*end)];
          if (to == -1) {
            to = static_cast<int>(vlabels.size());
            vlabels.push_back(cand->g->vlabel[*end]);
          }
          *end = to;
        }
      sg_ptr part = canonical_record(make_graph(vlabels, rest));
      if (sg_set_find(level.get(), part.get()) == -1)
        sg_set_insert(level.get(), std::move(part));
    }
    sg_set_ptr accepted(sg_set_create());
    failed_candidates none;
    sg_register_candidate(cand.get(), &none, accepted.get(), level.get());
    ASSERT_EQ(sg_set_size(accepted.get()), 1) << "seed " << seed;
    const subgraph *sg = sg_set_get(accepted.get(), 0);
    EXPECT_GE(sg_parent_size(sg), 1);
    for (int i = 0; i < sg_parent_size(sg); i++) {
      const sg_parent *entry = sg_parent_at(sg, i);
      const graph *parent = sg_set_get(level.get(), entry->pid)->g;
      ASSERT_EQ(entry->vs, 5);
      for (const test_edge &edge : all) {
        if (edge.u == entry->u && edge.w == entry->v)
          continue;
        EXPECT_EQ(
            graph_edge_label(parent, entry->map[edge.u], entry->map[edge.w]),
            edge.label)
            << "seed " << seed;
      }
    }
  }
}

TEST_F(Registration, LeavesNoMarksAndForgetsOldParentIds) {
  set_prev(path_graph(3));
  const sg_ptr cand = record_of(path_graph(4));
  sg_add_pid(cand.get(), 55);
  sg_register_candidate(cand.get(), &failed, out.get(), prev.get());
  graph_check(cand->g);
  EXPECT_EQ(ids_of(cand->pid), (ints{0}));
}

} // namespace kestro
