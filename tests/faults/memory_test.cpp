// Memory runs out at every allocation of a run, once or for good.
//
// Each run has a process of its own, forked from this one, so that an abort is
// seen and nothing is left of the run before.  What runs is the program's whole
// body; what must come of it: the report of exhausted memory and status 1, or,
// where the C library makes do without the block, what comes of an undisturbed
// run.  Either way no block may be left that the undisturbed run does not
// leave.

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <map>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "driver/command.h"
#include "driver/run.h"
#include "support/failing_memory.h"
#include "support/fatal.h"
#include "support/program.h"
#include "support/scratch_folder.h"

namespace kestro {
namespace {

using file_texts = std::map<std::string, std::string>;
using string_list = std::vector<std::string>;

// What a child tells of its run, in memory shared with it.
struct figures {
  long asked = 0; // allocations
  long left = 0;  // blocks
};

class shared_figures {
public:
  shared_figures()
      : at_(static_cast<figures *>(mmap(nullptr, sizeof(figures),
                                        PROT_READ | PROT_WRITE,
                                        MAP_SHARED | MAP_ANONYMOUS, -1, 0))) {}
  ~shared_figures() { munmap(at_, sizeof(figures)); }
  shared_figures(const shared_figures &) = delete;
  shared_figures &operator=(const shared_figures &) = delete;
  figures *operator->() const { return at_; }

private:
  figures *at_;
};

// A command line, the files it finds, and the threads it mines on.
struct scenario {
  string_list words;
  file_texts files;
  int jobs = 1;
};

struct outcome {
  int status; // as a shell tells it
  std::string err;
  file_texts files; // all, with the report as "stdout", without CPU times
  figures told;
};

constexpr long never = 1000000000; // no run has as many allocations

} // namespace

static void redirect(int fd, const char *file) {
  const int opened = open(file, O_WRONLY | O_CREAT | O_TRUNC, 0666);
  dup2(opened, fd);
  close(opened);
}

// In the child: the program's body in folder, with the n-th allocation refused.
[[noreturn]] static void run_in_child(const scenario &s,
                                      const scratch_folder &folder, long n,
                                      refusal how, figures *told) {
  if (chdir(folder.name(".").c_str()))
    _exit(99);
  redirect(STDOUT_FILENO, "stdout");
  redirect(STDERR_FILENO, "stderr");
  string_list words = {"kestro"};
  words.insert(words.end(), s.words.begin(), s.words.end());
  std::vector<char *> argv;
  for (std::string &word : words)
    argv.push_back(word.data());
  argv.push_back(nullptr);

  const long before = live_blocks();
  refuse_allocation(n, how);
  const int status =
      run_command(static_cast<int>(words.size()), argv.data(), s.jobs);
  told->asked = refuse_no_allocation();
  fclose(stdout); // and its buffer
  told->left = live_blocks() - before;
  _exit(status);
}

static outcome run_with_refusal(const scenario &s, long n, refusal how) {
  const scratch_folder folder;
  for (const auto &[name, text] : s.files)
    folder.write(name, text);
  const shared_figures told;
  const pid_t child = fork();
  if (child == 0)
    run_in_child(s, folder, n, how, told.operator->());
  int ended = 0;
  waitpid(child, &ended, 0);
  outcome o{WIFSIGNALED(ended) ? 128 + WTERMSIG(ended) : WEXITSTATUS(ended),
            folder.read("stderr"), folder.files(), *told.operator->()};
  o.files.erase("stderr");
  for (auto &[name, text] : o.files)
    text = masked_time(text);
  return o;
}

// What a run says that memory has ended.  A stream is a block too: where that
// is refused it is the file that cannot be opened.
static std::set<std::string> shortage_reports(const outcome &undisturbed) {
  std::set<std::string> reports = {"xmalloc.c:N: not enough memory\n",
                                   "can't open a file 'temporary file'\n"};
  for (const auto &[name, text] : undisturbed.files)
    reports.insert("can't open a file '" + name + "'\n");
  return reports;
}

// Refuses every allocation in turn; at least that share of the refusals must
// end the run.
static void sweep(const scenario &s, refusal how, double ending = 0.9) {
  const outcome undisturbed = run_with_refusal(s, never, how);
  ASSERT_EQ(undisturbed.status, 0) << undisturbed.err;
  ASSERT_EQ(undisturbed.err, "");
  const std::set<std::string> reports = shortage_reports(undisturbed);
  long failed = 0;
  for (long n = 1; n <= undisturbed.told.asked; n++) {
    const outcome o = run_with_refusal(s, n, how);
    SCOPED_TRACE("allocation " + std::to_string(n));
    ASSERT_LE(o.told.left, undisturbed.told.left);
    if (o.status == 0) {
      ASSERT_EQ(o.err, "");
      ASSERT_EQ(o.files, undisturbed.files);
      continue;
    }
    ASSERT_EQ(o.status, 1) << o.err;
    ASSERT_EQ(reports.count(masked_line(o.err)), 1u) << o.err;
    failed++;
  }
  // Most blocks matter, or something has swallowed the refusals.
  EXPECT_GT(static_cast<double>(failed),
            ending * static_cast<double>(undisturbed.told.asked));
  testing::Test::RecordProperty("allocations",
                                static_cast<int>(undisturbed.told.asked));
}

// Four small graphs with a path of three edges in common.
static const char paths[] = "t # 0\n"
                            "v 0 C\nv 1 O\nv 2 C\nv 3 N\n"
                            "u 0 1 s\nu 1 2 d\nu 2 3 s\n"
                            "t # 1\n"
                            "v 0 C\nv 1 O\nv 2 C\nv 3 N\n"
                            "u 0 1 s\nu 1 2 d\nu 2 3 s\nu 0 3 s\n"
                            "t # 2\n"
                            "v 10 N\nv 20 C\nv 30 O\nv 40 C\n"
                            "u 20 10 s\nu 20 30 d\nu 40 30 s\n";

// The same, as it may also be written.
static const char untidy[] = "% head\n"
                             "# more\n"
                             " \tT first\n"
                             " v -7 C\nv 5 O\n  v 007 C more\nv 3 N\n"
                             "u  -7   +5  s more\nD 5 7 d\nE 7 3 s\n"
                             "t\n"
                             "v 1 C\nv 2 O\nv 3 C\nv 4 N\n"
                             "u 1 2 s\nu 2 3 d\nu 3 4 s";

static const scenario all_outputs = {
    {"-s", "60", "-t", "-p", "--candidates", "db.g"}, {{"db.g", paths}}};
static const scenario maximal = {{"-s", "60", "-x", "-t", "db.g"},
                                 {{"db.g", paths}}};
static const scenario loading = {
    {"-s", "100", "--load-labels=names", "db.g"},
    {{"db.g", untidy}, {"names", "# three\nV C\nV N\nV O\nE d\nE s\n"}}};
static const scenario saving = {{"--save-labels", "db.g"}, {{"db.g", untidy}}};

TEST(Memory, RefusedOnceWithAllOutputs) { sweep(all_outputs, refusal::once); }
TEST(Memory, RefusedForGoodWithAllOutputs) {
  sweep(all_outputs, refusal::lasting);
}

TEST(Memory, RefusedOnceWithMaximalPatterns) { sweep(maximal, refusal::once); }
TEST(Memory, RefusedForGoodWithMaximalPatterns) {
  sweep(maximal, refusal::lasting);
}

TEST(Memory, RefusedOnceWithLoadedLabels) { sweep(loading, refusal::once); }
TEST(Memory, RefusedForGoodWithLoadedLabels) {
  sweep(loading, refusal::lasting);
}

TEST(Memory, RefusedOnceWithSavedLabels) { sweep(saving, refusal::once); }
TEST(Memory, RefusedForGoodWithSavedLabels) { sweep(saving, refusal::lasting); }

// A thread that cannot be started is done without, and how many blocks are
// asked for depends on which thread takes which piece of work.
static constexpr double ending_on_two_threads = 0.75;

TEST(Memory, RefusedOnceOnTwoThreads) {
  scenario s = maximal;
  s.jobs = 2;
  sweep(s, refusal::once, ending_on_two_threads);
}
TEST(Memory, RefusedForGoodOnTwoThreads) {
  scenario s = maximal;
  s.jobs = 2;
  sweep(s, refusal::lasting, ending_on_two_threads);
}

} // namespace kestro
