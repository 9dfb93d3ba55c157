// The reader of parent lists on any lines, against a slow one.

#include <climits>

#include "ids.h"
#include "inputs.h"
#include "mining/maximal.h"

namespace kestro {

namespace {

// What a line says, and whether it names a pattern or must be refused.
struct parent_line {
  bool names_pattern = false;
  bool refused = false;
  std::pair<int, int> pattern;
  std::vector<int> parents;
};

} // namespace

static bool is_blank(char c) { return c && strchr(" \t\n\v\f\r", c); }

// The first word is the pattern's; where blanks stand in front of it, it is a
// parent as well.
static parent_line slow_reading(const std::string &line) {
  parent_line found;
  found.names_pattern =
      read_id(line.c_str(), &found.pattern) && found.pattern.first != INT_MIN;
  for (size_t i = 1; found.names_pattern && i < line.size(); i++) {
    if (is_blank(line[i]) || !is_blank(line[i - 1]))
      continue;
    std::pair<int, int> id;
    if (!read_id(line.c_str() + i, &id) ||
        id.first != found.pattern.first - 1) {
      found.refused = true;
      return found;
    }
    found.parents.push_back(id.second);
  }
  return found;
}

static void compare_readings(const std::string &line) {
  const parent_line expected = slow_reading(line);
  const ksstack_ptr parents(ksstack_new(1, sizeof(int)));
  pattern_tag tag = {0, 0, 1};
  bool names_pattern = false;
  const std::string failure = failure_of([&] {
    names_pattern = get_pattern_and_parents(line.c_str(), &tag, parents.get());
  });
  assert(failure.empty() == !expected.refused);
  if (!failure.empty())
    return;
  assert(names_pattern == expected.names_pattern);
  if (!names_pattern)
    return;
  assert(tag.size == expected.pattern.first);
  assert(tag.id == expected.pattern.second);
  const int *ids = ksstack_array<int>(parents.get());
  assert(std::vector<int>(ids, ids + parents->count) == expected.parents);
}

} // namespace kestro

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  for (const std::string &line : kestro::lines_of(kestro::view_of(data, size)))
    kestro::compare_readings(line);
  return 0;
}
