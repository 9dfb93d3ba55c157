// Matching one pattern.
//
// The search runs along the breadth-first order of the pattern, so embeddings
// come in lexicographic order along it.  It compares label ids; where a graph
// numbers its labels otherwise, a copy of the pattern with the graph's ids is
// prepared for the call.  Whether it does is asked label by label, of which a
// pattern has few, so graphs that share the pattern's labels cost a comparison
// of texts for each.
//
// What a search writes to belongs to the call, so any number of threads match.

#include <kestro/matcher.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <utility>

#include <kestro/error.h>

#include "base/comparators.h"
#include "cl/search_plan.h"
#include "graph/connectivity.h"
#include "library/access.h"

namespace kestro {

namespace {

// The labels of one kind that occur in a pattern.
class pattern_labels {
public:
  // Those with the ids given, whose texts are by id.
  pattern_labels(const int *ids, int count, const ksstack *texts)
      : ids_(ids, ids + count) {
    std::sort(ids_.begin(), ids_.end());
    ids_.erase(std::unique(ids_.begin(), ids_.end()), ids_.end());
    for (const int id : ids_)
      texts_.emplace_back(ksstack_array<const char *>(texts)[id]);
  }

  // Their ids among other texts; empty when one is not there.
  std::vector<int> ids_in(const ksstack *texts) const {
    std::vector<int> found;
    for (size_t i = 0; i < ids_.size(); i++) {
      const int id = id_in(texts, texts_[i].c_str(), ids_[i]);
      if (id == -1)
        return {};
      found.push_back(id);
    }
    return found;
  }

  const std::vector<int> &ids() const { return ids_; }
  bool empty() const { return ids_.empty(); }

  // Replaces ids by those at their places in others.
  void replace(const std::vector<int> &others, int *labels, int count) const {
    for (int i = 0; i < count; i++) {
      const auto at = std::lower_bound(ids_.begin(), ids_.end(), labels[i]);
      labels[i] = others[static_cast<size_t>(at - ids_.begin())];
    }
  }

private:
  static int id_in(const ksstack *texts, const char *text, int guess) {
    const char *const *const all = ksstack_array<const char *>(texts);
    if (guess < texts->count && strcmp(all[guess], text) == 0)
      return guess;
    return ksstack_bsearch_index(&text, texts, compar_str);
  }

  std::vector<int> ids_; // ascending
  std::vector<std::string> texts_;
};

// A pattern with all that is known of it before it is looked for.
struct prepared_pattern {
  prepared_pattern(const graph *g, const label_set *ls)
      : pattern(graph_copy(g)),
        vertex_labels(g->vlabel, g->vs, ls->vertex_labels),
        edge_labels(g->elabel, g->es, ls->edge_labels),
        order(static_cast<size_t>(g->vs)) {
    if (graph_bfs_order(g, order.data()) < g->vs)
      throw error("the pattern is not connected");
    plan.set(pattern.get(), order.data());
  }

  graph_ptr pattern;
  pattern_labels vertex_labels;
  pattern_labels edge_labels;
  std::vector<int> order;
  search_plan plan;
  int hub = -1;       // a vertex that needs more neighbours than it has, or -1
  int hub_degree = 0; // how many

  // Lets searches skip vertices with fewer as images of hub.
  void need(int u, int degree) {
    hub = u;
    hub_degree = degree;
    plan.need_degree(u, degree);
  }
};

// The search for a pattern in one graph.
class graph_search {
public:
  graph_search(const prepared_pattern &p, graph_view g)
      : target_(access::graph_of(g)), image_(p.order.size()) {
    const label_set *ls = access::label_set(g);
    const std::vector<int> vertex_ids =
        p.vertex_labels.ids_in(ls->vertex_labels);
    const std::vector<int> edge_ids = p.edge_labels.ids_in(ls->edge_labels);
    if (vertex_ids.empty() || (edge_ids.empty() && !p.edge_labels.empty()))
      return; // a label that does not occur
    plan_ = &p.plan;
    if (vertex_ids != p.vertex_labels.ids() || edge_ids != p.edge_labels.ids())
      translate(p, vertex_ids, edge_ids);
  }
  graph_search(const graph_search &) = delete;
  graph_search &operator=(const graph_search &) = delete;

  bool first(twin_images twins) {
    return plan_ && plan_->first(target_, twins, &memory_, image_.data());
  }
  bool next(twin_images twins) {
    return plan_->next(target_, twins, &memory_, image_.data());
  }
  const embedding &image() const { return image_; }

private:
  void translate(const prepared_pattern &p, const std::vector<int> &vertex_ids,
                 const std::vector<int> &edge_ids) {
    translated_.reset(graph_copy(p.pattern.get()));
    p.vertex_labels.replace(vertex_ids, translated_->vlabel, translated_->vs);
    p.edge_labels.replace(edge_ids, translated_->elabel, translated_->es);
    translated_plan_.set(translated_.get(), p.order.data());
    if (p.hub != -1)
      translated_plan_.need_degree(p.hub, p.hub_degree);
    plan_ = &translated_plan_;
  }

  const graph *target_;
  const search_plan *plan_ = nullptr; // null when a label does not occur
  graph_ptr translated_;              // the pattern with the graph's labels
  search_plan translated_plan_;
  search_memory memory_;
  embedding image_;
};

} // namespace

// The like leaves of one vertex, all but the first of which can be left out.
struct like_leaves {
  int hub;
  xvector<int> leaves;
};

// The largest such set.
static like_leaves most_like_leaves(const graph *g) {
  like_leaves most;
  for (int hub = 0; hub < g->vs; hub++) {
    for (int j = g->v[hub]; j < g->v[hub + 1]; j++) {
      like_leaves found = {hub, {}};
      for (int k = j; k < g->v[hub + 1]; k++)
        if (const int w = g->e[k]; g->v[w + 1] - g->v[w] == 1 &&
                                   g->vlabel[w] == g->vlabel[g->e[j]] &&
                                   g->elabel[k] == g->elabel[j])
          found.leaves.push_back(w);
      if (found.leaves.size() > most.leaves.size())
        most = std::move(found);
    }
  }
  return most;
}

// g without some vertices, which have one neighbour each.
static graph_ptr without_leaves(const graph *g, const xvector<int> &leaves) {
  const int n = int_count(leaves.size());
  graph_ptr less(graph_create(g->es - 2 * n, g->vs - n));
  xvector<int> number(static_cast<size_t>(g->vs), 0);
  for (const int w : leaves)
    number[static_cast<size_t>(w)] = -1;
  int vs = 0;
  for (int &u : number)
    if (u != -1)
      u = vs++;
  int es = 0;
  for (int u = 0; u < g->vs; u++) {
    const int own = number[static_cast<size_t>(u)];
    if (own == -1)
      continue;
    less->v[own] = es;
    less->vid[own] = own;
    less->vlabel[own] = g->vlabel[u];
    for (int j = g->v[u]; j < g->v[u + 1]; j++) {
      if (const int to = number[static_cast<size_t>(g->e[j])]; to != -1) {
        less->e[es] = to;
        less->elabel[es++] = g->elabel[j];
      }
    }
  }
  less->v[vs] = es;
  return less;
}

// The pattern, and what it is counted by: the pattern with one of its most like
// leaves, whose other images are chosen among the free neighbours.
struct matcher::state : prepared_pattern {
  state(const graph *g, const label_set *ls)
      : state(g, ls, most_like_leaves(g)) {}

  prepared_pattern counted;
  int left_out; // leaves of counted.hub
  int leaf;     // the one of them that counted has

private:
  state(const graph *g, const label_set *ls, like_leaves like)
      : prepared_pattern(g, ls), counted(thinned(g, &like).get(), ls),
        left_out(g->vs - counted.pattern->vs),
        leaf(like.leaves.empty() ? -1 : like.leaves[0]) {
    if (const graph *less = counted.pattern.get(); left_out > 0)
      counted.need(like.hub, graph_vertex_degree(less, like.hub) + left_out);
  }

  // Leaves g's vertices out and numbers those that like tells of anew.
  static graph_ptr thinned(const graph *g, like_leaves *like) {
    if (like->leaves.size() < 2)
      return graph_ptr(graph_copy(g));
    // The smallest leaf stays, so that none comes before it.
    const xvector<int> out(like->leaves.begin() + 1, like->leaves.end());
    int before = 0;
    for (const int w : out)
      before += w < like->hub;
    like->hub -= before;
    return without_leaves(g, out);
  }
};

matcher::matcher(graph_view pattern) {
  const graph *g = access::graph_of(pattern);
  if (g->vs == 0)
    throw error("the pattern has no vertex");
  state_ = std::make_shared<const state>(g, access::label_set(pattern));
}

bool matcher::is_in(graph_view g) const {
  return graph_search(*state_, g).first(twin_images::ascending);
}

// The first of all is the one with ascending twins.
std::optional<embedding> matcher::first(graph_view g) const {
  graph_search search(*state_, g);
  if (!search.first(twin_images::ascending))
    return std::nullopt;
  return search.image();
}

void matcher::each(graph_view g,
                   const std::function<bool(const embedding &)> &take) const {
  graph_search search(*state_, g);
  bool more = search.first(twin_images::any);
  while (more && take(search.image()))
    more = search.next(twin_images::any);
}

std::vector<embedding> matcher::all(graph_view g, long long most) const {
  std::vector<embedding> found;
  if (most != 0)
    each(g, [&](const embedding &e) {
      found.push_back(e);
      return static_cast<long long>(found.size()) != most;
    });
  return found;
}

namespace {

// Counts that stop at what a long long holds.
class embedding_count {
public:
  explicit embedding_count(long long n) : count_(n) {}
  void add(const embedding_count &other) {
    too_many_ |= other.too_many_ ||
                 __builtin_add_overflow(count_, other.count_, &count_);
  }
  void multiply(long long n) {
    too_many_ |= __builtin_mul_overflow(count_, n, &count_);
  }
  long long value() const {
    if (too_many_)
      throw error("there are more embeddings than can be counted");
    return count_;
  }

private:
  long long count_;
  bool too_many_ = false;
};

// The neighbours of hub in g that are like leaf, another one, and not in image.
int free_leaves(const graph *g, int hub, int leaf, const embedding &image) {
  const int elabel = graph_edge_label(g, hub, leaf);
  int found = 0;
  for (int j = g->v[hub]; j < g->v[hub + 1]; j++)
    found += g->elabel[j] == elabel && g->vlabel[g->e[j]] == g->vlabel[leaf] &&
             std::find(image.begin(), image.end(), g->e[j]) == image.end();
  return found;
}

} // namespace

// Twins are counted in ascending order only; in each such embedding they can be
// exchanged in the same number of ways.  The like leaves left out are not
// looked for at all: each embedding of the others leaves them the same choice
// of free vertices, one vertex less for each leaf.
long long matcher::count(graph_view g) const {
  const prepared_pattern &counted = state_->counted;
  graph_search search(counted, g);
  const graph *t = access::graph_of(g);
  embedding_count sum(0);
  for (bool more = search.first(twin_images::ascending); more;
       more = search.next(twin_images::ascending)) {
    embedding_count ways(1);
    if (const int left_out = state_->left_out; left_out > 0) {
      const embedding &image = search.image();
      const int choice =
          free_leaves(t, image[static_cast<size_t>(counted.hub)],
                      image[static_cast<size_t>(state_->leaf)], image);
      if (choice < left_out)
        continue;
      for (int i = 0; i < left_out; i++)
        ways.multiply(choice - i);
    }
    sum.add(ways);
  }
  for (int d = 0; d < counted.pattern->vs; d++)
    sum.multiply(counted.plan.twins_up_to(d));
  return sum.value();
}

const std::vector<int> &matcher::order() const { return state_->order; }

} // namespace kestro
