// The hash table of labels.
//
// Open addressing: a word is in the first slots from its hash on, without a
// free one between, so a look-up costs the word's bytes and hardly ever a
// second comparison, however many labels there are.

#include "graph/label_index.h"

namespace kestro {

static constexpr size_t first_slots = 64;

label_index::label_index() : slots_(first_slots) {}

label_index::label_index(const ksstack *labels) : label_index() {
  for (int i = 0; i < labels->count; i++)
    add(ksstack_array<const char *>(labels)[i], i);
}

void label_index::add(std::string_view word, int number) {
  if (2 * (used_ + 1) > slots_.size())
    enlarge();
  slots_[slot_of(word)] = {word.data(), word.size(), number};
  used_++;
}

void label_index::enlarge() {
  xvector<slot> old(2 * slots_.size());
  old.swap(slots_);
  for (const slot &s : old)
    if (s.number != -1)
      slots_[slot_of({s.word, s.length})] = s;
}

} // namespace kestro
