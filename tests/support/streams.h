// Text in and text out for functions that work on a FILE *.
#pragma once

#include <cstdio>
#include <cstdlib>
#include <string>

#include "base/open_file.h"

namespace kestro {

// What write(stream) writes.
template <class Callable> std::string written_text(Callable write) {
  char *text = nullptr;
  size_t length = 0;
  file_ptr stream(open_memstream(&text, &length));
  const auto finished = [&] { // the text is there once the stream is closed
    stream.reset();
    std::string written(text, length);
    free(text);
    return written;
  };
  try {
    write(stream.get());
  } catch (...) {
    finished();
    throw;
  }
  return finished();
}

// A stream that reads text, which must outlive it.
inline file_ptr reading(const std::string &text) {
  return file_ptr(fmemopen(const_cast<char *>(text.data()), text.size(), "r"));
}

} // namespace kestro
