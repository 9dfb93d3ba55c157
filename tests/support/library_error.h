// What calls of the public face throw.
#pragma once

#include <string>

#include <kestro/error.h>

#include "support/fatal.h"

namespace kestro {

// The text of the error that run() throws, with the source line masked; behind
// it " at PATH:LINE" where it has either.
template <class Callable> std::string error_text(Callable run) {
  try {
    run();
  } catch (const error &e) {
    std::string text = masked_line(e.what());
    if (!e.path().empty() || e.line() != 0)
      text += " at " + e.path() + ':' + std::to_string(e.line());
    return text;
  }
  return "nothing was thrown";
}

} // namespace kestro
