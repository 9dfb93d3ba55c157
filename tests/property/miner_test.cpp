// Whole runs on random databases against the slow miner.
//
// A seed is a database, the way it is written down, and the settings of the
// run.  Everything the run writes is compared, up to isomorphism: patterns,
// supports, TID lists, parents, candidates and the maximal selection.  A
// difference is shrunk before it is reported.  Should a run abort, its
// directory, which carries the seed in its name, stays behind.

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <set>
#include <stdexcept>
#include <string>

#include <gtest/gtest.h>

#include "base/open_file.h"
#include "driver/options.h"
#include "driver/run.h"
#include "support/random_database.h"
#include "support/reference_miner.h"
#include "support/run_files.h"

namespace kestro {

namespace {

constexpr int seeds_per_test = 20;
constexpr int test_count = 26;
constexpr int edge_limit = 9; // of a transaction

struct mining_case {
  uint64_t seed;
  std::vector<plain_graph> database;
  text_style style;
  double support; // per cent
  int min_size;
  int max_size;
  bool maximal; // run a second time for the maximal patterns
};

mining_case case_of_seed(uint64_t seed) {
  dice chance(seed);
  mining_case c{};
  c.seed = seed;
  c.database = random_database(&chance, edge_limit);
  c.style = random_style(&chance);
  c.support = chance.between(200, 800) / 10.0;
  c.min_size = chance.one_in(6) ? chance.between(2, 4) : 1;
  c.max_size = chance.one_in(6) ? c.min_size + chance.below(4) : 1000;
  c.maximal = chance.one_in(3);
  return c;
}

// A new directory, gone with everything in it at the end of the scope.
class fresh_directory {
public:
  explicit fresh_directory(uint64_t seed)
      : path_(testing::TempDir() + "kestro_seed_" + std::to_string(seed) +
              "_XXXXXX") {
    if (mkdtemp(path_.data()) == nullptr)
      throw std::runtime_error("can't create " + path_);
  }
  ~fresh_directory() { std::filesystem::remove_all(path_); }
  fresh_directory(const fresh_directory &) = delete;
  fresh_directory &operator=(const fresh_directory &) = delete;
  std::string file(const char *name) const { return path_ + '/' + name; }

private:
  std::string path_;
};

// What one run left in its files.
struct run_result {
  std::vector<written_pattern> patterns;
  std::vector<written_pattern> candidates;
  std::map<pattern_name, std::vector<int>> tids;
  std::map<pattern_name, std::vector<pattern_name>> parents;
};

run_result run(const mining_case &c, bool maximal) {
  const fresh_directory directory(c.seed);
  const std::string input = directory.file("in.txt");
  std::ofstream(input) << database_text(c.database, c.style);
  options o;
  o.input_file = input.c_str();
  o.support = c.support;
  o.minsize = c.min_size;
  o.maxsize = c.max_size;
  o.tid_list = o.parent_children_list = o.candidates = 1;
  o.maximal = maximal;
  const file_ptr report(open_file(directory.file("report").c_str(), "w"));
  run_kestro(&o, report.get());
  return {read_patterns(directory.file("in.fp")),
          read_patterns(directory.file("in.c.g")),
          read_tids(directory.file("in.tid")),
          read_parents(directory.file("in.pc"))};
}

// Compares one run with the reference.  The first difference is thrown as a
// std::runtime_error.
class comparison {
public:
  explicit comparison(const mining_case &c)
      : case_(c), table_(reference_classes(c.database, edge_limit)),
        min_count_(reference_min_count(c.support,
                                       static_cast<int>(c.database.size()))),
        frequent_(reference_frequent(table_, min_count_)),
        last_size_(
            std::min(c.max_size, static_cast<int>(frequent_.size()) - 1)) {}

  void check_run(const run_result &result) {
    check_order(result.patterns);
    check_order(result.candidates);
    size_t met = 0;
    for (int k = 3; k <= std::min(last_size_ + 1, case_.max_size); k++)
      met += check_candidates(result.candidates, k);
    require(met == result.candidates.size(), "candidates of other sizes");
    check_patterns(result.patterns);
    check_tids(result);
    check_parents(result);
  }

  // The maximal run must hold a part of what the run before it held.
  void check_maximal(const run_result &all, const run_result &maximal) const {
    const std::vector<int> expected = reference_maximal(
        table_, frequent_, case_.min_size, std::max(0, case_.max_size));
    std::set<int> kept;
    for (const written_pattern &p : maximal.patterns) {
      const auto same = std::find_if(
          all.patterns.begin(), all.patterns.end(), [&](const auto &q) {
            return q.name == p.name && q.count == p.count &&
                   plain_text(q.graph) == plain_text(p.graph);
          });
      require(same != all.patterns.end(), "maximal pattern changed", p);
      require(all.tids.at(p.name) == maximal.tids.at(p.name) &&
                  all.parents.at(p.name) == maximal.parents.at(p.name),
              "maximal pattern with another TID list or parents", p);
      kept.insert(class_of_.at(p.name));
    }
    require(kept == std::set<int>(expected.begin(), expected.end()),
            "other patterns are maximal");
    require(maximal.patterns.size() == kept.size() &&
                maximal.tids.size() == kept.size() &&
                maximal.parents.size() == kept.size(),
            "the files of the maximal run hold other patterns");
  }

private:
  static void require(bool holds, const std::string &what) {
    if (!holds)
      throw std::runtime_error(what);
  }
  static void require(bool holds, const std::string &what,
                      const written_pattern &p) {
    if (!holds)
      throw std::runtime_error(what + ": " + name_text(p.name) + ", " +
                               std::to_string(p.count) + '\n' +
                               plain_text(p.graph));
  }

  const pattern_class &class_at(int number) const {
    return table_.classes[static_cast<size_t>(number)];
  }

  // Sizes ascend, and indices count from 0 within a size.
  static void check_order(const std::vector<written_pattern> &patterns) {
    pattern_name next{0, 0};
    for (const written_pattern &p : patterns) {
      if (p.name.size > next.size)
        next = {p.name.size, 0};
      require(p.name == next, "out of order", p);
      require(static_cast<int>(p.graph.edges.size()) == p.name.size,
              "a size that is not the number of edges", p);
      next.index++;
    }
  }

  // The number of candidates with k edges.
  size_t check_candidates(const std::vector<written_pattern> &candidates,
                          int k) const {
    const class_table expected = reference_candidates(table_, frequent_, k);
    std::set<int> met;
    for (const written_pattern &p : candidates) {
      if (p.name.size != k)
        continue;
      const int number = class_find(expected, p.graph);
      require(number >= 0, "a candidate with an infrequent part", p);
      require(met.insert(number).second, "the same candidate twice", p);
      require(p.count == 0, "a candidate with a support", p);
    }
    for (size_t i = 0; i < expected.classes.size(); i++)
      require(met.count(static_cast<int>(i)) > 0, "a candidate is missing",
              {{k, -1}, 0, expected.classes[i].graph});
    return met.size();
  }

  void check_patterns(const std::vector<written_pattern> &patterns) {
    std::set<int> met;
    for (const written_pattern &p : patterns) {
      const int number = class_find(table_, p.graph);
      require(number >= 0, "a pattern that occurs nowhere", p);
      require(met.insert(number).second, "the same pattern twice", p);
      const int count = static_cast<int>(class_at(number).tids.size());
      require(p.count == count, "a wrong support", p);
      require(count >= min_count_, "an infrequent pattern", p);
      require(case_.min_size <= p.name.size && p.name.size <= last_size_,
              "a pattern of a size that is not wanted", p);
      class_of_[p.name] = number;
    }
    for (int k = case_.min_size; k <= last_size_; k++)
      for (const int number : frequent_[static_cast<size_t>(k)])
        require(met.count(number) > 0, "a pattern is missing",
                {{k, -1},
                 static_cast<int>(class_at(number).tids.size()),
                 class_at(number).graph});
  }

  void check_tids(const run_result &result) const {
    require(result.tids.size() == result.patterns.size(),
            "a TID list too many");
    for (const written_pattern &p : result.patterns)
      require(result.tids.count(p.name) > 0 &&
                  result.tids.at(p.name) == class_at(class_of_.at(p.name)).tids,
              "a wrong TID list", p);
  }

  // Parents below the sizes reported have no lines to tell what they are; of
  // them only the number is compared.
  void check_parents(const run_result &result) const {
    require(result.parents.size() == result.patterns.size(),
            "a parent list too many");
    for (const written_pattern &p : result.patterns) {
      require(result.parents.count(p.name) > 0, "no parent list", p);
      const std::vector<pattern_name> &names = result.parents.at(p.name);
      const std::vector<int> expected = reference_parents(table_, p.graph);
      require(std::is_sorted(names.begin(), names.end()),
              "parents out of order", p);
      require(names.size() == expected.size(), "a wrong number of parents", p);
      std::set<int> met;
      for (const pattern_name &name : names) {
        require(name.size == p.name.size - 1, "a parent of a wrong size", p);
        if (name.size >= case_.min_size)
          met.insert(class_of_.at(name));
      }
      require(p.name.size == case_.min_size ||
                  met == std::set<int>(expected.begin(), expected.end()),
              "wrong parents", p);
    }
  }

  const mining_case &case_;
  const class_table table_;
  const int min_count_;
  const size_lists frequent_;
  const int last_size_;                  // largest size reported, 0 if none
  std::map<pattern_name, int> class_of_; // set by check_patterns
};

// The first difference between program and reference, empty if there is none.
std::string difference(const mining_case &c) {
  try {
    comparison with_reference(c);
    const run_result all = run(c, false);
    with_reference.check_run(all);
    if (c.maximal)
      with_reference.check_maximal(all, run(c, true));
    return "";
  } catch (const std::exception &e) {
    return e.what();
  }
}

// Text of a failure: the seed, the smallest database that fails, and how.
std::string shrunk(mining_case c) {
  c.database = shrink_database(c.database, [&](const auto &smaller) {
    mining_case tried = c;
    tried.database = smaller;
    return !difference(tried).empty();
  });
  return "seed " + std::to_string(c.seed) + ", support " +
         std::to_string(c.support) + ", sizes " + std::to_string(c.min_size) +
         " to " + std::to_string(c.max_size) +
         (c.maximal ? ", also maximal" : "") + ": " + difference(c) +
         "\nin the database\n" + database_text(c.database, c.style);
}

} // namespace

class Miner : public testing::TestWithParam<int> {};

TEST_P(Miner, WritesWhatTheReferenceFinds) {
  for (int i = 0; i < seeds_per_test; i++) {
    const int seed = GetParam() * seeds_per_test + i;
    const mining_case c = case_of_seed(static_cast<uint64_t>(seed));
    if (!difference(c).empty())
      ADD_FAILURE() << shrunk(c);
  }
}

INSTANTIATE_TEST_SUITE_P(Seeds, Miner, testing::Range(0, test_count));

// The one departure from the definition.  Where refinement leaves five vertices
// or more alike, the search for the canonical form measures its branches
// against the order that came in, and keeps that one when it begins better than
// all of them; one graph can then be listed in several forms.  Three vertices
// joined with three others, a perfect matching with another label, show it:
// nine edges, and up to eight all is well.
TEST(MinerLimits, AGraphTooSymmetricToOrderIsListedTwice) {
  mining_case c{};
  c.database = plain_read("t\n"
                          "v 0 a\nv 1 a\nv 2 a\nv 3 a\nv 4 a\nv 5 a\n"
                          "u 0 3 y\nu 0 4 x\nu 0 5 x\n"
                          "u 1 3 x\nu 1 4 y\nu 1 5 x\n"
                          "u 2 3 x\nu 2 4 x\nu 2 5 y\n");
  c.support = 100;
  c.min_size = 1;
  c.max_size = 8;
  EXPECT_EQ(difference(c), "");
  c.max_size = 9;
  EXPECT_EQ(difference(c).rfind("the same candidate twice: 9-1", 0), 0U)
      << difference(c);
}

} // namespace kestro
