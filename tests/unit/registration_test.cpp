#include "mining/registration.h"

#include <optional>

#include <gtest/gtest.h>

#include "mining/parents.h"
#include "reference/mining/registration.h"
#include "reference/mining/sg_set.h"
#include "reference/mining/subgraph.h"
#include "support/mined_levels.h"
#include "support/plain_generation.h"
#include "support/records.h"

namespace kestro {

using ints = std::vector<int>;

// Registration against a previous level of given graphs.
class Registration : public testing::Test {
protected:
  template <class... Graph> void set_prev(const Graph &...graphs) {
    (sg_set_insert(prev.get(), canonical_record(graphs)), ...);
    to.emplace(prev.get());
  }
  const subgraph *offer(const graph_ptr &g) {
    const sg_ptr cand = record_of(g);
    return sg_register_candidate(cand.get(), &*to);
  }
  // Attempts, already rejected, duplicates, newly rejected, accepted.
  ints outcomes() const {
    ints values;
    for (const long long value :
         {to->counts.attempts, to->counts.already_rejected,
          to->counts.duplicates, to->counts.newly_rejected,
          to->counts.accepted})
      values.push_back(static_cast<int>(value));
    return values;
  }

  sg_set_ptr prev{sg_set_create()};
  std::optional<registration> to;
};

TEST_F(Registration, ClosedCandidateIsKeptInCanonicalForm) {
  set_prev(path_graph(3));
  const subgraph *sg = offer(path_graph(4));
  ASSERT_NE(sg, nullptr);
  EXPECT_EQ(to->accepted.size(), 1);
  EXPECT_TRUE(to->accepted.contains(sg));
  EXPECT_EQ(sg_compare(sg, canonical_record(path_graph(4)).get()), 0);
  EXPECT_EQ(sg->g->vid, nullptr);
  EXPECT_EQ(sg->count, 0);
  EXPECT_EQ(sg_tid_size(sg) + sg_child_size(sg) + sg_cover_size(sg), 0);
  EXPECT_EQ(outcomes(), (ints{1, 0, 0, 0, 1}));
}

TEST_F(Registration, InnerEdgesOfAPathAreNotTested) {
  // Without the inner edge two single edges would be left: in no level.
  set_prev(make_graph({0, 1, 2}, {{0, 1}, {1, 2}}),
           make_graph({1, 2, 3}, {{0, 1}, {1, 2}}));
  const subgraph *sg =
      offer(make_graph({0, 1, 2, 3}, {{0, 1}, {1, 2}, {2, 3}}));
  ASSERT_NE(sg, nullptr);
  EXPECT_EQ(pids_of(sg), (ints{0, 1}));
}

TEST_F(Registration, IsomorphicCandidatesAreDuplicates) {
  set_prev(path_graph(3));
  offer(path_graph(4));
  EXPECT_EQ(offer(make_graph({0, 0, 0, 0}, {{0, 2}, {2, 1}, {1, 3}})), nullptr);
  EXPECT_EQ(to->accepted.size(), 1);
  EXPECT_EQ(outcomes(), (ints{2, 0, 1, 0, 1}));
}

TEST_F(Registration, CandidateWithAnInfrequentPartIsDropped) {
  set_prev(path_graph(3));
  EXPECT_EQ(offer(make_graph({0, 0, 0, 1}, {{0, 1}, {1, 2}, {2, 3}})), nullptr);
  EXPECT_EQ(to->accepted.size(), 0);
  EXPECT_EQ(to->failed.size(), 1);
  EXPECT_EQ(outcomes(), (ints{1, 0, 0, 1, 0}));
}

TEST_F(Registration, FailedCandidateIsNotTestedAgain) {
  set_prev(path_graph(3));
  const graph_ptr g = make_graph({0, 0, 0, 1}, {{0, 1}, {1, 2}, {2, 3}});
  EXPECT_EQ(offer(g), nullptr);
  EXPECT_EQ(offer(g), nullptr);
  EXPECT_EQ(to->accepted.size(), 0);
  EXPECT_EQ(to->failed.size(), 1);
  EXPECT_EQ(outcomes(), (ints{2, 1, 0, 1, 0}));
}

TEST_F(Registration, AcceptedOnesAreHandedOverInOrder) {
  set_prev(path_graph(3));
  offer(ring_graph(3));
  offer(star_graph(4));
  offer(path_graph(4));
  const sg_set_ptr out(to->accepted.release_sorted());
  EXPECT_EQ(sg_set_size(out.get()), 3);
  sg_set_check(out.get());
}

TEST_F(Registration, ParentIsReachedThroughTheFirstEdgeThatLeadsThere) {
  set_prev(path_graph(3));
  const subgraph *sg = offer(ring_graph(3));
  ASSERT_NE(sg, nullptr);
  EXPECT_EQ(pids_of(sg), (ints{0}));
  ASSERT_EQ(sg_kept_size(sg), 1);
  EXPECT_EQ(sg_kept_at(sg, 0)->u, 0);
  EXPECT_EQ(sg_kept_at(sg, 0)->v, 1);
}

TEST_F(Registration, AllParentsAreNamedTwoAreKept) {
  // A star of three different leaves: three parents, the most frequent one is
  // not kept.
  set_prev(make_graph({0, 1, 2}, {{0, 1}, {0, 2}}),
           make_graph({0, 1, 3}, {{0, 1}, {0, 2}}),
           make_graph({0, 2, 3}, {{0, 1}, {0, 2}}));
  const int supports[] = {1, 2, 3};
  for (int id = 0; id < 3; id++)
    sg_set_get(prev.get(), id)->count = supports[id];
  const subgraph *sg =
      offer(make_graph({0, 1, 2, 3}, {{0, 1}, {0, 2}, {0, 3}}));
  ASSERT_NE(sg, nullptr);
  EXPECT_EQ(pids_of(sg), (ints{0, 1, 2}));
  EXPECT_EQ(kept_of(sg), (ints{0, 1}));
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
          int &place = index[static_cast<size_t>(*end)];
          if (place == -1) {
            place = static_cast<int>(vlabels.size());
            vlabels.push_back(cand->g->vlabel[*end]);
          }
          *end = place;
        }
      sg_ptr part = canonical_record(make_graph(vlabels, rest));
      if (sg_set_find(level.get(), part.get()) == -1)
        sg_set_insert(level.get(), std::move(part));
    }
    registration fresh(level.get());
    const subgraph *sg = sg_register_candidate(cand.get(), &fresh);
    ASSERT_NE(sg, nullptr) << "seed " << seed;
    EXPECT_GE(sg_kept_size(sg), 1);
    for (int i = 0; i < sg_kept_size(sg); i++) {
      const sg_parent *entry = sg_kept_at(sg, i);
      const graph *parent = sg_set_get(level.get(), entry->pid)->g;
      ASSERT_EQ(entry->vs, 5);
      for (const test_edge &edge : all) {
        if (edge.u == entry->u && edge.w == entry->v)
          continue;
        EXPECT_EQ(graph_edge_label(parent, entry->image(edge.u),
                                   entry->image(edge.w)),
                  edge.label)
            << "seed " << seed;
      }
    }
  }
}

TEST_F(Registration, EveryRemovableEdgeHasAnEntry) {
  set_prev(path_graph(3));
  const subgraph *sg = offer(ring_graph(3));
  ASSERT_NE(sg, nullptr);
  ASSERT_EQ(sg_parent_size(sg), 3); // all to the one parent, by u, then v
  const ints ends[] = {{0, 1}, {0, 2}, {1, 2}};
  for (int l = 0; l < 3; l++) {
    const sg_parent *entry = sg_parent_at(sg, l);
    EXPECT_EQ((ints{entry->u, entry->v}), ends[l]);
    EXPECT_EQ(entry->pid, 0);
    EXPECT_EQ(sg_parent_edge(sg, entry).to != -1, true);
  }
}

TEST_F(Registration, FormsAndTheirGraphsAreMarkedAsWhatTheyAre) {
  set_prev(make_graph({0, 1, 2}, {{0, 1}, {1, 2}}),
           make_graph({1, 2, 3}, {{0, 1}, {1, 2}}), path_graph(3));
  const subgraph *rigid =
      offer(make_graph({0, 1, 2, 3}, {{0, 1}, {1, 2}, {2, 3}}));
  ASSERT_NE(rigid, nullptr);
  EXPECT_TRUE(rigid->rigid);
  EXPECT_TRUE(rigid->invariant);
  const subgraph *symmetric = offer(path_graph(4));
  ASSERT_NE(symmetric, nullptr);
  EXPECT_FALSE(symmetric->rigid);
  EXPECT_TRUE(symmetric->invariant);
}

TEST_F(Registration, LeavesNoMarksAndForgetsOldParents) {
  set_prev(path_graph(3));
  const sg_ptr cand = record_of(path_graph(4));
  add_parent(cand.get(), 55);
  sg_update_parent_info(cand.get(), parent_entry(55, 0, 1, {0, 1, 2, 3}),
                        prev.get());
  sg_register_candidate(cand.get(), &*to);
  graph_check(cand->g);
  EXPECT_EQ(pids_of(cand.get()), (ints{0}));
  EXPECT_EQ(kept_of(cand.get()), (ints{0}));
  EXPECT_EQ(sg_parent_size(cand.get()), 2);
}

// Every graph that is pattern id of a level plus an edge, with labels below 2.
static std::vector<extension> extensions_of(int id, const graph *g) {
  std::vector<extension> found;
  for (int u = 0; u < g->vs; u++)
    for (int code = 0; code < 4; code++)
      found.push_back(pendant_extension(id, u, code / 2, code % 2));
  for (int u = 0; u < g->vs; u++)
    for (int w = u + 1; w < g->vs; w++)
      for (int elabel = 0; elabel < 2; elabel++)
        if (!graph_has_edge(g, u, w))
          found.push_back(closing_extension(id, u, w, elabel));
  return found;
}

static void expect_alike(const subgraph *sg, const subgraph *plain) {
  ASSERT_EQ(sg == nullptr, plain == nullptr);
  if (!sg)
    return;
  EXPECT_EQ(sg_compare(sg, plain), 0);
  EXPECT_EQ(sg->g->vid, nullptr);
  EXPECT_EQ(sg->count + sg_tid_size(sg) + sg_child_size(sg), 0);
  EXPECT_EQ(pids_of(sg), pids_of(plain));
  EXPECT_EQ(kept_of(sg), kept_of(plain));
  EXPECT_EQ(sg->invariant, plain->invariant);
  EXPECT_EQ(sg->rigid, plain->rigid);
}

// All extensions of all patterns of a database come out alike with what is
// known of their parents beforehand, without, and step by step.
TEST_F(Registration, LookUpsAndTheFilterOnlySaveWork) {
  test_rng rng(5);
  for (int round = 0; round < 20; round++) {
    const graph_list_ptr database =
        database_of(random_graph(rng, {6, 2, 2, 2, true}));
    two_levels levels = first_two_levels(database.get(), 1, 2, 2);
    while (sg_set_size(levels.children.get()) > 0) {
      const core_links links = links_of(levels);
      const child_table table(levels.children.get(), &links);
      derived_parents known(levels.children.get(), &table);
      registration with(levels.children.get(), labeller(), &known);
      registration without(levels.children.get());
      to.emplace(levels.children.get());
      for (int id = 0; id < sg_set_size(levels.children.get()); id++) {
        const graph *g = sg_set_get(levels.children.get(), id)->g;
        for (const extension &x : extensions_of(id, g)) {
          const subgraph *plain = sg_register_candidate(
              record_of(plain_extended(g, x)).get(), &*to);
          expect_alike(sg_offer_extension(x, &with), plain);
          expect_alike(sg_offer_extension(x, &without), plain);
          ASSERT_FALSE(HasFailure()) << "round " << round;
        }
      }
      EXPECT_EQ(with.accepted.size(), to->accepted.size());
      EXPECT_EQ(without.accepted.size(), to->accepted.size());
      EXPECT_EQ(without.failed.size(), to->failed.size());
      EXPECT_EQ(without.counts.duplicates, to->counts.duplicates);
      EXPECT_EQ(without.counts.already_rejected, to->counts.already_rejected);
      EXPECT_EQ(without.counts.newly_rejected, to->counts.newly_rejected);
      go_up(&levels, candidates_of(levels), database.get(), 1);
    }
  }
}

} // namespace kestro
