// Finding the number of a label by hashing.
#pragma once

#include <cstdint>
#include <string_view>

#include "base/ksstack.h"
#include "base/xmalloc.h"

namespace kestro {

// Words with their numbers.  The words are borrowed and must stay where they
// are.
class label_index {
public:
  label_index();
  // The labels of a stack of strings, numbered by their positions.
  explicit label_index(const ksstack *labels);

  // The number of a word, or -1.
  int find(std::string_view word) const { return slots_[slot_of(word)].number; }
  // Gives a new word its number.  Where memory ends, all is as it was.
  void add(std::string_view word, int number);

private:
  struct slot {
    const char *word = nullptr;
    size_t length = 0;
    int number = -1; // of a free slot
  };

  static size_t hash_of(std::string_view word);
  static bool holds(const slot &s, std::string_view word);
  size_t slot_of(std::string_view word) const;
  void enlarge();

  xvector<slot> slots_; // a power of two of them, at most half in use
  size_t used_ = 0;
};

inline size_t label_index::hash_of(std::string_view word) {
  uint64_t h = word.size();
  for (const char c : word)
    h = (h ^ static_cast<unsigned char>(c)) * 0x9e3779b97f4a7c15;
  return static_cast<size_t>(h ^ (h >> 32));
}

// Labels are too short for a call of memcmp.
inline bool label_index::holds(const slot &s, std::string_view word) {
  if (s.length != word.size())
    return false;
  for (size_t i = 0; i < s.length; i++)
    if (s.word[i] != word[i])
      return false;
  return true;
}

// Where the word is, or the free slot where it belongs.
[[gnu::always_inline]] inline size_t
label_index::slot_of(std::string_view word) const {
  const size_t mask = slots_.size() - 1;
  size_t i = hash_of(word) & mask;
  while (slots_[i].number != -1 && !holds(slots_[i], word))
    i = (i + 1) & mask;
  return i;
}

} // namespace kestro
