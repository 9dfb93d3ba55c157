// Parents by automorphisms of the candidate, against a canonical form for each
// edge.
//
// A drawn graph is a candidate, and what it becomes without an edge is the
// level below, complete or without one pattern.  It is offered as each of its
// parents plus an edge.  Both registrations must decide alike and enter the
// same parents for the same edges, of which the same two are kept; every map
// must fit.

#include "mining/registration.h"

#include <algorithm>

#include <gtest/gtest.h>

#include "reference/graph/graph.h"
#include "reference/mining/registration.h"
#include "reference/mining/sg_set.h"
#include "support/engine_comparison.h"
#include "support/graph_families.h"
#include "support/plain_generation.h"
#include "support/records.h"

namespace kestro {

namespace {

constexpr uint64_t seeds = 500;

struct case_counts {
  int accepted = 0;
  int rejected = 0;
  int shortened = 0;       // accepted, some parents are images of others
  int variant = 0;         // accepted, the own form depends on order
  int variant_parents = 0; // accepted, and that of some parent does
};

// A level of what g becomes without an edge, and how its patterns are extended
// to g again.
struct level_below {
  sg_set_ptr patterns{sg_set_create()};
  std::vector<extension> extensions;
  bool all_invariant = true;
};

// Adds the form of g, unless it is there; whether it is known not to depend on
// the order of vertices.
bool add_form(sg_set *level, const graph_ptr &g, labeller *labels) {
  sg_ptr sg = record_of(g);
  sg->invariant = labels->canonicalize(sg->g).invariant;
  const bool invariant = sg->invariant;
  for (int i = 0; i < g->vs; i++)
    sg->g->vid[i] = i;
  if (sg_set_find(level, sg.get()) == -1)
    sg_set_insert(level, std::move(sg));
  return invariant;
}

// Where forms depend on the order of vertices, the level has several of one
// graph.
level_below parts_of(const graph *g, labeller labels) {
  test_rng rng(1);
  level_below below;
  for (const test_edge &edge : edges_of(g))
    if (const graph_ptr rest = plain_without(g, edge.u, edge.w)) {
      const bool invariant = add_form(below.patterns.get(), rest, &labels);
      below.all_invariant &= invariant;
      for (int copy = 0; copy < 4 && !invariant; copy++)
        add_form(below.patterns.get(),
                 relabelled(rest.get(), random_permutation(rng, rest->vs)),
                 &labels);
    }
  registration to(below.patterns.get(), labels);
  const sg_ptr whole = record_of(graph_ptr(graph_copy(g)));
  if (const subgraph *sg = sg_register_candidate(whole.get(), &to))
    for (int i = 0; i < std::min(sg_parent_size(sg), 5); i++)
      below.extensions.push_back(sg_parent_edge(sg, sg_parent_at(sg, i)));
  return below;
}

// What is wrong with a record that must be like another one, or "".
std::string difference(const subgraph *made, const subgraph *expected,
                       const sg_set *level) {
  if (!same_structure(made->g, expected->g) ||
      made->invariant != expected->invariant)
    return "another form";
  if (sg_parent_size(made) != sg_parent_size(expected))
    return "another number of parents";
  for (int i = 0; i < sg_parent_size(made); i++) {
    const sg_parent *a = sg_parent_at(made, i);
    const sg_parent *b = sg_parent_at(expected, i);
    if (a->pid != b->pid || a->u != b->u || a->v != b->v || a->vs != b->vs)
      return "another parent";
    if (!is_map_onto_rest(made->g, a->u, a->v, sg_set_get(level, a->pid)->g, a))
      return "a wrong map";
  }
  return std::equal(made->kept, made->kept + 2, expected->kept)
             ? ""
             : "other parents are kept";
}

// The same after x has been offered both ways.
std::string difference(const extension &x, const sg_set *level,
                       const labeller &labels, bool all_invariant,
                       case_counts *counts) {
  registration fast(level, labels);
  registration slow(level, labels);
  const subgraph *made = sg_offer_extension(x, &fast);
  const sg_ptr cand =
      record_of(plain_extended(sg_set_get(level, x.pattern)->g, x));
  const subgraph *expected = sg_register_candidate(cand.get(), &slow);
  if (!made || !expected) {
    counts->rejected++;
    return !made && !expected ? "" : "another decision";
  }
  counts->accepted++;
  counts->shortened += !made->rigid && sg_parent_size(made) >= 3;
  counts->variant += !made->invariant;
  counts->variant_parents += !all_invariant;
  return difference(made, expected, level);
}

// level without the pattern id.
sg_set_ptr without(const sg_set *level, int id) {
  sg_set_ptr rest(sg_set_create());
  for (int i = 0; i < sg_set_size(level); i++)
    if (i != id)
      sg_set_push(rest.get(), sg_ptr(sg_copy(sg_set_get(level, i))));
  return rest;
}

std::string first_difference(const graph *drawn, int threshold, form kind,
                             case_counts *counts) {
  const labeller labels(threshold, kind);
  const level_below below = parts_of(drawn, labels);
  const sg_set *level = below.patterns.get();
  std::string found;
  for (const extension &x : below.extensions) {
    found += difference(x, level, labels, below.all_invariant, counts);
    const int lacking = sg_set_size(level) - 1 - x.pattern;
    if (lacking == x.pattern)
      continue;
    const sg_set_ptr incomplete = without(level, lacking);
    extension y = x;
    y.pattern -= lacking < x.pattern;
    found +=
        difference(y, incomplete.get(), labels, below.all_invariant, counts);
  }
  return found;
}

case_counts hold_all(drawn_graph (*draw)(uint64_t), form kind) {
  case_counts counts;
  for (uint64_t seed = 0; seed < seeds; seed++) {
    const drawn_graph drawn = draw(seed + 5000000);
    const int threshold = threshold_of_seed(seed);
    const auto wrong = [&](const graph *g) {
      case_counts unused;
      return first_difference(g, threshold, kind, &unused);
    };
    if (first_difference(drawn.g.get(), threshold, kind, &counts).empty())
      continue;
    const graph_ptr smallest =
        shrunk_graph(graph_ptr(graph_copy(drawn.g.get())),
                     [&](const graph *g) { return !wrong(g).empty(); });
    ADD_FAILURE() << "seed " << seed << ", " << drawn.family << ", threshold "
                  << threshold << ": " << wrong(smallest.get()) << " in "
                  << graph_words(smallest.get());
    return counts;
  }
  return counts;
}

} // namespace

TEST(Registration, EntersWhatAFormForEachEdgeEnters) {
  const case_counts counts = hold_all(draw_graph, form::prescribed);
  EXPECT_GT(counts.accepted, 1000);
  EXPECT_GT(counts.rejected, 1000);
  EXPECT_GT(counts.shortened, 1000);
}

TEST(Registration, EntersWhatAFormForEachEdgeEntersWhereOrderMatters) {
  const case_counts counts = hold_all(draw_two_label_graph, form::prescribed);
  EXPECT_GT(counts.shortened, 1000);
  EXPECT_GT(counts.variant, 10);
  EXPECT_GT(counts.variant_parents, 10);
}

// Four edges at every vertex: without either of two edges that an automorphism
// exchanges it comes to two forms.
TEST(Registration, EntersAnotherFormOfAnImage) {
  const graph_ptr g = make_graph(std::vector<int>(9, 0), {{0, 3},
                                                          {0, 5},
                                                          {0, 6},
                                                          {0, 7},
                                                          {1, 3},
                                                          {1, 4},
                                                          {1, 6},
                                                          {1, 7},
                                                          {2, 4},
                                                          {2, 5},
                                                          {2, 7},
                                                          {2, 8},
                                                          {3, 5},
                                                          {3, 8},
                                                          {4, 5},
                                                          {4, 6},
                                                          {6, 8},
                                                          {7, 8}});
  case_counts counts;
  EXPECT_EQ(first_difference(g.get(), 2, form::prescribed, &counts), "");
  EXPECT_GT(counts.shortened, 0);
  EXPECT_EQ(counts.variant_parents, counts.accepted);
}

TEST(Registration, EntersWhatAFormForEachEdgeEntersInTheExactForm) {
  const case_counts counts = hold_all(draw_two_label_graph, form::exact);
  EXPECT_GT(counts.shortened, 1000);
  EXPECT_EQ(counts.variant, 0);
}

} // namespace kestro
