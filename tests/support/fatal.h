// What a call that must fail says, fit for comparison: the texts of fatal_error
// and check_failure with the source line masked.
#pragma once

#include <string>

#include "base/error.h"

namespace kestro {

// text with the line number of a leading "module.c:12:" replaced by N, and the
// directory in front of the file dropped.  A text without a place is unchanged.
inline std::string masked_line(const std::string &text) {
  const size_t colon = text.find(':');
  if (colon == std::string::npos || text.find(' ') < colon)
    return text;
  const size_t end = text.find_first_not_of("0123456789", colon + 1);
  if (end == std::string::npos || end == colon + 1 || text[end] != ':')
    return text;
  const size_t slash = text.rfind('/', colon);
  const size_t name = slash == std::string::npos ? 0 : slash + 1;
  return text.substr(name, colon - name) + ":N" + text.substr(end);
}

// The masked text of the Failure that run() throws, as a line.
template <class Failure, class Callable> std::string thrown_text(Callable run) {
  try {
    run();
  } catch (const Failure &failure) {
    return masked_line(failure.what()) + '\n';
  }
  return "nothing was thrown";
}

// "module.c:N: ...\n", as main() would print it before exiting with status 1.
template <class Callable> std::string fatal_text(Callable run) {
  return thrown_text<fatal_error>(run);
}

// "file.cpp:N: function: Assertion `...' failed.\n", as main() would print it
// before aborting.
template <class Callable> std::string check_text(Callable run) {
  return thrown_text<check_failure>(run);
}

} // namespace kestro
