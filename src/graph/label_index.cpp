// The hash table of labels.
//
// A look-up costs the word's bytes and hardly ever a second comparison, however
// many labels there are.

#include "graph/label_index.h"

namespace kestro {

label_index::label_index(const ksstack *labels) {
  for (int i = 0; i < labels->count; i++)
    add(ksstack_array<const char *>(labels)[i], i);
}

void label_index::add(std::string_view word, int number) {
  table_.insert({word.data(), word.size(), number},
                [&](const slot &s) { return s.holds(word); });
}

} // namespace kestro
