// All patterns of a run.
//
// Levels are kept as the listener receives them, in blocks of their own.  A
// pattern's position counts those of the levels before its own; parents and
// children are lists of positions, one list behind another.

#include <kestro/mine.h>

#include <algorithm>
#include <deque>

#include "library/access.h"
#include "library/arguments.h"
#include "library/level_data.h"

namespace kestro {

namespace {

// Lists of positions, one for each pattern, one after another.
struct position_lists {
  xvector<size_t> first = {0}; // per pattern, and the end
  xvector<int> positions;

  std::span<const int> of(int i) const {
    const size_t at = static_cast<size_t>(i);
    return {positions.data() + first[at], first[at + 1] - first[at]};
  }
};

} // namespace

struct result_data {
  database mined;
  mining_summary summary;
  std::deque<level_data> levels; // of the sizes from the first one reported on
  xvector<int> first;            // position of each level's first pattern
  xvector<int> level_of;         // per pattern
  position_lists parents;
  position_lists children;

  int size() const { return static_cast<int>(level_of.size()); }
  int level_at(int i) const { return level_of[static_cast<size_t>(i)]; }
  int first_of(int l) const { return first[static_cast<size_t>(l)]; }
  const level_data &data(int l) const { return levels[static_cast<size_t>(l)]; }
};

// Enters the patterns of the newest level, and their parents.
static void add_patterns(result_data *r) {
  const int l = static_cast<int>(r->levels.size()) - 1;
  const level_data &newest = r->levels.back();
  r->first.push_back(r->size());
  for (int id = 0; id < newest.count(); id++) {
    r->level_of.push_back(l);
    if (l > 0)
      for (const int parent : newest.parents_of(id))
        r->parents.positions.push_back(r->first_of(l - 1) + parent);
    r->parents.first.push_back(r->parents.positions.size());
  }
}

// Enters the children of a level's patterns: the parents' lists of the level
// above turned round.  Nothing for a level that has none above it.
static void add_children(result_data *r, int l) {
  const int low = r->first_of(l);
  const int high = low + r->data(l).count();
  xvector<int> counts(static_cast<size_t>(high - low), 0);
  for (int i = high; i < r->size(); i++)
    for (const int parent : r->parents.of(i))
      counts[static_cast<size_t>(parent - low)]++;
  xvector<size_t> next; // place of a pattern's next child
  for (const int count : counts) {
    next.push_back(r->children.first.back());
    r->children.first.push_back(next.back() + static_cast<size_t>(count));
  }
  r->children.positions.resize(r->children.first.back());
  for (int i = high; i < r->size(); i++)
    for (const int parent : r->parents.of(i))
      r->children.positions[next[static_cast<size_t>(parent - low)]++] = i;
}

namespace {

// Keeps levels as they come, so that little is left to do at the end.
class collector : public listener {
public:
  explicit collector(result_data *r) : r_(r) {}
  void on_level(const level &found) override {
    r_->levels.push_back(kept(*access::data_of(found)));
    add_patterns(r_);
    if (const int levels = static_cast<int>(r_->levels.size()); levels > 1)
      add_children(r_, levels - 2);
  }

private:
  result_data *r_;
};

} // namespace

result mine(const database &db, const mine_options &options) {
  const auto found = std::make_shared<result_data>();
  found->mined = db;
  collector levels(found.get());
  found->summary = mine(db, options, levels);
  if (!found->levels.empty())
    add_children(found.get(), static_cast<int>(found->levels.size()) - 1);
  return access::result_of(found);
}

result::result(std::shared_ptr<const result_data> data)
    : data_(std::move(data)) {}

int result::size() const { return data_->size(); }

pattern result::operator[](int i) const {
  check_index("pattern", i, size());
  const int l = data_->level_at(i);
  return access::pattern_of(&data_->data(l), i - data_->first_of(l));
}

result::iterator result::begin() const { return {this, 0}; }

result::iterator result::end() const { return {this, size()}; }

std::optional<int> result::find(int size, int id) const {
  for (size_t l = 0; l < data_->levels.size(); l++)
    if (const level_data &data = data_->levels[l]; data.size == size)
      return 0 <= id && id < data.count() ? std::optional(data_->first[l] + id)
                                          : std::nullopt;
  return std::nullopt;
}

std::span<const int> result::children(int i) const {
  check_index("pattern", i, size());
  return data_->children.of(i);
}

std::span<const int> result::parents(int i) const {
  check_index("pattern", i, size());
  return data_->parents.of(i);
}

// Whether larger patterns than this one may exist that the run did not reach.
static bool may_have_more(const result_data &r, int i) {
  return r.summary.why != ending::complete &&
         r.level_at(i) + 1 == static_cast<int>(r.levels.size());
}

answer result::is_closed(int i) const {
  const int support = (*this)[i].support();
  for (const int child : children(i))
    if ((*this)[child].support() == support)
      return answer::no;
  return may_have_more(*data_, i) ? answer::unknown : answer::yes;
}

answer result::is_maximal(int i) const {
  if (!children(i).empty())
    return answer::no;
  return may_have_more(*data_, i) ? answer::unknown : answer::yes;
}

const mining_summary &result::summary() const { return data_->summary; }

const database &result::mined() const { return data_->mined; }

} // namespace kestro
