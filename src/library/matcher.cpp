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

struct matcher::state : prepared_pattern {
  using prepared_pattern::prepared_pattern;
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

std::vector<embedding> matcher::all(graph_view g, long long most) const {
  std::vector<embedding> found;
  if (most == 0)
    return found;
  graph_search search(*state_, g);
  for (bool more = search.first(twin_images::any); more;
       more = search.next(twin_images::any)) {
    found.push_back(search.image());
    if (static_cast<long long>(found.size()) == most)
      break;
  }
  return found;
}

// Twins are counted in ascending order only; in each such embedding they can be
// exchanged in the same number of ways.
long long matcher::count(graph_view g) const {
  graph_search search(*state_, g);
  long long count = 0;
  for (bool more = search.first(twin_images::ascending); more;
       more = search.next(twin_images::ascending))
    count++;
  bool too_many = false;
  for (int d = 0; d < state_->pattern->vs; d++)
    too_many |= __builtin_mul_overflow(
        count, static_cast<long long>(state_->plan.twins_up_to(d)), &count);
  if (too_many)
    throw error("there are more embeddings than can be counted");
  return count;
}

const std::vector<int> &matcher::order() const { return state_->order; }

} // namespace kestro
