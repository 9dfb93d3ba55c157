// Checks of what callers hand to the public face.
#pragma once

#include <string>
#include <string_view>

#include <kestro/database.h>

#include "graph/label_set.h"

namespace kestro {

// Throws the error of a number that is not among 0 .. n-1: "there is no KIND
// NUMBER, only N of them".
[[noreturn]] void refuse_index(const char *kind, int number, int n);

inline void check_index(const char *kind, int number, int n) {
  if (number < 0 || number >= n)
    refuse_index(kind, number, n);
}

// What is wrong with a label, empty for nothing.
std::string label_fault(std::string_view label, label_rule rule);

// The path as the system takes it; throws error when it holds a zero byte.
const char *checked_path(const std::string &path);

// The text of a label id, owned by the set; throws error for an id out of
// range.
std::string_view vertex_label_text(const label_set *ls, int id);
std::string_view edge_label_text(const label_set *ls, int id);

} // namespace kestro
