#include "driver/options.h"

#include <climits>
#include <cmath>
#include <cstdlib>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "support/streams.h"

namespace kestro {
namespace {

// A parsed command line, its words kept for the settings that borrow them.
struct parsed {
  std::vector<std::string> words;
  std::vector<char *> argv;
  options o;
  command asked;
  std::string messages; // on standard error

  explicit parsed(const std::vector<std::string> &line) : words(line) {
    words.insert(words.begin(), "bin/kestro");
    for (std::string &word : words)
      argv.push_back(word.data());
    argv.push_back(nullptr);
    testing::internal::CaptureStderr();
    asked = parse_command_line(static_cast<int>(words.size()), argv.data(), &o);
    messages = testing::internal::GetCapturedStderr();
  }
};

std::string output_name(const char *file, const char *suffix) {
  return make_output_name(file, suffix).get();
}

void expect_refused(const std::vector<std::string> &line,
                    const std::string &message) {
  const parsed p(line);
  EXPECT_EQ(p.asked, command::refuse);
  EXPECT_EQ(p.messages, "bin/kestro: " + message + "\n");
}

} // namespace

TEST(Options, DefaultsStayWithFileAlone) {
  const parsed p({"db.g"});
  EXPECT_EQ(p.asked, command::run);
  EXPECT_EQ(p.messages, "");
  EXPECT_STREQ(p.o.input_file, "db.g");
  EXPECT_EQ(p.o.support, 5.0);
  EXPECT_EQ(p.o.maxsize, INT_MAX);
  EXPECT_EQ(p.o.minsize, 1);
  EXPECT_EQ(p.o.stabilizer_threshold, 5);
  EXPECT_EQ(p.o.min_support_count, -1);
  for (const int flag : {p.o.candidates, p.o.maximal, p.o.parent_children_list,
                         p.o.tid_list, p.o.load_labels, p.o.save_labels})
    EXPECT_EQ(flag, 0);
  EXPECT_EQ(p.o.load_labels_file, nullptr);
  EXPECT_EQ(p.o.save_labels_file, nullptr);
  for (const xptr<char> *name :
       {&p.o.candidates_file, &p.o.pattern_file, &p.o.pc_file, &p.o.tid_file})
    EXPECT_EQ(name->get(), nullptr);
  for (const file_ptr *stream : {&p.o.candidates_stream, &p.o.pattern_stream,
                                 &p.o.pc_stream, &p.o.tid_stream})
    EXPECT_EQ(stream->get(), nullptr);
}

TEST(Options, EnvironmentDoesNotEndTheOptionsAtTheFirstWord) {
  setenv("POSIXLY_CORRECT", "1", 1);
  const parsed p({"db.g", "-s", "60", "other", "-t"});
  unsetenv("POSIXLY_CORRECT");
  EXPECT_EQ(p.asked, command::run);
  EXPECT_STREQ(p.o.input_file, "db.g");
  EXPECT_EQ(p.o.support, 60);
  EXPECT_EQ(p.o.tid_list, 1);
}

TEST(Options, WordsBehindTheDoubleDashAreNoOptions) {
  EXPECT_STREQ(parsed({"-t", "--", "-x"}).o.input_file, "-x");
  EXPECT_STREQ(parsed({"db.g", "--", "-x"}).o.input_file, "db.g");
  EXPECT_STREQ(parsed({"-"}).o.input_file, "-");
  EXPECT_EQ(parsed({"-t", "--"}).asked, command::show_usage);
}

TEST(Options, ShortOptionsSetTheirFields) {
  const parsed p({"-p", "-t", "-s", "12.5", "-M", "9", "-m", "2", "db.g"});
  EXPECT_EQ(p.asked, command::run);
  EXPECT_EQ(p.o.parent_children_list, 1);
  EXPECT_EQ(p.o.tid_list, 1);
  EXPECT_EQ(p.o.support, 12.5);
  EXPECT_EQ(p.o.maxsize, 9);
  EXPECT_EQ(p.o.minsize, 2);
  EXPECT_EQ(p.o.maximal, 0);
  EXPECT_EQ(p.o.candidates, 0);
}

TEST(Options, LongOptionsSetTheirFields) {
  const parsed p({"--parent-children-list", "--tid-list", "--support=12.5",
                  "--maxsize", "9", "--minsize=2", "--candidates",
                  "--stabilizer-threshold=7", "db.g"});
  EXPECT_EQ(p.asked, command::run);
  EXPECT_EQ(p.o.parent_children_list, 1);
  EXPECT_EQ(p.o.tid_list, 1);
  EXPECT_EQ(p.o.support, 12.5);
  EXPECT_EQ(p.o.maxsize, 9);
  EXPECT_EQ(p.o.minsize, 2);
  EXPECT_EQ(p.o.candidates, 1);
  EXPECT_EQ(p.o.stabilizer_threshold, 7);
}

TEST(Options, ArgumentsMayBeAttachedToShortOptions) {
  const parsed p({"-ptM3", "-s40", "db.g"});
  EXPECT_EQ(p.o.parent_children_list, 1);
  EXPECT_EQ(p.o.tid_list, 1);
  EXPECT_EQ(p.o.maxsize, 3);
  EXPECT_EQ(p.o.support, 40.0);
}

TEST(Options, StabilizerThresholdTakesTheNextWord) {
  EXPECT_EQ(
      parsed({"--stabilizer-threshold", "1", "db.g"}).o.stabilizer_threshold,
      1);
}

TEST(Options, MaximalTurnsTheParentListOn) {
  for (const char *word : {"-x", "--maximal"}) {
    const parsed p({word, "db.g"});
    EXPECT_EQ(p.o.maximal, 1);
    EXPECT_EQ(p.o.parent_children_list, 1);
    EXPECT_EQ(p.o.tid_list, 0);
  }
}

TEST(Options, MaxsizeBelowMinsizeLowersMinsize) {
  const parsed p({"-m", "5", "-M", "3", "db.g"});
  EXPECT_EQ(p.o.minsize, 3);
  EXPECT_EQ(p.o.maxsize, 3);
}

TEST(Options, MinsizeAboveMaxsizeRaisesMaxsize) {
  const parsed p({"-M", "3", "-m", "5", "db.g"});
  EXPECT_EQ(p.o.minsize, 5);
  EXPECT_EQ(p.o.maxsize, 5);
}

TEST(Options, SizesAreClampedAtEachOption) {
  const parsed p({"-M", "2", "-m", "4", "-M", "6", "-m", "1", "db.g"});
  EXPECT_EQ(p.o.minsize, 1);
  EXPECT_EQ(p.o.maxsize, 6);
}

TEST(Options, EqualSizesAreLeftAlone) {
  const parsed p({"-M", "4", "-m", "4", "-M", "4", "db.g"});
  EXPECT_EQ(p.o.minsize, 4);
  EXPECT_EQ(p.o.maxsize, 4);
}

TEST(Options, MaxsizeZeroSetsMinsizeZero) {
  const parsed p({"-M", "0", "db.g"});
  EXPECT_EQ(p.o.maxsize, 0);
  EXPECT_EQ(p.o.minsize, 0);
}

TEST(Options, MinsizeAloneLeavesTheUnlimitedMaxsize) {
  const parsed p({"-m", "7", "db.g"});
  EXPECT_EQ(p.o.minsize, 7);
  EXPECT_EQ(p.o.maxsize, INT_MAX);
}

TEST(Options, NegativeSizesAreTakenAsTheyAre) {
  EXPECT_EQ(parsed({"-m", "-3", "db.g"}).o.minsize, -3);
  const parsed p({"-M", "-2", "db.g"});
  EXPECT_EQ(p.o.maxsize, -2);
  EXPECT_EQ(p.o.minsize, -2);
}

TEST(Options, TextThatIsNoNumberGivesZero) {
  const parsed p(
      {"-M", "many", "-s", "some", "--stabilizer-threshold=few", "db.g"});
  EXPECT_EQ(p.o.maxsize, 0);
  EXPECT_EQ(p.o.minsize, 0);
  EXPECT_EQ(p.o.support, 0.0);
  EXPECT_EQ(p.o.stabilizer_threshold, 0);
}

TEST(Options, TrailingCharactersOfANumberAreIgnored) {
  const parsed p({"-M", "8edges", "-m2.9", "-s", "12.5%", "db.g"});
  EXPECT_EQ(p.o.maxsize, 8);
  EXPECT_EQ(p.o.minsize, 2);
  EXPECT_EQ(p.o.support, 12.5);
}

TEST(Options, IntegersAreDecimal) {
  const parsed p({"-M", "010", "-m", "0x7", "db.g"});
  EXPECT_EQ(p.o.maxsize, 10);
  EXPECT_EQ(p.o.minsize, 0);
}

TEST(Options, SupportReadsExponentsInfinityAndNan) {
  EXPECT_EQ(parsed({"-s", "1e1", "db.g"}).o.support, 10.0);
  EXPECT_EQ(parsed({"-s", "-7.5", "db.g"}).o.support, -7.5);
  EXPECT_TRUE(std::isinf(parsed({"-s", "inf", "db.g"}).o.support));
  EXPECT_TRUE(std::isnan(parsed({"-s", "nan", "db.g"}).o.support));
}

TEST(Options, LabelFileArgumentsAreTakenAttached) {
  const parsed p({"--load-labels=in.ls", "--save-labels=out.ls", "db.g"});
  EXPECT_EQ(p.asked, command::run);
  EXPECT_EQ(p.o.load_labels, 1);
  EXPECT_EQ(p.o.save_labels, 1);
  EXPECT_STREQ(p.o.load_labels_file, "in.ls");
  EXPECT_STREQ(p.o.save_labels_file, "out.ls");
  EXPECT_STREQ(p.o.input_file, "db.g");
}

TEST(Options, LabelFileArgumentsAreNeverTheNextWord) {
  for (const char *word : {"--load-labels", "--save-labels"}) {
    const parsed p({word, "in.ls", "db.g"});
    EXPECT_EQ(p.asked, command::run);
    EXPECT_EQ(p.o.load_labels_file, nullptr);
    EXPECT_EQ(p.o.save_labels_file, nullptr);
    EXPECT_STREQ(p.o.input_file, "in.ls");
  }
}

TEST(Options, LabelOptionsLeaveOneAnotherAlone) {
  EXPECT_EQ(parsed({"--load-labels", "db.g"}).o.save_labels, 0);
  EXPECT_EQ(parsed({"--save-labels", "db.g"}).o.load_labels, 0);
}

TEST(Options, EmptyAttachedLabelFileIsAName) {
  EXPECT_STREQ(parsed({"--load-labels=", "db.g"}).o.load_labels_file, "");
}

TEST(Options, UniquePrefixesOfLongOptionsAreAccepted) {
  const parsed p({"--t", "--p", "--c", "--su", "50", "--maxs", "3", "--mi=2",
                  "--st=4", "--l=in.ls", "--sa", "db.g"});
  EXPECT_EQ(p.asked, command::run);
  EXPECT_EQ(p.o.tid_list, 1);
  EXPECT_EQ(p.o.parent_children_list, 1);
  EXPECT_EQ(p.o.candidates, 1);
  EXPECT_EQ(p.o.support, 50.0);
  EXPECT_EQ(p.o.maxsize, 3);
  EXPECT_EQ(p.o.minsize, 2);
  EXPECT_EQ(p.o.stabilizer_threshold, 4);
  EXPECT_STREQ(p.o.load_labels_file, "in.ls");
  EXPECT_EQ(p.o.save_labels, 1);
}

TEST(Options, AmbiguousPrefixIsRefused) {
  expect_refused({"--max", "3", "db.g"},
                 "option '--max' is ambiguous; possibilities: '--maxsize' "
                 "'--maximal'");
}

TEST(Options, UnknownLongOptionIsRefused) {
  expect_refused({"--bogus", "db.g"}, "unrecognized option '--bogus'");
}

TEST(Options, CandidatesHaveNoShortOption) {
  expect_refused({"-c", "db.g"}, "invalid option -- 'c'");
}

TEST(Options, MissingArgumentIsRefused) {
  expect_refused({"db.g", "-s"}, "option requires an argument -- 's'");
  expect_refused({"db.g", "--maxsize"},
                 "option '--maxsize' requires an argument");
}

TEST(Options, ArgumentOfAFlagIsRefused) {
  expect_refused({"--tid-list=3", "db.g"},
                 "option '--tid-list' doesn't allow an argument");
}

TEST(Options, MissingFileAsksForUsage) {
  EXPECT_EQ(parsed({}).asked, command::show_usage);
  EXPECT_EQ(parsed({"-s", "10"}).asked, command::show_usage);
  EXPECT_EQ(parsed({"--"}).asked, command::show_usage);
}

TEST(Options, HelpAsksForUsageAtOnce) {
  EXPECT_EQ(parsed({"-h", "--bogus", "db.g"}).asked, command::show_usage);
  EXPECT_EQ(parsed({"--help"}).asked, command::show_usage);
  const parsed p({"-M", "3", "--he", "-M", "4", "db.g"});
  EXPECT_EQ(p.asked, command::show_usage);
  EXPECT_EQ(p.o.maxsize, 3);
}

TEST(Options, ErrorsBeforeHelpWin) {
  EXPECT_EQ(parsed({"--bogus", "-h"}).asked, command::refuse);
}

TEST(Options, OptionsMayFollowFile) {
  const parsed p({"db.g", "-t", "-s", "75", "other", "-p", "words"});
  EXPECT_STREQ(p.o.input_file, "db.g");
  EXPECT_EQ(p.o.tid_list, 1);
  EXPECT_EQ(p.o.support, 75.0);
  EXPECT_EQ(p.o.parent_children_list, 1);
}

TEST(Options, DoubleDashEndsTheOptions) {
  const parsed p({"-t", "--", "-x", "-p"});
  EXPECT_EQ(p.asked, command::run);
  EXPECT_STREQ(p.o.input_file, "-x");
  EXPECT_EQ(p.o.maximal, 0);
  EXPECT_EQ(p.o.parent_children_list, 0);
}

TEST(Options, LastOfRepeatedOptionsCounts) {
  EXPECT_EQ(parsed({"-s", "10", "-s", "20", "db.g"}).o.support, 20.0);
}

TEST(Options, ParsingStartsAnewAfterAStopInTheMiddle) {
  EXPECT_EQ(parsed({"-th", "db.g"}).asked, command::show_usage);
  const parsed p({"-p", "db.g"});
  EXPECT_EQ(p.asked, command::run);
  EXPECT_EQ(p.o.parent_children_list, 1);
  EXPECT_STREQ(p.o.input_file, "db.g");
}

TEST(Options, UsageTextByteForByte) {
  EXPECT_EQ(written_text([](FILE *out) { usage("bin/kestro", out); }),
            "Usage: kestro [OPTION] FILE\n"
            "Discover frequent subgraphs.\n"
            "\n"
            "  -h, --help                   show this message\n"
            "  -M, --maxsize=NUMBER         stop after generating size NUMBER "
            "subgraphs\n"
            "  -m, --minsize=NUMBER         start from generating size NUMBER "
            "subgraphs\n"
            "  -p, --parent-children-list   generate PC list\n"
            "  -s, --support=NUMBER         use NUMBER as the minimum support "
            "percentile\n"
            "  -t, --tid-list               generate TID list\n"
            "  -x, --maximal                generate only maximal frequent "
            "subgraphs\n"
            "                               (-p is automatically turned on)\n");
}

TEST(Options, UsageNamesTheLastPartOfTheProgram) {
  const auto first_line = [](const char *program) {
    const std::string text =
        written_text([&](FILE *out) { usage(program, out); });
    return text.substr(0, text.find('\n'));
  };
  EXPECT_EQ(first_line("/usr/bin/miner"), "Usage: miner [OPTION] FILE");
  EXPECT_EQ(first_line("miner"), "Usage: miner [OPTION] FILE");
}

TEST(MakeOutputName, ReplacesTheExtension) {
  EXPECT_EQ(output_name("db.g", ".fp"), "db.fp");
  EXPECT_EQ(output_name("db.transactions", ".c.g"), "db.c.g");
}

TEST(MakeOutputName, ReplacesOnlyTheLastExtension) {
  EXPECT_EQ(output_name("a.b.c", ".tid"), "a.b.tid");
}

TEST(MakeOutputName, AppendsWithoutADot) {
  EXPECT_EQ(output_name("graphs", ".ls"), "graphs.ls");
}

TEST(MakeOutputName, LeadingDotIsNoExtension) {
  EXPECT_EQ(output_name(".hidden", ".ls"), ".hidden.ls");
  EXPECT_EQ(output_name(".", ".fp"), "..fp");
}

TEST(MakeOutputName, SecondCharacterMayBeTheDot) {
  EXPECT_EQ(output_name("a.g", ".fp"), "a.fp");
  EXPECT_EQ(output_name("..", ".fp"), "..fp");
}

TEST(MakeOutputName, DotOfAFolderCounts) {
  EXPECT_EQ(output_name("run.d/graphs", ".fp"), "run.fp");
  EXPECT_EQ(output_name("./graphs", ".fp"), "./graphs.fp");
  EXPECT_EQ(output_name("../graphs", ".fp"), "..fp");
}

TEST(MakeOutputName, TrailingDotIsReplaced) {
  EXPECT_EQ(output_name("db.", ".pc"), "db.pc");
}

TEST(MakeOutputName, EmptyNameGivesTheSuffix) {
  EXPECT_EQ(output_name("", ".fp"), ".fp");
}

} // namespace kestro
