// Finding counters by labels.
//
// An array needs one access per look-up but has a place for what never occurs,
// so it serves only while it is small beside the transactions; hashing takes
// memory for what occurs.  Either gives the same keys in the same order.

#include "mining/label_table.h"

#include <algorithm>
#include <initializer_list>

namespace kestro {

size_t key_space<edge_key>::places() const {
  size_t places = 1;
  for (const int n : {nvl, nvl, nel})
    if (__builtin_mul_overflow(places, static_cast<size_t>(n), &places))
      return SIZE_MAX;
  return places;
}

size_t counters_limit(const graph_list *transactions) {
  constexpr size_t least = size_t{64} << 10; // that is always cheap
  constexpr size_t most = size_t{32} << 20;
  size_t bytes = 0;
  for (int i = 0; i < transactions->count && bytes < 2 * most; i++) {
    const graph *t = graph_list_at(transactions, i);
    bytes += graph_size(t->es, t->vs);
  }
  return std::clamp(bytes / 2, least, most);
}

static uint64_t hash_of(std::initializer_list<int> numbers) {
  uint64_t hash = 0;
  for (const int number : numbers)
    hash = mixed(hash, static_cast<uint32_t>(number));
  return hash;
}

static uint64_t hash_of(const edge_key &k) {
  return hash_of({k.from, k.to, k.e});
}

static uint64_t hash_of(const path_key &k) {
  return hash_of({k.centre, k.a, k.b});
}

template <class Key>
label_table<Key>::label_table(const space &keys, size_t limit) : space_(keys) {
  const size_t places = space_.places();
  if (places > limit / sizeof(counter))
    return;
  const size_t some = std::max(places, size_t{1}); // calloc of 0 may be null
  dense_.reset(static_cast<counter *>(xcalloc(some, sizeof(counter))));
}

// The slot for a key, with number 0 when the key was never asked for.
template <class Key>
auto label_table<Key>::slot_of(const Key &key) const -> slot {
  const auto upper = static_cast<uint32_t>(hash_of(key) >> 32);
  const slot wanted = {upper, 0};
  const slot &found = positions_.look_up(wanted.hash(), [&](const slot &s) {
    return s.upper == upper && sparse_[s.number - 1].key == key;
  });
  return {upper, found.number};
}

template <class Key>
auto label_table<Key>::find_sparse(const Key &key) const -> const counter * {
  const slot s = slot_of(key);
  return s.number ? &sparse_[s.number - 1].value : nullptr;
}

template <class Key>
auto label_table<Key>::sparse_counter_of(const Key &key) -> counter & {
  slot s = slot_of(key);
  if (s.number)
    return sparse_[s.number - 1].value;
  sparse_.push_back({key, {0, 0}});
  s.number = static_cast<uint32_t>(int_count(sparse_.size()));
  positions_.insert(s, [](const slot &) { return false; });
  return sparse_.back().value;
}

template class label_table<edge_key>;
template class label_table<path_key>;

} // namespace kestro
