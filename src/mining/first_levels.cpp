// Levels one and two.
//
// Every transaction is walked edge by edge, then path by path; the tables
// keep for each pattern the transaction counted last, so it counts once per
// transaction, whatever the number of its embeddings.  Paths are made of the
// frequent edges only, and of the like edges at a vertex only two are paired,
// so a vertex with many neighbours costs no square.  The frequent keys become
// records in fixed layouts, which are the canonical forms of such graphs, so
// that later look-ups by sg_compare find them.  A second walk, with the
// patterns' ids in the table, fills the TID lists and the first rows of
// embeddings.

#include "mining/first_levels.h"

#include <algorithm>
#include <utility>

#include "base/error.h"
#include "graph/graph_list.h"
#include "mining/embeddings.h"
#include "mining/label_table.h"
#include "mining/parents.h"
#include "mining/path_arms.h"

namespace kestro {

namespace {

// The vertices of a path in a transaction.
struct path_ends {
  int centre, a, b;
};

} // namespace

// Steps cost the slots that they pass, or as many as take the time.
static constexpr int poll_interval = 1 << 16;
static constexpr int record_cost = 256; // of one pattern

// Calls visit with the key of every slot whose own end has the smaller label.
template <class Visit>
static void walk_edges(const graph *t, interruption_poll *poll, Visit visit) {
  poll->step(t->es);
  for (int u = 0; u < t->vs; u++)
    for (int j = t->v[u]; j < t->v[u + 1]; j++)
      if (t->vlabel[u] <= t->vlabel[t->e[j]])
        visit(edge_key{t->vlabel[u], t->vlabel[t->e[j]], t->elabel[j]});
}

namespace {

// Walks the paths of two frequent edges in transactions.  A vertex of many
// neighbours lists the kinds of its arms, and shows a path for each pair of
// them; one of few shows the path of each pair of neighbours.
class path_walk {
public:
  path_walk(const path_arms &arms, interruption_poll *poll)
      : arms_(arms), poll_(poll),
        places_(static_cast<size_t>(arms.most_arms())) {}

  // Calls visit with the keys and the vertices of paths, for each vertex and
  // each key of a path with that centre first with those of the first slots.
  template <class Visit> void walk(const graph *t, const Visit &visit) {
    poll_->step(t->es);
    for (int w = 0; w < t->vs; w++) {
      const int degree = t->v[w + 1] - t->v[w];
      if (degree < 2)
        continue;
      const int centre = arms_.centre_of(t->vlabel[w]);
      if (centre < 0)
        continue;
      if (degree <= few)
        pair_neighbours(t, w, centre, visit);
      else
        pair_kinds(t, w, centre, visit);
    }
  }

private:
  static constexpr int few = 8;

  template <class Visit>
  void pair_neighbours(const graph *t, int w, int centre,
                       const Visit &visit) const {
    int arms[few];
    int ends[few];
    int n = 0;
    for (int j = t->v[w], last = t->v[w + 1]; j < last; j++) {
      ends[n] = t->e[j];
      arms[n] = arms_.arm_of(centre, t->elabel[j], t->vlabel[ends[n]]);
      n += arms[n] >= 0;
    }
    for (int j = 1; j < n; j++)
      for (int i = 0; i < j; i++)
        if (arms[i] <= arms[j])
          visit(path_key{centre, arms[i], arms[j]},
                path_ends{w, ends[i], ends[j]});
        else
          visit(path_key{centre, arms[j], arms[i]},
                path_ends{w, ends[j], ends[i]});
  }

  template <class Visit>
  void pair_kinds(const graph *t, int w, int centre, const Visit &visit) {
    gather(t, w, centre);
    for (size_t i = 0; i < met_.size(); i++) {
      poll_->step(static_cast<int64_t>(met_.size() - i));
      const arm_place &a = place(met_[i]);
      if (a.second >= 0)
        visit(path_key{centre, met_[i], met_[i]},
              path_ends{w, a.first, a.second});
      for (size_t j = i + 1; j < met_.size(); j++)
        visit(path_key{centre, met_[i], met_[j]},
              path_ends{w, a.first, place(met_[j]).first});
    }
    for (const int arm : met_)
      place(arm) = {};
    met_.clear();
  }

  // The first ends of an arm at the vertex looked at.
  struct arm_place {
    int first = -1, second = -1;
  };

  arm_place &place(int arm) { return places_[static_cast<size_t>(arm)]; }

  // Lists the arms at w, ascending, and the first two places of each.
  void gather(const graph *t, int w, int centre) {
    for (int j = t->v[w]; j < t->v[w + 1]; j++) {
      const int end = t->e[j];
      const int arm = arms_.arm_of(centre, t->elabel[j], t->vlabel[end]);
      if (arm < 0)
        continue;
      arm_place &p = place(arm);
      if (p.first < 0) {
        p.first = end;
        met_.push_back(arm);
      } else if (p.second < 0) {
        p.second = end;
      }
    }
    std::sort(met_.begin(), met_.end());
  }

  const path_arms &arms_;
  interruption_poll *poll_;
  xvector<arm_place> places_; // by arm
  xvector<int> met_;          // the arms at the vertex looked at
};

} // namespace

// The layout of a one-edge pattern, la <= lb.
static void set_edge_graph(int la, int lb, int e, subgraph *sg) {
  graph *g = sg->g;
  for (int i = 0; i < 2; i++) {
    g->v[i] = i;
    g->e[i] = 1 - i;
    g->vid[i] = i;
    g->elabel[i] = e;
  }
  g->v[2] = 2;
  g->vlabel[0] = la;
  g->vlabel[1] = lb;
  g->key = graph_key(g);
  sg->invariant = true;
}

subgraph *sg_create_edge(int la, int lb, int e) {
  subgraph *sg = sg_create(2, 2);
  set_edge_graph(std::min(la, lb), std::max(la, lb), e, sg);
  return sg;
}

subgraph *sg_create_double_edge(int ea, int eb, int va, int vb, int vc) {
  subgraph *sg = sg_create(4, 3);
  sg_set_double_edge_graph(ea, eb, va, vb, vc, sg);
  return sg;
}

void sg_set_double_edge_graph(int ea, int eb, int va, int vb, int vc,
                              subgraph *sg) {
  if (va > vb) {
    std::swap(va, vb);
    std::swap(ea, eb);
  }
  if (va == vb && ea > eb)
    std::swap(ea, eb);
  static constexpr int offsets[] = {0, 2, 3, 4};
  static constexpr int targets[] = {1, 2, 0, 0};
  const int vlabels[] = {vc, va, vb};
  const int elabels[] = {ea, eb, ea, eb};
  graph *g = sg->g;
  std::copy(offsets, offsets + 4, g->v);
  std::copy(targets, targets + 4, g->e);
  std::copy(vlabels, vlabels + 3, g->vlabel);
  std::copy(elabels, elabels + 4, g->elabel);
  for (int i = 0; i < 3; i++)
    g->vid[i] = i;
  g->key = graph_key(g);
  sg->invariant = true;
}

// Adds every transaction to the TID lists of its frequent edges.  From here on
// a key's number is its pattern's id + 1, 0 for none.
// The second walk, hence the 2.
static void check_in_edges2(sg_set *level1, const graph_list *transactions,
                            edge_table *table, interruption_poll *poll) {
  for (int i = 0; i < sg_set_size(level1); i++) {
    const graph *g = sg_set_get(level1, i)->g;
    table->set_number({g->vlabel[0], g->vlabel[1], g->elabel[0]}, i + 1);
  }
  for (int tid = 0; tid < transactions->count; tid++) {
    walk_edges(graph_list_at(transactions, tid), poll, [&](const edge_key &k) {
      if (const int id = table->number_once(k, tid))
        sg_append_tid(sg_set_get(level1, id - 1), tid);
    });
  }
}

sg_set *sg_frequent_edges(const graph_list *transactions, int minsup, int nel,
                          int nvl, const interruption *stop) {
  interruption_poll poll(stop, poll_interval);
  edge_table table({nel, nvl}, counters_limit(transactions));
  for (int tid = 0; tid < transactions->count; tid++)
    walk_edges(graph_list_at(transactions, tid), &poll,
               [&](const edge_key &k) { table.count_once(k, tid); });

  sg_set_ptr level1(sg_set_create());
  for (const edge_key &k : table.keys()) {
    poll.step(record_cost);
    const int count = table.number_of(k);
    table.set_number(k, 0);
    if (count < minsup)
      continue;
    sg_ptr sg(sg_create_edge(k.from, k.to, k.e));
    sg->count = count;
    sg_set_push(level1.get(), std::move(sg));
  }
  sg_set_sort(level1.get(), stop);
  KESTRO_STRUCTURE(sg_set_check(level1.get()));
  check_in_edges2(level1.get(), transactions, &table, &poll);
  return level1.release();
}

// Fills entry, which has room for three vertices, for the path sg without its
// edge to the other end than end.
static void fill_parent_entry(const subgraph *sg, int end, const sg_set *level1,
                              sg_parent *entry) {
  const int *labels = sg->g->vlabel;
  const int centre = labels[0];
  sg_ptr parent(sg_create_edge(centre, labels[end], sg->g->elabel[end - 1]));
  const int index = sg_set_find(level1, parent.get());
  assert(index != -1);
  entry->pid = index;
  entry->u = 0;
  entry->v = static_cast<int16_t>(3 - end);
  const bool is_first = labels[end] > centre; // the centre, in the parent
  entry->vs = 3;
  entry->set_image(0, is_first ? 0 : 1);
  entry->set_image(end, is_first ? 1 : 0);
  entry->set_image(3 - end, -1);
}

void setup_double_edge_subgraph_parent_info(subgraph *sg,
                                            const sg_set *level1) {
  assert(sg->g->es == 4 && sg->g->vs == 3);
  const graph *g = sg->g;
  const bool twins =
      g->vlabel[1] == g->vlabel[2] && g->elabel[0] == g->elabel[1];
  alignas(sg_parent) char memory[sizeof(sg_parent) + 4 * sizeof(int16_t)];
  auto *entry = reinterpret_cast<sg_parent *>(memory);
  for (const int end : {2, 1}) { // in the order of the edges that go
    fill_parent_entry(sg, end, level1, entry);
    if (end == 2 && twins)
      sg_add_parent(sg, entry);
    else
      sg_update_parent_info(sg, entry, level1);
  }
}

// Appends the record of one frequent path.
static void register_double_edge_subgraph(const path_key &k, int count,
                                          const path_arms &arms,
                                          const sg_set *level1, sg_set *out) {
  const path_arm a = arms.arm(k.centre, k.a);
  const path_arm b = arms.arm(k.centre, k.b);
  assert(a.vlabel < b.vlabel || (a.vlabel == b.vlabel && a.elabel <= b.elabel));
  sg_ptr sg(sg_create_double_edge(a.elabel, b.elabel, a.vlabel, b.vlabel,
                                  arms.vlabel_of(k.centre)));
  sg->count = count;
  setup_double_edge_subgraph_parent_info(sg.get(), level1);
  sg_set_push(out, std::move(sg));
}

// The key of a record.
static path_key key_of(const graph *g, const path_arms &arms) {
  const int centre = arms.centre_of(g->vlabel[0]);
  return {centre, arms.arm_of(centre, g->elabel[0], g->vlabel[1]),
          arms.arm_of(centre, g->elabel[1], g->vlabel[2])};
}

// Adds every transaction to the TID lists of its frequent paths, with the first
// place of each as its row.
// The second walk, hence the 2.
static void check_in_double_edges2(sg_set *level2,
                                   const graph_list *transactions,
                                   const path_arms &arms, path_table *table,
                                   interruption_poll *poll) {
  embedding_budget budget(transactions);
  for (int i = 0; i < sg_set_size(level2); i++) {
    poll->step(record_cost);
    subgraph *sg = sg_set_get(level2, i);
    table->set_number(key_of(sg->g, arms), i + 1);
    budget.add_pattern();
    sg->rows = budget.take_rows(sg, sg->count);
  }
  path_walk paths(arms, poll);
  for (int tid = 0; tid < transactions->count; tid++) {
    paths.walk(graph_list_at(transactions, tid),
               [&](const path_key &k, const path_ends &ends) {
                 const int id = table->number_once(k, tid);
                 if (!id)
                   return;
                 subgraph *sg = sg_set_get(level2, id - 1);
                 sg_append_tid(sg, tid);
                 if (!sg->rows)
                   return;
                 const int row[3] = {ends.centre, ends.a, ends.b};
                 sg_push_row(sg, row);
               });
  }
}

sg_set *sg_frequent_double_edges(const sg_set *level1,
                                 const graph_list *transactions, int minsup,
                                 int nel, int nvl, const interruption *stop) {
  interruption_poll poll(stop, poll_interval);
  const size_t limit = counters_limit(transactions);
  const path_arms arms(level1, nel, nvl, limit);
  path_table table(arms.paths(), limit);
  path_walk paths(arms, &poll);
  for (int tid = 0; tid < transactions->count; tid++)
    paths.walk(graph_list_at(transactions, tid),
               [&](const path_key &k, const path_ends &) {
                 table.count_once(k, tid);
               });

  sg_set_ptr level2(sg_set_create());
  for (const path_key &k : table.keys()) {
    poll.step(record_cost);
    const int count = table.number_of(k);
    table.set_number(k, 0);
    if (count >= minsup)
      register_double_edge_subgraph(k, count, arms, level1, level2.get());
  }
  sg_set_sort(level2.get(), stop);
  KESTRO_STRUCTURE(sg_set_check(level2.get()));
  check_in_double_edges2(level2.get(), transactions, arms, &table, &poll);
  return level2.release();
}

} // namespace kestro
