#include "driver/command.h"

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
