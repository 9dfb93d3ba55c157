// The parents of a candidate that are derived without its canonical form,
// against the canonical forms of its parts.
//
// Every pattern of every level of random databases is extended by every edge
// there is.  A refusal needs a connected part that is not in the level; a
// parent that is found must be the part it is found for; and a parent may stay
// unknown only where the edge held the pattern together and lies on the new
// cycle, or where a form depends on the order of vertices.

#include "mining/derived_parents.h"

#include <algorithm>
#include <sstream>
#include <stdexcept>

#include <gtest/gtest.h>

#include "reference/cl/canonical.h"
#include "reference/cl/canonical_calls.h"
#include "reference/graph/graph.h"
#include "support/mined_levels.h"
#include "support/plain_generation.h"
#include "support/random_database.h"
#include "support/records.h"
#include "support/threshold_scope.h"

namespace kestro {

namespace {

constexpr int edge_limit = 6; // of a transaction

// How often each case came up.
struct case_counts {
  int refused = 0;
  int passed = 0;
  int known = 0;
  int unknown = 0;
  int all_known = 0;
  int pendant_at_leaf = 0;    // passed, the leaf's edge has to stay
  int kept_leaf = 0;          // known, an end without its edge is kept by x's
  int between_two_leaves = 0; // passed
  int symmetric_core = 0;     // known through a core with automorphisms
  int variant = 0;            // candidates with a form that depends on order
};

bool is_leaf(const graph *g, int u) { return g->v[u + 1] - g->v[u] == 1; }

// The first violation is thrown as a std::runtime_error.
class extension_check {
public:
  extension_check(const two_levels &levels, case_counts *counts)
      : children_(levels.children.get()), cores_(levels.cores.get()),
        links_(links_of(levels)), table_(children_, &links_),
        derived_(children_, &table_), ids_(ids_by_form(children_)),
        counts_(counts) {}

  void check_pattern(int id, int edge_labels, int vertex_labels) {
    const graph *g = sg_set_get(children_, id)->g;
    for (int u = 0; u < g->vs; u++)
      for (int elabel = 0; elabel < edge_labels; elabel++) {
        for (int vlabel = 0; vlabel < vertex_labels; vlabel++)
          check(pendant_extension(id, u, elabel, vlabel));
        for (int w = u + 1; w < g->vs; w++)
          if (!graph_has_edge(g, u, w))
            check(closing_extension(id, w, u, elabel));
      }
  }

private:
  void check(const extension &x) {
    x_ = x;
    pattern_ = sg_set_get(children_, x.pattern);
    cand_ = plain_extended(pattern_->g, x);
    const bool passed = derived_.look_up(x);
    cl_canonicalize_graph(cand_.get());
    const bool invariant = cl_form_is_invariant();
    parts_ = find_parts();
    if (!passed) {
      counts_->refused++;
      require(std::any_of(parts_.begin(), parts_.end(),
                          [](const part &p) { return p.id == -1; }),
              "refused, but all its parts are there");
      return;
    }
    derived_.take_order(cand_.get());
    count_case(invariant);
    bool all = true;
    for (const part &p : parts_)
      all &= check_part(p);
    counts_->all_known += derived_.knows_all();
    require(!derived_.knows_all() || all, "not all parents are known");
  }

  // A connected part of the candidate of one edge less.
  struct part {
    removable_edge edge;
    graph_ptr graph;
    int id; // by its form, -1 for none
  };

  std::vector<part> find_parts() const {
    std::vector<part> parts;
    for (const test_edge &edge : edges_of(cand_.get())) {
      graph_ptr rest = plain_without(cand_.get(), edge.u, edge.w);
      if (!rest)
        continue;
      const auto found = ids_.find(plain_form(rest.get()));
      parts.push_back(
          {{edge.u, edge.w, graph_edge_index(cand_.get(), edge.u, edge.w)},
           std::move(rest),
           found == ids_.end() ? -1 : found->second});
    }
    return parts;
  }

  // Whether the part's parent is known, which must be right then.
  bool check_part(const part &p) {
    const int vs = cand_->vs;
    std::vector<int> memory(sg_parent_bytes(vs) / sizeof(int), -7);
    auto *entry = reinterpret_cast<sg_parent *>(memory.data());
    entry->vs = static_cast<int16_t>(vs);
    const bool known = derived_.find(p.edge, entry);
    require(known == derived_.knows(p.edge), "knows() and find() differ");
    if (!known) {
      counts_->unknown++;
      check_unknown(p);
      return false;
    }
    counts_->known++;
    require(entry->pid == p.id, "another parent is found");
    require(is_map_onto_rest(cand_.get(), p.edge.u, p.edge.w,
                             sg_set_get(children_, p.id)->g, entry),
            "a wrong map is found");
    count_known(p);
    return true;
  }

  // The ends of a part's edge as vertices of the pattern, the smaller first.
  test_edge in_pattern(const part &p) const {
    const int u = cand_->vid[p.edge.u];
    const int w = cand_->vid[p.edge.w];
    return {std::min(u, w), std::max(u, w)};
  }
  bool is_own(const test_edge &e) const {
    return e.u == x_.from && e.w == (x_.to == -1 ? pattern_->g->vs : x_.to);
  }

  void check_unknown(const part &p) const {
    const test_edge e = in_pattern(p);
    if (is_own(e)) {
      require(!pattern_->invariant, "the pattern itself is not known");
      return;
    }
    const graph_ptr core = plain_without(pattern_->g, e.u, e.w);
    if (!core) { // the edge held the pattern together
      require(x_.to != -1, "a leaf's edge is not known");
      return;
    }
    // Or a form of the core or of the part depends on the order.
    cl_canonicalize_graph(core.get());
    const bool core_is_invariant = cl_form_is_invariant();
    const graph_ptr rest(graph_copy(p.graph.get()));
    cl_canonicalize_graph(rest.get());
    require(!core_is_invariant || !cl_form_is_invariant(),
            "an edge is not known");
  }

  void count_case(bool invariant) {
    counts_->passed++;
    counts_->variant += !invariant;
    const bool from_leaf = is_leaf(pattern_->g, x_.from);
    if (x_.to == -1)
      counts_->pendant_at_leaf += from_leaf;
    else
      counts_->between_two_leaves += from_leaf && is_leaf(pattern_->g, x_.to);
  }

  void count_known(const part &p) {
    const test_edge e = in_pattern(p);
    if (is_own(e))
      return;
    for (const int end : {e.u, e.w})
      counts_->kept_leaf += x_.to != -1 && is_leaf(pattern_->g, end) &&
                            (end == x_.from || end == x_.to);
    const graph_ptr core = plain_without(pattern_->g, e.u, e.w);
    counts_->symmetric_core += plain_automorphisms(core.get()).size() > 1;
  }

  void require(bool holds, const char *what) const {
    if (holds)
      return;
    std::ostringstream text;
    text << what << ": pattern " << x_.pattern << " with";
    const graph *g = pattern_->g;
    for (int i = 0; i < g->vs; i++)
      text << " v" << i << '=' << g->vlabel[i];
    for (const test_edge &edge : edges_of(g))
      text << ' ' << edge.u << '-' << edge.w << '=' << edge.label;
    text << ", plus " << x_.from << '-' << x_.to << '=' << x_.elabel
         << " v=" << x_.vlabel;
    throw std::runtime_error(text.str());
  }

  const sg_set *children_;
  const sg_set *cores_;
  core_links links_;
  child_table table_;
  derived_parents derived_;
  std::map<graph_form, int> ids_; // of children
  case_counts *counts_;
  extension x_ = {}; // the one checked, with
  const subgraph *pattern_ = nullptr;
  graph_ptr cand_; // in canonical form
  std::vector<part> parts_;
};

void check_levels(const std::vector<plain_graph> &database, int minsup,
                  case_counts *counts) {
  const numbered_database db = number(database);
  visit_levels(db, minsup, [&](const two_levels &levels, const sg_set *) {
    extension_check check(levels, counts);
    for (int id = 0; id < sg_set_size(levels.children.get()); id++)
      check.check_pattern(id, db.edge_labels, db.vertex_labels);
  });
}

// The first violation, empty if there is none.
std::string violation(const std::vector<plain_graph> &database, int minsup,
                      case_counts *counts) {
  try {
    check_levels(database, minsup, counts);
    return "";
  } catch (const std::exception &e) {
    return e.what();
  }
}

std::string shrunk(uint64_t seed, std::vector<plain_graph> database,
                   int minsup) {
  case_counts unused;
  database = shrink_database(database, [&](const auto &smaller) {
    return !violation(smaller, minsup, &unused).empty();
  });
  return "seed " + std::to_string(seed) + ", minimum support " +
         std::to_string(minsup) + ": " + violation(database, minsup, &unused) +
         "\nin the database\n" + database_text(database, text_style{});
}

} // namespace

TEST(DerivedParents, AreTheCanonicalFormsOfTheParts) {
  case_counts counts;
  for (uint64_t seed = 0; seed < 150; seed++) {
    dice chance(seed);
    const std::vector<plain_graph> database =
        random_database(&chance, edge_limit);
    const int minsup =
        chance.between(1, std::max(2, static_cast<int>(database.size()) / 3));
    if (!violation(database, minsup, &counts).empty())
      ADD_FAILURE() << shrunk(seed, database, minsup);
  }
  EXPECT_GT(counts.refused, 1000);
  EXPECT_GT(counts.passed, 1000);
  EXPECT_GT(counts.known, 1000);
  EXPECT_GT(counts.unknown, 100);
  EXPECT_GT(counts.all_known, 100);
  EXPECT_GT(counts.pendant_at_leaf, 100);
  EXPECT_GT(counts.kept_leaf, 100);
  EXPECT_GT(counts.between_two_leaves, 100);
  EXPECT_GT(counts.symmetric_core, 100);
}

// Four vertices all joined, a perfect matching with another label, is the
// smallest graph whose form depends on the order of its vertices, where parts
// of four vertices are not searched exhaustively.
TEST(DerivedParents, FormsThatDependOnTheOrderAreLeftToTheForm) {
  const threshold_scope scope(4);
  const std::string clique = "t\nv 0 a\nv 1 a\nv 2 a\nv 3 a\n"
                             "u 0 1 x\nu 2 3 x\nu 0 2 y\nu 1 3 y\nu 0 3 y\n"
                             "u 1 2 y\n";
  case_counts counts;
  for (const char *leaves :
       {"", "v 4 b\nu 0 4 x\n", "v 4 b\nu 0 4 x\nv 5 a\nu 1 5 x\n",
        "v 4 a\nu 0 4 y\nv 5 a\nu 4 5 x\n"})
    EXPECT_EQ(violation(plain_read(clique + leaves), 1, &counts), "");
  EXPECT_GT(counts.variant, 0);
  EXPECT_GT(counts.unknown, 0);
}

} // namespace kestro
