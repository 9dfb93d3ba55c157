// What the public face says to numbers and names that make no sense.

#include "library/arguments.h"

#include <kestro/error.h>

namespace kestro {

void refuse_index(const char *kind, int number, int n) {
  throw error("there is no " + std::string(kind) + ' ' +
              std::to_string(number) + ", only " + std::to_string(n) +
              " of them");
}

const char *checked_path(const std::string &path) {
  if (path.find('\0') != std::string::npos)
    throw error("the name of a file holds a zero byte", path);
  return path.c_str();
}

std::string_view vertex_label_text(const label_set *ls, int id) {
  check_index("vertex label", id, label_set_vertex_labels(ls));
  return label_set_vertex_label(ls, id);
}

std::string_view edge_label_text(const label_set *ls, int id) {
  check_index("edge label", id, label_set_edge_labels(ls));
  return label_set_edge_label(ls, id);
}

} // namespace kestro
