#include "driver/command.h"

#include <sys/wait.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "support/scratch_folder.h"

namespace kestro {
namespace {

constexpr char square[] = "t # 0\nv 0 A\nv 1 B\nv 2 A\nv 3 B\n"
                          "u 0 1 s\nu 1 2 s\nu 2 3 s\nu 0 3 s\n";

// What one call printed and returned.
struct outcome {
  int status;
  std::string out;
  std::string err;
};

outcome obey(std::vector<std::string> words, int jobs) {
  words.insert(words.begin(), "kestro");
  std::vector<char *> argv;
  for (std::string &word : words)
    argv.push_back(word.data());
  const int argc = static_cast<int>(argv.size());
  argv.push_back(nullptr);
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  const int status = run_command(argc, argv.data(), jobs);
  const std::string out = testing::internal::GetCapturedStdout();
  return {status, out, testing::internal::GetCapturedStderr()};
}

std::string without_time(const std::string &report) {
  return report.substr(0, report.find("Elapsed"));
}

} // namespace

TEST(Command, HelpIsUsageAndStatusZero) {
  const outcome o = obey({"--help"}, 1);
  EXPECT_EQ(o.status, 0);
  EXPECT_TRUE(o.out.starts_with("Usage: kestro [OPTION] FILE\n"));
  EXPECT_EQ(o.err, "");
}

TEST(Command, RefusedOptionIsStatusOne) {
  const outcome o = obey({"--nonsense", "db.g"}, 1);
  EXPECT_EQ(o.status, 1);
  EXPECT_EQ(o.out, "");
  EXPECT_EQ(o.err, "kestro: unrecognized option '--nonsense'\n");
}

TEST(Command, FatalErrorIsToldAndStatusOne) {
  const scratch_folder folder;
  const std::string missing = folder.name("missing.g");
  const outcome o = obey({missing}, 1);
  EXPECT_EQ(o.status, 1);
  EXPECT_NE(o.err.find("can't open a file '" + missing + "'"),
            std::string::npos);
}

TEST(Command, UsageThatCannotBeWrittenIsStatusOne) {
  const scratch_folder folder;
  const std::string err = folder.name("err");
  const std::string line =
      std::string("'" KESTRO_PROGRAM "' --help >/dev/full 2>'") + err + "'";
  EXPECT_EQ(WEXITSTATUS(system(line.c_str())), 1);
  EXPECT_EQ(folder.read("err"), "can't write a file 'standard output'\n");
}

// What comes of a run whose standard streams are as the shell is told.
static outcome run_with(const scratch_folder &folder,
                        const std::string &streams) {
  folder.write("db.g", square);
  const std::string line = "cd '" + folder.name(".") + "' && '" +
                           KESTRO_PROGRAM + "' -s100 -t -p db.g " + streams;
  const int status = WEXITSTATUS(system(line.c_str()));
  return {status, "", folder.has("err") ? folder.read("err") : ""};
}

TEST(Command, ClosedStandardOutputIsStatusOneAndSpoilsNoOutput) {
  const scratch_folder folder;
  const outcome o = run_with(folder, ">&- 2>err");
  EXPECT_EQ(o.status, 1);
  EXPECT_EQ(o.err, "can't write a file 'standard output'\n");
  EXPECT_FALSE(folder.read("db.fp").starts_with("***"));
}

TEST(Command, OtherClosedStandardStreamsDoNotMatter) {
  const scratch_folder folder;
  EXPECT_EQ(run_with(folder, "<&- 2>&- >out").status, 0);
  EXPECT_TRUE(folder.read("out").starts_with("***"));
  EXPECT_TRUE(folder.read("db.fp").starts_with("# ***"));
  EXPECT_TRUE(folder.read("db.tid").starts_with("1-0 0\n"));
}

TEST(Command, ClosedStandardInputIsNoEmptyDatabase) {
  const scratch_folder folder;
  std::filesystem::create_symlink("/dev/stdin", folder.name("in.g"));
  const std::string line = "cd '" + folder.name(".") + "' && '" +
                           KESTRO_PROGRAM + "' in.g <&- >out 2>err";
  EXPECT_EQ(WEXITSTATUS(system(line.c_str())), 1);
  EXPECT_EQ(folder.read("err"), "can't open a file 'in.g'\n");
}

TEST(Command, NoArgumentsNotEvenANameShowTheUsage) {
  char *none[] = {nullptr};
  testing::internal::CaptureStdout();
  EXPECT_EQ(run_command(0, none, 1), 0);
  EXPECT_TRUE(testing::internal::GetCapturedStdout().starts_with(
      "Usage: kestro [OPTION] FILE\n"));
}

TEST(Command, ReportAppendedToTheInputIsRefused) {
  const scratch_folder folder;
  const outcome o = run_with(folder, ">>db.g 2>err");
  EXPECT_EQ(o.status, 1);
  EXPECT_EQ(o.err, "can't write a file 'standard output': it is the input\n");
  EXPECT_EQ(folder.read("db.g"), square);
}

TEST(Command, FileOverTheSizeLimitIsStatusOne) {
  const scratch_folder folder;
  const std::string limited = "bash -c \"ulimit -f 1; exec '" +
                              std::string(KESTRO_PROGRAM) +
                              "' -s1 -M2 -t -p db.g\" >/dev/null 2>err";
  std::string star = "t # 0\n";
  for (int i = 0; i < 40; i++)
    star += "v " + std::to_string(i) + " L" + std::to_string(i) + "\n";
  for (int i = 1; i < 40; i++)
    star += "u 0 " + std::to_string(i) + " s\n";
  folder.write("db.g", star);
  const std::string line = "cd '" + folder.name(".") + "' && " + limited;
  EXPECT_EQ(WEXITSTATUS(system(line.c_str())), 1);
  EXPECT_EQ(folder.read("err"), "can't write a file 'db.fp'\n");
}

TEST(Command, RunIsTheSameOnAnyNumberOfThreads) {
  const scratch_folder folder;
  folder.write("db.g", square);
  const std::vector<std::string> words = {"-s100", "-t", "-p",
                                          folder.name("db.g")};
  const outcome one = obey(words, 1);
  EXPECT_EQ(one.status, 0);
  EXPECT_NE(one.out.find("Size"), std::string::npos);
  const std::string tids = folder.read("db.tid");
  const std::string parents = folder.read("db.pc");
  for (const int jobs : {2, 3, 7}) {
    const outcome more = obey(words, jobs);
    EXPECT_EQ(more.status, 0);
    EXPECT_EQ(without_time(more.out), without_time(one.out));
    EXPECT_EQ(folder.read("db.tid"), tids);
    EXPECT_EQ(folder.read("db.pc"), parents);
  }
}

} // namespace kestro
