// Levels one and two.
//
// Every transaction is walked edge by edge, then path by path; the tables
// keep for each pattern the transaction counted last, so it counts once per
// transaction, whatever the number of its embeddings.  The frequent keys become
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
#include "mining/links.h"
#include "mining/parents.h"

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

// Calls visit once for every path of two edges, with its key and its vertices:
// centre, va's end, vb's end.
template <bool looks_within, class Visit>
static void walk_paths_in(const graph *t, interruption_poll *poll,
                          Visit visit) {
  for (int w = 0; w < t->vs; w++) {
    for (int j = t->v[w]; j < t->v[w + 1]; j++) {
      if constexpr (looks_within)
        poll->step(t->v[w + 1] - j);
      for (int k = j + 1; k < t->v[w + 1]; k++) {
        path_ends ends = {w, t->e[j], t->e[k]};
        path_key key = {t->vlabel[ends.a], t->vlabel[ends.b], t->vlabel[w],
                        t->elabel[j], t->elabel[k]};
        if (key.va > key.vb || (key.va == key.vb && key.ea > key.eb)) {
          std::swap(key.va, key.vb);
          std::swap(key.ea, key.eb);
          std::swap(ends.a, ends.b);
        }
        visit(key, ends);
      }
    }
  }
}

template <class Visit>
static void walk_paths(const graph *t, interruption_poll *poll, Visit visit) {
  poll->step(t->es);
  if (t->es <= poll_interval / 64)
    walk_paths_in<false>(t, poll, visit);
  else
    walk_paths_in<true>(t, poll, visit);
}

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

// Appends a transaction to a TID list, once.
static bool add_last_tid(subgraph *sg, int tid) {
  const int *last = static_cast<const int *>(ksstack_top(sg->tid));
  if (last && *last == tid)
    return false;
  sg_append_tid(sg, tid);
  return true;
}

// Adds every transaction to the TID lists of its frequent edges.  From here on
// a key's count is its pattern's id + 1, 0 for none.
// The second walk, hence the 2.
static void check_in_edges2(sg_set *level1, const graph_list *transactions,
                            edge_table *table, interruption_poll *poll) {
  for (int i = 0; i < sg_set_size(level1); i++) {
    const graph *g = sg_set_get(level1, i)->g;
    table->count_of({g->vlabel[0], g->vlabel[1], g->elabel[0]}) = i + 1;
  }
  for (int tid = 0; tid < transactions->count; tid++) {
    walk_edges(graph_list_at(transactions, tid), poll, [&](const edge_key &k) {
      if (const int id = table->count_of(k))
        add_last_tid(sg_set_get(level1, id - 1), tid);
    });
  }
}

sg_set *sg_frequent_edges(const graph_list *transactions, int minsup, int nel,
                          int nvl, const interruption *stop) {
  interruption_poll poll(stop, poll_interval);
  edge_table table(nel, nvl);
  for (int tid = 0; tid < transactions->count; tid++)
    walk_edges(graph_list_at(transactions, tid), &poll,
               [&](const edge_key &k) { table.count_once(k, tid); });

  sg_set_ptr level1(sg_set_create());
  for (const edge_key &k : table.keys()) {
    poll.step(record_cost);
    const int count = std::exchange(table.count_of(k), 0);
    if (count < minsup)
      continue;
    sg_ptr sg(sg_create_edge(k.la, k.lb, k.e));
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
  entry->v = 3 - end;
  entry->vs = 3;
  const int centre_at = labels[end] > centre ? 0 : 1;
  entry->map[0] = centre_at;
  entry->map[end] = 1 - centre_at;
  entry->map[3 - end] = -1;
}

void setup_double_edge_subgraph_parent_info(subgraph *sg,
                                            const sg_set *level1) {
  assert(sg->g->es == 4 && sg->g->vs == 3);
  const graph *g = sg->g;
  const bool twins =
      g->vlabel[1] == g->vlabel[2] && g->elabel[0] == g->elabel[1];
  alignas(sg_parent) int memory[7];
  auto *entry = reinterpret_cast<sg_parent *>(memory);
  for (const int end : {2, 1}) { // in the order of the edges that go
    fill_parent_entry(sg, end, level1, entry);
    sg_add_link(sg, entry);
    if (end == 2 && twins)
      continue;
    sg_update_parent_info(sg, entry, level1);
    sg_add_pid(sg, entry->pid);
  }
}

// Appends the record of one frequent path.
static void register_double_edge_subgraph(const path_key &k, int count,
                                          const sg_set *level1, sg_set *out) {
  const int va = k.va;
  const int vb = k.vb;
  const int ea = k.ea;
  const int eb = k.eb;
  assert(va < vb || (va == vb && ea <= eb));
  sg_ptr sg(sg_create_double_edge(ea, eb, va, vb, k.vc));
  sg->count = count;
  sg->links = sg_links_create(3);
  setup_double_edge_subgraph_parent_info(sg.get(), level1);
  sg_set_push(out, std::move(sg));
}

// Adds every transaction to the TID lists of its frequent paths, with the first
// place of each as its row.
// The second walk, hence the 2.
static void check_in_double_edges2(sg_set *level2,
                                   const graph_list *transactions,
                                   path_table *table, interruption_poll *poll) {
  embedding_budget budget(transactions);
  for (int i = 0; i < sg_set_size(level2); i++) {
    poll->step(record_cost);
    subgraph *sg = sg_set_get(level2, i);
    const graph *g = sg->g;
    table->count_of({g->vlabel[1], g->vlabel[2], g->vlabel[0], g->elabel[0],
                     g->elabel[1]}) = i + 1;
    budget.add_pattern();
    sg->rows = budget.take_rows(sg, sg->count);
  }
  for (int tid = 0; tid < transactions->count; tid++) {
    walk_paths(graph_list_at(transactions, tid), poll,
               [&](const path_key &k, const path_ends &ends) {
                 const int id = table->count_of(k);
                 if (!id)
                   return;
                 subgraph *sg = sg_set_get(level2, id - 1);
                 if (!add_last_tid(sg, tid) || !sg->rows)
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
  path_table table(nel, nvl);
  for (int tid = 0; tid < transactions->count; tid++)
    walk_paths(graph_list_at(transactions, tid), &poll,
               [&](const path_key &k, const path_ends &) {
                 table.count_once(k, tid);
               });

  sg_set_ptr level2(sg_set_create());
  for (const path_key &k : table.keys()) {
    poll.step(record_cost);
    const int count = std::exchange(table.count_of(k), 0);
    if (count >= minsup)
      register_double_edge_subgraph(k, count, level1, level2.get());
  }
  sg_set_sort(level2.get(), stop);
  KESTRO_STRUCTURE(sg_set_check(level2.get()));
  check_in_double_edges2(level2.get(), transactions, &table, &poll);
  return level2.release();
}

} // namespace kestro
