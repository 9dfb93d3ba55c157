// Regions and their twins.
//
// A region is a breadth-first search.  Twins have equal sums of hashes over
// their edges, those with an edge between them once it is left out at both
// ends, which is done by adding their own vertex to either; sorting brings them
// together, and a comparison of the lists with the first one's decides.  Being
// twins is an equivalence, and no vertex has twins of both sorts.

#include "cl/twin_graph.h"

#include <algorithm>
#include <tuple>

#include "base/open_table.h"

namespace kestro {

static size_t index(int i) { return static_cast<size_t>(i); }

bool twin_graph::edge_kind::operator<(const edge_kind &other) const {
  return std::tie(from, elabel, to) <
         std::tie(other.from, other.elabel, other.to);
}

bool twin_graph::signature::operator<(const signature &other) const {
  return std::tie(hash, inner, vertex) <
         std::tie(other.hash, other.inner, other.vertex);
}

bool twin_graph::edge_end::operator<(const edge_end &other) const {
  return std::tie(elabel, vlabel, other.degree) <
         std::tie(other.elabel, other.vlabel, degree);
}

void twin_graph::set(const graph *pattern, const graph *t) {
  pattern_ = pattern;
  graph_ = t;
  kinds_.clear();
  for (int u = 0; u < pattern->vs; u++)
    for (int j = pattern->v[u]; j < pattern->v[u + 1]; j++)
      kinds_.push_back({pattern->vlabel[u], pattern->elabel[j],
                        pattern->vlabel[pattern->e[j]]});
  const auto is_same = [](const edge_kind &a, const edge_kind &b) {
    return !(a < b) && !(b < a);
  };
  std::sort(kinds_.begin(), kinds_.end());
  kinds_.erase(std::unique(kinds_.begin(), kinds_.end(), is_same),
               kinds_.end());
  vertices_.clear();
  place_.assign(index(t->vs), -1);
  is_collected_.assign(index(t->vs), 0);
}

// Whether the pattern has edges of the kind of that slot of w.
bool twin_graph::is_possible(int w, int slot) const {
  const edge_kind kind = {graph_->vlabel[w], graph_->elabel[slot],
                          graph_->vlabel[graph_->e[slot]]};
  return std::binary_search(kinds_.begin(), kinds_.end(), kind);
}

bool twin_graph::move(int root, int radius, interruption_poll *poll) {
  if (class_of(root) != -1 && is_whole_)
    return false;
  collect(root, radius, poll);
  if (collected_ == vertices_)
    return false;
  for (const int w : vertices_)
    place_[index(w)] = -1;
  vertices_ = collected_;
  for (size_t i = 0; i < vertices_.size(); i++)
    place_[index(vertices_[i])] = static_cast<int>(i);
  connect(poll);
  sign(poll);
  unite_twins(poll);
  number_classes();
  connect_classes();
  return true;
}

void twin_graph::collect(int root, int radius, interruption_poll *poll) {
  collected_.assign(1, root);
  is_collected_[index(root)] = 1;
  size_t done = 0;
  is_whole_ = false;
  for (int d = 0; d < radius && !is_whole_; d++) {
    for (const size_t end = collected_.size(); done < end; done++) {
      const int w = collected_[done];
      poll->step(graph_->v[w + 1] - graph_->v[w]);
      for (int j = graph_->v[w]; j < graph_->v[w + 1]; j++) {
        const int x = graph_->e[j];
        if (is_collected_[index(x)] || !is_possible(w, j))
          continue;
        is_collected_[index(x)] = 1;
        collected_.push_back(x);
      }
    }
    is_whole_ = done == collected_.size();
  }
  for (const int w : collected_)
    is_collected_[index(w)] = 0;
  std::sort(collected_.begin(), collected_.end());
}

void twin_graph::connect(interruption_poll *poll) {
  first_.clear();
  neighbours_.clear();
  elabels_.clear();
  for (const int w : vertices_) {
    first_.push_back(slots());
    poll->step(graph_->v[w + 1] - graph_->v[w]);
    for (int j = graph_->v[w]; j < graph_->v[w + 1]; j++) {
      const int place = place_[index(graph_->e[j])];
      if (place == -1 || !is_possible(w, j))
        continue;
      neighbours_.push_back(place);
      elabels_.push_back(graph_->elabel[j]);
    }
  }
  first_.push_back(slots());
}

static uint64_t edge_hash(int place, int elabel) {
  const uint64_t hash = mixed(mixed(mixed(0, static_cast<uint64_t>(place) + 1),
                                    static_cast<uint64_t>(elabel)),
                              1);
  return hash ^ (hash >> 32);
}

void twin_graph::sign(interruption_poll *poll) {
  signatures_.clear();
  for (int i = 0; i < vertices(); i++) {
    const int first = first_[index(i)];
    const int end = first_[index(i) + 1];
    poll->step(end - first);
    uint64_t sum = static_cast<uint64_t>(graph_->vlabel[vertices_[index(i)]]);
    for (int j = first; j < end; j++)
      sum += edge_hash(neighbours_[index(j)], elabels_[index(j)]);
    signatures_.push_back({sum, i, -1});
    for (int j = first; j < end; j++)
      if (const int l = elabels_[index(j)];
          j == first || l != elabels_[index(j) - 1])
        signatures_.push_back({sum + edge_hash(i, l), i, l});
  }
  std::sort(signatures_.begin(), signatures_.end());
}

// Whether the vertices at two places are twins with that label between them.
bool twin_graph::are_twins(int a, int b, int inner) const {
  if (graph_->vlabel[vertices_[index(a)]] !=
      graph_->vlabel[vertices_[index(b)]])
    return false;
  int i = first_[index(a)];
  int j = first_[index(b)];
  const int i_end = first_[index(a) + 1];
  const int j_end = first_[index(b) + 1];
  int between = -1;
  for (;; i++, j++) {
    if (i < i_end && neighbours_[index(i)] == b)
      between = elabels_[index(i++)];
    if (j < j_end && neighbours_[index(j)] == a)
      j++;
    if (i == i_end || j == j_end)
      return i == i_end && j == j_end && between == inner;
    if (neighbours_[index(i)] != neighbours_[index(j)] ||
        elabels_[index(i)] != elabels_[index(j)])
      return false;
  }
}

void twin_graph::unite_twins(interruption_poll *poll) {
  twin_.resize(vertices_.size());
  for (int i = 0; i < vertices(); i++)
    twin_[index(i)] = i;
  for (size_t i = 0; i < signatures_.size(); i++) {
    const signature &one = signatures_[i];
    if (twin_[index(one.vertex)] != one.vertex)
      continue;
    for (size_t j = i + 1;
         j < signatures_.size() && signatures_[j].hash == one.hash &&
         signatures_[j].inner == one.inner;
         j++) {
      const int other = signatures_[j].vertex;
      if (twin_[index(other)] != other)
        continue;
      poll->step(first_[index(other) + 1] - first_[index(other)]);
      if (are_twins(one.vertex, other, one.inner))
        twin_[index(other)] = one.vertex;
    }
  }
}

// Classes come in the order of their smallest members.
void twin_graph::number_classes() {
  class_.resize(vertices_.size());
  first_member_.assign(1, 0);
  for (int i = 0; i < vertices(); i++) {
    const int first = twin_[index(i)];
    if (first == i) {
      class_[index(i)] = classes();
      first_member_.push_back(0);
    } else {
      class_[index(i)] = class_[index(first)];
    }
    first_member_[index(class_[index(i)]) + 1]++;
  }
  for (int c = 0; c < classes(); c++)
    first_member_[index(c) + 1] += first_member_[index(c)];
  members_.resize(vertices_.size());
  xvector<int> end(first_member_);
  for (int i = 0; i < vertices(); i++)
    members_[index(end[index(class_[index(i)])]++)] = vertices_[index(i)];
}

void twin_graph::connect_classes() {
  first_edge_.clear();
  edges_.clear();
  for (int c = 0; c < classes(); c++) {
    first_edge_.push_back(static_cast<int>(edges_.size()));
    const int own = place_[index(*members(c))];
    for (int j = first_[index(own)]; j < first_[index(own) + 1]; j++) {
      const int x = neighbours_[index(j)];
      const int to = class_[index(x)];
      // One edge for all members; the first of its own class is own itself.
      if (vertices_[index(x)] == members(to)[to == c ? 1 : 0])
        edges_.push_back({to, elabels_[index(j)]});
    }
  }
  first_edge_.push_back(static_cast<int>(edges_.size()));
}

int twin_graph::class_of(int w) const {
  const int place = vertices_.empty() ? -1 : place_[index(w)];
  return place == -1 ? -1 : class_[index(place)];
}

bool twin_graph::has_room() const {
  if (vertices() < pattern_->vs || slots() < pattern_->es)
    return false;
  xvector<int> wanted(pattern_->vlabel, pattern_->vlabel + pattern_->vs);
  xvector<int> held;
  for (const int w : vertices_)
    held.push_back(graph_->vlabel[w]);
  std::sort(wanted.begin(), wanted.end());
  std::sort(held.begin(), held.end());
  return std::includes(held.begin(), held.end(), wanted.begin(), wanted.end());
}

void twin_graph::edge_ends(int c, xvector<edge_end> *ends) const {
  ends->clear();
  const size_t own = index(place_[index(*members(c))]);
  for (size_t j = index(first_[own]); j < index(first_[own + 1]); j++) {
    const size_t x = index(neighbours_[j]);
    ends->push_back(
        {elabels_[j], graph_->vlabel[vertices_[x]], first_[x + 1] - first_[x]});
  }
  std::sort(ends->begin(), ends->end());
}

} // namespace kestro
