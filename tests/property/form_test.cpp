// The exact form in whole runs.
//
// Databases come as text, are mined under either form, and their files compared
// byte for byte but for the time.  Under the exact form the files have to be
// those of any relabelled copy, and those of the prescribed form wherever that
// met no graph whose form may depend on the order of vertices.

#include <algorithm>
#include <numeric>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "driver/options.h"
#include "support/graph_families.h"
#include "support/program.h"
#include "support/scratch_folder.h"

namespace kestro {

namespace {

struct outcome {
  std::string files; // patterns, TID lists, PC lists and candidates
  long long order_dependent;
  long long patterns;
};

std::string text_of(const std::vector<graph_ptr> &database) {
  std::string text;
  for (const graph_ptr &g : database) {
    text += "t\n";
    for (int i = 0; i < g->vs; i++)
      text +=
          "v " + std::to_string(i) + " " + std::to_string(g->vlabel[i]) + "\n";
    for (const test_edge &edge : edges_of(g.get()))
      text += "u " + std::to_string(edge.u) + " " + std::to_string(edge.w) +
              " " + std::to_string(edge.label) + "\n";
  }
  return text;
}

outcome mine(const std::string &text, form kind, int jobs = 1,
             double support = 100, int maxsize = 1000) {
  const scratch_folder folder;
  folder.write("db.g", text);
  const std::string name = folder.name("db.g");
  options o;
  o.input_file = name.c_str();
  o.support = support;
  o.kind = kind;
  o.maxsize = maxsize;
  o.jobs = jobs;
  o.tid_list = o.parent_children_list = o.candidates = 1;
  run_here(&o);
  outcome found{"", o.order_dependent, 0};
  // The head has the folder's name.
  const std::string patterns = folder.read("db.fp");
  const size_t first = patterns.find("\nt #");
  if (first != std::string::npos)
    found.files = masked_time(patterns.substr(first));
  for (size_t at = 0; (at = found.files.find("\nt #", at)) != std::string::npos;
       at++)
    found.patterns++;
  for (const char *file : {"db.tid", "db.pc", "db.c.g"})
    found.files += folder.read(file);
  return found;
}

// A few graphs, symmetric ones among them, of at most so many edges.
std::vector<graph_ptr> drawn_database(test_rng &rng, int most_edges) {
  std::vector<graph_ptr> database;
  const size_t count = 1 + static_cast<size_t>(random_below(rng, 3));
  while (database.size() < count) {
    const uint64_t seed = rng();
    drawn_graph drawn = random_below(rng, 3) == 0 ? draw_graph(seed)
                                                  : draw_two_label_graph(seed);
    if (drawn.g->vs <= 8 && drawn.g->es / 2 <= most_edges)
      database.push_back(std::move(drawn.g));
  }
  return database;
}

std::vector<graph_ptr> relabelled(test_rng &rng,
                                  const std::vector<graph_ptr> &database) {
  std::vector<graph_ptr> copies;
  for (const graph_ptr &g : database)
    copies.push_back(relabelled(g.get(), random_permutation(rng, g->vs)));
  return copies;
}

// K3,3, a perfect matching of which has another label.
graph_ptr matched_bipartite() {
  std::vector<test_edge> edges;
  for (int u = 0; u < 3; u++)
    for (int w = 0; w < 3; w++)
      edges.push_back({u, 3 + w, u == w});
  return make_graph({0, 0, 0, 0, 0, 0}, edges);
}

class Forms : public testing::TestWithParam<int> {};

} // namespace

TEST_P(Forms, AreEqualWhereNoneDependsOnTheOrder) {
  test_rng rng(static_cast<unsigned>(GetParam()));
  int equal = 0;
  for (int round = 0; round < 10; round++) {
    const std::string text = text_of(drawn_database(rng, 10));
    const outcome prescribed = mine(text, form::prescribed);
    EXPECT_EQ(mine(text, form::prescribed, 2).order_dependent,
              prescribed.order_dependent);
    const outcome exact = mine(text, form::exact);
    EXPECT_EQ(exact.order_dependent, 0);
    if (prescribed.order_dependent)
      continue;
    equal++;
    EXPECT_EQ(exact.files, prescribed.files) << text;
  }
  EXPECT_GT(equal, 0);
}

TEST_P(Forms, ExactOnesAreThoseOfRelabelledDatabases) {
  test_rng rng(static_cast<unsigned>(1000 + GetParam()));
  for (int round = 0; round < 5; round++) {
    const std::vector<graph_ptr> database = drawn_database(rng, 12);
    const outcome found = mine(text_of(database), form::exact);
    const std::string copy = text_of(relabelled(rng, database));
    EXPECT_EQ(mine(copy, form::exact).files, found.files) << copy;
    EXPECT_EQ(mine(copy, form::exact, 3).files, found.files) << copy;
  }
}

INSTANTIATE_TEST_SUITE_P(Seeds, Forms, testing::Range(0, 10));

TEST(ExactForm, MatchedBipartiteGraphHasFiftyThreePatterns) {
  std::vector<graph_ptr> database;
  database.push_back(matched_bipartite());
  EXPECT_EQ(mine(text_of(database), form::exact).patterns, 53);
  EXPECT_EQ(mine(text_of(database), form::prescribed).patterns, 54);
}

TEST(ExactForm, CompleteGraphOfEightHasAllItsConnectedSubgraphs) {
  std::vector<graph_ptr> database;
  database.push_back(complete_graph(8));
  EXPECT_EQ(mine(text_of(database), form::exact).patterns, 12112);
}

// The graph as a whole depends on the order of vertices.  Here all its parts
// are in a second transaction, so it is a candidate, but no transaction more
// has it.
TEST(ExactForm, InfrequentCandidatesAreCountedToo) {
  std::vector<graph_ptr> database;
  database.push_back(matched_bipartite());
  for (size_t i = 0; i < 9; i++)
    database.push_back(without_edge(database[0].get(), i));
  const std::string text = text_of(database);
  const double two = 20; // per cent of ten
  EXPECT_EQ(mine(text, form::prescribed, 1, two, 8).order_dependent, 0);
  const outcome all = mine(text, form::prescribed, 1, two);
  EXPECT_GT(all.order_dependent, 0);
  EXPECT_EQ(all.files.find("\nt # 9-0, 2"), std::string::npos);
  EXPECT_EQ(mine(text, form::prescribed, 3, two).order_dependent,
            all.order_dependent);
}

} // namespace kestro
