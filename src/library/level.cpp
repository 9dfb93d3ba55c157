// What a level and its patterns show.

#include <kestro/mine.h>

#include "library/access.h"
#include "library/arguments.h"
#include "library/level_data.h"

namespace kestro {

static const level_record &record_of(const level_data *level, int id) {
  return level->records[static_cast<size_t>(id)];
}

int pattern::size() const { return level_->size; }

int pattern::id() const { return id_; }

graph_view pattern::graph() const {
  return access::view(record_of(level_, id_).g, level_->labels);
}

int pattern::support() const { return record_of(level_, id_).support; }

std::span<const int> pattern::tids() const {
  const level_record &record = record_of(level_, id_);
  if (!record.tids)
    return {};
  return {record.tids, static_cast<size_t>(record.support)};
}

std::span<const int> pattern::parents() const {
  return level_->parents_of(id_);
}

std::span<const int> pattern::embedding(int i) const {
  if (level_->images.empty())
    return {};
  const level_record &record = record_of(level_, id_);
  check_index("transaction of the pattern", i, record.support);
  const size_t vs = static_cast<size_t>(record.g->vs);
  return {level_->images.data() + record.first_image +
              static_cast<size_t>(i) * vs,
          vs};
}

bool pattern::is_order_dependent() const {
  return !record_of(level_, id_).invariant;
}

int level::size() const { return level_->size; }

int level::patterns() const { return level_->count(); }

pattern level::operator[](int id) const {
  check_index("pattern", id, level_->count());
  return access::pattern_of(level_, id);
}

} // namespace kestro
