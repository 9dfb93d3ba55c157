// Finding counters by labels.
//
// An array over all combinations needs one access per look-up but grows with
// the third power of the number of vertex labels, so it serves only while it is
// small; hashing with open addressing takes memory for what occurs.  Either
// gives the same keys in the same order.

#include "mining/label_table.h"

#include <algorithm>
#include <initializer_list>
#include <type_traits>

namespace kestro {

// The bytes of an array with these dimensions, or the largest number.
static size_t array_bytes(std::initializer_list<int> dimensions) {
  size_t bytes = 2 * sizeof(int); // of a counter
  for (const int n : dimensions)
    if (__builtin_mul_overflow(bytes, static_cast<size_t>(n), &bytes))
      return SIZE_MAX;
  return bytes;
}

template <> bool is_dense<edge_key>(int nel, int nvl, size_t limit) {
  return array_bytes({nvl, nvl, nel}) <= limit;
}

template <> bool is_dense<path_key>(int nel, int nvl, size_t limit) {
  const size_t edges = array_bytes({nvl, nvl, nel});
  return edges <= limit &&
         array_bytes({nvl, nvl, nvl, nel, nel}) <= limit - edges;
}

static uint64_t mix(uint64_t hash, int label) {
  hash = (hash ^ static_cast<uint32_t>(label)) * 0x9e3779b97f4a7c15;
  return hash ^ hash >> 32;
}

static uint64_t hash_of(const edge_key &k) {
  return mix(mix(mix(0, k.la), k.lb), k.e);
}

static uint64_t hash_of(const path_key &k) {
  return mix(mix(mix(mix(mix(0, k.va), k.vb), k.vc), k.ea), k.eb);
}

template <class Key>
label_table<Key>::label_table(int nel, int nvl, size_t limit)
    : nel_(index(nel)), nvl_(index(nvl)) {
  static constexpr size_t first_slots = 1024;
  if (!is_dense<Key>(nel, nvl, limit)) {
    slots_.resize(first_slots);
    return;
  }
  size_t cells = nvl_ * nvl_ * nel_;
  if (std::is_same_v<Key, path_key>)
    cells *= nvl_ * nel_;
  const size_t some = std::max(cells, size_t{1}); // calloc of 0 may be null
  dense_.reset(static_cast<counter *>(xcalloc(some, sizeof(counter))));
}

template <class Key>
auto label_table<Key>::sparse_counter_of(const Key &key) -> counter & {
  const uint32_t found = slot_of(key);
  if (found)
    return sparse_[found - 1];
  if (2 * (sparse_.size() + 1) > slots_.size())
    enlarge();
  sparse_.push_back({0, 0});
  slot_of(key) = static_cast<uint32_t>(int_count(sparse_.size()));
  return sparse_.back();
}

// Where the number of a key is, or the free slot where it belongs.
template <class Key> uint32_t &label_table<Key>::slot_of(const Key &key) {
  const size_t mask = slots_.size() - 1;
  size_t i = hash_of(key) & mask;
  while (slots_[i] && !(keys_[slots_[i] - 1] == key))
    i = (i + 1) & mask;
  return slots_[i];
}

template <class Key> void label_table<Key>::enlarge() {
  const size_t slots = 2 * slots_.size();
  slots_ = xvector<uint32_t>(); // so that only one of the tables is in memory
  slots_.resize(slots);
  uint32_t number = 0;
  for (const Key &key : keys_)
    slot_of(key) = ++number;
}

template class label_table<edge_key>;
template class label_table<path_key>;

} // namespace kestro
