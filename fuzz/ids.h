// The slow reading of pattern ids, "SIZE-ID", for comparison.
#pragma once

#include <cstdlib>
#include <utility>

namespace kestro {

// Reads an id at p as sscanf reads "%d-%d"; false where there is none.
inline bool read_id(const char *p, std::pair<int, int> *id) {
  char *end;
  id->first = static_cast<int>(strtol(p, &end, 10));
  if (end == p || *end != '-')
    return false;
  p = end + 1;
  id->second = static_cast<int>(strtol(p, &end, 10));
  return end != p;
}

} // namespace kestro
