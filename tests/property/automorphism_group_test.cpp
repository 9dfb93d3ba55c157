// Generators against lists of all automorphisms: on drawn graphs, and, in the
// levels of symmetric databases, the places to which they bring an edge and the
// look-ups by them.

#include "cl/automorphism_group.h"

#include <set>

#include <gtest/gtest.h>

#include "mining/child_table.h"
#include "mining/parents.h"
#include "reference/mining/automorphisms.h"
#include "reference/mining/subgraph.h"
#include "support/generated_group.h"
#include "support/graph_families.h"
#include "support/mined_levels.h"
#include "support/threshold_scope.h"

namespace kestro {

namespace {

using ints = std::vector<int>;

// All automorphisms, or none when there are more than limit.
class automorphism_list {
public:
  explicit automorphism_list(const graph *g, size_t limit = SIZE_MAX)
      : g_(g), limit_(limit) {
    ints map;
    extend(&map);
    if (found.size() > limit)
      found.clear();
  }

  std::set<ints> found;

private:
  void extend(ints *map) {
    if (static_cast<int>(map->size()) == g_->vs)
      found.insert(*map);
    for (int w = 0; found.size() <= limit_ &&
                    static_cast<int>(map->size()) < g_->vs && w < g_->vs;
         w++) {
      if (!fits(*map, w))
        continue;
      map->push_back(w);
      extend(map);
      map->pop_back();
    }
  }

  // Whether the next vertex may go to w.
  bool fits(const ints &map, int w) const {
    const int u = static_cast<int>(map.size());
    if (g_->vlabel[u] != g_->vlabel[w] ||
        g_->v[u + 1] - g_->v[u] != g_->v[w + 1] - g_->v[w])
      return false;
    for (int x = 0; x < u; x++) {
      const int y = map[static_cast<size_t>(x)];
      if (y == w || graph_edge_label(g_, u, x) != graph_edge_label(g_, w, y))
        return false;
    }
    return true;
  }

  const graph *g_;
  size_t limit_;
};

constexpr size_t most_listed = 6000;

// "" when the generators of g generate what the list holds.
std::string fault_of(const graph *g) {
  const automorphism_list listed(g, most_listed);
  if (static_cast<int>(generators_of(g).size()) > g->vs - 1)
    return "too many generators";
  if (listed.found.empty())
    return generated_group(g, most_listed + 1).size() > most_listed
               ? ""
               : "the group is too small";
  return generated_group(g) == listed.found ? "" : "another group";
}

void expect_no_fault(drawn_graph drawn, uint64_t seed) {
  if (fault_of(drawn.g.get()).empty())
    return;
  const auto fails = [](const graph *g) { return !fault_of(g).empty(); };
  const graph_ptr small = shrunk_graph(std::move(drawn.g), fails);
  ADD_FAILURE() << "seed " << seed << ", " << drawn.family << ": "
                << fault_of(small.get()) << " of " << graph_words(small.get());
}

// The permutations of a core.
std::vector<ints> list_of(const graph *g) {
  const automorphism_cache_ptr cache(automorphism_cache_create());
  std::vector<ints> perms;
  int i = automorphism_cache_find(cache.get(), 0, g);
  while (const int *perm = automorphism_cache_perm(cache.get(), i++, 0))
    perms.emplace_back(perm, perm + g->vs);
  return perms;
}

using place_set = std::set<std::pair<int, int>>;

// What was compared.
struct totals {
  int cores = 0; // that are not rigid
  int places = 0;
  int found = 0;
};

class level_check {
public:
  level_check(const two_levels &levels, totals *sum)
      : children_(levels.children.get()), cores_(levels.cores.get()),
        links_(links_of(levels)), table_(children_, &links_), sum_(sum) {}

  void run() {
    for (int id = 0; id < sg_set_size(cores_); id++) {
      const subgraph *core = sg_set_get(cores_, id);
      if (core->rigid)
        continue;
      sum_->cores++;
      check_core(id, core, list_of(core->g));
    }
  }

private:
  void check_core(int id, const subgraph *core,
                  const std::vector<ints> &perms) {
    for (int c = 0; c < sg_child_size(core); c++) {
      const subgraph *sg = sg_set_get(children_, sg_child_at(core, c));
      check_places(id, sg_find_kept(sg, id), perms);
    }
    for (int child = 0; child < sg_set_size(children_); child++) {
      const subgraph *sg = sg_set_get(children_, child);
      for (int l = 0; l < sg_parent_size(sg); l++)
        if (sg_parent_at(sg, l)->pid == id)
          for (const ints &perm : perms)
            check_found(
                child,
                image_of(sg_parent_edge(sg, sg_parent_at(sg, l)), perm.data()),
                core->g->vs);
    }
  }

  void check_places(int core, const sg_parent *entry,
                    const std::vector<ints> &perms) {
    const edge_place own = sg_place_in_core(entry);
    const auto to = [](const ints &perm, int u) {
      return u == -1 ? -1 : perm[static_cast<size_t>(u)];
    };
    place_set listed;
    for (const ints &perm : perms)
      listed.insert(std::minmax(to(perm, own.u), to(perm, own.w)));
    place_set walked;
    for (const edge_place &place : walk_.images(links_.group(core), own))
      ASSERT_TRUE(walked.insert(std::minmax(place.u, place.w)).second);
    ASSERT_EQ(walked, listed);
    sum_->places += static_cast<int>(walked.size());
  }

  // x is a child of a core of n vertices; another of the same form may stand
  // for it where forms depend on the order of vertices.
  void check_found(int child, const extension &x, int n) {
    const found_child *found = table_.find(x);
    ASSERT_NE(found, nullptr);
    const subgraph *sg = sg_set_get(children_, found->child);
    ASSERT_TRUE(found->child == child || !sg->invariant);
    extension place = sg_parent_edge(sg, sg_parent_at(sg, found->entry));
    xvector<const int *> steps;
    table_.find_steps(x, &steps);
    const graph *core = sg_set_get(cores_, x.pattern)->g;
    for (size_t s = steps.size(); s-- > 0;) {
      ASSERT_TRUE(is_mapping(core, core, ints(steps[s], steps[s] + n)));
      place = image_of(place, steps[s]);
    }
    ASSERT_EQ(place, x);
    sum_->found++;
  }

  const sg_set *children_;
  const sg_set *cores_;
  core_links links_;
  child_table table_;
  orbit_walk walk_;
  totals *sum_;
};

// One drawn graph, mined up to patterns of edges edges.
void check_database(uint64_t seed, int edges, totals *sum) {
  test_rng rng(static_cast<unsigned>(seed));
  const threshold_scope scope(random_below(rng, 3) == 0 ? 1 : 5);
  const graph_list_ptr database(graph_list_new());
  graph_list_push(draw_graph(seed).g, database.get());
  two_levels levels = first_two_levels(database.get(), 1, 3, 3);
  for (int size = 2; size <= edges && sg_set_size(levels.children.get()) > 0;
       size++) {
    level_check(levels, sum).run();
    if (testing::Test::HasFailure()) {
      ADD_FAILURE() << "seed " << seed << ", size " << size;
      return;
    }
    go_up(&levels, candidates_of(levels), database.get(), 1);
  }
}

} // namespace

TEST(AutomorphismGroup, IsThatOfTheList) {
  for (uint64_t seed = 0; seed < 1500; seed++)
    expect_no_fault(draw_graph(seed), seed);
  for (uint64_t seed = 0; seed < 500; seed++)
    expect_no_fault(draw_disconnected_graph(seed), seed);
}

TEST(AutomorphismGroup, PlacesAndLookUpsInLevelsAreThoseOfTheList) {
  totals sum;
  for (uint64_t seed = 0; seed < 500 && !HasFailure(); seed++)
    check_database(seed, 4, &sum);
  EXPECT_GT(sum.cores, 1000);
  EXPECT_GT(sum.places, 1000);
  EXPECT_GT(sum.found, 1000);
}

} // namespace kestro
