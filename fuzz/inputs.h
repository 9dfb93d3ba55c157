// What the fuzz targets share: an input as a text, as a file and as lines, and
// the failures that a call may end with.
#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <cstring>
#include <new>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "base/error.h"
#include "base/fgetl.h"
#include "base/file_text.h"
#include "base/text_lines.h"

// Called by libFuzzer with every input; returns 0.
// NOLINTNEXTLINE(readability-identifier-naming): the name is libFuzzer's
extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);

namespace kestro {

inline std::string_view view_of(const uint8_t *data, size_t size) {
  return {reinterpret_cast<const char *>(data), size};
}

inline file_text text_of(std::string_view bytes) {
  file_text text;
  text.bytes.reset(static_cast<char *>(xmalloc(bytes.size() + 1)));
  text.size = bytes.copy(text.bytes.get(), bytes.size());
  return text;
}

// A file that lies in memory and is gone at the end of the scope.
class memory_file {
public:
  explicit memory_file(std::string_view bytes = "")
      : descriptor_(memfd_create("kestro", 0)),
        name_("/proc/self/fd/" + std::to_string(descriptor_)) {
    const ssize_t written = write(descriptor_, bytes.data(), bytes.size());
    assert(written == static_cast<ssize_t>(bytes.size()));
  }
  ~memory_file() { close(descriptor_); }
  memory_file(const memory_file &) = delete;
  memory_file &operator=(const memory_file &) = delete;

  const char *name() const { return name_.c_str(); }
  std::string bytes() const {
    const file_text text = read_file(name());
    return {text.bytes.get(), text.size};
  }

private:
  int descriptor_;
  std::string name_;
};

// The lines of an input as the program takes them: each to its first zero byte.
inline std::vector<std::string> lines_of(std::string_view bytes) {
  const file_text text = text_of(bytes);
  text_lines lines(text);
  int size = line_buffer::first_size;
  std::vector<std::string> found;
  while (const char *line = lines.next(&size))
    found.emplace_back(line);
  return found;
}

// Whether every line is short enough to be one: longer ones are read in pieces,
// so that what is written of them need not read back.
inline bool has_short_lines(std::string_view bytes) {
  size_t length = 0;
  for (const char c : bytes) {
    length = c == '\n' ? 0 : length + 1;
    if (length > 1000)
      return false;
  }
  return true;
}

// The text of the failure that a call ends with, empty for none.  These are the
// failures that main() answers with a message; whatever else comes out of the
// call is a finding.
template <class Call> std::string failure_of(Call call) {
  try {
    call();
    return "";
  } catch (const error &e) {
    return std::string(e.what()) + '\n';
  } catch (const std::bad_alloc &) {
    return "not enough memory\n";
  } catch (const std::length_error &) {
    return "not enough memory\n";
  }
}

} // namespace kestro
