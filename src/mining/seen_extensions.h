// The extensions that need not be offered again.
#pragma once

#include <atomic>

#include "base/brief_lock.h"
#include "base/word_set.h"
#include "mining/core_links.h"
#include "mining/packed_extension.h"

namespace kestro {

// One set for all threads that join a level: what one of them has offered, the
// others need not offer.  Forgetting an extension would only cost time.
class seen_extensions {
public:
  // An extension as it is looked for.
  struct key {
    extension x;
    uint64_t word; // of x, 0 when it has none
  };

  // children, not empty, is the level that is extended, and cores tell through
  // which cores.  Both are borrowed while this is made.
  seen_extensions(const sg_set *children, const core_links *cores,
                  int workers = 1, const interruption *stop = nullptr);

  // Tells that a worker joins that core from now on.  Each worker joins cores
  // in ascending order.
  void begin_core(int worker, int core);
  // The earliest core that a worker joins now.
  int earliest_core() const;
  // Whether a pattern is extended through that core or a later one.
  bool is_extended_from(int core, int pattern) const {
    return last_core_[index(pattern)] >= core;
  }

  // Tells that x will be added soon, which saves time then.  Returns what
  // insert() needs of it, so that it is computed once.
  key expect(const extension &x) const {
    const key k = key_of(x);
    if (is_shared())
      return k;
    if (k.word != 0)
      parts_[0].words.expect(k.word);
    else
      parts_[0].others.expect(x);
    return k;
  }
  // Adds an extension; false when it is there already.
  bool insert(const key &k);
  bool insert(const extension &x) { return insert(key_of(x)); }
  // Whether x is there, while no thread adds any.
  bool contains(const extension &x) const;

private:
  // The extensions of some of the patterns.
  struct part {
    brief_lock access;
    word_set words;
    extension_set others; // those without a word
  };

  static constexpr size_t shared_parts = 64;

  static size_t index(int i) { return static_cast<size_t>(i); }
  bool is_shared() const { return cores_.size() > 1; }
  int core_of(int worker) const {
    return cores_[index(worker)].load(std::memory_order_relaxed);
  }
  size_t part_of(const extension &x) const {
    return is_shared() ? index(x.pattern) % shared_parts : 0;
  }
  key key_of(const extension &x) const { return {x, packing_.word_of(x)}; }
  bool insert_into(part *to, const key &k);
  template <class Table, class PatternOf>
  void make_room(Table *table, PatternOf pattern_of) const;

  extension_packing packing_;
  xvector<part> parts_;
  xvector<std::atomic<int>> cores_; // by worker: the one it joins
  xvector<int> last_core_; // by pattern: the id of its last kept parent
};

} // namespace kestro
