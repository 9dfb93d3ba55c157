// Finding the number of a label by hashing.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "base/ksstack.h"
#include "base/open_table.h"

namespace kestro {

// Words with their numbers.  The words are borrowed and must stay where they
// are.
class label_index {
public:
  label_index() = default;
  // The labels of a stack of strings, numbered by their positions.
  explicit label_index(const ksstack *labels);

  // The number of a word, or -1.
  int find(std::string_view word) const;
  // Gives a new word its number.  Where memory ends, all is as it was.
  void add(std::string_view word, int number);

private:
  struct slot {
    const char *word = nullptr;
    size_t length = 0;
    int number = -1; // of a free slot

    bool in_use() const { return number != -1; }
    uint64_t hash() const { return hash_of({word, length}); }
    bool holds(std::string_view other) const;
  };

  static uint64_t hash_of(std::string_view word);

  open_table<slot> table_;
};

inline uint64_t label_index::hash_of(std::string_view word) {
  uint64_t hash = word.size();
  for (const char c : word)
    hash = mixed(hash, static_cast<unsigned char>(c));
  return hash;
}

// Labels are too short for a call of memcmp.
inline bool label_index::slot::holds(std::string_view other) const {
  if (length != other.size())
    return false;
  for (size_t i = 0; i < length; i++)
    if (word[i] != other[i])
      return false;
  return true;
}

[[gnu::always_inline]] inline int
label_index::find(std::string_view word) const {
  return table_
      .look_up(hash_of(word), [&](const slot &s) { return s.holds(word); })
      .number;
}

} // namespace kestro
