// Searching with domains, over classes of twins.
//
// A pattern vertex is assigned a class of twins, not a vertex: which of the
// members it gets makes no difference to the others.  Every vertex without a
// class has a domain, the classes left to it.  Domains shrink by three rules
// until none applies: a class needs a neighbour in the domain of each
// neighbour; a class has no more vertices than members; and where the classes
// of several domains have just as many members as there are domains, other
// vertices do without them (Hall sets).  The
// first rule alone keeps images within the pattern's distances, and the sides
// of a bipartite graph apart.  The vertex with the smallest domain is next.
//
// Whether a partial assignment can be completed depends on which vertices have
// a class, on the classes of those that have neighbours without one, and on the
// members left of classes that could run short; of pattern twins only the
// number matters.  States that failed are remembered by just that.  They are
// therefore reached at most once in whatever order the rest was assigned.
//
// The first mapping is found along the depths: at each one, classes whose first
// free member is less than that of the mapping known are tried.

#include "cl/domain_search.h"

#include <algorithm>
#include <bit>
#include <cassert>
#include <climits>
#include <utility>

namespace kestro {

static constexpr int most_vertices = 1024; // of a pattern, for recursion
static constexpr size_t most_words = size_t{1} << 20; // 8 MiB of sets

int domain_search::count(const word *set) const {
  int sum = 0;
  for (size_t i = 0; i < width_; i++)
    sum += std::popcount(set[i]);
  return sum;
}

// Calls todo(c) for each class until it returns true.
template <class Do>
void domain_search::for_each(const word *set, Do todo) const {
  for (size_t i = 0; i < width_; i++)
    for (word rest = set[i]; rest != 0; rest &= rest - 1)
      if (todo(static_cast<int>(i * 64) + std::countr_zero(rest)))
        return;
}

// The pattern

void domain_search::set(const graph *pattern, const xvector<int> &depth,
                        const graph *t) {
  pattern_ = pattern;
  order_.resize(at(pattern->vs));
  for (int u = 0; u < pattern->vs; u++)
    order_[at(depth[at(u)])] = u;
  region_.set(pattern, t);
  if (pattern->vs > most_vertices)
    return;
  measure_pattern();
  group_pattern();
}

// Radius, labels and ends of edges.
void domain_search::measure_pattern() {
  const graph *g = pattern_;
  xvector<int> distance(at(g->vs), -1);
  xvector<int> reached = {order_[0]};
  distance[at(order_[0])] = 0;
  for (size_t i = 0; i < reached.size(); i++) {
    const int u = reached[i];
    radius_ = distance[at(u)];
    for (int j = g->v[u]; j < g->v[u + 1]; j++) {
      if (distance[at(g->e[j])] != -1)
        continue;
      distance[at(g->e[j])] = radius_ + 1;
      reached.push_back(g->e[j]);
    }
  }
  labels_.assign(g->elabel, g->elabel + g->es);
  std::sort(labels_.begin(), labels_.end());
  labels_.erase(std::unique(labels_.begin(), labels_.end()), labels_.end());
  label_.clear();
  ends_.clear();
  for (int u = 0; u < g->vs; u++) {
    for (int j = g->v[u]; j < g->v[u + 1]; j++) {
      const int w = g->e[j];
      const auto place =
          std::lower_bound(labels_.begin(), labels_.end(), g->elabel[j]);
      label_.push_back(static_cast<int>(place - labels_.begin()));
      ends_.push_back({g->elabel[j], g->vlabel[w], g->v[w + 1] - g->v[w]});
    }
    std::sort(ends_.begin() + g->v[u], ends_.end());
  }
}

// Whether the exchange of two vertices of g is an automorphism.
static bool are_twins(const graph *g, int a, int b) {
  if (g->vlabel[a] != g->vlabel[b] ||
      g->v[a + 1] - g->v[a] != g->v[b + 1] - g->v[b])
    return false;
  int i = g->v[a];
  int j = g->v[b];
  for (;; i++, j++) {
    i += i < g->v[a + 1] && g->e[i] == b;
    j += j < g->v[b + 1] && g->e[j] == a;
    if (i == g->v[a + 1] || j == g->v[b + 1])
      return i == g->v[a + 1] && j == g->v[b + 1];
    if (g->e[i] != g->e[j] || g->elabel[i] != g->elabel[j])
      return false;
  }
}

void domain_search::group_pattern() {
  const graph *g = pattern_;
  by_group_.clear();
  first_twin_.clear();
  group_.assign(at(g->vs), -1);
  for (int u = 0; u < g->vs; u++) {
    if (group_[at(u)] != -1)
      continue;
    const int group = static_cast<int>(first_twin_.size());
    first_twin_.push_back(static_cast<int>(by_group_.size()));
    for (int w = u; w < g->vs; w++) {
      if (group_[at(w)] != -1 || (w != u && !are_twins(g, u, w)))
        continue;
      group_[at(w)] = group;
      by_group_.push_back(w);
    }
  }
  first_twin_.push_back(g->vs);
}

// The region

domain_search::verdict domain_search::prepare() {
  failed_.clear();
  if (!region_.has_room())
    return verdict::no_room;
  classes_ = region_.classes();
  width_ = (at(classes_) + 63) / 64;
  if (classes_ > UINT16_MAX ||
      labels_.size() * at(classes_) * width_ > most_words ||
      at(pattern_->vs) * width_ > most_words)
    return verdict::too_large;
  has_failed_.assign(at(classes_), 0);
  lay_rows();
  return fill_domains() ? verdict::open : verdict::no_room;
}

void domain_search::lay_rows() {
  rows_.assign(labels_.size() * at(classes_) * width_, 0);
  for (int c = 0; c < classes_; c++) {
    for (int j = 0; j < region_.edge_count(c); j++) {
      const auto [to, elabel] = region_.edges(c)[j];
      const auto place =
          std::lower_bound(labels_.begin(), labels_.end(), elabel);
      const size_t first =
          (static_cast<size_t>(place - labels_.begin()) * at(classes_) +
           at(c)) *
          width_;
      rows_[first + at(to) / 64] |= word{1} << (at(to) % 64);
    }
  }
}

// Whether the class with class_ends_ has an edge for each of u's, to a vertex
// with as many neighbours.
bool domain_search::has_ends(int u) const {
  size_t k = 0;
  for (int j = pattern_->v[u]; j < pattern_->v[u + 1]; j++, k++) {
    const twin_graph::edge_end &wanted = ends_[at(j)];
    while (k < class_ends_.size() && (class_ends_[k].elabel < wanted.elabel ||
                                      (class_ends_[k].elabel == wanted.elabel &&
                                       class_ends_[k].vlabel < wanted.vlabel)))
      k++;
    if (k == class_ends_.size() || class_ends_[k].elabel != wanted.elabel ||
        class_ends_[k].vlabel != wanted.vlabel ||
        class_ends_[k].degree < wanted.degree)
      return false;
  }
  return true;
}

// The classes that each vertex may have in any assignment; false when one has
// none.
bool domain_search::fill_domains() {
  possible_.assign(at(pattern_->vs) * width_, 0);
  for (int c = 0; c < classes_; c++) {
    region_.edge_ends(c, &class_ends_);
    poll_.step(pattern_->es + static_cast<int>(class_ends_.size()));
    for (int u = 0; u < pattern_->vs; u++)
      if (pattern_->vlabel[u] == region_.vlabel(c) && has_ends(u))
        possible_[at(u) * width_ + at(c) / 64] |= word{1} << (at(c) % 64);
  }
  start();
  for (int u = 0; u < pattern_->vs; u++)
    touch(u);
  const bool is_open = propagate(true);
  possible_ = domains_;
  return is_open;
}

// Nothing is assigned.
void domain_search::start() {
  const size_t vs = at(pattern_->vs);
  choice_.assign(vs, -1);
  unassigned_ = pattern_->vs;
  open_.resize(vs);
  demand_.assign(at(classes_), 0);
  free_.resize(at(classes_));
  for (int c = 0; c < classes_; c++)
    free_[at(c)] = region_.size(c);
  domains_ = possible_;
  for (int u = 0; u < pattern_->vs; u++) {
    open_[at(u)] = pattern_->v[u + 1] - pattern_->v[u];
    for_each(domain(u), [&](int c) {
      demand_[at(c)]++;
      return false;
    });
  }
  kept_.clear();
  kept_words_.clear();
  kept_at_.assign(vs, assignments_);
  touched_.clear();
  is_touched_.assign(vs, 0);
  set_.resize(width_);
  allowed_.resize(width_);
  fresh_.resize(width_);
}

// Domains

// Lets take_back() restore the domain as it is.
void domain_search::keep(int v) {
  if (kept_at_[at(v)] == assignments_)
    return;
  kept_at_[at(v)] = assignments_;
  kept_.push_back(v);
  kept_words_.insert(kept_words_.end(), domain(v), domain(v) + width_);
}

void domain_search::touch(int v) {
  if (is_touched_[at(v)])
    return;
  is_touched_[at(v)] = 1;
  touched_.push_back(v);
}

// False when nothing is left.
bool domain_search::restrict_to(int v, const word *allowed) {
  word *const own = domain(v);
  word lost = 0;
  for (size_t i = 0; i < width_; i++)
    lost |= own[i] & ~allowed[i];
  if (lost == 0)
    return true;
  keep(v);
  word left = 0;
  for (size_t i = 0; i < width_; i++)
    left |= own[i] &= allowed[i];
  touch(v);
  return left != 0;
}

// Takes a class out of all domains; false when one has no other.
bool domain_search::remove(int c) {
  std::fill(allowed_.begin(), allowed_.end(), ~word{0});
  allowed_[at(c) / 64] &= ~(word{1} << (at(c) % 64));
  for (int v = 0; v < pattern_->vs; v++)
    if (choice_[at(v)] == -1 && !restrict_to(v, allowed_.data()))
      return false;
  return true;
}

// Restricts the domains of u's neighbours to classes with a neighbour in u's.
bool domain_search::revise(int u) {
  for (int j = pattern_->v[u]; j < pattern_->v[u + 1]; j++) {
    const int v = pattern_->e[j];
    if (choice_[at(v)] != -1)
      continue;
    std::fill(set_.begin(), set_.end(), 0);
    const word *const other = domain(v);
    poll_.step(static_cast<int64_t>(width_));
    for_each(domain(u), [&](int c) {
      const word *const reached = row(label_[at(j)], c);
      word missing = 0;
      for (size_t i = 0; i < width_; i++)
        missing |= other[i] & ~(set_[i] |= reached[i]);
      poll_.step(static_cast<int64_t>(width_));
      return missing == 0;
    });
    if (!restrict_to(v, set_.data()))
      return false;
  }
  return true;
}

// The members left of the classes in a set.
int domain_search::members_of(const word *set) const {
  int sum = 0;
  for_each(set, [&](int c) {
    sum += free_[at(c)];
    return false;
  });
  return sum;
}

// Counts members against vertices, smallest domains first.  Domains that have
// no class in common, not even over others, are counted apart.
bool domain_search::share_out() {
  by_size_.clear();
  for (int v = 0; v < pattern_->vs; v++)
    if (choice_[at(v)] == -1)
      by_size_.push_back({count(domain(v)), v});
  std::sort(by_size_.begin(), by_size_.end());
  std::fill(allowed_.begin(), allowed_.end(), ~word{0});
  shares_.clear();
  share_words_.clear();
  for (const auto &[size, v] : by_size_) {
    poll_.step(static_cast<int64_t>(width_ * (1 + shares_.size())));
    if (!restrict_to(v, allowed_.data()))
      return false;
    // Such a domain has a member for each vertex whatever the others are.
    if (size >= unassigned_)
      continue;
    const share own = joined_share(v);
    if (own.members < own.vertices)
      return false;
    if (own.members > own.vertices) {
      shares_.push_back(own);
      share_words_.insert(share_words_.end(), set_.begin(), set_.end());
      continue;
    }
    for (size_t i = 0; i < width_; i++)
      allowed_[i] &= ~set_[i];
  }
  return true;
}

// The share of v and of all that have classes in common with it, which are
// taken out; set_ becomes its classes.
domain_search::share domain_search::joined_share(int v) {
  std::copy_n(domain(v), width_, set_.begin());
  std::copy_n(domain(v), width_, fresh_.begin());
  share own = {0, 1};
  for (size_t k = shares_.size(); k-- > 0;) {
    word *const other = &share_words_[k * width_];
    word common = 0;
    for (size_t i = 0; i < width_; i++)
      common |= other[i] & domain(v)[i];
    if (common == 0)
      continue;
    own.members += shares_[k].members;
    own.vertices += shares_[k].vertices;
    for (size_t i = 0; i < width_; i++) {
      set_[i] |= other[i];
      fresh_[i] &= ~other[i];
    }
    shares_[k] = shares_.back();
    shares_.pop_back();
    std::copy_n(&share_words_[shares_.size() * width_], width_, other);
    share_words_.resize(shares_.size() * width_);
  }
  own.members += members_of(fresh_.data());
  return own;
}

// Applies the rules until none changes a domain, unless it is known that one
// has become empty; returns whether none has.
bool domain_search::propagate(bool is_possible) {
  while (is_possible && !touched_.empty()) {
    while (is_possible && !touched_.empty()) {
      const int u = touched_.back();
      touched_.pop_back();
      is_touched_[at(u)] = 0;
      is_possible = choice_[at(u)] != -1 || revise(u);
    }
    is_possible = is_possible && share_out();
  }
  for (const int v : touched_)
    is_touched_[at(v)] = 0;
  touched_.clear();
  return is_possible;
}

// Assignments

// Gives u the class c, which is in its domain; false when some vertex then has
// none left.  take_back() restores all that it changes.
bool domain_search::assign(int u, int c) {
  const graph *g = pattern_;
  assignments_++;
  choice_[at(u)] = c;
  unassigned_--;
  free_[at(c)]--;
  for_each(&possible_[at(u) * width_], [&](int x) {
    demand_[at(x)]--;
    return false;
  });
  bool is_possible = true;
  for (int j = g->v[u]; j < g->v[u + 1]; j++) {
    const int v = g->e[j];
    open_[at(v)]--;
    if (is_possible && choice_[at(v)] == -1)
      is_possible = restrict_to(v, row(label_[at(j)], c));
  }
  // Members left of a class have changed, so they are counted in any case.
  touch(u);
  if (is_possible && free_[at(c)] == 0)
    is_possible = remove(c);
  return propagate(is_possible);
}

// Undoes the last assignment, with that number of domains kept before.
void domain_search::take_back(int u, size_t mark) {
  const graph *g = pattern_;
  while (kept_.size() > mark) {
    const int v = kept_.back();
    kept_.pop_back();
    std::copy_n(kept_words_.end() - static_cast<ptrdiff_t>(width_), width_,
                domain(v));
    kept_words_.resize(kept_words_.size() - width_);
    kept_at_[at(v)] = -1;
  }
  for (int j = g->v[u]; j < g->v[u + 1]; j++)
    open_[at(g->e[j])]++;
  for_each(&possible_[at(u) * width_], [&](int x) {
    demand_[at(x)]++;
    return false;
  });
  free_[at(choice_[at(u)])]++;
  unassigned_++;
  choice_[at(u)] = -1;
}

// The vertex with the smallest domain, then with most neighbours; of twins the
// first without a class, so that fewer states are different.
int domain_search::next_vertex() const {
  int found = -1;
  std::pair<int, int> least;
  for (int v = 0; v < pattern_->vs; v++) {
    if (choice_[at(v)] != -1)
      continue;
    const std::pair<int, int> rank(count(domain(v)),
                                   pattern_->v[v] - pattern_->v[v + 1]);
    if (found != -1 && rank >= least)
      continue;
    found = v;
    least = rank;
  }
  return found;
}

// Writes what the rest of the search depends on to state_.
void domain_search::describe() {
  const auto number = [](int i) { return static_cast<uint16_t>(i); };
  const int groups = static_cast<int>(first_twin_.size()) - 1;
  state_.clear();
  used_.clear();
  for (int group = 0; group < groups; group++) {
    int assigned = 0;
    for (int i = first_twin_[at(group)]; i < first_twin_[at(group) + 1]; i++) {
      const int c = choice_[at(by_group_[at(i)])];
      assigned += c != -1;
      if (c != -1 && free_[at(c)] < demand_[at(c)])
        used_.push_back(c);
    }
    state_.push_back(number(assigned));
  }
  for (int group = 0; group < groups; group++) {
    const auto first = static_cast<ptrdiff_t>(state_.size());
    for (int i = first_twin_[at(group)]; i < first_twin_[at(group) + 1]; i++) {
      const int u = by_group_[at(i)];
      if (choice_[at(u)] != -1 && open_[at(u)] > 0)
        state_.push_back(number(choice_[at(u)]));
    }
    std::sort(state_.begin() + first, state_.end());
  }
  std::sort(used_.begin(), used_.end());
  used_.erase(std::unique(used_.begin(), used_.end()), used_.end());
  for (const int c : used_) {
    state_.push_back(number(c));
    state_.push_back(number(free_[at(c)]));
  }
}

// Whether the assignment can be completed; solution_ is then how.
bool domain_search::extend() {
  if (unassigned_ == 0) {
    solution_ = choice_;
    return true;
  }
  const int u = next_vertex();
  // What follows from one choice is told by the state behind it.
  const bool is_choice = count(domain(u)) > 1;
  if (is_choice) {
    describe();
    if (failed_.has(state_))
      return false;
  }
  bool is_found = false;
  for_each(domain(u), [&](int c) {
    const size_t mark = kept_.size();
    is_found = assign(u, c) && extend();
    take_back(u, mark);
    return is_found;
  });
  if (is_choice && !is_found) {
    describe();
    failed_.add(state_);
  }
  return is_found;
}

// The mapping

bool domain_search::excludes(int root) const {
  const int c = region_.class_of(root);
  if (c == -1 || !region_.is_whole() || verdict_ == verdict::too_large)
    return false;
  return verdict_ == verdict::no_room || has_failed_[at(c)] ||
         !contains(&possible_[at(order_[0]) * width_], c);
}

// The smallest vertex of a class that the image does not have.
int domain_search::first_free(int c) const {
  const int *w = region_.members(c) + next_[at(c)];
  return w[0] == image_[0] ? w[1] : w[0];
}

// Makes solution_ the one with the least image of u among those that agree with
// the assignment so far.
void domain_search::improve(int u) {
  smaller_.clear();
  const int known = first_free(solution_[at(u)]);
  for_each(domain(u), [&](int c) {
    if (const int w = first_free(c); w < known)
      smaller_.push_back({w, c});
    return false;
  });
  std::sort(smaller_.begin(), smaller_.end());
  for (const auto &[w, c] : smaller_) {
    const size_t mark = kept_.size();
    const bool is_found = assign(u, c) && extend();
    take_back(u, mark);
    if (is_found)
      return;
  }
}

domain_search::answer domain_search::find(int root) {
  if (pattern_->vs > most_vertices)
    return answer::too_large;
  if (region_.move(root, radius_, &poll_))
    verdict_ = prepare();
  if (verdict_ == verdict::too_large)
    return answer::too_large;
  const int first = order_[0];
  const int c = region_.class_of(root);
  if (verdict_ == verdict::no_room || has_failed_[at(c)] ||
      !contains(&possible_[at(first) * width_], c))
    return answer::none;
  start();
  if (!assign(first, c) || !extend()) {
    has_failed_[at(c)] = 1;
    return answer::none;
  }
  image_.assign(1, root);
  next_.assign(at(classes_), 0);
  for (size_t d = 1; d < order_.size(); d++) {
    const int u = order_[d];
    improve(u);
    const int chosen = solution_[at(u)];
    const int w = first_free(chosen);
    const bool is_possible = assign(u, chosen);
    assert(is_possible);
    image_.push_back(w);
    next_[at(chosen)] +=
        region_.members(chosen)[next_[at(chosen)]] == w ? 1 : 2;
  }
  return answer::found;
}

} // namespace kestro
