// Reading files into memory.
//
// The size of a regular file is asked for, so that its text is read in one go
// into a block that fits.  Nothing relies on the answer: a pipe has none, and a
// file may change while it is read.  Then the block doubles, and what has been
// read is what counts.

#include "base/file_text.h"

#include <sys/stat.h>

#include "base/open_file.h"

namespace kestro {

static constexpr size_t first_capacity = 65536; // bytes

// Bytes from the stream's position to its end, as far as the system knows.
static size_t expected_size(FILE *stream) {
  struct stat status;
  const off_t position = ftello(stream);
  if (position < 0 || fstat(fileno(stream), &status) ||
      !S_ISREG(status.st_mode) || status.st_size <= position)
    return 0;
  return static_cast<size_t>(status.st_size - position);
}

static void enlarge(file_text *text, size_t capacity) {
  void *const moved = xrealloc(text->bytes.get(), capacity);
  static_cast<void>(text->bytes.release());
  text->bytes.reset(static_cast<char *>(moved));
}

file_text read_text(FILE *stream, const char *name) {
  file_text text;
  size_t capacity = expected_size(stream);
  // One byte is for the terminator, one to see the end without growing.
  capacity = capacity ? capacity + 2 : first_capacity;
  enlarge(&text, capacity);
  while (const size_t got = fread(text.bytes.get() + text.size, 1,
                                  capacity - 1 - text.size, stream)) {
    text.size += got;
    if (text.size + 1 < capacity)
      continue;
    capacity *= 2;
    enlarge(&text, capacity);
  }
  check_read(stream, name);
  text.name = std::make_shared<const std::string>(name);
  return text;
}

file_text read_file(const char *name) {
  const file_ptr stream(open_file(name, "r"));
  return read_text(stream.get(), name);
}

file_text copy_text(std::string_view bytes, const std::string &name) {
  file_text text;
  text.bytes.reset(static_cast<char *>(xmalloc(bytes.size() + 1)));
  bytes.copy(text.bytes.get(), bytes.size());
  text.size = bytes.size();
  text.name = std::make_shared<const std::string>(name);
  return text;
}

} // namespace kestro
