// The hash table of labels.
//
// Open addressing: a word is in the first slots from its hash on, without a
// free one between, so a look-up costs the word's bytes and hardly ever a
// second comparison, however many labels there are.

#include "graph/label_index.h"

#include <cstdint>

namespace kestro {

static constexpr size_t first_slots = 64;

label_index::label_index() : slots_(first_slots, slot{{}, -1}) {}

label_index::label_index(const ksstack *labels) : label_index() {
  for (int i = 0; i < labels->count; i++)
    intern(ksstack_array<const char *>(labels)[i], i);
}

static size_t hash_of(std::string_view word) {
  uint64_t h = word.size();
  for (const char c : word)
    h = (h ^ static_cast<unsigned char>(c)) * 0x9e3779b97f4a7c15;
  return static_cast<size_t>(h ^ (h >> 32));
}

// Where the word is, or the free slot where it belongs.
size_t label_index::slot_of(std::string_view word) const {
  const size_t mask = slots_.size() - 1;
  size_t i = hash_of(word) & mask;
  while (slots_[i].number != -1 && slots_[i].word != word)
    i = (i + 1) & mask;
  return i;
}

int label_index::intern(std::string_view word, int number) {
  slot *place = &slots_[slot_of(word)];
  if (place->number != -1)
    return place->number;
  *place = {word, number};
  if (2 * ++used_ > slots_.size())
    enlarge();
  return number;
}

void label_index::enlarge() {
  const xvector<slot> old = std::move(slots_);
  slots_.assign(2 * old.size(), slot{{}, -1});
  for (const slot &s : old)
    if (s.number != -1)
      slots_[slot_of(s.word)] = s;
}

} // namespace kestro
