#include "driver/run.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <limits>
#include <sstream>
#include <string>

#include <gtest/gtest.h>

#include "base/output_lock.h"
#include "support/fatal.h"
#include "support/program.h"
#include "support/scratch_folder.h"

namespace kestro {
namespace {

// Two triangles C-C-O and an edge C-C, single bonds but for one double bond.
const char database_text[] = "t # 0\n"
                             "v 0 C\n"
                             "v 1 C\n"
                             "v 2 O\n"
                             "u 0 1 s\n"
                             "u 1 2 s\n"
                             "u 0 2 s\n"
                             "t # 1\n"
                             "v 0 C\n"
                             "v 1 C\n"
                             "v 2 O\n"
                             "u 0 1 d\n"
                             "u 1 2 s\n"
                             "u 0 2 s\n"
                             "t # 2\n"
                             "v 0 C\n"
                             "v 1 C\n"
                             "u 0 1 s\n";

// A run of the library on FILE "db.g" in a folder of its own.
class Run : public testing::Test {
protected:
  Run() : input(folder.name("db.g")) {
    folder.write("db.g", database_text);
    o.input_file = input.c_str();
  }
  // Its report.
  std::string run() { return run_here(&o); }

  scratch_folder folder;
  std::string input;
  options o;
};

} // namespace

TEST(MinSupportCount, SupportOfZeroIsOneTransaction) {
  EXPECT_EQ(clamped_support(0.0).graphs(1000), 1);
}

TEST(MinSupportCount, NegativeSupportIsOneTransaction) {
  EXPECT_EQ(clamped_support(-7.5).graphs(1000), 1);
  EXPECT_EQ(clamped_support(-1e300).graphs(1000), 1);
}

TEST(MinSupportCount, SupportAboveHundredIsAllTransactions) {
  EXPECT_EQ(clamped_support(100.1).graphs(1000), 1000);
  EXPECT_EQ(clamped_support(1e300).graphs(1000), 1000);
  EXPECT_EQ(clamped_support(100.0).graphs(1000), 1000);
}

TEST(MinSupportCount, TwoAndAHalfPerCentOfAThousandIsTwentyFive) {
  EXPECT_EQ(clamped_support(2.5).graphs(1000), 25);
}

TEST(MinSupportCount, HalvesRoundUp) {
  EXPECT_EQ(clamped_support(37.5).graphs(4), 2);  // 1.5
  EXPECT_EQ(clamped_support(62.5).graphs(4), 3);  // 2.5
  EXPECT_EQ(clamped_support(37.25).graphs(4), 1); // 1.49
}

TEST(MinSupportCount, BelowHalfATransactionIsOne) {
  EXPECT_EQ(clamped_support(5.0).graphs(1), 1);
  EXPECT_EQ(clamped_support(0.01).graphs(1000), 1);
}

TEST(MinSupportCount, NanIsOneTransaction) {
  EXPECT_EQ(clamped_support(std::nan("")).graphs(1000), 1);
  EXPECT_EQ(clamped_support(-std::nan("")).graphs(1000), 1);
}

TEST(MinSupportCount, InfiniteSupportIsAllTransactions) {
  const double infinity = std::numeric_limits<double>::infinity();
  EXPECT_EQ(clamped_support(infinity).graphs(1000), 1000);
  EXPECT_EQ(clamped_support(-infinity).graphs(1000), 1);
}

TEST(MinSupportCount, WithoutTransactionsItIsOne) {
  EXPECT_EQ(clamped_support(5.0).graphs(0), 1);
  EXPECT_EQ(clamped_support(std::numeric_limits<double>::infinity()).graphs(0),
            1);
}

// 0.3 is stored a little below its value and 0.1 a little above.  Of 500
// transactions they are 1.5 and 0.5, less or more by 6e-17: an error that the
// rounding of a double would swallow.
TEST(MinSupportCount, ExtendedPrecisionDecidesBorderlineSupports) {
  EXPECT_EQ(clamped_support(0.3).graphs(500), 1);
  EXPECT_EQ(clamped_support(0.1).graphs(1500), 2);
}

TEST(MinSupportCount, LargestTransactionCountIsNotExceeded) {
  EXPECT_EQ(clamped_support(100.0).graphs(INT_MAX), INT_MAX);
  EXPECT_EQ(clamped_support(200.0).graphs(INT_MAX), INT_MAX);
}

TEST_F(Run, NameWithANewlineIsRefused) {
  const std::string name = folder.name("db\nt # 1-0, 9.g");
  folder.write("db\nt # 1-0, 9.g", database_text);
  o.input_file = name.c_str();
  for (const int save_labels : {0, 1}) {
    o.save_labels = save_labels;
    EXPECT_EQ(fatal_text([&] { run(); }),
              "the name of the input holds a newline\n");
  }
  EXPECT_EQ(folder.files().size(), 2u); // this input and the other
}

TEST_F(Run, NameMayHoldOtherControlCharacters) {
  const std::string name = folder.name("d\tb\r.g");
  folder.write("d\tb\r.g", database_text);
  o.input_file = name.c_str();
  EXPECT_NE(run().find(name), std::string::npos);
  EXPECT_TRUE(folder.has("d\tb\r.fp"));
}

TEST_F(Run, LabelFileOfAnotherRunIsLeftAlone) {
  folder.write("db.ls", "theirs\n");
  const std::string name = folder.name("db.ls");
  const output_lock theirs(name.c_str());
  o.save_labels = 1;
  EXPECT_EQ(fatal_text([&] { run(); }),
            "can't write a file '" + name + "': another run is writing it\n");
  EXPECT_EQ(folder.read("db.ls"), "theirs\n");
}

TEST_F(Run, MoreThreadsThanWork) {
  const std::string expected = masked_time(run());
  const std::string patterns = masked_time(folder.read("db.fp"));
  o.jobs = 1000000;
  EXPECT_EQ(masked_time(run()), expected);
  EXPECT_EQ(masked_time(folder.read("db.fp")), patterns);
}

TEST_F(Run, ReportShowsHeaderRowsSummaryAndTiming) {
  o.support = 60;
  const std::string report = run();
  EXPECT_EQ(lines_between(report, "Outputs", "Timing"),
            "Outputs -----------------------------------------------\n"
            "  Frequent Pattern File:                       " +
                folder.name("db.fp") +
                "\n\n"
                "  Size Candidates Frequent Patterns \n"
                // C-C s in 0 and 2; C-O s in 0 and 1
                "  1               2                 \n"
                // C-O-C in 0 and 1; C-C-O with both s only in 0
                "  2               1                 \n"
                // O with three C passes the bound of its one parent
                "  3    1          0                 \n"
                "\n"
                "  Largest Frequent Pattern Size:               2\n"
                "  Total Number of Candidates Generated:        1\n"
                "  Total Number of Frequent Patterns Found:     3\n"
                "\n");
  EXPECT_EQ(masked_time(report.substr(report.find("Timing"))),
            "Timing Information ------------------------------------\n"
            "  Elapsed User CPU Time:                       T[sec]\n"
            "*******************************************************\n");
}

TEST_F(Run, PatternFileIsFramedByTheReport) {
  o.support = 60;
  const std::string report = run();
  const std::string patterns = folder.read("db.fp");
  std::string frame; // of the pattern file, without the prefix
  std::string body;
  std::istringstream lines(patterns);
  for (std::string line; std::getline(lines, line);)
    if (line.starts_with("# "))
      frame += line.substr(2) + "\n";
    else
      body += line + "\n";
  EXPECT_EQ(masked_time(frame), masked_time(report));
  EXPECT_EQ(body.substr(0, 4), "t # ");
  EXPECT_EQ(std::count(body.begin(), body.end(), 't'), 3);
}

TEST_F(Run, SupportCountIsSetFromTheTransactions) {
  o.support = 60;
  run();
  EXPECT_EQ(o.min_support_count, 2); // 1.8 rounded
}

TEST_F(Run, StabilizerThresholdIsHandedOn) {
  // Three vertices joined with three others, a perfect matching with another
  // label: six vertices that look alike.  Only the exhaustive search brings
  // them into one form.
  folder.write("db.g", "t\n"
                       "v 0 a\nv 1 a\nv 2 a\nv 3 a\nv 4 a\nv 5 a\n"
                       "u 0 3 y\nu 0 4 x\nu 0 5 x\n"
                       "u 1 3 x\nu 1 4 y\nu 1 5 x\n"
                       "u 2 3 x\nu 2 4 x\nu 2 5 y\n");
  const auto listed_twice = [&](int threshold, int jobs) {
    o.stabilizer_threshold = threshold;
    o.jobs = jobs;
    run();
    return folder.read("db.fp").find("\nt # 9-1,") != std::string::npos;
  };
  for (const int jobs : {1, 2}) {
    EXPECT_TRUE(listed_twice(6, jobs));
    EXPECT_FALSE(listed_twice(7, jobs));
  }
}

TEST_F(Run, OnlyAskedOutputsAreCreated) {
  run();
  EXPECT_EQ(folder.files().size(), 2u);
  EXPECT_TRUE(folder.has("db.fp"));
}

TEST_F(Run, OutputsAreClosedAtTheEnd) {
  o.candidates = o.parent_children_list = o.tid_list = 1;
  run();
  for (const file_ptr *stream :
       {&o.pattern_stream, &o.candidates_stream, &o.pc_stream, &o.tid_stream})
    EXPECT_EQ(stream->get(), nullptr);
}

TEST_F(Run, NoFrequentEdgePrintsAnEmptyTable) {
  o.support = 100;
  const std::string report = run();
  EXPECT_EQ(report.find("Size Candidates"), std::string::npos);
  EXPECT_EQ(
      lines_between(report, "  Frequent Pattern File", "Timing"),
      "  Frequent Pattern File:                       " + folder.name("db.fp") +
          "\n\n"
          "\n"
          "  Largest Frequent Pattern Size:               0\n"
          "  Total Number of Frequent Patterns Found:     0\n"
          "\n");
}

TEST_F(Run, MaxsizeTwoShowsNoCandidatesTotal) {
  o.support = 30;
  o.maxsize = 2;
  EXPECT_EQ(run().find("Candidates Generated"), std::string::npos);
}

TEST_F(Run, MaxsizeZeroPrintsAnEmptyTable) {
  o.maxsize = o.minsize = 0;
  const std::string report = run();
  EXPECT_EQ(report.find("Size Candidates"), std::string::npos);
  EXPECT_NE(report.find("\n\n\n  Largest Frequent Pattern Size:"
                        "               0\n"),
            std::string::npos);
}

TEST_F(Run, SizeBelowMinsizeIsNeitherWrittenNorPrinted) {
  o.support = 60;
  o.minsize = 2;
  o.tid_list = 1;
  const std::string report = run();
  EXPECT_EQ(folder.read("db.tid"), "2-0 0 1\n");
  EXPECT_EQ(report.find("\n  1 "), std::string::npos);
  EXPECT_NE(report.find("\n  2               1                 \n"),
            std::string::npos);
}

TEST_F(Run, LiveRowsHaveNoHeadingFromMinsizeTwoOn) {
  o.support = 60;
  o.minsize = 2;
  EXPECT_EQ(run().find("Size Candidates"), std::string::npos);
  EXPECT_NE(folder.read("db.fp").find("#   Size Candidates"),
            std::string::npos);
}

TEST_F(Run, MaximalReportWaitsForTheSelection) {
  o.support = 60;
  o.maximal = o.parent_children_list = o.tid_list = 1;
  const std::string report = run();
  EXPECT_EQ(lines_between(report, "  TID-List File", "Timing"),
            "  TID-List File:                               " +
                folder.name("db.tid") +
                "\n\n"
                "  Size Frequent Patterns \n"
                "  1    1                 \n"
                "  2    1                 \n"
                "\n"
                "  Largest Frequent Pattern Size:               2\n"
                "  Total Number of Frequent Patterns Found:     2\n"
                "\n");
  const std::string foot = lines_between(folder.read("db.fp"), "#   Size", "?");
  EXPECT_EQ(foot.substr(0, foot.find("#   Largest")),
            "#   Size Frequent Patterns \n"
            "#   1    1                 \n"
            "#   2    1                 \n"
            "# \n");
}

TEST_F(Run, SaveLabelsWritesTheLabelFileAlone) {
  o.save_labels = 1;
  EXPECT_EQ(run(), "");
  EXPECT_EQ(folder.files().size(), 2u);
  EXPECT_EQ(folder.read("db.ls"), "# 2 edge labels, 2 vertex labels\n"
                                  "E d\n"
                                  "E s\n"
                                  "V C\n"
                                  "V O\n");
}

TEST_F(Run, SaveLabelsWritesWhereTold) {
  const std::string name = folder.name("other.txt");
  o.save_labels = 1;
  o.save_labels_file = name.c_str();
  EXPECT_EQ(run(), "");
  EXPECT_TRUE(folder.has("other.txt"));
  EXPECT_FALSE(folder.has("db.ls"));
}

TEST_F(Run, LoadedLabelsAreCounted) {
  folder.write("db.ls", "V O\nE s\nV C\nE d\nV H\n");
  o.load_labels = 1;
  EXPECT_NE(run().find("  Number of Distinct Vertex Labels:            3\n"),
            std::string::npos);
}

TEST_F(Run, LoadedLabelsAreSavedBackWithoutReadingFile) {
  const std::string from = folder.name("in.ls");
  folder.write("in.ls", "V b\nE x\nV a\n");
  folder.remove("db.g");
  o.load_labels = o.save_labels = 1;
  o.load_labels_file = from.c_str();
  EXPECT_EQ(run(), "");
  EXPECT_EQ(folder.read("db.ls"), "# 1 edge labels, 2 vertex labels\n"
                                  "E x\n"
                                  "V a\n"
                                  "V b\n");
}

TEST_F(Run, LabelFileReadMayBeWrittenBack) {
  folder.write("db.ls", "V b\nE x\nV a\n");
  o.load_labels = o.save_labels = 1;
  EXPECT_EQ(run(), "");
  EXPECT_EQ(folder.read("db.ls"), "# 1 edge labels, 2 vertex labels\n"
                                  "E x\n"
                                  "V a\n"
                                  "V b\n");
}

TEST_F(Run, LabelFileThatIsTheInputIsFatal) {
  o.save_labels = 1;
  o.save_labels_file = input.c_str();
  EXPECT_EQ(fatal_text([&] { run(); }),
            "can't write a file '" + input + "': it is the input\n");
  EXPECT_EQ(folder.read("db.g"), database_text);
  // Also where other labels are loaded, so that the input is not read.
  const std::string labels = folder.name("labels");
  folder.write("labels", "V a\n");
  o.load_labels = 1;
  o.load_labels_file = labels.c_str();
  EXPECT_EQ(fatal_text([&] { run(); }),
            "can't write a file '" + input + "': it is the input\n");
  EXPECT_EQ(folder.read("db.g"), database_text);
}

TEST_F(Run, LabelFileThatCannotBeWrittenIsFatal) {
  o.save_labels = 1;
  o.save_labels_file = "/dev/full";
  EXPECT_EQ(fatal_text([&] { run(); }), "can't write a file '/dev/full'\n");
}

TEST_F(Run, ReportThatCannotBeWrittenIsFatal) {
  for (o.maximal = 0; o.maximal < 2; o.maximal++) {
    const file_ptr full(open_file("/dev/full", "w"));
    EXPECT_EQ(fatal_text([&] { run_kestro(&o, full.get()); }),
              "can't write a file 'standard output'\n");
  }
}

TEST_F(Run, MissingFilesAreFatal) {
  folder.remove("db.g");
  EXPECT_EQ(fatal_text([&] { run(); }), "can't open a file '" + input + "'\n");
  o.load_labels = 1;
  EXPECT_EQ(fatal_text([&] { run(); }),
            "can't open a file '" + folder.name("db.ls") + "'\n");
}

TEST_F(Run, BadInputLeavesNoOutputs) {
  folder.write("db.g", "t\nv 0 A\nu 0 0 s\n");
  EXPECT_EQ(fatal_text([&] { run(); }), "graph.c:N: something wrong\n");
  EXPECT_EQ(folder.files().size(), 1u);
}

TEST_F(Run, ThreadsDoNotShow) {
  o.support = 30;
  o.tid_list = 1;
  const std::string report = masked_time(run());
  const auto files = folder.files();
  for (const int jobs : {2, 3, 7}) {
    o.jobs = jobs;
    EXPECT_EQ(masked_time(run()), report);
    EXPECT_EQ(folder.read("db.tid"), files.at("db.tid"));
  }
}

} // namespace kestro
