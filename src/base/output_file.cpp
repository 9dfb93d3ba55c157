// Checked output.
//
// A stream remembers that a write has failed, so the writers need not ask after
// every piece: it is enough to ask at the end of each block, and at the end of
// the file.  Some file systems report only on closing that they could not
// store what was written.

#include "base/output_file.h"

#include <sys/stat.h>
#include <unistd.h>

#include <string>

#include "base/error.h"

namespace kestro {

[[noreturn]] static void die_writing(const char *name) {
  throw fatal_error("can't write a file '" + std::string(name) + "'\n");
}

void empty_output(FILE *stream, const char *name) {
  struct stat status;
  const int descriptor = fileno(stream);
  if (fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode) &&
      ftruncate(descriptor, 0) != 0)
    die_writing(name);
}

void flush_output(FILE *stream, const char *name) {
  if (fflush(stream) || ferror(stream))
    die_writing(name);
}

void close_output(file_ptr stream, const char *name) {
  if (!stream)
    return;
  flush_output(stream.get(), name);
  if (fclose(stream.release()))
    die_writing(name);
}

void finish_output(FILE *stream, const char *name) {
  flush_output(stream, name);
  // Closing a second descriptor reports what closing this one would.
  const int copy = dup(fileno(stream));
  if (copy != -1 && close(copy))
    die_writing(name);
}

file_ptr open_temporary() {
  FILE *stream = tmpfile();
  if (!stream)
    throw fatal_error("can't open a file '" + std::string(temporary_file) +
                      "'\n");
  return file_ptr(stream);
}

} // namespace kestro
