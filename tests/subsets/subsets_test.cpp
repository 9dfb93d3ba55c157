// The patterns of one graph, against all its connected parts.
//
// A graph mined alone at 100 % support has as patterns the isomorphism classes
// of its connected sets of edges: each once, no more, no less.  The sets are
// found by adding edges one by one, and nauty tells their classes apart, so
// nothing here shares a line with what is tested but the reading of its files.
// Only the exact form keeps this: the prescribed one doubles some patterns.

#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "driver/options.h"
#include "reference/graph/graph.h"
#include "subsets/certificate.h"
#include "support/graph_families.h"
#include "support/program.h"
#include "support/run_files.h"
#include "support/scratch_folder.h"
#include "support/transaction_text.h"

namespace kestro {

using ints = std::vector<int>;
using edge_list = std::vector<test_edge>;

namespace {

// Random graphs, in as many tests as groups.
#ifdef KESTRO_SANITIZED
constexpr unsigned seeds = 50; // each takes ten times as long
#else
constexpr unsigned seeds = 500;
#endif
constexpr unsigned groups = 10;

// How the patterns of a graph compare with its classes.
struct comparison {
  size_t classes = 0;
  size_t lost = 0;        // classes without a pattern
  size_t doubled = 0;     // patterns of a class that has another one
  size_t strange = 0;     // patterns that are no part of the graph
  size_t unsupported = 0; // patterns with another support than one

  bool is_exact() const { return lost + doubled + strange + unsupported == 0; }
};

std::string words_of(const comparison &c) {
  return std::to_string(c.classes) + " classes, " + std::to_string(c.lost) +
         " lost, " + std::to_string(c.doubled) + " doubled, " +
         std::to_string(c.strange) + " strange, " +
         std::to_string(c.unsupported) + " unsupported";
}

} // namespace

// For every set of edges, as bits, whether it hangs together.  One that does
// has an edge without which it still does: the last one met when it is walked
// through edge by edge.
static std::vector<bool> connected_sets(const edge_list &edges) {
  const size_t sets = size_t{1} << edges.size();
  std::vector<bool> connected(sets, false);
  std::vector<uint32_t> vertices(sets, 0); // that a set covers, as bits
  for (size_t set = 1; set < sets; set++)
    for (size_t i = 0; i < edges.size(); i++) {
      const size_t rest = set & ~(size_t{1} << i);
      if (rest == set)
        continue;
      const uint32_t ends = 1u << edges[i].u | 1u << edges[i].w;
      vertices[set] = vertices[rest] | ends;
      if (rest == 0 || (connected[rest] && (vertices[rest] & ends)))
        connected[set] = true;
    }
  return connected;
}

static certificate part_certificate(const graph *g, const edge_list &edges,
                                    size_t set) {
  ints index(static_cast<size_t>(g->vs), -1);
  ints vlabels;
  edge_list part;
  const auto number = [&](int u) {
    int &place = index[static_cast<size_t>(u)];
    if (place < 0) {
      place = static_cast<int>(vlabels.size());
      vlabels.push_back(g->vlabel[u]);
    }
    return place;
  };
  for (size_t i = 0; i < edges.size(); i++)
    if (set >> i & 1) {
      const int u = number(edges[i].u);
      part.push_back({u, number(edges[i].w), edges[i].label});
    }
  return certificate_of(vlabels, part);
}

static std::set<certificate> classes_of(const graph *g) {
  const edge_list edges = edges_of(g);
  const std::vector<bool> connected = connected_sets(edges);
  std::set<certificate> classes;
  for (size_t set = 1; set < connected.size(); set++)
    if (connected[set])
      classes.insert(part_certificate(g, edges, set));
  return classes;
}

static std::vector<written_pattern> patterns_of(const graph *g, form kind) {
  const scratch_folder folder;
  std::vector<graph_ptr> alone;
  alone.emplace_back(graph_copy(g));
  folder.write("db.g", transaction_text(alone));
  const std::string name = folder.name("db.g");
  options o;
  o.input_file = name.c_str();
  o.support = 100;
  o.kind = kind;
  run_here(&o);
  return read_patterns(folder.name("db.fp"));
}

static certificate pattern_certificate(const plain_graph &pattern) {
  ints vlabels;
  edge_list edges;
  for (const std::string &label : pattern.vertices)
    vlabels.push_back(std::stoi(label));
  for (const plain_edge &edge : pattern.edges)
    edges.push_back({edge.from, edge.to, std::stoi(edge.label)});
  return certificate_of(vlabels, edges);
}

static comparison compare(const graph *g, form kind = form::exact) {
  std::set<certificate> missing = classes_of(g);
  comparison c;
  c.classes = missing.size();
  std::set<certificate> met;
  for (const written_pattern &pattern : patterns_of(g, kind)) {
    const certificate one = pattern_certificate(pattern.graph);
    c.unsupported += pattern.count != 1;
    if (!met.insert(one).second)
      c.doubled++;
    else if (!missing.erase(one))
      c.strange++;
  }
  c.lost = missing.size();
  return c;
}

static graph_ptr unlabelled(int vs, const edge_list &edges) {
  return make_graph(ints(static_cast<size_t>(vs), 0), edges);
}

// K3,3, a perfect matching of which has another label.
static graph_ptr matched_bipartite() {
  edge_list edges;
  for (int u = 0; u < 3; u++)
    for (int w = 0; w < 3; w++)
      edges.push_back({u, 3 + w, u == w});
  return unlabelled(6, edges);
}

// Two rings, vertex i of one joined with vertex i * step of the other.
static graph_ptr prism(int n, int step) {
  edge_list edges;
  for (int i = 0; i < n; i++) {
    edges.push_back({i, (i + 1) % n});
    edges.push_back({n + i, n + (i + step) % n});
    edges.push_back({i, n + i});
  }
  return unlabelled(2 * n, edges);
}

// The complement of the union of three perfect matchings that share no edge:
// every cubic graph of eight vertices is such a union.
static graph_ptr draw_four_regular(test_rng &rng) {
  for (;;) {
    std::set<std::pair<int, int>> missing;
    for (int matching = 0; matching < 3; matching++) {
      const ints order = random_permutation(rng, 8);
      for (size_t i = 0; i < 8; i += 2)
        missing.insert(std::minmax({order[i], order[i + 1]}));
    }
    if (missing.size() < 12)
      continue;
    edge_list edges;
    for (int u = 0; u < 8; u++)
      for (int w = u + 1; w < 8; w++)
        if (!missing.count({u, w}))
          edges.push_back({u, w});
    return unlabelled(8, edges);
  }
}

static void expect_exact(const char *name, const graph *g, size_t classes) {
  const comparison c = compare(g);
  EXPECT_TRUE(c.is_exact()) << name << ": " << words_of(c);
  EXPECT_EQ(c.classes, classes) << name;
  testing::Test::RecordProperty(name, static_cast<int>(c.classes));
}

TEST(Subsets, OfMatchedBipartiteGraphAreThePatterns) {
  const graph_ptr g = matched_bipartite();
  expect_exact("matched K3,3", g.get(), 53);
  const comparison c = compare(g.get(), form::prescribed);
  EXPECT_EQ(c.doubled, 1u) << words_of(c); // or this could not fail
}

// All connected graphs of two to six vertices: 1, 2, 6, 21 and 112 (Harary and
// Palmer, Graphical Enumeration).
TEST(Subsets, OfCompleteGraphAreThePatterns) {
  expect_exact("K6", complete_graph(6).get(), 142);
}

TEST(Subsets, OfPrismsAreThePatterns) {
  expect_exact("prism of 3", prism(3, 1).get(), 36);
  expect_exact("prism of 4, the cube", prism(4, 1).get(), 63);
  expect_exact("prism of 5", prism(5, 1).get(), 389);
}

TEST(Subsets, OfPrismOfSixAreThePatterns) {
  expect_exact("prism of 6", prism(6, 1).get(), 1253);
}

TEST(Subsets, OfPetersenGraphAreThePatterns) {
  expect_exact("Petersen", prism(5, 2).get(), 164);
}

TEST(Subsets, OfFourRegularGraphsOfEightVerticesAreThePatterns) {
  test_rng rng(8);
  std::map<certificate, graph_ptr> found;
  while (found.size() < 6) {
    graph_ptr g = draw_four_regular(rng);
    certificate one = certificate_of(vlabels_of(g.get()), edges_of(g.get()));
    found.emplace(std::move(one), std::move(g));
  }
  std::multiset<size_t> classes;
  for (const auto &[one, g] : found) {
    const comparison c = compare(g.get());
    EXPECT_TRUE(c.is_exact()) << graph_words(g.get()) << ": " << words_of(c);
    classes.insert(c.classes);
  }
  EXPECT_EQ(classes, (std::multiset<size_t>{153, 758, 1038, 1113, 1397, 1681}));
}

// A graph of up to 8 vertices and 16 edges, of 1 to 3 vertex labels and mostly
// 1 or 2 edge labels: one in two of a symmetric family, the others random ones
// from trees to dense.
static graph_ptr draw_small(unsigned seed) {
  test_rng rng(seed);
  for (;;) {
    graph_ptr g;
    if (seed % 4 == 0)
      g = draw_graph(rng()).g;
    else if (seed % 4 == 1)
      g = draw_two_label_graph(rng()).g;
    else
      g = random_graph(rng, {.vs = 2 + random_below(rng, 7),
                             .extra_edges = random_below(rng, 18),
                             .vlabels = 1 + random_below(rng, 3),
                             .elabels = 1 + random_below(rng, 2),
                             .connected = random_below(rng, 8) > 0});
    if (g->vs <= 8 && g->es > 0 && g->es / 2 <= 16)
      return g;
  }
}

namespace {

class RandomSubsets : public testing::TestWithParam<unsigned> {};

} // namespace

TEST_P(RandomSubsets, AreThePatterns) {
  size_t classes = 0;
  for (unsigned seed = GetParam(); seed < seeds; seed += groups) {
    const graph_ptr g = draw_small(seed);
    const comparison c = compare(g.get());
    classes += c.classes;
    if (c.is_exact())
      continue;
    const graph_ptr smallest =
        shrunk_graph(graph_ptr(graph_copy(g.get())),
                     [](const graph *h) { return !compare(h).is_exact(); });
    FAIL() << "seed " << seed << ": " << words_of(compare(smallest.get()))
           << " of " << graph_words(smallest.get());
  }
  RecordProperty("classes", static_cast<int>(classes));
}

INSTANTIATE_TEST_SUITE_P(Groups, RandomSubsets, testing::Range(0u, groups));

} // namespace kestro
