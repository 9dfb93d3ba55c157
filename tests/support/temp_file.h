// A file of a test's own, with its text in and out.
#pragma once

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <unistd.h>

#include <gtest/gtest.h>

namespace kestro {

// A new file that holds text; gone at the end of the scope.
class temp_file {
public:
  explicit temp_file(const std::string &text = "")
      : path_(testing::TempDir() + "kestro_test_XXXXXX") {
    const int descriptor = mkstemp(path_.data());
    if (descriptor == -1)
      throw std::runtime_error("no temporary file " + path_);
    close(descriptor);
    std::ofstream(path_, std::ios::binary) << text;
  }
  ~temp_file() { unlink(path_.c_str()); }
  temp_file(const temp_file &) = delete;
  temp_file &operator=(const temp_file &) = delete;

  const char *path() const { return path_.c_str(); }
  std::string text() const {
    std::ifstream stream(path_, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(stream), {});
  }

private:
  std::string path_;
};

} // namespace kestro
