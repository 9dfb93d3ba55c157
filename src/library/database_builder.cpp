// Building databases in memory.
//
// A graph is checked and laid out when it is added, with labels numbered as
// they came; their texts are kept once.  Ids are positions in the order of
// bytes, so they are known when all labels are: then every graph is renumbered.
// With labels given they are final at once.
//
// All is proportional to what is added, but for a sort of each graph's edges
// and one of the labels.

#include <kestro/database.h>

#include <algorithm>
#include <numeric>
#include <optional>
#include <tuple>
#include <utility>
#include <vector>

#include <kestro/error.h>

#include "base/error.h"
#include "graph/label_index.h"
#include "library/access.h"
#include "library/arguments.h"

namespace kestro {

namespace {

// Labels of one kind: those given, or all that have come so far.
class label_words {
public:
  label_words() = default;
  explicit label_words(const ksstack *given) : open_(false), index_(given) {}

  // The number of a label; of a new one the next, or -1 when labels are given.
  int number_of(std::string_view label) {
    int number = index_.find(label);
    if (number == -1 && open_) {
      number = int_count(words_.size());
      words_.push_back(copy_of(label));
      index_.add({words_.back().get(), label.size()}, number);
    }
    return number;
  }

  // Hands the labels whose numbers are used to add, in the order of their
  // bytes, and writes to ids what their places are by number.
  template <class Add>
  void number_finally(const xvector<char> &used, xvector<int> *ids,
                      Add add) const {
    xvector<int> order;
    for (int i = 0; i < int_count(words_.size()); i++)
      if (used[static_cast<size_t>(i)])
        order.push_back(i);
    std::sort(order.begin(), order.end(),
              [&](int a, int b) { return word(a) < word(b); });
    ids->resize(words_.size());
    for (size_t i = 0; i < order.size(); i++) {
      (*ids)[static_cast<size_t>(order[i])] = static_cast<int>(i);
      add(word(order[i]).data());
    }
  }

  size_t size() const { return words_.size(); }

private:
  static xptr<char> copy_of(std::string_view s) {
    xptr<char> copy(static_cast<char *>(xmalloc(s.size() + 1)));
    s.copy(copy.get(), s.size());
    copy.get()[s.size()] = '\0';
    return copy;
  }
  std::string_view word(int i) const {
    return words_[static_cast<size_t>(i)].get();
  }

  bool open_ = true;
  xvector<xptr<char>> words_; // by number, unless labels are given
  label_index index_;
};

// An edge with its smaller end first.
struct ordered_edge {
  int low;
  int high;
  int number; // in the order given
};

// What is wrong, and where.
class refusal {
public:
  refusal(const char *kind, int graph) : kind_(kind), graph_(graph) {}
  [[noreturn]] void operator()(size_t number, const std::string &why) const {
    throw error("graph " + std::to_string(graph_) + ", " + kind_ + ' ' +
                std::to_string(number) + ": " + why);
  }

private:
  const char *kind_;
  int graph_;
};

} // namespace

struct database_builder::state {
  explicit state(std::optional<labels> given,
                 label_rule r = label_rule::writable)
      : rule(r), known(std::move(given)) {
    if (!known)
      return;
    vertex_labels = label_words(access::label_set(*known)->vertex_labels);
    edge_labels = label_words(access::label_set(*known)->edge_labels);
  }

  label_rule rule;
  std::optional<labels> known;
  label_words vertex_labels;
  label_words edge_labels;
  graph_list_ptr graphs{graph_list_new()}; // with numbers for label ids
};

database_builder::database_builder()
    : state_(std::make_unique<state>(std::nullopt)) {}
database_builder::database_builder(label_rule rule)
    : state_(std::make_unique<state>(std::nullopt, rule)) {}
database_builder::database_builder(const labels &known, label_rule rule)
    : state_(std::make_unique<state>(known, rule)) {}
database_builder::database_builder(database_builder &&) noexcept = default;
database_builder &
database_builder::operator=(database_builder &&) noexcept = default;
database_builder::~database_builder() = default;

static int number_of(std::string_view label, label_rule rule,
                     const refusal &refuse, size_t number, label_words *words) {
  if (const std::string fault = label_fault(label, rule); !fault.empty())
    refuse(number, fault);
  const int found = words->number_of(label);
  if (found == -1)
    refuse(number, "'" + std::string(label) + "' is none of the labels given");
  return found;
}

static void check_ends(const labelled_edge &edge, int vertices,
                       const refusal &refuse, size_t number) {
  for (const int end : {edge.from, edge.to})
    if (end < 0 || end >= vertices)
      refuse(number, "there is no vertex " + std::to_string(end) + ", only " +
                         std::to_string(vertices) + " of them");
  if (edge.from == edge.to)
    refuse(number,
           "it leads from vertex " + std::to_string(edge.from) + " to itself");
}

// Refuses the first edge whose ends an edge before it has.
static void check_repeats(const xvector<ordered_edge> &sorted,
                          const refusal &refuse) {
  const ordered_edge *repeat = nullptr;
  for (size_t i = 1; i < sorted.size(); i++) {
    const ordered_edge &x = sorted[i];
    if (sorted[i - 1].low == x.low && sorted[i - 1].high == x.high &&
        (!repeat || x.number < repeat->number))
      repeat = &x;
  }
  if (repeat)
    refuse(static_cast<size_t>(repeat->number),
           "vertices " + std::to_string(repeat->low) + " and " +
               std::to_string(repeat->high) + " have an edge already");
}

static xvector<ordered_edge> sorted_edges(std::span<const labelled_edge> edges,
                                          const refusal &refuse) {
  xvector<ordered_edge> sorted;
  sorted.reserve(edges.size());
  for (const labelled_edge &edge : edges) {
    const auto [low, high] = std::minmax(edge.from, edge.to);
    sorted.push_back({low, high, static_cast<int>(sorted.size())});
  }
  std::sort(sorted.begin(), sorted.end(),
            [](const ordered_edge &a, const ordered_edge &b) {
              return std::tie(a.low, a.high, a.number) <
                     std::tie(b.low, b.high, b.number);
            });
  check_repeats(sorted, refuse);
  return sorted;
}

// Fills the slots of g; labels are the numbers by edge.  In this order of edges
// a vertex gets its lower neighbours first, then the higher ones, ascending.
static void fill_slots(const xvector<ordered_edge> &sorted,
                       const xvector<int> &labels, graph *g) {
  std::fill(g->v, g->v + g->vs + 1, 0);
  for (const ordered_edge &x : sorted) {
    g->v[x.low]++;
    g->v[x.high]++;
  }
  std::exclusive_scan(g->v, g->v + g->vs + 1, g->v, 0);
  xvector<int> next(g->v, g->v + g->vs);
  const auto add = [&](int from, int to, int label) {
    const int slot = next[static_cast<size_t>(from)]++;
    g->e[slot] = to;
    g->elabel[slot] = label;
  };
  for (const ordered_edge &x : sorted) {
    const int label = labels[static_cast<size_t>(x.number)];
    add(x.low, x.high, label);
    add(x.high, x.low, label);
  }
  KESTRO_STRUCTURE(graph_check(g));
}

int database_builder::add(std::span<const std::string_view> vertex_labels,
                          std::span<const labelled_edge> edges) {
  const int number = size();
  const refusal refuse_vertex("vertex", number);
  const refusal refuse_edge("edge", number);
  const int vs = int_count(vertex_labels.size());
  graph_ptr g(graph_create(int_count(2 * edges.size()), vs));
  for (size_t i = 0; i < vertex_labels.size(); i++)
    g->vlabel[i] = number_of(vertex_labels[i], state_->rule, refuse_vertex, i,
                             &state_->vertex_labels);
  xvector<int> labels(edges.size());
  for (size_t i = 0; i < edges.size(); i++) {
    check_ends(edges[i], vs, refuse_edge, i);
    labels[i] = number_of(edges[i].label, state_->rule, refuse_edge, i,
                          &state_->edge_labels);
  }
  fill_slots(sorted_edges(edges, refuse_edge), labels, g.get());
  std::iota(g->vid, g->vid + vs, 0);
  graph_list_push(std::move(g), state_->graphs.get());
  return number;
}

int database_builder::add(std::initializer_list<std::string_view> vertex_labels,
                          std::initializer_list<labelled_edge> edges) {
  return add(std::span(vertex_labels.begin(), vertex_labels.size()),
             std::span(edges.begin(), edges.size()));
}

int database_builder::add(std::initializer_list<std::string_view> vertex_labels,
                          std::span<const labelled_edge> edges) {
  return add(std::span(vertex_labels.begin(), vertex_labels.size()), edges);
}

int database_builder::add(std::span<const std::string> vertex_labels,
                          std::span<const labelled_edge> edges) {
  const std::vector<std::string_view> labels(vertex_labels.begin(),
                                             vertex_labels.end());
  return add(labels, edges);
}

int database_builder::size() const { return state_->graphs->count; }

namespace {

// The labels that occur in graphs, by number: those of a refused graph do not.
struct used_labels {
  used_labels(const graph_list *graphs, size_t vertex_labels,
              size_t edge_labels)
      : vertex(vertex_labels, 0), edge(edge_labels, 0) {
    for (int i = 0; i < graphs->count; i++) {
      const graph *g = graph_list_at(graphs, i);
      for (int u = 0; u < g->vs; u++)
        vertex[static_cast<size_t>(g->vlabel[u])] = 1;
      for (int j = 0; j < g->es; j++)
        edge[static_cast<size_t>(g->elabel[j])] = 1;
    }
  }
  xvector<char> vertex;
  xvector<char> edge;
};

} // namespace

static void renumber(const xvector<int> &ids, int *labels, int count) {
  for (int i = 0; i < count; i++)
    labels[i] = ids[static_cast<size_t>(labels[i])];
}

// Gives labels and graphs their final ids.
static labels final_labels(const label_words &vertex_labels,
                           const label_words &edge_labels,
                           const graph_list *graphs) {
  const used_labels used(graphs, vertex_labels.size(), edge_labels.size());
  label_set_ptr ls(label_set_create());
  xvector<int> vertex_ids;
  xvector<int> edge_ids;
  vertex_labels.number_finally(used.vertex, &vertex_ids, [&](const char *s) {
    label_set_add_vertex_label(ls.get(), s);
  });
  edge_labels.number_finally(used.edge, &edge_ids, [&](const char *s) {
    label_set_add_edge_label(ls.get(), s);
  });
  for (int i = 0; i < graphs->count; i++) {
    graph *g = graph_list_at(graphs, i);
    renumber(vertex_ids, g->vlabel, g->vs);
    renumber(edge_ids, g->elabel, g->es);
  }
  return access::make_labels(std::move(ls));
}

database database_builder::build() && {
  auto empty = std::make_unique<state>(state_->known, state_->rule);
  const std::unique_ptr<state> s = std::exchange(state_, std::move(empty));
  const labels all = s->known ? *s->known
                              : final_labels(s->vertex_labels, s->edge_labels,
                                             s->graphs.get());
  return access::make_database(std::move(s->graphs), all);
}

} // namespace kestro
