// Sets of pattern records.
//
// Searches compare records through their addresses; the key in
// sg_compare decides nearly all comparisons at once.

#include "mining/sg_set.h"

#include <algorithm>

#include "base/error.h"
#include "base/xmalloc.h"
#include "mining/expect_records.h"

namespace kestro {

static const subgraph *record(const void *element) {
  return *static_cast<const subgraph *const *>(element);
}

static int compare_records(const void *a, const void *b) {
  return sg_compare(record(a), record(b));
}

sg_set *sg_set_create() {
  xptr<void> memory(xmalloc(sizeof(sg_set)));
  auto *s = new (memory.get()) sg_set();
  ksstack_init_apart(s, 1024, static_cast<int>(sizeof(subgraph *)));
  memory.release();
  return s;
}

void sg_set_free(sg_set *s) {
  if (!s)
    return;
  for (int i = 0; i < s->count; i++) {
    expect_records(s, i, record_part::head);
    sg_free(sg_set_get(s, i));
  }
  ksstack_finish(s);
  s->~sg_set();
  xfree(s);
}

void sg_set_push(sg_set *s, sg_ptr sg) {
  subgraph *address = sg.get();
  ksstack_push(&address, s);
  sg.release();
}

namespace {

// A record with what nearly always decides how it compares with others.
struct ranked_record {
  int es;
  uint64_t rank; // vertices, then the key as a signed number
  subgraph *sg;

  explicit ranked_record(subgraph *record)
      : es(record->g->es), rank(static_cast<uint64_t>(record->g->vs) << 32 |
                                (record->g->key ^ 0x80000000U)),
        sg(record) {}
  bool operator<(const ranked_record &other) const {
    if (es != other.es)
      return es < other.es;
    if (rank != other.rank)
      return rank < other.rank;
    return sg_compare(sg, other.sg) < 0;
  }
};

} // namespace

void sg_set_sort(sg_set *s, const interruption *stop) {
  interruption_poll poll(stop, 8192);
  subgraph **records = ksstack_array<subgraph *>(s);
  xvector<ranked_record> ranked;
  ranked.reserve(static_cast<size_t>(s->count));
  for (int i = 0; i < s->count; i++) {
    poll.step();
    ranked.emplace_back(records[i]);
  }
  std::stable_sort(ranked.begin(), ranked.end(),
                   [&poll](const ranked_record &a, const ranked_record &b) {
                     poll.step();
                     return a < b;
                   });
  for (const ranked_record &r : ranked)
    *records++ = r.sg;
}

int sg_set_find(const sg_set *s, const subgraph *sg) {
  return ksstack_bsearch_index(&sg, s, compare_records);
}

void sg_set_clear(sg_set *s) { s->count = 0; }

xvector<sg_ptr> sg_set_take_records(sg_set *s) {
  xvector<sg_ptr> records(static_cast<size_t>(s->count));
  for (size_t i = 0; i < records.size(); i++)
    records[i].reset(ksstack_array<subgraph *>(s)[i]);
  sg_set_clear(s);
  return records;
}

void sg_set_compact(sg_set *s, const interruption *stop) {
  subgraph **const records = ksstack_array<subgraph *>(s);
  size_t held = 0;
  for (int i = 0; i < s->count; i++) {
    expect_records(s, i, record_part::graph);
    held += records[i]->in_arena ? sg_block_bytes(records[i]) : 0;
  }
  if (2 * held >= s->blocks.taken())
    return;
  interruption_poll poll(stop);
  arena blocks(s->blocks.pool());
  const auto move = [&](subgraph *&sg) {
    poll.step();
    sg = sg_move(sg, &blocks);
  };
  try {
    std::for_each(records, records + s->count, move);
  } catch (...) {
    s->blocks.absorb(&blocks);
    throw;
  }
  s->blocks = std::move(blocks);
}

void sg_set_check(const sg_set *s) {
  for (int i = 1; i < sg_set_size(s); i++)
    assert(sg_compare(sg_set_get(s, i - 1), sg_set_get(s, i)) < 0);
}

} // namespace kestro
