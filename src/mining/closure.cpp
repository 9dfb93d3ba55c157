// The filter in front of the closure test.
//
// A few rounds of hashing give each vertex a colour that depends on its
// labelled surroundings only, and their sum labels the graph; taking one edge
// out is a matter of leaving two terms out of the sums.  A sub-pattern whose
// label no pattern of the level has cannot be in it, which spares its canonical
// form. Equal labels prove nothing: the form decides then.
//
// A label costs a few rounds over the edges, and the filter a label for every
// pattern of the level.

#include "mining/closure.h"

#include <algorithm>

namespace kestro {

static constexpr int rounds = 3;

static uint64_t mix(uint64_t x) {
  x *= 0x9e3779b97f4a7c15;
  return x ^ (x >> 29);
}

static uint64_t start_colour(int vlabel, int degree) {
  return mix((static_cast<uint64_t>(vlabel) << 32) +
             static_cast<uint64_t>(degree) + 1);
}

static uint64_t seen_along(uint64_t colour, int elabel) {
  return mix(colour + static_cast<uint64_t>(elabel) * 0xc2b2ae3d27d4eb4f);
}

closure_filter::closure_filter(const sg_set *prev, const interruption *stop) {
  interruption_poll poll(stop, 16384);
  for (int i = 0; i < sg_set_size(prev); i++) {
    const graph *g = sg_set_get(prev, i)->g;
    poll.step(g->es);
    labels_.push_back(label(g));
  }
  std::sort(labels_.begin(), labels_.end(), [&poll](uint64_t x, uint64_t y) {
    poll.step();
    return x < y;
  });
}

bool closure_filter::contains(uint64_t label) const {
  return std::binary_search(labels_.begin(), labels_.end(), label);
}

uint64_t closure_filter::label(const graph *g) {
  return label_without(g, {-1, -1, -1});
}

uint64_t closure_filter::label_without(const graph *g,
                                       const removable_edge &edge) {
  const size_t vs = static_cast<size_t>(g->vs);
  if (colour_.size() < vs) {
    colour_.resize(vs);
    next_.resize(vs);
  }
  const int u = edge.u;
  const int w = edge.w;
  const int elabel = edge.slot == -1 ? 0 : g->elabel[edge.slot];
  uint64_t *colour = colour_.data();
  uint64_t *next = next_.data();
  for (int i = 0; i < g->vs; i++)
    colour[i] =
        start_colour(g->vlabel[i], g->v[i + 1] - g->v[i] - (i == u || i == w));
  for (int round = 0; round < rounds; round++) {
    for (int i = 0; i < g->vs; i++) {
      uint64_t sum = 0;
      for (int j = g->v[i]; j < g->v[i + 1]; j++)
        sum += seen_along(colour[g->e[j]], g->elabel[j]);
      next[i] = sum;
    }
    if (u != -1) {
      next[u] -= seen_along(colour[w], elabel);
      next[w] -= seen_along(colour[u], elabel);
    }
    for (int i = 0; i < g->vs; i++)
      colour[i] = mix(colour[i] + 3 * next[i]);
  }
  uint64_t label = 0;
  for (int i = 0; i < g->vs; i++)
    label += mix(colour[i]);
  for (const int end : {u, w}) // an end left alone is not part of the rest
    if (end != -1 && g->v[end + 1] - g->v[end] == 1)
      label -= mix(colour[end]);
  return label;
}

// A canonical form takes several times as long as a label.
static constexpr int labels_for_a_form = 8;

bool late_closure_filter::may_contain(const graph *g,
                                      const removable_edge &edge) {
  if (!filter_) {
    if (misses_ <= sg_set_size(prev_) / labels_for_a_form)
      return true;
    filter_.emplace(prev_, stop_);
  }
  return filter_->contains(filter_->label_without(g, edge));
}

} // namespace kestro
