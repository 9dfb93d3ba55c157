// The public face over random databases: what is built equals what is read, and
// matchers find what trying everything finds.  Seeds are fixed.

#include <kestro/database.h>
#include <kestro/matcher.h>

#include <algorithm>
#include <utility>

#include <gtest/gtest.h>

#include "support/random_database.h"
#include "support/same_database.h"

namespace kestro {

namespace {

using plain_database = std::vector<plain_graph>;

void add(const plain_graph &g, database_builder *builder) {
  const std::vector<std::string_view> vertices(g.vertices.begin(),
                                               g.vertices.end());
  std::vector<labelled_edge> edges;
  for (const plain_edge &e : g.edges)
    edges.push_back({e.from, e.to, e.label});
  builder->add(vertices, edges);
}

database built(const plain_database &graphs) {
  database_builder builder;
  for (const plain_graph &g : graphs)
    add(g, &builder);
  return std::move(builder).build();
}

std::string text_of(const plain_database &graphs) {
  return database_text(graphs, text_style{false, false, false, false});
}

// A connected graph of up to n vertices with many leaves and few labels.
plain_graph random_pattern(dice *chance, int n) {
  plain_graph g;
  const int vertices = chance->between(1, n);
  const int labels = chance->between(1, 2);
  const auto draw = [&](const char *one, const char *other) {
    return std::string(labels == 2 && chance->one_in(4) ? other : one);
  };
  const bool hub = chance->one_in(2);
  for (int i = 0; i < vertices; i++) {
    g.vertices.push_back(draw("C", "N"));
    if (i > 0)
      g.edges.push_back({hub && !chance->one_in(4) ? 0 : chance->below(i), i,
                         draw("-", "=")});
  }
  for (int i = chance->below(3); i > 0 && vertices > 2; i--) {
    const int u = chance->below(vertices);
    const int w = chance->below(vertices);
    const bool taken =
        std::any_of(g.edges.begin(), g.edges.end(), [&](const plain_edge &e) {
          return std::minmax(e.from, e.to) == std::minmax(u, w);
        });
    if (u != w && !taken)
      g.edges.push_back({u, w, draw("-", "=")});
  }
  return g;
}

// The same with its vertices in another order.
plain_graph shuffled(plain_graph g, dice *chance) {
  const int n = static_cast<int>(g.vertices.size());
  for (int i = n - 1; i > 0; i--) {
    const int other = chance->below(i + 1);
    std::swap(g.vertices[static_cast<size_t>(i)],
              g.vertices[static_cast<size_t>(other)]);
    for (plain_edge &e : g.edges)
      for (int *end : {&e.from, &e.to})
        *end = *end == i ? other : *end == other ? i : *end;
  }
  return g;
}

// A graph to look in: some in parts, some with labels that no pattern has and
// that move the ids of the others.
plain_graph random_target(dice *chance) {
  plain_graph g = shuffled(random_pattern(chance, 8), chance);
  if (chance->one_in(3)) {
    g.vertices.push_back(chance->one_in(2) ? "A" : "Z");
    if (chance->one_in(2))
      g.edges.push_back({0, static_cast<int>(g.vertices.size()) - 1, "#"});
  }
  if (chance->one_in(3)) { // to no label of the first kind
    for (std::string &label : g.vertices)
      label = label == "C" ? "N" : label;
  }
  return g;
}

// All maps in the order that a matcher promises.
std::vector<embedding> expected(const plain_graph &pattern,
                                const plain_graph &target,
                                const std::vector<int> &order) {
  std::vector<embedding> maps = plain_maps(pattern, target);
  std::sort(maps.begin(), maps.end(), [&](const auto &a, const auto &b) {
    for (const int u : order)
      if (a[static_cast<size_t>(u)] != b[static_cast<size_t>(u)])
        return a[static_cast<size_t>(u)] < b[static_cast<size_t>(u)];
    return false;
  });
  return maps;
}

// What is wrong with a matcher for a pair, or "".
std::string wrong(const matcher &m, graph_view target,
                  const std::vector<embedding> &maps) {
  if (m.is_in(target) == maps.empty())
    return "is_in";
  if (m.first(target) !=
      (maps.empty() ? std::nullopt : std::optional<embedding>(maps[0])))
    return "first";
  if (m.all(target) != maps)
    return "all";
  const size_t half = maps.size() / 2;
  if (m.all(target, static_cast<long long>(half)) !=
      std::vector<embedding>(maps.begin(),
                             maps.begin() + static_cast<ptrdiff_t>(half)))
    return "the first half";
  if (m.count(target) != static_cast<long long>(maps.size()))
    return "count";
  return "";
}

} // namespace

TEST(Library, BuildsWhatItReads) {
  for (uint64_t seed = 0; seed < 400; seed++) {
    dice chance(seed);
    const plain_database graphs = random_database(&chance, 12);
    const std::string text = text_of(graphs);
    const database read = database::parse(text);
    ASSERT_EQ(difference(built(graphs), read), "") << "seed " << seed;
    database_builder with_labels(read.label_set());
    for (const plain_graph &g : graphs)
      add(g, &with_labels);
    ASSERT_EQ(difference(std::move(with_labels).build(), read), "")
        << "seed " << seed;
  }
}

TEST(Library, MatchersFindWhatTryingFinds) {
  int occurring = 0;
  int unknown = 0; // targets with a label that the pattern has not
  constexpr uint64_t pairs = 4000;
  for (uint64_t seed = 0; seed < pairs; seed++) {
    dice chance(seed);
    const plain_graph pattern = random_pattern(&chance, 5);
    const plain_graph target = random_target(&chance);
    const database shared = built({pattern, target});
    const database apart = built({target});
    const matcher m(shared[0]);
    const auto maps = expected(pattern, target, m.order());
    occurring += !maps.empty();
    unknown += apart.label_set().find_edge_label("#").has_value();
    ASSERT_EQ(wrong(m, shared[1], maps), "") << "shared labels, seed " << seed;
    ASSERT_EQ(wrong(m, apart[0], maps), "") << "own labels, seed " << seed;
    ASSERT_EQ(wrong(matcher(built({pattern})[0]), shared[1], maps), "")
        << "the pattern's own labels, seed " << seed;
  }
  EXPECT_GT(occurring, static_cast<int>(pairs / 5));
  EXPECT_LT(occurring, static_cast<int>(pairs * 4 / 5));
  EXPECT_GT(unknown, static_cast<int>(pairs / 20));
}

} // namespace kestro
