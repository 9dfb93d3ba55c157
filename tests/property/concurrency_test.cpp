// Runs that share a process: one after the other on one thread, and at once on
// two.  Everything they print and leave must equal what two processes of their
// own print and leave.

#include <cstdint>
#include <map>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "base/error.h"
#include "driver/run.h"
#include "support/program.h"
#include "support/random_database.h"
#include "support/scratch_folder.h"

namespace kestro {
namespace {

// A database of connected graphs with few labels, so that many patterns of
// several sizes are frequent.
std::string deep_database(uint64_t seed, int transactions, int vertices,
                          int labels) {
  dice chance(seed);
  std::string text;
  for (int t = 0; t < transactions; t++) {
    text += "t # " + std::to_string(t) + "\n";
    for (int v = 0; v < vertices; v++)
      text += "v " + std::to_string(v) + " L" +
              std::to_string(chance.below(labels)) + "\n";
    for (int v = 1; v < vertices; v++)
      text += "u " + std::to_string(chance.below(v)) + " " + std::to_string(v) +
              " e" + std::to_string(chance.below(2)) + "\n";
  }
  return text;
}

// One run: where it works, and how its command line asks for the settings that
// set() makes.
struct errand {
  scratch_folder folder;
  std::vector<std::string> words;
  void (*set)(options *o);
  std::map<std::string, std::string> expected; // files, and the report as ""

  errand(const std::string &database, std::vector<std::string> line,
         void (*setter)(options *))
      : words(std::move(line)), set(setter) {
    folder.write("db.g", database);
    words.push_back(folder.name("db.g"));
  }

  // All files, then all but FILE removed.
  std::map<std::string, std::string> collect(const std::string &report) {
    std::map<std::string, std::string> texts = folder.files();
    for (auto &[name, text] : texts) {
      text = masked_time(text);
      if (name != "db.g")
        folder.remove(name);
    }
    texts[""] = masked_time(report);
    return texts;
  }

  void run_as_process() {
    const program_result result = run_program(folder, words);
    ASSERT_EQ(result.status, 0) << result.err;
    expected = collect(result.out);
  }

  std::string run_here() const {
    const std::string input = folder.name("db.g");
    options o;
    o.input_file = input.c_str();
    set(&o);
    return kestro::run_here(&o);
  }
};

void set_all_lists(options *o) {
  o->support = 30;
  o->stabilizer_threshold = 2;
  o->candidates = o->parent_children_list = o->tid_list = 1;
}

void set_maximal(options *o) {
  o->support = 20;
  o->minsize = 2;
  o->maximal = o->parent_children_list = o->tid_list = 1;
}

class Concurrency : public testing::Test {
protected:
  Concurrency()
      : lists(deep_database(11, 12, 9, 1),
              {"-s30", "-pt", "--candidates", "--stabilizer-threshold=2"},
              set_all_lists),
        maximal(deep_database(12, 14, 9, 2), {"-s20", "-m2", "-xt"},
                set_maximal) {
    lists.run_as_process();
    maximal.run_as_process();
  }

  // The runs are worth comparing: patterns of four edges were found.
  void expect_deep_runs() const {
    EXPECT_NE(lists.expected.at("db.fp").find("\nt # 4-"), std::string::npos);
    EXPECT_NE(maximal.expected.at("db.fp").find("\nt # 4-"), std::string::npos);
  }

  errand lists;
  errand maximal;
};

} // namespace

TEST_F(Concurrency, RunsOneAfterTheOtherEqualProcesses) {
  expect_deep_runs();
  for (int round = 0; round < 2; round++) {
    EXPECT_EQ(lists.collect(lists.run_here()), lists.expected);
    EXPECT_EQ(maximal.collect(maximal.run_here()), maximal.expected);
  }
}

TEST_F(Concurrency, RunsAtOnceEqualProcesses) {
  expect_deep_runs();
  for (int round = 0; round < 4; round++) {
    std::string report;
    std::thread other([&] { report = maximal.run_here(); });
    const std::string own = lists.run_here();
    other.join();
    EXPECT_EQ(lists.collect(own), lists.expected) << "round " << round;
    EXPECT_EQ(maximal.collect(report), maximal.expected) << "round " << round;
  }
}

// The failure of one run stays its own.
TEST_F(Concurrency, FailingRunLeavesTheOtherAlone) {
  scratch_folder broken;
  broken.write("db.g", "t\nv 0 A\nv 1 B\nu 0 2 s\n");
  const std::string input = broken.name("db.g");
  int failures = 0;
  std::thread other([&] {
    for (int i = 0; i < 50; i++) {
      options o;
      o.input_file = input.c_str();
      try {
        run_here(&o);
      } catch (const fatal_error &) {
        failures++;
      }
    }
  });
  const std::string own = lists.run_here();
  other.join();
  EXPECT_EQ(failures, 50);
  EXPECT_EQ(lists.collect(own), lists.expected);
}

namespace {

void set_nothing(options *) {}

void set_everything(options *o) {
  o->support = 25;
  o->candidates = o->parent_children_list = o->tid_list = 1;
}

void set_everything_low_threshold(options *o) {
  set_everything(o);
  o->stabilizer_threshold = 2;
}

void set_maximal_only(options *o) {
  o->support = 25;
  o->maximal = o->parent_children_list = 1;
}

// The report and the files of a run on that many threads.
std::map<std::string, std::string> left_by(const std::string &database,
                                           void (*set)(options *), int jobs) {
  errand one(database, {}, set);
  options o;
  const std::string input = one.folder.name("db.g");
  o.input_file = input.c_str();
  set(&o);
  o.jobs = jobs;
  std::string report = kestro::run_here(&o);
  std::map<std::string, std::string> texts = one.collect(report);
  // The names of files tell the folder.
  const std::string folder = one.folder.name("");
  for (auto &[name, text] : texts)
    for (size_t at; (at = text.find(folder)) != std::string::npos;)
      text.erase(at, folder.size());
  return texts;
}

class Threads : public testing::TestWithParam<unsigned> {};

} // namespace

TEST_P(Threads, DoNotShowInAnyOutput) {
  dice chance(GetParam());
  const std::string databases[] = {
      deep_database(GetParam(), 10, 8, 1 + static_cast<int>(GetParam() % 2)),
      database_text(random_database(&chance, 9), random_style(&chance))};
  for (const std::string &database : databases)
    for (void (*const set)(options *) :
         {set_nothing, set_everything, set_everything_low_threshold,
          set_maximal_only, set_maximal}) {
      const auto expected = left_by(database, set, 1);
      for (const int jobs : {2, 3, 7})
        ASSERT_EQ(left_by(database, set, jobs), expected)
            << "seed " << GetParam() << ", " << jobs << " jobs\n"
            << database;
    }
}

INSTANTIATE_TEST_SUITE_P(Seeds, Threads, testing::Range(0U, 6U));

} // namespace kestro
