// What the public face says to numbers and names that make no sense.

#include "library/arguments.h"

#include <algorithm>

#include <kestro/error.h>

#include "graph/graph_line.h"

namespace kestro {

void refuse_index(const char *kind, int number, int n) {
  throw error("there is no " + std::string(kind) + ' ' +
              std::to_string(number) + ", only " + std::to_string(n) +
              " of them");
}

static bool is_blank_or_nought(char c) {
  return c == '\0' || c == ' ' || (c >= '\t' && c <= '\r');
}

static bool is_blank_or_control(char c) {
  return static_cast<unsigned char>(c) <= ' ' || c == 127;
}

std::string label_fault(std::string_view label, label_rule rule) {
  const bool writable = rule == label_rule::writable;
  const int most = writable ? graph_line_safe_label : graph_line_most_label;
  if (label.empty())
    return "the label is empty";
  if (label.size() > static_cast<size_t>(most))
    return "the label is longer than " + std::to_string(most) + " bytes";
  if (std::any_of(label.begin(), label.end(),
                  writable ? is_blank_or_control : is_blank_or_nought))
    return "the label holds a blank or a control character";
  return "";
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
