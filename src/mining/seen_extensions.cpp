// Seen extensions, in parts that threads seldom want at once.

#include "mining/seen_extensions.h"

#include <algorithm>

#include "mining/expect_records.h"

namespace kestro {

static constexpr size_t shared_parts = 64;

seen_extensions::seen_extensions(const sg_set *children, int workers,
                                 const interruption *stop)
    : parts_(workers > 1 ? shared_parts : 1), cores_(index(workers)) {
  for (part &p : parts_)
    p.set = extension_set(stop);
  last_core_.reserve(index(sg_set_size(children)));
  for (int id = 0; id < sg_set_size(children); id++) {
    expect_records(children, id, record_part::parents);
    const subgraph *sg = sg_set_get(children, id);
    const int n = sg_kept_size(sg);
    last_core_.push_back(n == 0 ? -1 : sg_kept_at(sg, n - 1)->pid);
  }
}

void seen_extensions::begin_core(int worker, int core) {
  cores_[index(worker)].store(core, std::memory_order_relaxed);
}

int seen_extensions::earliest_core() const {
  int earliest = core_of(0);
  for (size_t w = 1; w < cores_.size(); w++)
    earliest = std::min(earliest, core_of(static_cast<int>(w)));
  return earliest;
}

// Before a set needs more room, those go that no core from the earliest one on
// asks for.
bool seen_extensions::insert_into(extension_set *set, const extension &x) {
  if (set->is_full()) {
    const int core = earliest_core();
    set->keep_only([&](const extension &seen) {
      return is_extended_from(core, seen.pattern);
    });
  }
  return set->insert(x);
}

bool seen_extensions::insert(const extension &x) {
  part *to = &parts_[part_of(x)];
  if (!is_shared())
    return insert_into(&to->set, x);
  const std::lock_guard<std::mutex> lock(to->access);
  return insert_into(&to->set, x);
}

} // namespace kestro
