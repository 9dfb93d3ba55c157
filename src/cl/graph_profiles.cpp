// Profiles of vertices.
//
// The edges at a vertex are put into sixteen groups of two bits, by a hash of
// the edge's label and the other end's; a group shows one edge, or several.  A
// mapping sends the edges at u to as many edges with the same labels at w, so
// each of w's groups has at least the bits of u's.  The same holds for the
// paths of two edges, of which sixty-four bits also show the kinds.  Comparing
// two profiles takes a few instructions.
//
// Profiles of a whole graph cost its edges, times some hundred at most where a
// neighbour has many.

#include "cl/graph_profiles.h"

#include <algorithm>
#include <climits>

namespace kestro {

static constexpr size_t counters = 4096;

// Graphs of up to that many vertices have no index by label.
static constexpr int scanned_whole = 64;

static uint32_t hash_labels(int a, int b) {
  uint32_t h = static_cast<uint32_t>(a) * 0x9e3779b1U;
  h = (h ^ static_cast<uint32_t>(b)) * 0x85ebca77U;
  return h ^ (h >> 15);
}

// Sets one more bit in the group of a hash, of width bits, unless it is full.
template <class Bits> static void add_to_group(Bits *bits, uint32_t hash) {
  constexpr uint32_t width = sizeof(Bits) / 2; // sixteen groups
  const uint32_t shift = (hash >> 3 & 15) * width;
  const Bits group = ((Bits{1} << width) - 1) << shift;
  *bits |= group & ((*bits << 1) | (Bits{1} << shift));
}

// The profile of u, where each_slot(w, profile so far, visit) calls visit with
// slots of w.
template <class Slots>
static vertex_profile profile_by(const graph *g, int u,
                                 const Slots &each_slot) {
  vertex_profile profile;
  for (int i = g->v[u]; i < g->v[u + 1]; i++) {
    const int w = g->e[i];
    const uint32_t first = hash_labels(g->elabel[i], g->vlabel[w]);
    add_to_group(&profile.edges, first);
    each_slot(w, profile, [&](int j) {
      if (g->e[j] == u)
        return;
      const uint32_t edges = first + static_cast<uint32_t>(g->elabel[j]);
      const uint32_t path =
          hash_labels(static_cast<int>(edges), g->vlabel[g->e[j]]);
      add_to_group(&profile.paths, path);
      profile.kinds |= uint64_t{1} << (path >> 10 & 63);
    });
  }
  return profile;
}

vertex_profile profile_of(const graph *g, int u) {
  return profile_by(g, u,
                    [g](int w, const vertex_profile &, const auto &visit) {
                      for (int j = g->v[w]; j < g->v[w + 1]; j++)
                        visit(j);
                    });
}

namespace {

// The slots of each vertex of a graph that tell the profiles of its neighbours
// as much as all its slots do.  A group shows two paths at most, and none that
// goes back: so three slots of a kind, an edge label and the other end's, stand
// for all of them.
class telling_slots {
public:
  void set(const graph *g, interruption_poll *poll) {
    slots_.clear();
    first_.clear();
    for (int w = 0; w < g->vs; w++) {
      first_.push_back(slots_.size());
      poll->step(g->v[w + 1] - g->v[w]);
      add(g, w);
    }
    first_.push_back(slots_.size());
  }
  const int *begin(int w) const { return slots_.data() + at(w); }
  const int *end(int w) const { return slots_.data() + at(w + 1); }

private:
  struct slot {
    int elabel, vlabel, number;
    bool is_like(const slot &s) const {
      return elabel == s.elabel && vlabel == s.vlabel;
    }
    bool operator<(const slot &s) const {
      return elabel != s.elabel ? elabel < s.elabel : vlabel < s.vlabel;
    }
  };

  size_t at(int w) const { return first_[static_cast<size_t>(w)]; }

  void add(const graph *g, int w) {
    sorted_.clear();
    for (int j = g->v[w]; j < g->v[w + 1]; j++)
      sorted_.push_back({g->elabel[j], g->vlabel[g->e[j]], j});
    std::sort(sorted_.begin(), sorted_.end());
    for (size_t i = 0; i < sorted_.size(); i++)
      if (i < 3 || !sorted_[i].is_like(sorted_[i - 3]))
        slots_.push_back(sorted_[i].number);
  }

  xvector<int> slots_;    // vertex after vertex
  xvector<size_t> first_; // by vertex, where its slots start; the end
  xvector<slot> sorted_;  // those of one vertex
};

} // namespace

static int largest_degree(const graph *g) {
  int largest = 0;
  for (int u = 0; u < g->vs; u++)
    largest = std::max(largest, g->v[u + 1] - g->v[u]);
  return largest;
}

// Calls take with the profile of every vertex.  Vertices of many neighbours
// cost no square: of their slots, each neighbour reads three of a kind, and
// those of many kinds until its profile shows all there can be.
template <class Take>
static void each_profile(const graph *g, telling_slots *slots,
                         interruption_poll *poll, Take take) {
  constexpr int many = 32;
  if (g->es <= 2 * many || largest_degree(g) <= many) {
    for (int u = 0; u < g->vs; u++)
      take(u, profile_of(g, u));
    return;
  }
  slots->set(g, poll);
  const auto telling = [slots](int w, const vertex_profile &so_far,
                               const auto &visit) {
    const int *const end = slots->end(w);
    for (const int *j = slots->begin(w); j < end; j++) {
      if (~so_far.paths == 0 && ~so_far.kinds == 0)
        return;
      visit(*j);
    }
  };
  for (int u = 0; u < g->vs; u++)
    take(u, profile_by(g, u, telling));
}

static size_t counter_of(int from, int elabel, int to) {
  return hash_labels(static_cast<int>(hash_labels(from, elabel)), to) %
         counters;
}

// The counters stay at the largest number that they hold.
void graph_profiles::count_edge(int from, int elabel, int to) {
  int &counter = frequency_[counter_of(from, elabel, to)];
  counter += counter < INT_MAX;
}

graph_profiles::graph_profiles(const graph_list *graphs,
                               const interruption *stop)
    : graphs_(graphs), frequency_(counters, 0) {
  interruption_poll poll(stop, 1 << 17);
  constexpr int64_t path_cost = 32; // of an edge, for the paths through it
  telling_slots slots;
  cycle_core_finder cores;
  size_t vertices = 0;
  for (int i = 0; i < graphs->count; i++)
    vertices += static_cast<size_t>(graph_at(i)->vs);
  profiles_.reserve(vertices);
  first_.reserve(static_cast<size_t>(graphs->count));
  cores_.reserve(static_cast<size_t>(graphs->count));
  first_by_label_.reserve(static_cast<size_t>(graphs->count) + 1);
  for (int i = 0; i < graphs->count; i++) {
    const graph *g = graph_at(i);
    first_.push_back(profiles_.size());
    first_by_label_.push_back(by_label_.size());
    cores_.push_back(cores.find(g));
    if (g->vs > scanned_whole)
      add_by_label(g);
    each_profile(g, &slots, &poll, [&](int u, const vertex_profile &profile) {
      poll.step(path_cost * (g->v[u + 1] - g->v[u]));
      profiles_.push_back(profile);
    });
    for (int u = 0; u < g->vs; u++)
      for (int j = g->v[u]; j < g->v[u + 1]; j++)
        count_edge(g->vlabel[u], g->elabel[j], g->vlabel[g->e[j]]);
  }
  first_by_label_.push_back(by_label_.size());
  for (int i = 0; i < graphs->count; i++) {
    const bool small = static_cast<size_t>(graph_at(i)->vs) *
                           static_cast<size_t>(graphs->count) <
                       vertices;
    small_.push_back(small ? 1 : 0);
  }
}

void graph_profiles::add_by_label(const graph *g) {
  sorted_.clear();
  for (int u = 0; u < g->vs; u++)
    sorted_.push_back(static_cast<uint64_t>(g->vlabel[u]) << 32 |
                      static_cast<uint64_t>(u));
  std::sort(sorted_.begin(), sorted_.end());
  for (const uint64_t label_and_vertex : sorted_)
    by_label_.push_back(static_cast<int>(label_and_vertex & INT32_MAX));
}

graph_profiles::candidates graph_profiles::vertices(int i, int vlabel) const {
  const graph *g = graph_at(i);
  if (g->vs <= scanned_whole)
    return {nullptr, g->vs};
  const int *labels = g->vlabel;
  const int *first = by_label_.data() + first_by_label_[static_cast<size_t>(i)];
  const int *last =
      by_label_.data() + first_by_label_[static_cast<size_t>(i) + 1];
  first = std::lower_bound(first, last, vlabel,
                           [labels](int w, int x) { return labels[w] < x; });
  const int *end = first;
  while (end < last && labels[*end] == vlabel)
    end++;
  return {first, static_cast<int>(end - first)};
}

int graph_profiles::frequency(int from, int elabel, int to) const {
  return frequency_[counter_of(from, elabel, to)];
}

} // namespace kestro
