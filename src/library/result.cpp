// All patterns of a run.
//
// Levels are kept as the listener receives them, in blocks of their own.  A
// pattern's position counts those of the levels before its own; parents and
// children are lists of positions, made once the run has ended.

#include <kestro/mine.h>

#include <algorithm>
#include <deque>
#include <numeric>

#include "library/access.h"
#include "library/arguments.h"
#include "library/level_data.h"

namespace kestro {

namespace {

// Lists of positions, one for each pattern, one after another.
struct position_lists {
  xvector<size_t> first; // per pattern, and the end
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

namespace {

class collector : public listener {
public:
  explicit collector(std::deque<level_data> *levels) : levels_(levels) {}
  void on_level(const level &found) override {
    levels_->push_back(kept(*access::data_of(found)));
  }

private:
  std::deque<level_data> *levels_;
};

} // namespace

static void index_patterns(result_data *r) {
  for (size_t l = 0; l < r->levels.size(); l++) {
    r->first.push_back(r->size());
    r->level_of.insert(r->level_of.end(), r->levels[l].records.size(),
                       static_cast<int>(l));
  }
}

static void list_parents(result_data *r) {
  for (int i = 0; i < r->size(); i++) {
    r->parents.first.push_back(r->parents.positions.size());
    const int l = r->level_at(i);
    if (l == 0)
      continue;
    for (const int id : r->data(l).parents_of(i - r->first_of(l)))
      r->parents.positions.push_back(r->first_of(l - 1) + id);
  }
  r->parents.first.push_back(r->parents.positions.size());
}

// The parents' lists turned round.
static void list_children(result_data *r) {
  xvector<size_t> &first = r->children.first;
  first.assign(static_cast<size_t>(r->size()) + 1, 0);
  for (const int parent : r->parents.positions)
    first[static_cast<size_t>(parent) + 1]++;
  std::partial_sum(first.begin(), first.end(), first.begin());
  xvector<size_t> next = first;
  r->children.positions.resize(r->parents.positions.size());
  for (int i = 0; i < r->size(); i++)
    for (const int parent : r->parents.of(i))
      r->children.positions[next[static_cast<size_t>(parent)]++] = i;
}

result mine(const database &db, const mine_options &options) {
  const auto found = std::make_shared<result_data>();
  found->mined = db;
  collector levels(&found->levels);
  found->summary = mine(db, options, levels);
  index_patterns(found.get());
  list_parents(found.get());
  list_children(found.get());
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
