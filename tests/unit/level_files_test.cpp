#include "driver/level_files.h"

#include <string>

#include <gtest/gtest.h>

#include "graph/graph_list.h"
#include "mining/first_levels.h"
#include "mining/statistics.h"
#include "support/fatal.h"
#include "support/graphs.h"
#include "support/scratch_folder.h"

namespace kestro {
namespace {

// Outputs of FILE "db.g" in a folder of their own.
class LevelFiles : public testing::Test {
protected:
  LevelFiles() : input(folder.name("db.g")), ls(label_set_create()) {
    o.input_file = input.c_str();
    label_set_add_vertex_label(ls.get(), "C");
    label_set_add_edge_label(ls.get(), "s");
    stats_init();
  }
  ~LevelFiles() override { stats_free(); }

  // The level of the one frequent edge of two transactions.
  static sg_set_ptr one_edge_level() {
    const graph_list_ptr transactions(graph_list_new());
    graph_list_push(path_graph(2), transactions.get());
    graph_list_push(path_graph(3), transactions.get());
    return sg_set_ptr(sg_frequent_edges(transactions.get(), 2, 1, 1));
  }
  bool exist(const char *pattern, const char *candidates, const char *pc,
             const char *tid) const {
    return folder.has(pattern) && folder.has(candidates) && folder.has(pc) &&
           folder.has(tid);
  }

  scratch_folder folder;
  std::string input;
  options o;
  label_set_ptr ls;
};

const char edge_pattern[] = "t # 1-0, 2\n"
                            "v 0 C\n"
                            "v 1 C\n"
                            "u 0 1 s\n";

} // namespace

TEST_F(LevelFiles, PatternFileAloneWithoutFlags) {
  open_outputs(&o);
  EXPECT_EQ(folder.files().size(), 1u);
  EXPECT_TRUE(folder.has("db.fp"));
  EXPECT_EQ(o.pattern_file.get(), folder.name("db.fp"));
  EXPECT_NE(o.pattern_stream, nullptr);
  EXPECT_EQ(o.candidates_file, nullptr);
  EXPECT_EQ(o.pc_file, nullptr);
  EXPECT_EQ(o.tid_file, nullptr);
  EXPECT_EQ(o.candidates_stream, nullptr);
  EXPECT_EQ(o.pc_stream, nullptr);
  EXPECT_EQ(o.tid_stream, nullptr);
}

TEST_F(LevelFiles, FlagsAddTheirFiles) {
  o.candidates = o.parent_children_list = o.tid_list = 1;
  open_outputs(&o);
  EXPECT_EQ(folder.files().size(), 4u);
  EXPECT_TRUE(exist("db.fp", "db.c.g", "db.pc", "db.tid"));
  EXPECT_EQ(o.candidates_file.get(), folder.name("db.c.g"));
  EXPECT_EQ(o.pc_file.get(), folder.name("db.pc"));
  EXPECT_EQ(o.tid_file.get(), folder.name("db.tid"));
}

TEST_F(LevelFiles, OpeningEmptiesOldOutputs) {
  folder.write("db.fp", "old patterns\n");
  open_outputs(&o);
  close_outputs(&o);
  EXPECT_EQ(folder.read("db.fp"), "");
}

TEST_F(LevelFiles, ClosingDropsTheStreamsAndKeepsTheNames) {
  o.candidates = o.parent_children_list = o.tid_list = 1;
  open_outputs(&o);
  close_outputs(&o);
  EXPECT_EQ(o.pattern_stream, nullptr);
  EXPECT_EQ(o.candidates_stream, nullptr);
  EXPECT_EQ(o.pc_stream, nullptr);
  EXPECT_EQ(o.tid_stream, nullptr);
  EXPECT_EQ(o.pattern_file.get(), folder.name("db.fp"));
}

TEST_F(LevelFiles, OutputThatCannotBeOpenedIsFatal) {
  const std::string name = folder.name("nowhere/db");
  o.input_file = name.c_str();
  EXPECT_EQ(fatal_text([&] { open_outputs(&o); }),
            "can't open a file '" + folder.name("nowhere/db.fp") + "'\n");
}

TEST_F(LevelFiles, LevelGoesToEveryListThatIsOpen) {
  o.candidates = o.parent_children_list = o.tid_list = 1;
  open_outputs(&o);
  level_files(&o, ls.get()).level(one_edge_level().get());
  EXPECT_EQ(folder.read("db.fp"), edge_pattern);
  EXPECT_EQ(folder.read("db.tid"), "1-0 0 1\n");
  EXPECT_EQ(folder.read("db.pc"), "1-0\n");
  EXPECT_EQ(folder.read("db.c.g"), "");
}

TEST_F(LevelFiles, LevelGoesToThePatternFileAlone) {
  open_outputs(&o);
  level_files(&o, ls.get()).level(one_edge_level().get());
  EXPECT_EQ(folder.read("db.fp"), edge_pattern);
  EXPECT_EQ(folder.files().size(), 1u);
}

TEST_F(LevelFiles, CandidatesGoToTheCandidateFile) {
  o.candidates = 1;
  open_outputs(&o);
  level_files(&o, ls.get()).candidates(one_edge_level().get());
  EXPECT_EQ(folder.read("db.c.g"), edge_pattern);
  EXPECT_EQ(folder.read("db.fp"), "");
}

TEST_F(LevelFiles, CandidatesAreDroppedWithoutACandidateFile) {
  open_outputs(&o);
  level_files(&o, ls.get()).candidates(one_edge_level().get());
  close_outputs(&o);
  EXPECT_EQ(folder.files().size(), 1u);
  EXPECT_EQ(folder.read("db.fp"), "");
}

TEST_F(LevelFiles, EmptyLevelWritesNothing) {
  o.parent_children_list = o.tid_list = 1;
  open_outputs(&o);
  const sg_set_ptr empty(sg_set_create());
  level_files(&o, ls.get()).level(empty.get());
  close_outputs(&o);
  EXPECT_EQ(folder.read("db.fp") + folder.read("db.pc") + folder.read("db.tid"),
            "");
}

TEST_F(LevelFiles, LevelWithoutAPatternFileIsFatal) {
  EXPECT_EQ(fatal_text([&] {
              level_files(&o, ls.get()).level(one_edge_level().get());
            }),
            "subgraph.c:N: no output file specified\n");
}

TEST_F(LevelFiles, LevelWithoutAnAskedListIsFatal) {
  open_outputs(&o);
  o.tid_list = 1;
  EXPECT_EQ(fatal_text([&] {
              level_files(&o, ls.get()).level(one_edge_level().get());
            }),
            "subgraph.c:N: no output file specified\n");
}

} // namespace kestro
