// Words in one array, found by an open table.

#include "cl/failed_states.h"

#include <algorithm>
#include <climits>

namespace kestro {

static constexpr size_t most_numbers = 1 << 24; // 32 MiB
static constexpr size_t most_words = 3 << 18;   // in slots of 16 MiB
static constexpr size_t kept_numbers = 1 << 18;
static constexpr size_t kept_words = 3 << 13;

static uint64_t hash_of(const failed_states::word &w) {
  uint64_t hash = 0;
  for (const uint16_t number : w)
    hash = mixed(hash, number);
  return mixed(hash, w.size());
}

bool failed_states::is(const slot &s, const word &w) const {
  return numbers_[s.first - 1] == w.size() &&
         std::equal(w.begin(), w.end(), numbers_.data() + s.first);
}

bool failed_states::has(const word &w) const {
  return table_.look_up(hash_of(w), [&](const slot &s) { return is(s, w); })
      .in_use();
}

void failed_states::add(const word &w) {
  if (w.size() > UINT16_MAX || table_.size() == most_words ||
      numbers_.size() + w.size() >= most_numbers)
    return;
  // Doubled once more it would be larger than needed.
  if (numbers_.capacity() > most_numbers / 2)
    numbers_.reserve(most_numbers);
  const slot added = {hash_of(w), numbers_.size() + 1};
  numbers_.push_back(static_cast<uint16_t>(w.size()));
  numbers_.insert(numbers_.end(), w.begin(), w.end());
  table_.insert(added, [&](const slot &s) { return is(s, w); });
}

void failed_states::clear() {
  if (numbers_.capacity() > kept_numbers || table_.size() > kept_words) {
    xvector<uint16_t>().swap(numbers_);
    table_ = open_table<slot>(stop_);
  }
  numbers_.clear();
  table_.clear();
}

} // namespace kestro
