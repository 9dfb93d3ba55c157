#include "cl/canonical.h"

#include <gtest/gtest.h>

#include <climits>

#include "reference/cl/canonical_calls.h"
#include "reference/graph/graph.h"
#include "support/graphs.h"

namespace kestro {

namespace {

// Sets the stabilizer threshold for one scope.
struct threshold_scope {
  int before = cl_get_stabilizer_threshold();
  explicit threshold_scope(int n) { cl_set_stabilizer_threshold(n); }
  ~threshold_scope() { cl_set_stabilizer_threshold(before); }
};

} // namespace

static graph_ptr canonical(const graph *g) {
  graph_ptr copy(graph_copy(g));
  cl_canonicalize_graph(copy.get());
  return copy;
}

// A form of g must be g with its vertices renamed as vid tells.
static void expect_form_of(const graph *form, const graph *g) {
  std::vector<int> to(static_cast<size_t>(g->vs));
  for (int i = 0; i < g->vs; i++)
    to[static_cast<size_t>(form->vid[i])] = i;
  EXPECT_TRUE(same_structure(relabelled(g, to).get(), form));
}

// All relabelled copies must come to the same form and key.
static void expect_one_form(const graph *g, test_rng &rng) {
  const graph_ptr form = canonical(g);
  expect_form_of(form.get(), g);
  for (int copy = 0; copy < 5; copy++) {
    const std::vector<int> to = random_permutation(rng, g->vs);
    graph_ptr other = relabelled(g, to);
    std::copy_n(identity_of(g->vs).begin(), g->vs, other->vid);
    const graph_ptr other_form = canonical(other.get());
    EXPECT_TRUE(same_structure(other_form.get(), form.get()));
    EXPECT_EQ(other_form->key, form->key);
    expect_form_of(other_form.get(), other.get());
  }
}

TEST(Canonical, ThresholdIsFiveUntilSet) {
  EXPECT_EQ(cl_get_stabilizer_threshold(), 5);
  const threshold_scope scope(-3);
  EXPECT_EQ(cl_get_stabilizer_threshold(), -3);
}

TEST(Canonical, ThresholdOutlivesTheWorkArea) {
  const threshold_scope scope(-3);
  cl_free_work_area();
  EXPECT_EQ(cl_get_stabilizer_threshold(), -3);
}

TEST(Labeller, ThresholdIsFiveUnlessGiven) {
  EXPECT_EQ(labeller().stabilizer_threshold(), 5);
  EXPECT_EQ(labeller(-3).stabilizer_threshold(), -3);
}

TEST(Labeller, TellsTheKeyAndWhatItHasSeen) {
  labeller forms;
  const graph_ptr rigid = make_graph({0, 1}, {{0, 1}});
  const canonical_form first = forms.canonicalize(rigid.get());
  EXPECT_EQ(first.key, graph_key(rigid.get()));
  EXPECT_EQ(rigid->key, first.key);
  EXPECT_TRUE(first.invariant);
  EXPECT_TRUE(first.rigid);
  const canonical_form second = forms.canonicalize(path_graph(4).get());
  EXPECT_TRUE(second.invariant);
  EXPECT_FALSE(second.rigid);
}

TEST(Canonical, DiscreteRefinementIsTheForm) {
  // Centre first for its degree, then the ends by label.
  const threshold_scope scope(1);
  const graph_ptr g = make_graph({7, 3, 5}, {{0, 1, 8}, {1, 2, 9}});
  const uint32_t key = cl_canonicalize_graph(g.get());
  const graph_ptr expected = make_graph({3, 5, 7}, {{0, 2, 8}, {0, 1, 9}});
  EXPECT_TRUE(same_structure(g.get(), expected.get()));
  EXPECT_EQ(vlabels_of(g.get()), (std::vector<int>{3, 5, 7}));
  EXPECT_EQ(std::vector<int>(g->vid, g->vid + 3), (std::vector<int>{1, 2, 0}));
  EXPECT_EQ(key, graph_key(expected.get()));
  EXPECT_EQ(g->key, key);
}

TEST(Canonical, VidIsCarriedAlongUntouched) {
  const graph_ptr g = make_graph({7, 3, 5}, {{0, 1}, {1, 2}});
  const int vids[] = {-20, 400, 0};
  std::copy_n(vids, 3, g->vid);
  cl_canonicalize_graph(g.get());
  EXPECT_EQ(std::vector<int>(g->vid, g->vid + 3),
            (std::vector<int>{400, 0, -20}));
}

// As a candidate lies in memory made for the largest of its size.
TEST(Canonical, ArraysWithRoomForMore) {
  test_rng rng(23);
  labeller forms;
  for (int round = 0; round < 50; round++) {
    const graph_ptr g = random_graph(rng, {.vs = 1 + round % 9});
    const graph_ptr exact(graph_copy(g.get()));
    const graph_ptr roomy(graph_create(g->es + 5, g->vs + 3));
    graph_copy_into(g.get(), roomy.get());
    forms.canonicalize(exact.get());
    forms.canonicalize(roomy.get());
    EXPECT_TRUE(same_structure(exact.get(), roomy.get()));
    EXPECT_EQ(exact->key, roomy->key);
    expect_form_of(roomy.get(), g.get());
  }
}

TEST(Canonical, OneVertexAndNoVertex) {
  const graph_ptr one = make_graph({4}, {});
  EXPECT_EQ(cl_canonicalize_graph(one.get()), graph_key(one.get()));
  EXPECT_EQ(one->vlabel[0], 4);
  const graph_ptr none = make_graph({}, {});
  EXPECT_EQ(cl_canonicalize_graph(none.get()), graph_key(none.get()));
}

TEST(Canonical, ExhaustiveFormIsOneForAllCopies) {
  const threshold_scope scope(INT_MAX);
  test_rng rng(5);
  for (int round = 0; round < 80; round++) {
    const graph_ptr g = random_graph(rng, {.vs = 2 + round % 5,
                                           .extra_edges = random_below(rng, 6),
                                           .vlabels = 1 + round % 2,
                                           .elabels = 1 + round % 3});
    expect_one_form(g.get(), rng);
  }
}

TEST(Canonical, ExhaustiveFormsAreEqualOnlyWhenIsomorphic) {
  const threshold_scope scope(INT_MAX);
  test_rng rng(6);
  int isomorphic = 0;
  for (int round = 0; round < 300; round++) {
    const random_graph_shape shape = {.vs = 4,
                                      .extra_edges = 1 + round % 3,
                                      .vlabels = 1 + round % 2,
                                      .elabels = 1};
    const graph_ptr a = random_graph(rng, shape);
    const graph_ptr b = random_graph(rng, shape);
    const bool same = a->es == b->es && !naive_maps(a.get(), b.get()).empty();
    isomorphic += same;
    EXPECT_EQ(
        same_structure(canonical(a.get()).get(), canonical(b.get()).get()),
        same)
        << round;
  }
  EXPECT_GT(isomorphic, 20);
  EXPECT_LT(isomorphic, 280);
}

TEST(Canonical, TreesHaveOneFormUnderEveryThreshold) {
  for (const int threshold : {1, 3, 5}) {
    const threshold_scope scope(threshold);
    test_rng rng(7);
    for (int round = 0; round < 60; round++) {
      const graph_ptr g = random_graph(rng, {.vs = 1 + round % 8,
                                             .extra_edges = 0,
                                             .vlabels = 1 + round % 2,
                                             .elabels = 1});
      expect_one_form(g.get(), rng);
    }
  }
}

TEST(Canonical, RingsAndCompleteGraphsHaveOneFormUnderEveryThreshold) {
  test_rng rng(8);
  for (const int threshold : {1, 5}) {
    const threshold_scope scope(threshold);
    for (int n = 3; n <= 7; n++)
      expect_one_form(ring_graph(n).get(), rng);
    for (int n = 2; n <= 5; n++)
      expect_one_form(complete_graph(n).get(), rng);
  }
}

TEST(Canonical, LargeDiscreteGraphsHaveOneForm) {
  test_rng rng(9);
  int invariant = 0;
  for (int round = 0; round < 5; round++) {
    const graph_ptr g = random_graph(
        rng, {.vs = 40, .extra_edges = 60, .vlabels = 40, .elabels = 9});
    canonical(g.get());
    if (!cl_form_is_invariant())
      continue;
    invariant++;
    expect_one_form(g.get(), rng);
  }
  EXPECT_GT(invariant, 0);
}

TEST(Canonical, EveryThresholdGivesAFormOfTheGraph) {
  test_rng rng(10);
  for (int round = 0; round < 200; round++) {
    const graph_ptr g = random_graph(rng, {.vs = 1 + round % 8,
                                           .extra_edges = random_below(rng, 9),
                                           .vlabels = 1 + round % 2,
                                           .elabels = 1 + round % 2,
                                           .connected = round % 4 != 0});
    const threshold_scope scope(round % 7 - 1);
    const graph_ptr form = canonical(g.get());
    expect_form_of(form.get(), g.get());
    EXPECT_EQ(form->key, graph_key(form.get()));
  }
}

// Three vertices joined with three others, a perfect matching with label 1: six
// vertices that refinement leaves alike.
static graph_ptr matched_bipartite() {
  std::vector<test_edge> edges;
  for (int u = 0; u < 3; u++)
    for (int w = 3; w < 6; w++)
      edges.push_back({u, w, u + 3 == w});
  return make_graph(std::vector<int>(6, 0), edges);
}

// Whether the form begins with an edge labelled 1, as the best arrangement
// does.  Setting a vertex apart sorts its neighbours by label, so all that the
// individualising search reaches begin with an edge labelled 0.
static bool begins_with_the_best_edge(int threshold) {
  const threshold_scope scope(threshold);
  const graph_ptr form = canonical(matched_bipartite().get());
  return graph_edge_label(form.get(), 0, 1) == 1;
}

TEST(Canonical, CellSizeChoosesTheSearch) {
  EXPECT_TRUE(begins_with_the_best_edge(INT_MAX));
  EXPECT_TRUE(begins_with_the_best_edge(7));
  EXPECT_FALSE(begins_with_the_best_edge(6));
  EXPECT_FALSE(begins_with_the_best_edge(1));
  EXPECT_FALSE(begins_with_the_best_edge(0));
  EXPECT_FALSE(begins_with_the_best_edge(-1));
}

TEST(Labeller, SeveralKeepTheirThresholds) {
  labeller by_steps(6);
  labeller exhaustive(7);
  for (int round = 0; round < 2; round++) {
    EXPECT_FALSE(by_steps.canonicalize(matched_bipartite().get()).invariant);
    EXPECT_TRUE(exhaustive.canonicalize(matched_bipartite().get()).invariant);
  }
}

TEST(Labeller, StepsOfTheIndividualisingSearchAreAddedUp) {
  labeller by_steps(6);
  EXPECT_EQ(by_steps.stabilizer_calls(), 0u);
  by_steps.canonicalize(path_graph(4).get());
  EXPECT_EQ(by_steps.stabilizer_calls(), 0u);
  // A ring of three and one of four: seven vertices that are no orbit.
  const graph_ptr rings =
      make_graph(std::vector<int>(7, 0),
                 {{0, 1}, {1, 2}, {2, 0}, {3, 4}, {4, 5}, {5, 6}, {6, 3}});
  const graph_ptr again(graph_copy(rings.get()));
  by_steps.canonicalize(rings.get());
  const uint64_t once = by_steps.stabilizer_calls();
  EXPECT_GT(once, 0u);
  by_steps.canonicalize(again.get());
  EXPECT_EQ(by_steps.stabilizer_calls(), 2 * once);
}

TEST(Canonical, FormIsCalledInvariantUnlessTheOrderOfVerticesDecides) {
  canonical(matched_bipartite().get());
  EXPECT_FALSE(cl_form_is_invariant());
  canonical(make_graph({0, 1}, {{0, 1}}).get()); // told apart by labels
  EXPECT_TRUE(cl_form_is_invariant());
  canonical(matched_bipartite().get());
  canonical(star_graph(8).get()); // seven leaves, all twins
  EXPECT_TRUE(cl_form_is_invariant());
  canonical(matched_bipartite().get());
  canonical(path_graph(4).get()); // searched exhaustively
  EXPECT_TRUE(cl_form_is_invariant());
}

// A centre with arms of two edges each.
static graph_ptr spider_graph(int arms) {
  std::vector<test_edge> edges;
  for (int i = 0; i < arms; i++) {
    edges.push_back({0, 1 + 2 * i});
    edges.push_back({1 + 2 * i, 2 + 2 * i});
  }
  return make_graph(std::vector<int>(static_cast<size_t>(1 + 2 * arms), 0),
                    edges);
}

TEST(Canonical, SpidersAreCalledInvariant) {
  // All orders of the arms are alike, and automorphisms show it.
  const threshold_scope scope(5);
  for (const int arms : {4, 5, 9, 30}) {
    canonical(spider_graph(arms).get());
    EXPECT_TRUE(cl_form_is_invariant()) << arms;
  }
}

// A hub, a ring of that many vertices, and between them one more for each of
// those, which has two leaves.
static graph_ptr fringed_wheel(int n) {
  std::vector<test_edge> edges;
  for (int i = 0; i < n; i++) {
    const int between = 1 + i;
    const int outer = 1 + n + i;
    edges.insert(edges.end(), {{0, between},
                               {between, outer},
                               {outer, 1 + n + (i + 1) % n},
                               {between, 1 + 2 * n + 2 * i},
                               {between, 2 + 2 * n + 2 * i}});
  }
  return make_graph(std::vector<int>(static_cast<size_t>(1 + 4 * n), 0), edges);
}

TEST(Canonical, FormIsNotCalledInvariantAtAnyCost) {
  // Nothing tells the orders of the vertices around the hub apart until all are
  // placed, and few are images of one another.
  const threshold_scope scope(5);
  canonical(fringed_wheel(5).get());
  EXPECT_TRUE(cl_form_is_invariant());
  canonical(fringed_wheel(9).get());
  EXPECT_FALSE(cl_form_is_invariant());
}

TEST(Canonical, GraphIsCalledRigidWhenRefinementTellsAllVerticesApart) {
  canonical(make_graph({0, 1, 0}, {{0, 1, 0}, {1, 2, 1}}).get());
  EXPECT_TRUE(cl_form_is_rigid());
  canonical(path_graph(3).get());
  EXPECT_FALSE(cl_form_is_rigid());
  canonical(make_graph({4}, {}).get());
  EXPECT_TRUE(cl_form_is_rigid());
}

TEST(Canonical, RigidGraphsHaveTheIdentityOnly) {
  test_rng rng(11);
  int rigid = 0;
  for (int round = 0; round < 200; round++) {
    const graph_ptr g = random_graph(rng, {.vs = 1 + round % 6,
                                           .extra_edges = round % 4,
                                           .vlabels = 2,
                                           .elabels = 2});
    canonical(g.get());
    if (!cl_form_is_rigid())
      continue;
    rigid++;
    EXPECT_TRUE(cl_form_is_invariant());
    EXPECT_EQ(naive_maps(g.get(), g.get()).size(), 1u) << round;
  }
  EXPECT_GT(rigid, 20);
}

TEST(Canonical, IncomingOrderThatBeginsBetterStays) {
  // Both begin with an edge labelled 1; the next rows tell which one is better,
  // but neither is ever compared with the other.
  for (const std::vector<int> &order : {std::vector<int>{0, 3, 1, 4, 2, 5},
                                        std::vector<int>{0, 3, 4, 1, 5, 2}}) {
    std::vector<int> to(6);
    for (int i = 0; i < 6; i++)
      to[static_cast<size_t>(order[static_cast<size_t>(i)])] = i;
    const graph_ptr g = relabelled(matched_bipartite().get(), to);
    EXPECT_TRUE(same_structure(canonical(g.get()).get(), g.get()));
    EXPECT_FALSE(cl_form_is_invariant());
  }
}

TEST(Canonical, FirstOfEqualArrangementsIsKept) {
  const graph_ptr g = complete_graph(4);
  cl_canonicalize_graph(g.get());
  EXPECT_EQ(std::vector<int>(g->vid, g->vid + 4), identity_of(4));
}

TEST(Canonical, WorkAreaServesGraphsOfAllSizes) {
  cl_free_work_area();
  const graph_ptr small = canonical(path_graph(4).get());
  const graph_ptr large = canonical(path_graph(9).get());
  EXPECT_TRUE(
      same_structure(canonical(path_graph(4).get()).get(), small.get()));
  cl_free_work_area();
  EXPECT_TRUE(
      same_structure(canonical(path_graph(9).get()).get(), large.get()));
  EXPECT_TRUE(
      same_structure(canonical(path_graph(4).get()).get(), small.get()));
}

} // namespace kestro
