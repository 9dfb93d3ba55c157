// Finding counters by labels.
//
// An array over all combinations answers with one look but grows with the third
// power of the number of vertex labels, so it serves only while it is small;
// hashing with open addressing takes memory for what occurs.  Either only finds
// an entry's number, so both give the same entries in the same order.

#include "mining/label_table.h"

#include <algorithm>
#include <initializer_list>
#include <type_traits>

namespace kestro {

// The bytes of an array with these dimensions, or the largest number.
static size_t array_bytes(std::initializer_list<int> dimensions) {
  size_t bytes = sizeof(uint32_t);
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
    : dense_(is_dense<Key>(nel, nvl, limit)), nel_(index(nel)),
      nvl_(index(nvl)) {
  static constexpr size_t first_slots = 1024;
  if (!dense_)
    set_numbers(slots_ = first_slots);
  else if (std::is_same_v<Key, edge_key>)
    set_numbers(nvl_ * nvl_ * nel_);
  else
    set_numbers(nvl_ * nvl_ * nvl_ * nel_ * nel_);
}

// Gives up the numbers and takes as many zeros as told.
template <class Key> void label_table<Key>::set_numbers(size_t count) {
  numbers_.reset();
  numbers_.reset(static_cast<uint32_t *>(
      xcalloc(std::max(count, size_t{1}), sizeof(uint32_t))));
}

// Where the number of a key is, or the free slot where it belongs.
template <class Key> uint32_t &label_table<Key>::slot_of(const Key &key) {
  const size_t mask = slots_ - 1;
  uint32_t *const numbers = numbers_.get();
  size_t i = hash_of(key) & mask;
  while (numbers[i] && !(entries_[numbers[i] - 1].key == key))
    i = (i + 1) & mask;
  return numbers[i];
}

template <class Key>
typename label_table<Key>::entry &label_table<Key>::add(const Key &key,
                                                        uint32_t &number) {
  if (entries_.size() == INT32_MAX)
    die_out_of_memory();
  entries_.push_back({key, 0, 0});
  number = static_cast<uint32_t>(entries_.size());
  if (!dense_ && 2 * entries_.size() > slots_)
    enlarge();
  return entries_.back();
}

template <class Key> void label_table<Key>::enlarge() {
  set_numbers(slots_ *= 2);
  uint32_t number = 0;
  for (const entry &e : entries_)
    slot_of(e.key) = ++number;
}

template class label_table<edge_key>;
template class label_table<path_key>;

} // namespace kestro
