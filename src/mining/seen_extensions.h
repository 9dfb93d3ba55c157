// The extensions that need not be offered again.
#pragma once

#include <atomic>
#include <mutex>

#include "mining/extension.h"
#include "mining/sg_set.h"

namespace kestro {

// One set for all threads that join a level: what one of them has offered, the
// others need not offer.  Forgetting an extension would only cost time.
class seen_extensions {
public:
  // children, the level that is extended, is borrowed while this is made.
  explicit seen_extensions(const sg_set *children, int workers = 1,
                           const interruption *stop = nullptr);

  // Tells that a worker joins that core from now on.  Each worker joins cores
  // in ascending order.
  void begin_core(int worker, int core);
  // The earliest core that a worker joins now.
  int earliest_core() const;
  // Whether a pattern is extended through that core or a later one.
  bool is_extended_from(int core, int pattern) const {
    return last_core_[index(pattern)] >= core;
  }

  // Tells that x will be added soon, which saves time then.
  void expect(const extension &x) const {
    if (!is_shared())
      parts_[0].set.expect(x);
  }
  // Adds x; false when it is there already.
  bool insert(const extension &x);
  // Whether x is there, while no thread adds any.
  bool contains(const extension &x) const {
    return parts_[part_of(x)].set.contains(x);
  }

private:
  // The extensions of some of the patterns.
  struct part {
    std::mutex access;
    extension_set set;
  };

  static size_t index(int i) { return static_cast<size_t>(i); }
  bool is_shared() const { return cores_.size() > 1; }
  int core_of(int worker) const {
    return cores_[index(worker)].load(std::memory_order_relaxed);
  }
  size_t part_of(const extension &x) const {
    return index(x.pattern) % parts_.size();
  }
  bool insert_into(extension_set *set, const extension &x);

  xvector<part> parts_;
  xvector<std::atomic<int>> cores_; // by worker: the one it joins
  xvector<int> last_core_; // by pattern: the id of its last kept parent
};

} // namespace kestro
