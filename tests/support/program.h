// Whole runs: the built program as a process of its own, and the library in
// this one.  KESTRO_PROGRAM is the full name of the program.
#pragma once

#include <sys/wait.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "base/open_file.h"
#include "driver/run.h"
#include "support/scratch_folder.h"

namespace kestro {

struct program_result {
  int status; // as a shell tells it: 128 + the signal that ended it
  std::string out;
  std::string err;
};

// word, which holds no apostrophe, as one word of a shell.
inline std::string shell_quoted(const std::string &word) {
  return "'" + word + "'";
}

// Runs the program in folder and waits for its end.
inline program_result run_program(const scratch_folder &folder,
                                  const std::vector<std::string> &words) {
  const scratch_folder streams;
  std::string line = "cd " + shell_quoted(folder.name(".")) +
                     " && exec " KESTRO_PROGRAM " </dev/null >" +
                     shell_quoted(streams.name("out")) + " 2>" +
                     shell_quoted(streams.name("err"));
  for (const std::string &word : words)
    line += " " + shell_quoted(word);
  const int ended = system(line.c_str());
  const int status =
      WIFSIGNALED(ended) ? 128 + WTERMSIG(ended) : WEXITSTATUS(ended);
  return {status, streams.read("out"), streams.read("err")};
}

// The report of a run in this process, which may fail as it likes.
inline std::string run_here(options *o, long long *order_dependent = nullptr) {
  const file_ptr out(tmpfile());
  const mining_summary found = run_kestro(o, out.get());
  if (order_dependent)
    *order_dependent = found.order_dependent;
  std::string report(static_cast<size_t>(ftell(out.get())), '\0');
  rewind(out.get());
  report.resize(fread(report.data(), 1, report.size(), out.get()));
  return report;
}

// text with the elapsed time of every run report in it replaced by T.
inline std::string masked_time(std::string text) {
  const std::string name = "Elapsed User CPU Time:";
  for (size_t at = 0; (at = text.find(name, at)) != std::string::npos;) {
    at = text.find_first_not_of(' ', at + name.size());
    text.replace(at, text.find_first_not_of("0123456789.", at) - at, "T");
  }
  return text;
}

// The text from the first line that begins with head up to the one, exclusive,
// that begins with tail; to the end without such a line.
inline std::string lines_between(const std::string &text,
                                 const std::string &head,
                                 const std::string &tail) {
  const size_t from = ("\n" + text).find("\n" + head);
  if (from == std::string::npos)
    return "";
  const size_t to = text.find("\n" + tail, from);
  return text.substr(from, to == std::string::npos ? to : to + 1 - from);
}

} // namespace kestro
