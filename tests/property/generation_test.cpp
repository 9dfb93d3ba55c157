// Candidate generation against the plain one, on random databases: the same
// candidates, each with the same parents, of which the same two are kept.
//
// A seed is a database and a threshold between the two searches for canonical
// forms.  Below five the form of some small graphs depends on the order of
// their vertices, so that one graph can come out as several candidates; the
// generations must agree there too.
//
// In the exact form the same is done on databases of symmetric graphs, where
// the product uses generators and orbits of groups and the plain generation
// lists every automorphism of every core.

#include <sstream>
#include <stdexcept>

#include <gtest/gtest.h>

#include "reference/cl/canonical.h"
#include "reference/cl/canonical_calls.h"
#include "support/exact_form.h"
#include "support/mined_levels.h"
#include "support/plain_generation.h"
#include "support/random_database.h"
#include "support/records.h"
#include "support/symmetric_database.h"
#include "support/threshold_scope.h"

namespace kestro {

namespace {

constexpr int seeds_per_test = 100;
constexpr int test_count = 11;
constexpr int edge_limit = 8; // of a transaction

constexpr int symmetric_seeds_per_test = 50;
constexpr int symmetric_test_count = 10;
constexpr int symmetric_edge_limit = 12;

struct generation_case {
  uint64_t seed;
  std::vector<plain_graph> database;
  int minsup;
  int threshold; // of the canonical form
  form kind = form::prescribed;
};

// Four vertices all joined, a perfect matching with another label, and up to
// three leaves: around the smallest graph whose form depends on the order of
// its vertices.
plain_graph matched_clique(dice *chance) {
  plain_graph g;
  g.vertices.assign(4, "A");
  g.edges = {{0, 1, "x"}, {2, 3, "x"}, {0, 2, "y"},
             {1, 3, "y"}, {0, 3, "y"}, {1, 2, "y"}};
  for (int leaves = chance->below(4); leaves > 0; leaves--) {
    g.edges.push_back({chance->below(4), static_cast<int>(g.vertices.size()),
                       chance->one_in(2) ? "x" : "y"});
    g.vertices.emplace_back(chance->one_in(2) ? "A" : "B");
  }
  return g;
}

generation_case case_of_seed(uint64_t seed) {
  dice chance(seed);
  generation_case c{};
  c.seed = seed;
  c.database = random_database(&chance, edge_limit);
  c.minsup =
      chance.between(1, std::max(2, static_cast<int>(c.database.size()) / 3));
  c.threshold = chance.one_in(3) ? chance.between(1, 4) : 5;
  for (int copies = chance.one_in(5) ? c.minsup : 0; copies > 0; copies--)
    c.database.push_back(matched_clique(&chance));
  return c;
}

generation_case symmetric_case_of_seed(uint64_t seed) {
  dice chance(seed + 1000000);
  generation_case c{};
  c.seed = seed;
  c.database = symmetric_database(&chance, symmetric_edge_limit);
  c.minsup = chance.between(1, static_cast<int>(c.database.size()));
  c.threshold = chance.one_in(3) ? chance.between(1, 4) : 5;
  c.kind = form::exact;
  return c;
}

graph_ptr exact_canonical(const graph *g) {
  return exact_form(g, cl_get_stabilizer_threshold());
}

// The first difference is thrown as a std::runtime_error.
void require(bool holds, const char *what, const graph *g) {
  if (holds)
    return;
  std::ostringstream text;
  text << what << ':';
  for (int i = 0; i < g->vs; i++)
    text << " v" << i << '=' << g->vlabel[i];
  for (const test_edge &edge : edges_of(g))
    text << ' ' << edge.u << '-' << edge.w << '=' << edge.label;
  throw std::runtime_error(text.str());
}

void check_parents(const subgraph *sg, const plain_candidate &expected,
                   const sg_set *children) {
  require(pids_of(sg) == expected.pids, "other parents", sg->g);
  std::vector<plain_parent> kept;
  for (int i = 0; i < sg_kept_size(sg); i++) {
    const sg_parent *entry = sg_kept_at(sg, i);
    kept.push_back({entry->pid, entry->u, entry->v});
    require(entry->vs == sg->g->vs &&
                is_map_onto_rest(sg->g, entry->u, entry->v,
                                 sg_set_get(children, entry->pid)->g, entry),
            "a wrong map to a parent", sg->g);
  }
  require(kept == expected.kept, "other kept parents", sg->g);
}

// What was compared.
struct totals {
  int levels = 0;
  int candidates = 0;
  int variant = 0;   // candidates whose form depends on the order of vertices
  int symmetric = 0; // that are not known to be rigid
};

// The records that several threads make are those that one makes.
void check_jobs(const two_levels &levels, const sg_set *made, form kind) {
  for (const int jobs : {2, 3, 7}) {
    const sg_set_ptr same = candidates_of(levels, jobs, kind);
    if (sg_set_size(same.get()) != sg_set_size(made))
      throw std::runtime_error("other candidates of several threads");
    for (int i = 0; i < sg_set_size(made); i++) {
      const subgraph *sg = sg_set_get(made, i);
      const subgraph *other = sg_set_get(same.get(), i);
      require(
          form_as_is(other->g) == form_as_is(sg->g) &&
              pids_of(other) == pids_of(sg) && kept_of(other) == kept_of(sg) &&
              other->invariant == sg->invariant && other->rigid == sg->rigid &&
              sg_parent_size(other) == sg_parent_size(sg),
          "another candidate of several threads", sg->g);
    }
  }
}

void compare(const two_levels &levels, const sg_set *made, form kind,
             totals *sum) {
  const std::map<graph_form, plain_candidate> expected =
      plain_candidates(levels.children.get(), levels.cores.get(),
                       kind == form::exact ? exact_canonical : plain_canonical);
  sum->levels++;
  for (int i = 0; i < sg_set_size(made); i++) {
    const subgraph *sg = sg_set_get(made, i);
    const auto found = expected.find(form_as_is(sg->g));
    require(found != expected.end(), "no candidate", sg->g);
    check_parents(sg, found->second, levels.children.get());
    sum->candidates++;
    sum->variant += !sg->invariant;
    sum->symmetric += !sg->rigid;
  }
  const std::map<graph_form, int> ids = ids_by_form(made);
  for (const auto &[form, candidate] : expected)
    require(ids.count(form) > 0, "missing", candidate.form.get());
  sg_set_check(made);
}

// The first difference, empty if there is none.
std::string difference(const generation_case &c, totals *sum) {
  const threshold_scope scope(c.threshold);
  try {
    visit_levels(
        number(c.database), c.minsup,
        [&](const two_levels &levels, const sg_set *made) {
          compare(levels, made, c.kind, sum);
          if (c.seed % 8 == 0)
            check_jobs(levels, made, c.kind);
        },
        c.kind);
    return "";
  } catch (const std::exception &e) {
    return e.what();
  }
}

std::string shrunk(generation_case c) {
  totals unused;
  c.database = shrink_database(c.database, [&](const auto &smaller) {
    generation_case tried = c;
    tried.database = smaller;
    return !difference(tried, &unused).empty();
  });
  const text_style plain{};
  return "seed " + std::to_string(c.seed) + ", minimum support " +
         std::to_string(c.minsup) + ", threshold " +
         std::to_string(c.threshold) + ": " + difference(c, &unused) +
         "\nin the database\n" + database_text(c.database, plain);
}

} // namespace

class Generation : public testing::TestWithParam<int> {};

TEST_P(Generation, MakesThePlainCandidatesWithTheirParents) {
  totals sum;
  for (int i = 0; i < seeds_per_test; i++) {
    const int seed = GetParam() * seeds_per_test + i;
    const generation_case c = case_of_seed(static_cast<uint64_t>(seed));
    if (!difference(c, &sum).empty())
      ADD_FAILURE() << shrunk(c);
  }
  EXPECT_GT(sum.levels, seeds_per_test);
  EXPECT_GT(sum.candidates, 10 * seeds_per_test);
  EXPECT_GT(sum.variant, 0);
}

INSTANTIATE_TEST_SUITE_P(Seeds, Generation, testing::Range(0, test_count));

class SymmetricGeneration : public testing::TestWithParam<int> {};

TEST_P(SymmetricGeneration, MakesWhatAllAutomorphismsMake) {
  totals sum;
  for (int i = 0; i < symmetric_seeds_per_test; i++) {
    const int seed = GetParam() * symmetric_seeds_per_test + i;
    const generation_case c =
        symmetric_case_of_seed(static_cast<uint64_t>(seed));
    if (!difference(c, &sum).empty())
      ADD_FAILURE() << shrunk(c);
  }
  EXPECT_GT(sum.levels, 2 * symmetric_seeds_per_test);
  EXPECT_GT(sum.symmetric, 10 * symmetric_seeds_per_test);
  EXPECT_EQ(sum.variant, 0);
}

INSTANTIATE_TEST_SUITE_P(Seeds, SymmetricGeneration,
                         testing::Range(0, symmetric_test_count));

} // namespace kestro
