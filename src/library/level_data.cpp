// Levels between the search and those who use the library.
//
// What the search has is looked at where it lies; only the parents are copied,
// since the search keeps them in pairs.  A result keeps a level in a few
// blocks, one for all graphs and one for each kind of list.

#include "library/level_data.h"

#include <algorithm>
#include <new>

#include "base/parallel.h"
#include "cl/search_plan.h"
#include "graph/connectivity.h"
#include "mining/expect_records.h"
#include "mining/parents.h"

namespace kestro {

std::span<const int> level_data::parents_of(int id) const {
  const size_t i = static_cast<size_t>(id);
  const size_t end =
      i + 1 < records.size() ? records[i + 1].first_parent : parents.size();
  const size_t first = records[i].first_parent;
  return {parents.data() + first, end - first};
}

static level_record look_at(const subgraph *sg, const level_data &level) {
  return {sg->g,
          sg->tid ? ksstack_array<int>(sg->tid) : nullptr,
          sg->count,
          sg->invariant,
          level.parents.size(),
          0};
}

level_data look_at(const sg_set *set, int size, const label_set *labels) {
  level_data level;
  level.size = size;
  level.labels = labels;
  level.source = set;
  level.records.reserve(static_cast<size_t>(sg_set_size(set)));
  xvector<int> parents;
  for (int id = 0; id < sg_set_size(set); id++) {
    expect_records(set, id, record_part::parents);
    const subgraph *sg = sg_set_get(set, id);
    level.records.push_back(look_at(sg, level));
    sg_parent_ids(sg, &parents);
    level.parents.insert(level.parents.end(), parents.begin(), parents.end());
  }
  return level;
}

// Units of a block of graphs that one of this size takes.
static size_t units(const graph *g) {
  constexpr size_t unit = sizeof(std::max_align_t);
  return (graph_size(g->es, g->vs, graph_ids::own_numbers) + unit - 1) / unit;
}

static void keep_graphs(level_data *level) {
  size_t size = 0;
  for (const level_record &record : level->records)
    size += units(record.g);
  level->graphs.resize(size);
  std::max_align_t *at = level->graphs.data();
  for (level_record &record : level->records) {
    graph *copy =
        graph_init(at, record.g->es, record.g->vs, graph_ids::own_numbers);
    graph_copy_into(record.g, copy);
    at += units(record.g);
    record.g = copy;
  }
}

static void keep_tids(level_data *level) {
  size_t size = 0;
  for (const level_record &record : level->records)
    size += static_cast<size_t>(record.support);
  level->tids.resize(size);
  int *at = level->tids.data();
  for (level_record &record : level->records) {
    const int *const first = at;
    at = std::copy_n(record.tids, record.support, at);
    record.tids = first;
  }
}

level_data kept(level_data borrowed) {
  keep_graphs(&borrowed);
  keep_tids(&borrowed);
  borrowed.source = nullptr;
  borrowed.parents.shrink_to_fit();
  return borrowed;
}

namespace {

// Places patterns on one thread.
class placer {
public:
  placer(const graph_list *transactions, const interruption *stop)
      : transactions_(transactions), stop_(stop), plan_(stop) {}

  void place(const level_record &record, int *images) {
    const int vs = record.g->vs;
    order_.resize(static_cast<size_t>(vs));
    graph_bfs_order(record.g, order_.data());
    plan_.set(record.g, order_.data());
    for (int i = 0; i < record.support; i++, images += vs) {
      if (stop_)
        stop_->check();
      plan_.find(graph_list_at(transactions_, record.tids[i]), images);
    }
  }

private:
  const graph_list *transactions_;
  const interruption *stop_;
  search_plan plan_;
  xvector<int> order_;
};

} // namespace

void add_embeddings(level_data *level, const graph_list *transactions, int jobs,
                    const interruption *stop) {
  size_t size = 0;
  for (level_record &record : level->records) {
    record.first_image = size;
    size +=
        static_cast<size_t>(record.support) * static_cast<size_t>(record.g->vs);
  }
  level->images.resize(size);
  const int n = level->count();
  const int workers = worker_count(jobs, n);
  xvector<placer> placers(static_cast<size_t>(workers),
                          placer(transactions, stop));
  parallel_for(
      workers, n,
      [&](int worker, int id) {
        const level_record &record = level->records[static_cast<size_t>(id)];
        placers[static_cast<size_t>(worker)].place(
            record, level->images.data() + record.first_image);
      },
      [](int) {});
}

} // namespace kestro
