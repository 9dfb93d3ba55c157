// Seen extensions, in parts that threads seldom want at once.
//
// Looking for them mostly waits for memory, so the tables are small: a word for
// each.  The few that have none are in a table of their own, so that what does
// not fit into a word is kept just as exactly.

#include "mining/seen_extensions.h"

#include <algorithm>
#include <mutex>

namespace kestro {

// The vertices that a pattern of the level can have: patterns of one level have
// equally many edges, and they are connected.
static int most_vertices(const sg_set *level) {
  return sg_set_get(level, 0)->g->es / 2 + 1;
}

seen_extensions::seen_extensions(const sg_set *children,
                                 const core_links *cores, int workers,
                                 const interruption *stop)
    : packing_(sg_set_size(children), most_vertices(children)),
      parts_(workers > 1 ? shared_parts : 1), cores_(index(workers)),
      last_core_(index(sg_set_size(children)), -1) {
  for (part &p : parts_) {
    p.words = word_set(stop);
    p.others = extension_set(stop);
  }
  interruption_poll poll(stop, 4096);
  for (int core = 0; core < cores->size(); core++) {
    poll.step(1 + std::ssize(cores->children(core)));
    for (const int child : cores->children(core))
      last_core_[index(child)] = core;
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

// Before a table needs more room, those go that no core from the earliest one
// on asks for.
template <class Table, class PatternOf>
void seen_extensions::make_room(Table *table, PatternOf pattern_of) const {
  if (!table->is_full())
    return;
  const int core = earliest_core();
  table->keep_only([&](const auto &seen) {
    return is_extended_from(core, pattern_of(seen));
  });
}

bool seen_extensions::insert_into(part *to, const key &k) {
  if (k.word == 0) {
    make_room(&to->others, [](const extension &x) { return x.pattern; });
    return to->others.insert(k.x);
  }
  make_room(&to->words, [&](uint64_t w) { return packing_.pattern_of(w); });
  return to->words.insert(k.word);
}

bool seen_extensions::insert(const key &k) {
  part *to = &parts_[part_of(k.x)];
  if (!is_shared())
    return insert_into(to, k);
  const std::lock_guard<brief_lock> lock(to->access);
  return insert_into(to, k);
}

bool seen_extensions::contains(const extension &x) const {
  const key k = key_of(x);
  const part &in = parts_[part_of(x)];
  return k.word == 0 ? in.others.contains(x) : in.words.contains(k.word);
}

} // namespace kestro
