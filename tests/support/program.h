// The built program as a process of its own.  KESTRO_PROGRAM is its full name.
#pragma once

#include <sys/wait.h>

#include <cstdlib>
#include <regex>
#include <string>
#include <vector>

#include "support/scratch_folder.h"

namespace kestro {

struct program_result {
  int status; // as a shell tells it: 128 + the signal that ended it
  std::string out;
  std::string err;
};

// word as a shell reads it back.
inline std::string shell_quoted(const std::string &word) {
  return "'" + std::regex_replace(word, std::regex("'"), "'\\''") + "'";
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

// text with the elapsed time of a run report replaced by T.
inline std::string masked_time(const std::string &text) {
  return std::regex_replace(
      text, std::regex("(Elapsed User CPU Time: +)[0-9]+\\.[0-9]\\[sec\\]"),
      "$1T[sec]");
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
