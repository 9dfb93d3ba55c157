// Reading back what a run wrote: patterns, TID lists and parent lists.
#pragma once

#include <compare>
#include <map>
#include <string>
#include <vector>

#include "support/plain_graph.h"

namespace kestro {

// The name of a pattern, written size-index.
struct pattern_name {
  int size;  // edges
  int index; // place in its level
  auto operator<=>(const pattern_name &) const = default;
};
std::string name_text(const pattern_name &name);

struct written_pattern {
  pattern_name name;
  int count; // support
  plain_graph graph;
};

// The patterns of a pattern or candidate file in the order of the file.
// Throws std::runtime_error for a header line that is none, or a missing file.
std::vector<written_pattern> read_patterns(const std::string &path);
// The lines of a TID-list or parent list, by the pattern they begin with.
// Throws std::runtime_error for a malformed or repeated line.
std::map<pattern_name, std::vector<int>> read_tids(const std::string &path);
std::map<pattern_name, std::vector<pattern_name>>
read_parents(const std::string &path);

// The whole file, or an exception.
std::string read_text(const std::string &path);

} // namespace kestro
