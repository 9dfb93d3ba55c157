// The exact form in whole runs.
//
// Databases come as text, are mined under either form, and their files compared
// byte for byte but for the time.  Under the exact form the files have to be
// those of any relabelled copy, and those of the prescribed form wherever that
// met no graph whose form may depend on the order of vertices.

#include <algorithm>
#include <array>
#include <map>
#include <numeric>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "driver/options.h"
#include "reference/graph/graph.h"
#include "support/graph_families.h"
#include "support/program.h"
#include "support/random_database.h"
#include "support/scratch_folder.h"
#include "support/transaction_text.h"

namespace kestro {

namespace {

// Databases, in as many tests as groups.
#ifdef KESTRO_SANITIZED
constexpr unsigned seeds = 200;
#else
constexpr unsigned seeds = 500;
#endif
constexpr int groups = 10;

struct outcome {
  std::string files; // patterns, PC lists and candidates
  std::string tid_lists;
  long long order_dependent;
  long long patterns;
};

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
  long long order_dependent;
  run_here(&o, &order_dependent);
  outcome found{"", folder.read("db.tid"), order_dependent, 0};
  // The head has the folder's name.
  const std::string patterns = folder.read("db.fp");
  const size_t first = patterns.find("\nt #");
  if (first != std::string::npos)
    found.files = masked_time(patterns.substr(first));
  for (size_t at = 0; (at = found.files.find("\nt #", at)) != std::string::npos;
       at++)
    found.patterns++;
  for (const char *file : {"db.pc", "db.c.g"})
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

// K3,3, a perfect matching of which has another label.
graph_ptr matched_bipartite() {
  std::vector<test_edge> edges;
  for (int u = 0; u < 3; u++)
    for (int w = 0; w < 3; w++)
      edges.push_back({u, 3 + w, u == w});
  return make_graph({0, 0, 0, 0, 0, 0}, edges);
}

// A graph of many alike vertices, the prescribed form of which often depends on
// the order, and up to two more of it, whole or without an edge.
std::vector<graph_ptr> symmetric_database(test_rng &rng) {
  std::vector<graph_ptr> database;
  while (database.empty()) {
    graph_ptr g = random_below(rng, 3) == 0 ? matched_bipartite()
                                            : draw_two_label_graph(rng()).g;
    if (g->vs <= 8 && g->es / 2 >= 9 && g->es / 2 <= 12)
      database.push_back(std::move(g));
  }
  const graph *g = database[0].get();
  for (int more = random_below(rng, 3); more > 0; more--)
    database.push_back(random_below(rng, 2)
                           ? graph_ptr(graph_copy(g))
                           : without_edge(g, static_cast<size_t>(random_below(
                                                 rng, g->es / 2))));
  return database;
}

// The graphs of one of three kinds of databases.
std::vector<plain_graph> any_database(unsigned seed) {
  if (seed % 3 == 0) {
    dice chance(seed);
    return random_database(&chance, 9);
  }
  test_rng rng(seed);
  return plain_read(transaction_text(seed % 3 == 1 ? drawn_database(rng, 11)
                                                   : symmetric_database(rng)));
}

// A database, said in another way.
struct retold {
  std::vector<plain_graph> database;
  std::vector<int> origin; // of each transaction, its number before
};

template <class T> void shuffle(test_rng &rng, std::vector<T> *items) {
  for (size_t i = items->size(); i > 1; i--)
    std::swap(
        (*items)[i - 1],
        (*items)[static_cast<size_t>(random_below(rng, static_cast<int>(i)))]);
}

// With other vertex ids and the edges in another order, ends swapped.
plain_graph retold_graph(test_rng &rng, const plain_graph &g) {
  const std::vector<int> to =
      random_permutation(rng, static_cast<int>(g.vertices.size()));
  plain_graph other = g;
  for (size_t i = 0; i < to.size(); i++)
    other.vertices[static_cast<size_t>(to[i])] = g.vertices[i];
  for (plain_edge &edge : other.edges) {
    edge.from = to[static_cast<size_t>(edge.from)];
    edge.to = to[static_cast<size_t>(edge.to)];
    if (random_below(rng, 2))
      std::swap(edge.from, edge.to);
  }
  shuffle(rng, &other.edges);
  return other;
}

retold retell(unsigned seed, const std::vector<plain_graph> &database) {
  test_rng rng(seed);
  retold other{{}, identity_of(static_cast<int>(database.size()))};
  shuffle(rng, &other.origin);
  for (const int tid : other.origin)
    other.database.push_back(
        retold_graph(rng, database[static_cast<size_t>(tid)]));
  return other;
}

// TID lists by the name of their pattern, TIDs ascending and replaced by what
// they are in origin.
std::map<std::string, std::vector<int>>
tids_by_name(const std::string &tid_lists, const std::vector<int> &origin) {
  std::map<std::string, std::vector<int>> lists;
  std::istringstream text(tid_lists);
  for (std::string line; std::getline(text, line);) {
    std::istringstream words(line);
    std::string name;
    words >> name;
    std::vector<int> &tids = lists[name];
    for (size_t tid = 0; words >> tid;)
      tids.push_back(origin.at(tid));
    std::sort(tids.begin(), tids.end());
  }
  return lists;
}

graph_ptr side_by_side(const graph *a, const graph *b) {
  std::vector<int> vlabels = vlabels_of(a);
  vlabels.insert(vlabels.end(), b->vlabel, b->vlabel + b->vs);
  std::vector<test_edge> edges = edges_of(a);
  for (const test_edge &edge : edges_of(b))
    edges.push_back({a->vs + edge.u, a->vs + edge.w, edge.label});
  return make_graph(vlabels, edges);
}

class Forms : public testing::TestWithParam<int> {};

} // namespace

TEST_P(Forms, AreEqualWhereNoneDependsOnTheOrder) {
  test_rng rng(static_cast<unsigned>(GetParam()));
  const int rounds = 20;
  int equal = 0;
  for (int round = 0; round < rounds; round++) {
    const std::string text = transaction_text(drawn_database(rng, 11));
    const outcome prescribed = mine(text, form::prescribed);
    EXPECT_EQ(mine(text, form::prescribed, 2).order_dependent,
              prescribed.order_dependent);
    const outcome exact = mine(text, form::exact);
    EXPECT_EQ(exact.order_dependent, 0);
    if (prescribed.order_dependent)
      continue;
    equal++;
    EXPECT_EQ(exact.files, prescribed.files) << text;
    EXPECT_EQ(exact.tid_lists, prescribed.tid_lists) << text;
  }
  EXPECT_GE(equal, rounds * 3 / 4);
}

static double support_for(unsigned seed) {
  return std::array{30, 50, 100}[seed / 3 % 3];
}

// What tells a database, retold, from itself when both are mined under the
// exact form, or "".
static std::string difference(unsigned seed,
                              const std::vector<plain_graph> &database) {
  const text_style plain{};
  const double support = support_for(seed);
  const retold other = retell(seed, database);
  const outcome a =
      mine(database_text(database, plain), form::exact, 1, support);
  const outcome b = mine(database_text(other.database, plain), form::exact,
                         seed % 5 == 0 ? 3 : 1, support);
  if (a.order_dependent || b.order_dependent)
    return "a form is said to depend on the order";
  if (a.files != b.files)
    return "other files";
  const std::vector<int> own = identity_of(static_cast<int>(database.size()));
  if (tids_by_name(a.tid_lists, own) != tids_by_name(b.tid_lists, other.origin))
    return "other TID lists";
  return "";
}

TEST_P(Forms, ExactOnesAreThoseOfRetoldDatabases) {
  int hard = 0;
  for (unsigned seed = static_cast<unsigned>(GetParam()); seed < seeds;
       seed += unsigned{groups}) {
    const std::vector<plain_graph> database = any_database(seed);
    const std::string found = difference(seed, database);
    if (found.empty()) {
      hard += mine(database_text(database, {}), form::prescribed, 1,
                   support_for(seed))
                  .order_dependent > 0;
      continue;
    }
    const auto smallest = shrink_database(database, [&](const auto &smaller) {
      return difference(seed, smaller) == found;
    });
    FAIL() << "seed " << seed << ": " << found << " for\n"
           << database_text(smallest, {});
  }
  EXPECT_GT(hard, 0); // databases with which the prescribed form has trouble
}

INSTANTIATE_TEST_SUITE_P(Seeds, Forms, testing::Range(0, groups));

TEST(ExactForm, MatchedBipartiteGraphHasFiftyThreePatterns) {
  std::vector<graph_ptr> database;
  database.push_back(matched_bipartite());
  EXPECT_EQ(mine(transaction_text(database), form::exact).patterns, 53);
  EXPECT_EQ(mine(transaction_text(database), form::prescribed).patterns, 54);
}

TEST(ExactForm, CompleteGraphOfEightHasAllItsConnectedSubgraphs) {
  std::vector<graph_ptr> database;
  database.push_back(complete_graph(8));
  EXPECT_EQ(mine(transaction_text(database), form::exact).patterns, 12112);
}

// The graph as a whole depends on the order of vertices.  Here all its parts
// are in a second transaction, so it is a candidate, but no transaction more
// has it.
TEST(ExactForm, InfrequentCandidatesAreCountedToo) {
  std::vector<graph_ptr> database;
  database.push_back(matched_bipartite());
  for (size_t i = 0; i < 9; i++)
    database.push_back(without_edge(database[0].get(), i));
  const std::string text = transaction_text(database);
  const double two = 20; // per cent of ten
  EXPECT_EQ(mine(text, form::prescribed, 1, two, 8).order_dependent, 0);
  const outcome all = mine(text, form::prescribed, 1, two);
  EXPECT_GT(all.order_dependent, 0);
  EXPECT_EQ(all.files.find("\nt # 9-0, 2"), std::string::npos);
  EXPECT_EQ(mine(text, form::prescribed, 3, two).order_dependent,
            all.order_dependent);
}

// K3,3 with its matching, and in the second transaction its two kinds of parts
// of eight edges side by side: at 100 % it is a candidate, in two forms, and no
// pattern.
TEST(ExactForm, OneInfrequentCandidateOfTwoFormsIsCounted) {
  std::vector<graph_ptr> database;
  database.push_back(matched_bipartite());
  graph_ptr whole = matched_bipartite();
  database.push_back(side_by_side(without_edge(whole.get(), 0).get(),
                                  without_edge(whole.get(), 1).get()));
  const std::string text = transaction_text(database);
  const outcome exact = mine(text, form::exact);
  EXPECT_EQ(exact.order_dependent, 0);
  for (const int jobs : {1, 2, 3}) {
    const outcome below = mine(text, form::prescribed, jobs, 100, 8);
    EXPECT_EQ(below.order_dependent, 0) << jobs;
    const outcome all = mine(text, form::prescribed, jobs);
    EXPECT_EQ(all.order_dependent, 2) << jobs;
    EXPECT_EQ(all.patterns, below.patterns) << jobs;
    EXPECT_EQ(all.patterns, exact.patterns) << jobs;
  }
}

} // namespace kestro
