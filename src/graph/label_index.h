// Finding the number of a label by hashing.
#pragma once

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
  // The number of a word, which is the given one if the word is new.
  int intern(std::string_view word, int number);

private:
  struct slot {
    std::string_view word;
    int number; // -1 in a free slot
  };

  size_t slot_of(std::string_view word) const;
  void enlarge();

  xvector<slot> slots_; // a power of two of them, at most half in use
  size_t used_ = 0;
};

} // namespace kestro
