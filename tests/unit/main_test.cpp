#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "support/fatal.h"
#include "support/program.h"

namespace kestro {
namespace {

const char edge[] = "t # 0\nv 0 A\nv 1 B\nu 0 1 s\n";

// The program on a folder that holds FILE "db.g".
class Main : public testing::Test {
protected:
  Main() { folder.write("db.g", edge); }
  program_result run(const std::vector<std::string> &words) const {
    return run_program(folder, words);
  }
  scratch_folder folder;
};

} // namespace

TEST_F(Main, FinishedRunIsStatusZero) {
  const program_result result = run({"db.g"});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.err, "");
  EXPECT_TRUE(result.out.ends_with(
      "*******************************************************\n"));
  EXPECT_TRUE(folder.has("db.fp"));
}

TEST_F(Main, HelpIsUsageOnStandardOutputAndStatusZero) {
  const program_result result = run({"--help"});
  EXPECT_EQ(result.status, 0);
  EXPECT_TRUE(result.out.starts_with("Usage: kestro [OPTION] FILE\n"));
  EXPECT_EQ(result.err, "");
}

TEST_F(Main, MissingFileIsUsageAndStatusZero) {
  const program_result result = run({"-t"});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.out, run({"-h"}).out);
  EXPECT_EQ(result.err, "");
}

TEST_F(Main, UnknownOptionIsStatusOne) {
  const program_result result = run({"-c", "db.g"});
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.out, "");
  EXPECT_EQ(result.err,
            std::string(KESTRO_PROGRAM) + ": invalid option -- 'c'\n");
  EXPECT_FALSE(folder.has("db.fp"));
}

TEST_F(Main, SavedLabelsAreStatusZeroAndSilent) {
  const program_result result = run({"--save-labels", "db.g"});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.out + result.err, "");
  EXPECT_TRUE(folder.has("db.ls"));
}

TEST_F(Main, MissingInputIsStatusOneAndOneMessage) {
  const program_result result = run({"nosuch.g"});
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.out, "");
  EXPECT_EQ(result.err, "can't open a file 'nosuch.g'\n");
}

TEST_F(Main, BadInputIsStatusOneWithModuleAndLine) {
  folder.write("db.g", "x 1 2\n");
  const program_result result = run({"db.g"});
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(masked_line(result.err), "graph.c:N: invalid input line 'x 1 2'\n");
}

// A line of two full pieces counts as two vertices, as its second piece begins
// with "v" too, but is one.
TEST_F(Main, FailedCheckAbortsAfterItsReport) {
  folder.write("db.g", "t\nv 0 A " + std::string(1100, 'v') + "\n");
  const program_result result = run({"db.g"});
  EXPECT_EQ(result.status, 134);
  EXPECT_EQ(result.out, "");
  EXPECT_TRUE(result.err.starts_with("kestro: ")) << result.err;
  EXPECT_NE(result.err.find("Assertion `vertices == g->vs' failed.\n"),
            std::string::npos)
      << result.err;
}

// A vertex without a label has the label buffer grow until it is refused.
TEST_F(Main, ExhaustedMemoryIsStatusOne) {
  folder.write("db.g", "t\nv 0\n");
  const program_result result = run({"db.g"});
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(masked_line(result.err), "xmalloc.c:N: not enough memory\n");
}

} // namespace kestro
