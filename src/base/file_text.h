// Whole files in memory.
#pragma once

#include <cstdio>
#include <memory>
#include <string>
#include <string_view>

#include "base/xmalloc.h"

namespace kestro {

// The bytes of a file, with room for one more behind them.
struct file_text {
  xptr<char> bytes; // owned, size + 1 of them; null before reading
  size_t size = 0;  // bytes read
  std::shared_ptr<const std::string> name; // the file's, null for none
};

// What a stream holds from its position on.  Dies with "can't read a file",
// which it calls by the name given; a folder reads as empty.
file_text read_text(FILE *stream, const char *name);
// What a file holds.  Dies with "can't open a file" too.
file_text read_file(const char *name);
// A copy of bytes, as the text of a file of that name.
file_text copy_text(std::string_view bytes, const std::string &name);

} // namespace kestro
