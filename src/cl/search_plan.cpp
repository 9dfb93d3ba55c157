// Looking for one pattern in many graphs.
//
// What a search asks of each vertex is worked out once: whose neighbour it has
// to be, which edges it closes, which neighbours it still needs.  A step then
// walks the neighbour list of one mapped vertex only, in ascending order, so it
// tries the same images in the same order as a walk over all vertices would.
//
// Two cuts spare branches without a mapping, or without the first one: twins,
// leaves of one vertex with equal labels, are mapped in ascending order, and a
// vertex is mapped only where enough free neighbours remain for its later ones.
// Without them a hub with many like leaves costs the factorial of their number.

#include "cl/search_plan.h"

#include <algorithm>
#include <tuple>

namespace kestro {

namespace {

struct search_state {
  xvector<char> used; // by vertex of the graph searched: 1 for images
};

} // namespace

static thread_local search_state state;

void search_plan_free_work_area() { state.used = xvector<char>(); }

// The depth of each vertex in order.
static xvector<int> depths_in(const graph *g, const int *order) {
  xvector<int> depth(static_cast<size_t>(g->vs));
  for (int d = 0; d < g->vs; d++)
    depth[static_cast<size_t>(order[d])] = d;
  return depth;
}

// The depth of the last leaf before u that hangs on the same vertex with the
// same labels, or -1.  A leaf that comes first of all is no twin: its images
// are not taken from a neighbour list.
static int twin_of(const graph *g, int u, const xvector<int> &depth) {
  if (g->v[u + 1] - g->v[u] != 1)
    return -1;
  const int slot = g->v[u];
  const int hub = g->e[slot];
  int twin = -1;
  for (int j = g->v[hub]; j < g->v[hub + 1]; j++) {
    const int x = g->e[j];
    if (g->v[x + 1] - g->v[x] == 1 && g->elabel[j] == g->elabel[slot] &&
        g->vlabel[x] == g->vlabel[u] &&
        depth[static_cast<size_t>(x)] < depth[static_cast<size_t>(u)])
      twin = std::max(twin, depth[static_cast<size_t>(x)]);
  }
  return twin > 0 ? twin : -1;
}

static void add_need(xvector<plan_need> *needs, size_t first, int elabel,
                     int vlabel) {
  for (size_t i = first; i < needs->size(); i++) {
    plan_need &need = (*needs)[i];
    if (need.elabel == elabel && need.vlabel == vlabel) {
      need.count++;
      return;
    }
  }
  needs->push_back({elabel, vlabel, 1});
}

search_plan::search_plan(const graph *g, const int *order)
    : pattern_(g), steps_(static_cast<size_t>(g->vs)),
      at_(static_cast<size_t>(g->vs)), image_(static_cast<size_t>(g->vs)) {
  const xvector<int> depth = depths_in(g, order);
  for (int d = 0; d < g->vs; d++) {
    const int u = order[d];
    plan_step &step = steps_[static_cast<size_t>(d)];
    const size_t first_need = needs_.size();
    step.u = u;
    step.vlabel = g->vlabel[u];
    step.degree = g->v[u + 1] - g->v[u];
    step.anchor = -1;
    step.anchor_label = -1;
    step.twin = twin_of(g, u, depth);
    for (int j = g->v[u]; j < g->v[u + 1]; j++) {
      const int other = depth[static_cast<size_t>(g->e[j])];
      if (other > d) {
        add_need(&needs_, first_need, g->elabel[j], g->vlabel[g->e[j]]);
      } else if (step.anchor == -1) {
        step.anchor = other;
        step.anchor_label = g->elabel[j];
      } else {
        closing_.push_back({other, g->elabel[j]});
      }
    }
    step.closing = static_cast<int>(closing_.size());
    step.needs = static_cast<int>(needs_.size());
  }
}

search_plan search_plan::rarest_first(const graph *g,
                                      const xvector<int> &label_counts) {
  xvector<int> order;
  xvector<int> mapped_nbrs(static_cast<size_t>(g->vs), 0); // -1: in order
  while (static_cast<int>(order.size()) < g->vs) {
    const auto rank = [&](int u) {
      const int nbrs = mapped_nbrs[static_cast<size_t>(u)];
      const int label = g->vlabel[u];
      return std::tuple(-nbrs, label_counts[static_cast<size_t>(label)],
                        g->v[u] - g->v[u + 1]);
    };
    int best = -1;
    for (int u = 0; u < g->vs; u++)
      if (mapped_nbrs[static_cast<size_t>(u)] != -1 &&
          (best == -1 || rank(u) < rank(best)))
        best = u;
    order.push_back(best);
    mapped_nbrs[static_cast<size_t>(best)] = -1;
    for (int j = g->v[best]; j < g->v[best + 1]; j++)
      if (mapped_nbrs[static_cast<size_t>(g->e[j])] != -1)
        mapped_nbrs[static_cast<size_t>(g->e[j])]++;
  }
  return search_plan(g, order.data());
}

bool search_plan::has_room(const plan_need &need, const graph *t, int w) const {
  int missing = need.count;
  for (int j = t->v[w]; j < t->v[w + 1] && missing > 0; j++)
    missing -= t->elabel[j] == need.elabel &&
               t->vlabel[t->e[j]] == need.vlabel &&
               !state.used[static_cast<size_t>(t->e[j])];
  return missing == 0;
}

// The label of t's edge w-y, -1 for none.
static int edge_label(const graph *t, int w, int y) {
  const int *first = t->e + t->v[w];
  const int *last = t->e + t->v[w + 1];
  const int *slot = std::lower_bound(first, last, y);
  return slot < last && *slot == y ? t->elabel[slot - t->e] : -1;
}

// Whether w can be the image at depth, but for its label edge to the anchor.
bool search_plan::fits(const plan_step &step, const graph *t, int w,
                       int depth) const {
  if (t->vlabel[w] != step.vlabel || t->v[w + 1] - t->v[w] < step.degree ||
      state.used[static_cast<size_t>(w)])
    return false;
  const plan_step *before =
      depth > 0 ? &steps_[static_cast<size_t>(depth - 1)] : nullptr;
  for (int i = before ? before->closing : 0; i < step.closing; i++) {
    const plan_edge &edge = closing_[static_cast<size_t>(i)];
    if (edge_label(t, w, image_[static_cast<size_t>(edge.depth)]) != edge.label)
      return false;
  }
  for (int i = before ? before->needs : 0; i < step.needs; i++)
    if (!has_room(needs_[static_cast<size_t>(i)], t, w))
      return false;
  return true;
}

bool search_plan::find(const graph *t, int *image) {
  const int last = pattern_->vs - 1;
  if (pattern_->vs > t->vs)
    return false;
  if (state.used.size() < static_cast<size_t>(t->vs))
    state.used.resize(static_cast<size_t>(t->vs), 0);
  char *const used = state.used.data();
  int depth = 0;
  at_[0] = 0;
  for (;;) {
    const plan_step &step = steps_[static_cast<size_t>(depth)];
    int &at = at_[static_cast<size_t>(depth)];
    int w = -1; // the image found
    if (step.anchor == -1) {
      for (; at < t->vs && w == -1; at++)
        if (fits(step, t, at, depth))
          w = at;
    } else {
      const int end = t->v[image_[static_cast<size_t>(step.anchor)] + 1];
      for (; at < end && w == -1; at++)
        if (t->elabel[at] == step.anchor_label &&
            fits(step, t, t->e[at], depth))
          w = t->e[at];
    }
    if (w == -1) {
      if (depth == 0)
        return false;
      depth--;
      used[image_[static_cast<size_t>(depth)]] = 0;
      continue;
    }
    image_[static_cast<size_t>(depth)] = w;
    if (depth == last)
      break;
    used[w] = 1;
    depth++;
    const plan_step &next = steps_[static_cast<size_t>(depth)];
    // The slots before a twin's image were tried for the twin.
    at_[static_cast<size_t>(depth)] =
        next.twin != -1 ? at_[static_cast<size_t>(next.twin)]
                        : t->v[image_[static_cast<size_t>(next.anchor)]];
  }
  for (int d = 0; d <= last; d++) {
    const size_t i = static_cast<size_t>(d);
    image[steps_[i].u] = image_[i];
    used[image_[i]] = 0;
  }
  return true;
}

} // namespace kestro
