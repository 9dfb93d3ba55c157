#include "driver/level_files.h"

#include <sys/stat.h>

#include <filesystem>
#include <string>

#include <gtest/gtest.h>

#include "graph/graph_list.h"
#include "library/access.h"
#include "library/level_data.h"
#include "mining/first_levels.h"
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
  }

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

  // Opens the outputs, those of before being given up.
  void open_all() {
    locks.clear();
    locks = open_outputs(&o, report);
  }
  void write_level(sg_set_ptr set) {
    const level_data shown = look_at(set.get(), 1, ls.get());
    level_files(&o).write_level(access::level_of(&shown));
  }
  void write_candidates(sg_set_ptr set) {
    const level_data shown = look_at(set.get(), 1, ls.get());
    level_files(&o).write_candidates(access::level_of(&shown));
  }
  // The text of the failure to open the outputs.
  std::string refusal() {
    return fatal_text([&] { open_all(); });
  }

  scratch_folder folder;
  file_ptr report_owner{open_file("/dev/null", "w")};
  FILE *report = report_owner.get();
  std::string input;
  options o;
  label_set_ptr ls;
  xvector<output_lock> locks;
};

const char edge_pattern[] = "t # 1-0, 2\n"
                            "v 0 C\n"
                            "v 1 C\n"
                            "u 0 1 s\n";

} // namespace

TEST_F(LevelFiles, PatternFileAloneWithoutFlags) {
  open_all();
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
  open_all();
  EXPECT_EQ(folder.files().size(), 4u);
  EXPECT_TRUE(exist("db.fp", "db.c.g", "db.pc", "db.tid"));
  EXPECT_EQ(o.candidates_file.get(), folder.name("db.c.g"));
  EXPECT_EQ(o.pc_file.get(), folder.name("db.pc"));
  EXPECT_EQ(o.tid_file.get(), folder.name("db.tid"));
}

TEST_F(LevelFiles, OpeningEmptiesOldOutputs) {
  folder.write("db.fp", "old patterns\n");
  open_all();
  close_outputs(&o);
  EXPECT_EQ(folder.read("db.fp"), "");
}

TEST_F(LevelFiles, ClosingDropsTheStreamsAndKeepsTheNames) {
  o.candidates = o.parent_children_list = o.tid_list = 1;
  open_all();
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
  EXPECT_EQ(fatal_text([&] { open_all(); }),
            "can't open a file '" + folder.name("nowhere/db.fp") + "'\n");
}

TEST_F(LevelFiles, OutputThatIsTheInputIsFatalBeforeAnyIsOpened) {
  o.tid_list = 1;
  folder.write("db.fp", "old\n");
  folder.write("db.tid", "input\n");
  const std::string name = folder.name("db.tid");
  o.input_file = name.c_str();
  EXPECT_EQ(refusal(), "can't write a file '" + name + "': it is the input\n");
  EXPECT_EQ(folder.read("db.fp"), "old\n");
  EXPECT_EQ(folder.read("db.tid"), "input\n");
}

TEST_F(LevelFiles, OutputThatIsALinkToTheInputIsFatal) {
  folder.write("db.g", "input\n");
  const std::string name = folder.name("db.fp");
  std::filesystem::create_symlink("db.g", name);
  EXPECT_EQ(refusal(), "can't write a file '" + name + "': it is the input\n");
  std::filesystem::remove(name);
  std::filesystem::create_hard_link(input, name);
  EXPECT_EQ(refusal(), "can't write a file '" + name + "': it is the input\n");
  EXPECT_EQ(folder.read("db.g"), "input\n");
}

TEST_F(LevelFiles, ReportIntoTheInputIsFatal) {
  folder.write("db.g", "input\n");
  const file_ptr stream(open_file(input.c_str(), "a"));
  report = stream.get();
  EXPECT_EQ(refusal(),
            "can't write a file 'standard output': it is the input\n");
  EXPECT_EQ(folder.files().size(), 1u);
}

TEST_F(LevelFiles, ReportIntoAnOutputIsFatal) {
  const std::string name = folder.name("db.fp");
  const file_ptr stream(open_file(name.c_str(), "w"));
  report = stream.get();
  EXPECT_EQ(refusal(),
            "can't write a file '" + name + "': it is another output\n");
}

TEST_F(LevelFiles, TwoOutputsInOneFileAreFatal) {
  o.tid_list = 1;
  const std::string name = folder.name("db.tid");
  std::filesystem::create_symlink("db.fp", name); // which is made on the way
  EXPECT_EQ(refusal(),
            "can't write a file '" + name + "': it is another output\n");
}

TEST_F(LevelFiles, RefusedOutputsKeepWhatTheyHold) {
  o.tid_list = o.candidates = 1;
  folder.write("db.fp", "old patterns\n");
  folder.write("db.c.g", "old candidates\n");
  std::filesystem::create_symlink("db.c.g", folder.name("db.tid"));
  EXPECT_EQ(refusal(), "can't write a file '" + folder.name("db.tid") +
                           "': it is another output\n");
  EXPECT_EQ(folder.read("db.fp"), "old patterns\n");
  EXPECT_EQ(folder.read("db.c.g"), "old candidates\n");
}

TEST_F(LevelFiles, OutputsThatAreReadBackAreRegularFiles) {
  o.maximal = o.parent_children_list = o.tid_list = 1;
  for (const char *file : {"db.fp", "db.pc", "db.tid"}) {
    const std::string name = folder.name(file);
    const std::string expected = "can't read a file '" + name + "'\n";
    std::filesystem::remove(name);
    std::filesystem::create_symlink("/dev/null", name);
    EXPECT_EQ(refusal(), expected);
    std::filesystem::remove(name);
  }
  EXPECT_NO_THROW(open_all());
}

TEST_F(LevelFiles, CandidatesAreNotReadBack) {
  o.maximal = o.parent_children_list = o.candidates = 1;
  std::filesystem::create_symlink("/dev/null", folder.name("db.c.g"));
  EXPECT_NO_THROW(open_all());
  EXPECT_NE(o.candidates_stream, nullptr);
}

TEST_F(LevelFiles, PipesAreRefused) {
  o.candidates = o.parent_children_list = o.tid_list = 1;
  folder.write("db.fp", "old\n");
  for (const char *file : {"db.c.g", "db.pc", "db.tid"}) {
    const std::string name = folder.name(file);
    std::filesystem::remove(name);
    ASSERT_EQ(mkfifo(name.c_str(), 0600), 0);
    EXPECT_EQ(refusal(), "can't write a file '" + name + "': it is a pipe\n");
    EXPECT_EQ(folder.read("db.fp"), "old\n");
    std::filesystem::remove(name);
  }
}

TEST_F(LevelFiles, FolderIsFatalBeforeAnyIsEmptied) {
  o.tid_list = 1;
  folder.write("db.fp", "old\n");
  const std::string name = folder.name("db.tid");
  std::filesystem::create_directory(name);
  EXPECT_EQ(refusal(), "can't open a file '" + name + "'\n");
  EXPECT_EQ(folder.read("db.fp"), "old\n");
}

TEST_F(LevelFiles, PipeIsRefusedBeforeAnythingIsMade) {
  o.tid_list = 1;
  const std::string name = folder.name("db.tid");
  ASSERT_EQ(mkfifo(name.c_str(), 0600), 0);
  EXPECT_EQ(refusal(), "can't write a file '" + name + "': it is a pipe\n");
  EXPECT_FALSE(folder.has("db.fp"));
}

TEST_F(LevelFiles, OutputsOfAnotherRunAreLeftAlone) {
  o.tid_list = 1;
  folder.write("db.fp", "old\n");
  folder.write("db.tid", "theirs\n");
  const std::string name = folder.name("db.tid");
  {
    const output_lock theirs(name.c_str());
    EXPECT_EQ(refusal(),
              "can't write a file '" + name + "': another run is writing it\n");
  }
  EXPECT_EQ(folder.read("db.fp"), "old\n");
  EXPECT_EQ(folder.read("db.tid"), "theirs\n");
  EXPECT_NO_THROW(open_all());
}

TEST_F(LevelFiles, LocksOutliveTheStreams) {
  open_all();
  close_outputs(&o);
  const std::string name = folder.name("db.fp");
  const xvector<output_lock> ours = std::move(locks);
  EXPECT_EQ(refusal(),
            "can't write a file '" + name + "': another run is writing it\n");
}

TEST_F(LevelFiles, InputAndOutputMayBeOneDevice) {
  std::filesystem::create_symlink("/dev/null", folder.name("db.fp"));
  o.input_file = "/dev/null";
  EXPECT_NO_THROW(refuse_input(file_identity("/dev/null"), "/dev/null", &o));
}

TEST_F(LevelFiles, LevelThatCannotBeWrittenIsFatal) {
  std::filesystem::create_symlink("/dev/full", folder.name("db.fp"));
  open_all();
  EXPECT_EQ(fatal_text([&] { write_level(one_edge_level()); }),
            "can't write a file '" + folder.name("db.fp") + "'\n");
}

TEST_F(LevelFiles, EveryListIsCheckedUnderItsName) {
  o.candidates = o.parent_children_list = o.tid_list = 1;
  for (const char *file : {"db.c.g", "db.pc", "db.tid"}) {
    std::filesystem::remove(folder.name(file));
    std::filesystem::create_symlink("/dev/full", folder.name(file));
    open_all();
    EXPECT_EQ(fatal_text([&] {
                write_candidates(one_edge_level());
                write_level(one_edge_level());
              }),
              "can't write a file '" + folder.name(file) + "'\n");
    std::filesystem::remove(folder.name(file));
  }
}

TEST_F(LevelFiles, ClosingTellsOfWhatIsNotWritten) {
  for (const char *file : {"db.c.g", "db.pc", "db.tid", "db.fp"}) {
    o.candidates = o.parent_children_list = o.tid_list = 1;
    std::filesystem::remove(folder.name(file));
    std::filesystem::create_symlink("/dev/full", folder.name(file));
    open_all();
    for (FILE *stream : {o.candidates_stream.get(), o.pc_stream.get(),
                         o.tid_stream.get(), o.pattern_stream.get()})
      fputs("text", stream);
    EXPECT_EQ(fatal_text([&] { close_outputs(&o); }),
              "can't write a file '" + folder.name(file) + "'\n");
    std::filesystem::remove(folder.name(file));
  }
}

TEST_F(LevelFiles, LevelGoesToEveryListThatIsOpen) {
  o.candidates = o.parent_children_list = o.tid_list = 1;
  open_all();
  write_level(one_edge_level());
  EXPECT_EQ(folder.read("db.fp"), edge_pattern);
  EXPECT_EQ(folder.read("db.tid"), "1-0 0 1\n");
  EXPECT_EQ(folder.read("db.pc"), "1-0\n");
  EXPECT_EQ(folder.read("db.c.g"), "");
}

TEST_F(LevelFiles, LevelGoesToThePatternFileAlone) {
  open_all();
  write_level(one_edge_level());
  EXPECT_EQ(folder.read("db.fp"), edge_pattern);
  EXPECT_EQ(folder.files().size(), 1u);
}

TEST_F(LevelFiles, CandidatesGoToTheCandidateFile) {
  o.candidates = 1;
  open_all();
  write_candidates(one_edge_level());
  EXPECT_EQ(folder.read("db.c.g"), edge_pattern);
  EXPECT_EQ(folder.read("db.fp"), "");
}

TEST_F(LevelFiles, CandidatesAreDroppedWithoutACandidateFile) {
  open_all();
  write_candidates(one_edge_level());
  close_outputs(&o);
  EXPECT_EQ(folder.files().size(), 1u);
  EXPECT_EQ(folder.read("db.fp"), "");
}

TEST_F(LevelFiles, EmptyLevelWritesNothing) {
  o.parent_children_list = o.tid_list = 1;
  open_all();
  write_level(sg_set_ptr(sg_set_create()));
  close_outputs(&o);
  EXPECT_EQ(folder.read("db.fp") + folder.read("db.pc") + folder.read("db.tid"),
            "");
}

TEST_F(LevelFiles, LevelWithoutAPatternFileIsFatal) {
  EXPECT_EQ(fatal_text([&] { write_level(one_edge_level()); }),
            "subgraph.c:N: no output file specified\n");
}

} // namespace kestro
