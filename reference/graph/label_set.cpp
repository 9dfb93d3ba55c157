// The labels of a file.  The program reads the file once, for the graphs, too.

#include "reference/graph/label_set.h"

#include "base/file_text.h"

namespace kestro {

void label_set_build(const char *file, label_set *ls) {
  label_set_build(read_file(file), ls);
}

} // namespace kestro
