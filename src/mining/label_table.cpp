// Finding counters by labels.
//
// An array over all combinations needs one access per look-up but grows with
// the third power of the number of vertex labels, so it serves only while it is
// small; hashing takes memory for what occurs.  Either gives the same keys in
// the same order.

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

static uint64_t hash_of(std::initializer_list<int> labels) {
  uint64_t hash = 0;
  for (const int label : labels)
    hash = mixed(hash, static_cast<uint32_t>(label));
  return hash;
}

static uint64_t hash_of(const edge_key &k) {
  return hash_of({k.la, k.lb, k.e});
}

static uint64_t hash_of(const path_key &k) {
  return hash_of({k.va, k.vb, k.vc, k.ea, k.eb});
}

template <class Key>
label_table<Key>::label_table(int nel, int nvl, size_t limit)
    : nel_(index(nel)), nvl_(index(nvl)) {
  if (!is_dense<Key>(nel, nvl, limit))
    return;
  size_t cells = nvl_ * nvl_ * nel_;
  if (std::is_same_v<Key, path_key>)
    cells *= nvl_ * nel_;
  const size_t some = std::max(cells, size_t{1}); // calloc of 0 may be null
  dense_.reset(static_cast<counter *>(xcalloc(some, sizeof(counter))));
}

template <class Key>
auto label_table<Key>::sparse_counter_of(const Key &key) -> counter & {
  const auto upper = static_cast<uint32_t>(hash_of(key) >> 32);
  const auto same = [&](const slot &s) {
    return s.upper == upper && keys_[s.number - 1] == key;
  };
  slot wanted = {upper, 0};
  wanted.number = positions_.look_up(wanted.hash(), same).number;
  if (wanted.number)
    return sparse_[wanted.number - 1];
  sparse_.push_back({0, 0});
  wanted.number = static_cast<uint32_t>(int_count(sparse_.size()));
  positions_.insert(wanted, same);
  return sparse_.back();
}

template class label_table<edge_key>;
template class label_table<path_key>;

} // namespace kestro
