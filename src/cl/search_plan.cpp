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
//
// The walk costs next to nothing where a pattern is found or missed soon, and
// without end where many images fail for one reason.  When it has taken some
// vertices back, one look at the whole graph shows whether edges of the
// pattern's kinds make a large enough component: a chain of seven carbons is in
// no ring of six, each of which would be walked around from every atom.  Below
// each root the walk has a limit, at which cl/domain_search takes the root
// over.

#include "cl/search_plan.h"

#include <algorithm>
#include <cassert>
#include <tuple>

namespace kestro {

static int degree(const graph *g, int u) { return g->v[u + 1] - g->v[u]; }

// The depth of the last leaf before u that hangs on the same vertex with the
// same labels, or -1.  A leaf that comes first of all is no twin: its images
// are not taken from a neighbour list.
int search_plan::twin_of(int u) const {
  const graph *g = pattern_;
  if (degree(g, u) != 1)
    return -1;
  const int slot = g->v[u];
  const int hub = g->e[slot];
  int twin = -1;
  for (int j = g->v[hub]; j < g->v[hub + 1]; j++) {
    const int x = g->e[j];
    const int d = depth_[static_cast<size_t>(x)];
    if (degree(g, x) == 1 && g->elabel[j] == g->elabel[slot] &&
        g->vlabel[x] == g->vlabel[u] && d < depth_[static_cast<size_t>(u)])
      twin = std::max(twin, d);
  }
  return twin > 0 ? twin : -1;
}

static void add_need(xvector<plan_need> *needs, const plan_need &more) {
  for (plan_need &need : *needs) {
    if (need.elabel == more.elabel && need.vlabel == more.vlabel) {
      need.degree = std::min(need.degree, more.degree);
      need.count++;
      return;
    }
  }
  needs->push_back(more);
}

void search_plan::set_pattern(const graph *pattern) {
  pattern_ = pattern;
  const bool is_tree = pattern->es / 2 < pattern->vs;
  core_ = is_tree ? cycle_core() : cores_.find(pattern);
  rarest_by_ = nullptr;
}

void search_plan::set(const graph *pattern, const int *order) {
  set_pattern(pattern);
  make_steps(order);
}

// One of 64 bits for edges with that label between vertices with those labels.
static uint64_t kind_bit(int vlabel, int elabel, int other) {
  const uint32_t a = static_cast<uint32_t>(vlabel);
  const uint32_t b = static_cast<uint32_t>(other);
  const uint32_t hash = ((a + b) * 0x9e3779b1U ^ a * b * 0x85ebca77U) +
                        static_cast<uint32_t>(elabel) * 0xc2b2ae3dU;
  return uint64_t{1} << (hash >> 26);
}

void search_plan::make_steps(const int *order) {
  const graph *pattern = pattern_;
  const size_t vs = static_cast<size_t>(pattern->vs);
  steps_.clear();
  closing_.clear();
  needs_.clear();
  edge_kinds_ = 0;
  depth_.resize(vs);
  for (int d = 0; d < pattern->vs; d++)
    depth_[static_cast<size_t>(order[d])] = d;
  for (int d = 0; d < pattern->vs; d++)
    add_step(order[d], d);
  for (size_t d = steps_.size(); d-- > 0;)
    if (const int twin = steps_[d].twin; twin != -1)
      steps_[static_cast<size_t>(twin)].twins_behind =
          steps_[d].twins_behind + 1;
}

void search_plan::need_degree(int u, int degree) {
  plan_step &step = steps_[static_cast<size_t>(depth_[static_cast<size_t>(u)])];
  step.degree = std::max(step.degree, degree);
}

void search_plan::add_step(int u, int d) {
  const graph *g = pattern_;
  plan_step step = {};
  step.profile = profile_of(g, u);
  step.u = u;
  step.vlabel = g->vlabel[u];
  step.degree = degree(g, u);
  step.anchor = -1;
  step.anchor_label = -1;
  step.twin = twin_of(u);
  step.closing[0] = static_cast<int>(closing_.size());
  step.needs[0] = static_cast<int>(needs_.size());
  later_.clear();
  for (int j = g->v[u]; j < g->v[u + 1]; j++) {
    const int other = depth_[static_cast<size_t>(g->e[j])];
    edge_kinds_ |= kind_bit(g->vlabel[u], g->elabel[j], g->vlabel[g->e[j]]);
    if (other > d) {
      const int w = g->e[j];
      add_need(&later_, {g->elabel[j], g->vlabel[w], degree(g, w), 1});
    } else if (step.anchor == -1) {
      step.anchor = other;
      step.anchor_label = g->elabel[j];
    } else {
      closing_.push_back({other, g->elabel[j]});
    }
  }
  int waiting = 0; // neighbours mapped later
  for (const plan_need &need : later_)
    waiting += need.count;
  // No check for a single later neighbour, or for two of different kinds: where
  // one of them finds no image, the search fails soon enough.
  if (waiting > static_cast<int>(std::min<size_t>(later_.size(), 2)))
    needs_.insert(needs_.end(), later_.begin(), later_.end());
  step.closing[1] = static_cast<int>(closing_.size());
  step.needs[1] = static_cast<int>(needs_.size());
  steps_.push_back(step);
}

// How often edges like that of slot j, seen from u, occur in the graphs.
static int frequency(const graph *g, int u, int j,
                     const graph_profiles &profiles) {
  return profiles.frequency(g->vlabel[u], g->elabel[j], g->vlabel[g->e[j]]);
}

// An end of a rarest edge, the one with more neighbours.
int search_plan::first_in_order(const graph_profiles &profiles) const {
  const graph *g = pattern_;
  int found = 0;
  std::tuple<int, int> least(INT32_MAX, 0);
  for (int u = 0; u < g->vs; u++) {
    for (int j = g->v[u]; j < g->v[u + 1]; j++) {
      const std::tuple<int, int> rank(frequency(g, u, j, profiles),
                                      -degree(g, u));
      if (rank < least) {
        least = rank;
        found = u;
      }
    }
  }
  return found;
}

// The vertex that comes next, -1 when all are in the order.
int search_plan::next_in_order() const {
  int found = -1;
  std::tuple<int, int, int> least(0, 0, 0);
  for (int u = 0; u < pattern_->vs; u++) {
    const waiting_vertex &x = waiting_[static_cast<size_t>(u)];
    if (x.mapped <= 0)
      continue;
    const std::tuple<int, int, int> rank(-x.mapped, x.rarest,
                                         -degree(pattern_, u));
    if (found == -1 || rank < least) {
      least = rank;
      found = u;
    }
  }
  return found;
}

void search_plan::set_rarest_first(const graph *pattern,
                                   const graph_profiles &profiles) {
  set_pattern(pattern);
  rarest_by_ = &profiles;
}

// Makes the steps of a plan that starts at a rarest edge.
void search_plan::settle() {
  if (!rarest_by_)
    return;
  const graph *g = pattern_;
  const graph_profiles &profiles = *rarest_by_;
  order_.clear();
  waiting_.assign(static_cast<size_t>(g->vs), {0, INT32_MAX});
  for (int u = g->vs > 0 ? first_in_order(profiles) : -1; u != -1;
       u = next_in_order()) {
    order_.push_back(u);
    waiting_[static_cast<size_t>(u)].mapped = -1;
    for (int j = g->v[u]; j < g->v[u + 1]; j++) {
      waiting_vertex &x = waiting_[static_cast<size_t>(g->e[j])];
      if (x.mapped == -1)
        continue;
      x.mapped++;
      x.rarest = std::min(x.rarest, frequency(g, u, j, profiles));
    }
  }
  make_steps(order_.data());
  rarest_by_ = nullptr;
}

// What is searched, with its arrays at hand.
struct search_plan::target {
  target(const graph *t, const vertex_profile *p, search_memory *memory)
      : v(t->v), e(t->e), elabel(t->elabel), vlabel(t->vlabel), slots(t->es),
        profiles(p), used(memory->used.data()), image(memory->image.data()) {}
  const int *v, *e, *elabel, *vlabel; // of the graph
  int slots;                          // of the graph
  const vertex_profile *profiles;     // by vertex, or null
  char *used;                         // by vertex: 1 for images
  const int *image;                   // per depth
};

// The label of the edge w-y of what is searched, -1 for none.
template <class Target> static int edge_label(const Target &to, int w, int y) {
  const int *first = to.e + to.v[w];
  const int *last = to.e + to.v[w + 1];
  if (last - first > 16)
    first = std::lower_bound(first, last, y);
  while (first < last && *first < y)
    first++;
  return first < last && *first == y ? to.elabel[first - to.e] : -1;
}

// Vertices that a search takes back before it looks at the components, which
// costs about as much.  In graphs of many thousand slots the first pause comes
// before, and there is no look.
template <class Target> static int before_look(const Target &to, int after) {
  return after * std::max(1, to.slots / 96);
}

// Vertices that a walk takes back between two pauses.  No step looks at more
// than a few times the slots of the graph.
template <class Target> static int stretch(const Target &to, int patience) {
  return std::min(patience, 1 + (1 << 22) / (1 + to.slots));
}

// Whether w has enough free neighbours of that kind.
template <class Target>
static bool has_room(const plan_need &need, const Target &to, int w) {
  int missing = need.count;
  for (int j = to.v[w]; j < to.v[w + 1] && missing > 0; j++) {
    const int x = to.e[j];
    missing -= to.elabel[j] == need.elabel && to.vlabel[x] == need.vlabel &&
               to.v[x + 1] - to.v[x] >= need.degree && !to.used[x];
  }
  return missing == 0;
}

// Whether w, which has the label, can be the image of a step, but for its label
// edge to the anchor.  A walk asks this of every neighbour that it passes, and
// keeps in registers what it needs only where there is no call.
[[gnu::always_inline]] inline bool
search_plan::fits(const plan_step &step, const target &to, int w) const {
  if (to.profiles ? !to.profiles[w].covers(step.profile)
                  : to.v[w + 1] - to.v[w] < step.degree)
    return false;
  if (to.used[w])
    return false;
  for (int i = step.closing[0]; i < step.closing[1]; i++) {
    const plan_edge &edge = closing_[static_cast<size_t>(i)];
    if (edge_label(to, w, to.image[edge.depth]) != edge.label)
      return false;
  }
  for (int i = step.needs[0]; i < step.needs[1]; i++)
    if (!has_room(needs_[static_cast<size_t>(i)], to, w))
      return false;
  return true;
}

bool search_plan::find(const graph *t, int *image) {
  settle();
  return find(t, &memory_, image);
}

bool search_plan::find(const graph *t, search_memory *memory,
                       int *image) const {
  assert(!rarest_by_);
  return pattern_->vs <= t->vs &&
         find(t, nullptr, nullptr, t->vs, memory, image);
}

bool search_plan::find(const graph_profiles &profiles, int i, int *image) {
  const graph *t = profiles.graph_at(i);
  if (pattern_->vs > t->vs || !profiles.core_of(i).may_hold(core_))
    return false;
  settle();
  const auto [roots, count] = profiles.vertices(i, steps_[0].vlabel);
  return find(t, profiles.of(i), roots, count, &memory_, image);
}

// Makes room for a search of t from the first root on.
static void prepare(search_memory *memory, int vs, const graph *t) {
  if (memory->at.size() != static_cast<size_t>(vs)) {
    memory->at.resize(static_cast<size_t>(vs));
    memory->image.resize(static_cast<size_t>(vs));
  }
  memory->at[0] = 0;
  memory->pauses.root = -1;
  if (memory->used.size() < static_cast<size_t>(t->vs))
    memory->used.resize(static_cast<size_t>(t->vs), 0);
}

// Searches t, whose profiles may be null; only the given vertices are tried
// first of all, or all vertices where roots is null.
bool search_plan::find(const graph *t, const vertex_profile *profiles,
                       const int *roots, int root_count, search_memory *memory,
                       int *image) const {
  prepare(memory, pattern_->vs, t);
  const target to(t, profiles, memory);
  if (!search(t, to, roots, root_count, 0, twin_images::ascending, memory))
    return false;
  const int *const mapped = memory->image.data();
  for (int d = 0; d < pattern_->vs; d++) {
    image[steps_[static_cast<size_t>(d)].u] = mapped[d];
    to.used[mapped[d]] = 0;
  }
  return true;
}

bool search_plan::first(const graph *t, twin_images twins,
                        search_memory *memory, int *image) const {
  assert(!rarest_by_);
  if (pattern_->vs > t->vs)
    return false;
  prepare(memory, pattern_->vs, t);
  const target to(t, nullptr, memory);
  if (!search(t, to, nullptr, t->vs, 0, twins, memory))
    return false;
  write_image(*memory, image);
  return true;
}

bool search_plan::next(const graph *t, twin_images twins, search_memory *memory,
                       int *image) const {
  const target to(t, nullptr, memory);
  memory->pauses.skip(memory->image[0]);
  if (!search(t, to, nullptr, t->vs, pattern_->vs - 1, twins, memory))
    return false;
  write_image(*memory, image);
  return true;
}

void search_plan::write_image(const search_memory &memory, int *image) const {
  for (size_t d = 0; d < memory.image.size(); d++)
    image[steps_[d].u] = memory.image[d];
}

int search_plan::twins_up_to(int depth) const {
  int twins = 1;
  while ((depth = steps_[static_cast<size_t>(depth)].twin) != -1)
    twins++;
  return twins;
}

// Goes on with the search below a root, from that depth on, until vertices have
// been unmapped *left times, which it counts down.  Returns the depth that it
// has come to: 0 when there is no mapping, the number of steps when all are
// mapped.  Making no calls, it keeps all it needs in registers.
template <twin_images Twins>
int search_plan::walk(const target &to, int depth, int *left,
                      search_memory *memory) const {
  const int last = static_cast<int>(steps_.size()) - 1;
  char *const used = to.used;
  int *const mapped = memory->image.data();
  int *const next_at = memory->at.data();
  const plan_step *const steps = steps_.data();
  int count = *left;
  for (;;) {
    const plan_step &step = steps[depth];
    int at = next_at[depth];
    int w = -1; // the image found
    // The images of twins ascend, so each leaves a slot for every later one.
    const int end = to.v[mapped[step.anchor] + 1] -
                    (Twins == twin_images::ascending ? step.twins_behind : 0);
    for (; at < end && w == -1; at++)
      if (to.elabel[at] == step.anchor_label &&
          to.vlabel[to.e[at]] == step.vlabel && fits(step, to, to.e[at]))
        w = to.e[at];
    next_at[depth] = at;
    if (w == -1) {
      count--;
      depth--;
      used[mapped[depth]] = 0;
      if (depth == 0 || count == 0)
        break;
      continue;
    }
    mapped[depth] = w;
    if (depth == last) {
      depth++;
      break;
    }
    used[w] = 1;
    depth++;
    const plan_step &next = steps[depth];
    // The slots before a twin's image were tried for the twin.
    next_at[depth] = Twins == twin_images::ascending && next.twin != -1
                         ? next_at[next.twin]
                         : to.v[mapped[next.anchor]];
  }
  *left = count;
  return depth;
}

// Calls what may throw; no vertex is in use then.
template <class Call> static void guarded(search_memory *memory, Call call) {
  try {
    call();
  } catch (...) {
    std::fill(memory->used.begin(), memory->used.end(), 0);
    throw;
  }
}

// The slot behind that of the edge w-y, which is there.
template <class Target> static int slot_behind(const Target &to, int w, int y) {
  const int *const place =
      std::lower_bound(to.e + to.v[w], to.e + to.v[w + 1], y);
  return static_cast<int>(place - to.e) + 1;
}

// The walk below a root has come to a depth and ends.  The search with domains
// decides: returns the number of steps, all being as the walk would leave it at
// the first mapping, or 0, or the depth itself when the walk must go on.
int search_plan::take_over(const target &to, int depth,
                           search_memory *memory) const {
  domain_search *const hard = memory->hard.get();
  int *const image = memory->image.data();
  auto answer = domain_search::answer::none;
  guarded(memory, [&] { answer = hard->find(image[0]); });
  if (answer == domain_search::answer::too_large)
    return depth;
  for (int d = 0; d < depth; d++)
    to.used[image[d]] = 0;
  if (answer == domain_search::answer::none)
    return 0;
  const int vs = pattern_->vs;
  std::copy_n(hard->image(), vs, image);
  for (int d = 1; d < vs; d++) {
    to.used[image[d - 1]] = 1;
    memory->at[static_cast<size_t>(d)] =
        slot_behind(to, image[steps_[static_cast<size_t>(d)].anchor], image[d]);
  }
  return vs;
}

// The walk has taken back as many vertices as it was given.  Looks at the
// request, and hands a root that has taken long to the search with domains.
// Sets what is given next and returns the depth at which the walk goes on.
int search_plan::pause(const graph *t, const target &to, int depth, int *given,
                       search_memory *memory) const {
  guarded(memory, [this] { check_interruption(stop_); });
  walk_pauses *const p = &memory->pauses;
  const int patience = memory->patience;
  const int most = patience == 0 ? 0 : std::max(patience, to.slots);
  const int root = memory->image[0];
  if (p->root == -1)
    p->is_hard = p->is_too_large = false;
  if (root != p->root) {
    p->root = root;
    p->below = 0;
  } else if (p->below != -1) {
    p->below = std::min(most, p->below + stretch(to, patience));
  }
  const bool is_excluded =
      p->is_hard && p->below != -1 && memory->hard.get()->excludes(root);
  *given = stretch(to, std::max(patience, 1));
  if (!is_excluded && (p->below < most || p->is_too_large))
    return depth;
  if (!p->is_hard)
    prepare_hard(t, memory);
  p->is_hard = true;
  const int reached = take_over(to, depth, memory);
  p->is_too_large = reached == depth;
  // Another root may be excluded: that shows at its first pause.
  if (reached == 0)
    *given = std::min(patience, 1);
  return reached;
}

// Whether one of the components that edges of the pattern's kinds make of a
// graph of vs vertices has as many vertices and edges as the pattern.
bool search_plan::has_component(const target &to, int vs,
                                search_memory *memory) const {
  xvector<char> *const met = &memory->met;
  xvector<int> *const queue = &memory->queue;
  met->assign(static_cast<size_t>(vs), 0);
  for (int root = 0; root < vs; root++) {
    if ((*met)[static_cast<size_t>(root)])
      continue;
    (*met)[static_cast<size_t>(root)] = 1;
    queue->assign(1, root);
    int slots = 0;
    for (size_t i = 0; i < queue->size(); i++) {
      const int w = (*queue)[i];
      for (int j = to.v[w]; j < to.v[w + 1]; j++) {
        const int x = to.e[j];
        if (!(edge_kinds_ & kind_bit(to.vlabel[w], to.elabel[j], to.vlabel[x])))
          continue;
        slots++;
        if ((*met)[static_cast<size_t>(x)])
          continue;
        (*met)[static_cast<size_t>(x)] = 1;
        queue->push_back(x);
      }
    }
    if (queue->size() >= steps_.size() && slots >= pattern_->es)
      return true;
  }
  return false;
}

// Whether a walk that has come to a depth has a component to go on in; without
// one no vertex is in use any more.
bool search_plan::goes_on(const target &to, int vs, int depth,
                          search_memory *memory) const {
  bool found = false;
  guarded(memory, [&] { found = has_component(to, vs, memory); });
  for (int d = 0; d < depth && !found; d++)
    to.used[to.image[d]] = 0;
  return found;
}

// Goes on at a depth, at 0 with the next root, until a mapping is complete,
// whose last image is not marked as used, or, with none marked, until all have
// been tried.
bool search_plan::search(const graph *t, const target &to, const int *roots,
                         int root_count, int depth, twin_images twins,
                         search_memory *memory) const {
  const int vs = pattern_->vs;
  int *const next_at = memory->at.data();
  // A search that goes on below a depth has had a mapping.
  const int all = stretch(to, memory->patience);
  const int some = before_look(to, memory->look_after);
  bool has_looked = depth > 0 || all <= some;
  int left = has_looked ? all : some;
  for (;;) {
    while (0 < depth && depth < vs) {
      if (left > 0) {
        depth = twins == twin_images::ascending
                    ? walk<twin_images::ascending>(to, depth, &left, memory)
                    : walk<twin_images::any>(to, depth, &left, memory);
      } else if (has_looked) {
        depth = pause(t, to, depth, &left, memory);
      } else if (goes_on(to, t->vs, depth, memory)) {
        has_looked = true;
        left = all - some;
      } else {
        return false;
      }
    }
    if (depth == vs)
      return true;
    int root = -1;
    for (int &at = next_at[0]; at < root_count && root == -1; at++)
      if (const int w = roots ? roots[at] : at;
          to.vlabel[w] == steps_[0].vlabel && fits(steps_[0], to, w))
        root = w;
    if (root == -1)
      return false;
    memory->image[0] = root;
    depth = 1;
    if (vs > 1) {
      to.used[root] = 1;
      next_at[1] = to.v[root];
    }
  }
}

void search_plan::prepare_hard(const graph *t, search_memory *memory) const {
  guarded(memory, [&] {
    memory->hard.make(stop_);
    memory->hard.get()->set(pattern_, depth_, t);
  });
}

} // namespace kestro
