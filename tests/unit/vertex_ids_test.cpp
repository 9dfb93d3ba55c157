#include "graph/vertex_ids.h"

#include <climits>
#include <vector>

#include <gtest/gtest.h>

#include "reference/graph/graph.h"
#include "support/fatal.h"

namespace kestro {

static graph_ptr graph_with(const std::vector<int> &vids) {
  graph_ptr g(graph_create(0, static_cast<int>(vids.size())));
  std::copy(vids.begin(), vids.end(), g->vid);
  return g;
}

// That every id, those around it, and 0, are found where graph_find_vid() finds
// them, or missed likewise.
static void expect_found(vertex_ids &ids, const std::vector<int> &vids) {
  const graph_ptr g = graph_with(vids);
  ids.collect(g.get());
  std::vector<int> asked = {0, -1, INT_MIN, INT_MAX};
  for (const int id : vids)
    asked.insert(asked.end(), {id, id == INT_MAX ? id : id + 1,
                               id == INT_MIN ? id : id - 1});
  for (const int id : asked) {
    int expected = -1;
    int found = -1;
    const std::string message =
        fatal_text([&] { expected = graph_find_vid(g.get(), id); });
    EXPECT_EQ(fatal_text([&] { found = ids.find(id); }), message);
    EXPECT_EQ(found, expected) << id;
  }
}

TEST(VertexIds, IdsInOrder) {
  vertex_ids ids;
  expect_found(ids, {0, 1, 2, 3});
}

TEST(VertexIds, NoIds) {
  vertex_ids ids;
  expect_found(ids, {});
}

TEST(VertexIds, IdsOfAnyKind) {
  vertex_ids ids;
  expect_found(ids, {7});
  expect_found(ids, {-3, 70, INT_MIN, 12, INT_MAX, 0});
  expect_found(ids, {1, 0});
}

TEST(VertexIds, FirstOfSeveralIsMeant) {
  vertex_ids ids;
  expect_found(ids, {1, 1, 1});
  expect_found(ids, {0, 1, 0, 5, 5, 1});
}

TEST(VertexIds, GraphsOfAnySizeOneAfterTheOther) {
  vertex_ids ids;
  for (const int size : {300, 5, 40, 1000, 0, 2}) {
    std::vector<int> vids;
    for (int i = 0; i < size; i++)
      vids.push_back(i * 1024 % 977 - 100);
    expect_found(ids, vids);
  }
}

} // namespace kestro
