#include "graph/graph.h"

#include <cstring>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "reference/graph/graph.h"
#include "support/fatal.h"
#include "support/graphs.h"

namespace kestro {

// 0-1, 0-2, 1-2 with labels 10, 11, 300 and vertex labels 5, 6, 200:
// e = 1 2 | 0 2 | 0 1, v = 0 2 4 6, elabel = 10 11 | 10 300 | 11 300.
static graph_ptr triangle() {
  return make_graph({5, 6, 200}, {{0, 1, 10}, {0, 2, 11}, {1, 2, 300}});
}

TEST(Graph, SizeIsTheHeaderAndTheFiveArrays) {
  EXPECT_EQ(graph_size(0, 0), sizeof(graph) + 4);
  EXPECT_EQ(graph_size(4, 3), sizeof(graph) + 4 * (2 * 4 + 3 * 3 + 1));
}

TEST(Graph, SizeOfAHugeGraphDoesNotOverflow) {
  EXPECT_EQ(graph_size(2000000000, 1000000000),
            sizeof(graph) + 4ull * (4000000000ull + 3000000000ull + 1));
}

TEST(Graph, InitLaysTheArraysOutInOrder) {
  const std::vector<int64_t> memory(graph_size(4, 3) / 8 + 1);
  void *address = const_cast<int64_t *>(memory.data());
  const graph *g = graph_init(address, 4, 3);
  EXPECT_EQ(g, address);
  EXPECT_EQ(g->es, 4);
  EXPECT_EQ(g->vs, 3);
  EXPECT_EQ(g->key, 0u);
  EXPECT_EQ(g->e, reinterpret_cast<const int *>(g + 1));
  EXPECT_EQ(g->v, g->e + 4);
  EXPECT_EQ(g->vid, g->v + 4);
  EXPECT_EQ(g->elabel, g->vid + 3);
  EXPECT_EQ(g->vlabel, g->elabel + 4);
  EXPECT_EQ(reinterpret_cast<const char *>(g->vlabel + 3),
            static_cast<const char *>(address) + graph_size(4, 3));
}

TEST(Graph, InitLeavesTheContents) {
  std::vector<int64_t> memory(graph_size(4, 3) / 8 + 1);
  memset(memory.data(), 0x11, memory.size() * 8);
  const graph *g = graph_init(memory.data(), 4, 3);
  for (int i = 0; i < 2 * 4 + 3 * 3 + 1; i++)
    EXPECT_EQ(g->e[i], 0x11111111) << i;
}

TEST(Graph, CreateIsLaidOutAsInit) {
  const graph_ptr g(graph_create(2, 2));
  EXPECT_EQ(g->es, 2);
  EXPECT_EQ(g->vs, 2);
  EXPECT_EQ(g->key, 0u);
  EXPECT_EQ(g->e, reinterpret_cast<int *>(g.get() + 1));
  EXPECT_EQ(g->vlabel, g->e + 2 + 3 + 2 + 2);
}

TEST(Graph, CopyIsEqualAndIndependent) {
  const graph_ptr g = triangle();
  g->key = 0xdeadbeef;
  g->vid[1] = 77;
  graph_toggle(&g->e[0]);
  graph_toggle(&g->v[2]);
  const graph_ptr copy(graph_copy(g.get()));
  EXPECT_TRUE(same_structure(copy.get(), g.get()));
  EXPECT_EQ(copy->key, 0xdeadbeef);
  EXPECT_EQ(std::vector<int>(copy->vid, copy->vid + 3),
            (std::vector<int>{0, 77, 2}));
  copy->vlabel[0] = 99;
  copy->e[1] = 0;
  EXPECT_EQ(g->vlabel[0], 5);
  EXPECT_EQ(g->e[1], 2);
}

TEST(Graph, CopyIntoKeepsTheArraysOfALargerTarget) {
  const graph_ptr g = triangle();
  g->key = 12;
  g->vid[2] = 8;
  const graph_ptr target = complete_graph(6);
  const graph before = *target;
  graph_copy_into(g.get(), target.get());
  EXPECT_TRUE(same_structure(target.get(), g.get()));
  EXPECT_EQ(target->key, 12u);
  EXPECT_EQ(target->vid[2], 8);
  EXPECT_EQ(target->e, before.e);
  EXPECT_EQ(target->v, before.v);
  EXPECT_EQ(target->vid, before.vid);
  EXPECT_EQ(target->elabel, before.elabel);
  EXPECT_EQ(target->vlabel, before.vlabel);
}

TEST(Graph, WithoutStoredIdsEachVertexHasItsNumber) {
  const graph_ptr g = triangle();
  g->vid[1] = 77;
  std::vector<int64_t> memory(graph_size(6, 3, graph_ids::own_numbers) / 8 + 1);
  graph *bare = graph_init(memory.data(), 6, 3, graph_ids::own_numbers);
  EXPECT_EQ(bare->vid, nullptr);
  EXPECT_EQ(graph_size(6, 3, graph_ids::own_numbers) + 3 * sizeof(int),
            graph_size(6, 3));
  EXPECT_EQ(static_cast<void *>(bare->vlabel + 3),
            reinterpret_cast<char *>(memory.data()) +
                graph_size(6, 3, graph_ids::own_numbers));
  graph_copy_into(g.get(), bare);
  EXPECT_TRUE(same_structure(bare, g.get()));
  const graph_ptr copy(graph_copy(bare));
  EXPECT_TRUE(same_structure(copy.get(), g.get()));
  EXPECT_EQ(std::vector<int>(copy->vid, copy->vid + 3),
            (std::vector<int>{0, 1, 2}));
}

TEST(Graph, EmptyGraphCanBeCopied) {
  const graph_ptr g = make_graph({}, {});
  const graph_ptr copy(graph_copy(g.get()));
  EXPECT_EQ(copy->es, 0);
  EXPECT_EQ(copy->vs, 0);
  EXPECT_EQ(copy->v[0], 0);
}

TEST(Graph, FreeOfNullDoesNothing) { EXPECT_NO_THROW(graph_free(nullptr)); }

TEST(Graph, ToggleComplementsAndRestores) {
  for (const int value : {0, 1, 7, 2147483647}) {
    int x = value;
    EXPECT_FALSE(graph_is_disabled(x));
    EXPECT_EQ(graph_unmark(x), value);
    graph_toggle(&x);
    EXPECT_EQ(x, -value - 1);
    EXPECT_TRUE(graph_is_disabled(x));
    EXPECT_EQ(graph_unmark(x), value);
    graph_toggle(&x);
    EXPECT_EQ(x, value);
  }
}

TEST(Graph, ActiveCountsLeaveOutMarks) {
  const graph_ptr g = triangle();
  EXPECT_EQ(graph_active_slots(g.get()), 6);
  EXPECT_EQ(graph_active_vertices(g.get()), 3);
  graph_toggle(&g->e[0]);
  graph_toggle(&g->e[2]);
  graph_toggle(&g->v[1]);
  EXPECT_EQ(graph_active_slots(g.get()), 4);
  EXPECT_EQ(graph_active_vertices(g.get()), 2);
}

TEST(Graph, DegreeCountsEnabledSlots) {
  const graph_ptr g = triangle();
  EXPECT_EQ(graph_vertex_degree(g.get(), 0), 2);
  graph_toggle(&g->e[0]);
  EXPECT_EQ(graph_vertex_degree(g.get(), 0), 1);
}

TEST(Graph, DegreeOfADisabledVertexIsZero) {
  const graph_ptr g = triangle();
  graph_toggle(&g->v[0]);
  EXPECT_EQ(graph_vertex_degree(g.get(), 0), 0);
}

TEST(Graph, DegreeSeesTheEndThroughAMark) {
  const graph_ptr g = triangle();
  graph_toggle(&g->v[1]); // the end of vertex 0's range
  EXPECT_EQ(graph_vertex_degree(g.get(), 0), 2);
}

TEST(Graph, DegreeOfAnIsolatedVertexIsZero) {
  EXPECT_EQ(graph_vertex_degree(make_graph({1}, {}).get(), 0), 0);
}

TEST(Graph, EdgeLookUpsFindSlotAndLabel) {
  const graph_ptr g = triangle();
  EXPECT_EQ(graph_has_edge(g.get(), 1, 2), 1);
  EXPECT_EQ(graph_edge_index(g.get(), 1, 2), 3);
  EXPECT_EQ(graph_edge_index(g.get(), 2, 1), 5);
  EXPECT_EQ(graph_edge_label(g.get(), 1, 2), 300);
  EXPECT_EQ(graph_edge_label(g.get(), 2, 0), 11);
}

TEST(Graph, EdgeLookUpsOfNoEdge) {
  const graph_ptr g = path_graph(3);
  EXPECT_EQ(graph_has_edge(g.get(), 0, 2), 0);
  EXPECT_EQ(graph_edge_index(g.get(), 0, 2), -1);
  EXPECT_EQ(graph_edge_label(g.get(), 0, 2), -1);
}

TEST(Graph, EdgeLookUpsReadStoredValues) {
  const graph_ptr g = triangle();
  graph_toggle(&g->e[0]);
  EXPECT_EQ(graph_has_edge(g.get(), 0, 1), 0);
  EXPECT_EQ(graph_edge_index(g.get(), 0, ~1), 0);
}

TEST(Graph, FindVidIsTheFirstVertexOfThatId) {
  const graph_ptr g = triangle();
  const int vids[] = {40, 9, 9};
  std::copy(vids, vids + 3, g->vid);
  EXPECT_EQ(graph_find_vid(g.get(), 40), 0);
  EXPECT_EQ(graph_find_vid(g.get(), 9), 1);
}

TEST(Graph, CantFindAVidListsAllVids) {
  const graph_ptr g = triangle();
  const int vids[] = {40, 9, 12};
  std::copy(vids, vids + 3, g->vid);
  EXPECT_EQ(fatal_text([&] { graph_find_vid(g.get(), 3); }),
            "graph.c:N: can't find a vid '3' in a graph\n40 9 12 \n");
}

TEST(Graph, CantFindAVidInAnEmptyGraph) {
  const graph_ptr g = make_graph({}, {});
  EXPECT_EQ(fatal_text([&] { graph_find_vid(g.get(), -1); }),
            "graph.c:N: can't find a vid '-1' in a graph\n\n");
}

TEST(Graph, KeyOfTheEmptyGraph) {
  // Four zero bytes: 4, 132, 0x1014, 0x21496, 0x40c1c4.
  EXPECT_EQ(graph_key(make_graph({}, {}).get()), 0x40c1c4u);
}

// Worked out with a separate script.
TEST(Graph, KeyOfSmallGraphs) {
  EXPECT_EQ(graph_key(make_graph({2, 3}, {{0, 1, 7}}).get()), 0x4cfa2379u);
  EXPECT_EQ(graph_key(triangle().get()), 0x2e731094u);
}

TEST(Graph, KeyHashesMarksAsStored) {
  const graph_ptr g = triangle();
  graph_toggle(&g->e[0]);
  graph_toggle(&g->e[2]);
  EXPECT_EQ(graph_key(g.get()), 0x2d0a7e8u);
}

// The key by its definition, over a string of bytes and with wide arithmetic.
static uint32_t slow_key(const graph *g) {
  std::string bytes;
  const auto add = [&](const int *words, int count) {
    for (int i = 0; i < count; i++)
      for (int power = 0; power < 4; power++)
        bytes += static_cast<char>(static_cast<uint32_t>(words[i]) /
                                   (1u << (8 * power)) % 256);
  };
  add(g->e, g->es);
  add(g->v, g->vs + 1);
  add(g->elabel, g->es);
  add(g->vlabel, g->vs);
  const int64_t word = int64_t{1} << 32;
  int64_t h = static_cast<int64_t>(bytes.size());
  for (const char c : bytes) {
    const int byte = static_cast<unsigned char>(c);
    const int64_t signed_byte = byte < 128 ? byte : byte - 256;
    int64_t mixed = (h * 32 % word + h / 8 + signed_byte) % word;
    if (mixed < 0)
      mixed += word;
    h ^= mixed;
  }
  return static_cast<uint32_t>(h);
}

TEST(Graph, KeyAgreesWithItsDefinition) {
  for (unsigned seed = 0; seed < 100; seed++) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    test_rng rng(seed);
    const graph_ptr g = random_graph(rng, {.vs = 1 + random_below(rng, 12),
                                           .extra_edges = random_below(rng, 10),
                                           .vlabels = 1000,
                                           .elabels = 70000});
    EXPECT_EQ(graph_key(g.get()), slow_key(g.get()));
    g->vlabel[0] = -1;
    EXPECT_EQ(graph_key(g.get()), slow_key(g.get()));
  }
}

TEST(Graph, KeyOfWordsOfEverySizeAgreesWithItsDefinition) {
  // Bytes from 128 on enter as negative numbers.
  const graph_ptr g = triangle();
  for (const int word : {0,     1,       127,        128,    129,
                         255,   256,     32767,      32768,  65535,
                         65536, 8388608, 2147483647, -1,     -2,
                         -128,  -129,    -256,       -32769, -2147483647 - 1}) {
    g->vlabel[1] = word;
    EXPECT_EQ(graph_key(g.get()), slow_key(g.get())) << word;
    g->elabel[2] = word;
    EXPECT_EQ(graph_key(g.get()), slow_key(g.get())) << word;
  }
}

TEST(Graph, KeyLeavesOutVidAndKey) {
  const graph_ptr g = triangle();
  const uint32_t key = graph_key(g.get());
  g->vid[0] = 1000;
  g->key = key;
  EXPECT_EQ(graph_key(g.get()), key);
}

TEST(Graph, KeyDependsOnEveryOtherArray) {
  const graph_ptr g = triangle();
  const uint32_t key = graph_key(g.get());
  for (int *word : {&g->e[5], &g->v[1], &g->elabel[0], &g->vlabel[2]}) {
    ++*word;
    EXPECT_NE(graph_key(g.get()), key);
    --*word;
  }
  EXPECT_EQ(graph_key(g.get()), key);
}

TEST(Graph, CheckAcceptsGraphs) {
  graph_check(make_graph({}, {}).get());
  graph_check(make_graph({3}, {}).get());
  graph_check(triangle().get());
  SUCCEED();
}

TEST(GraphDeathTest, CheckSeesMarks) {
  const graph_ptr g = triangle();
  graph_toggle(&g->e[3]);
  EXPECT_DEATH(graph_check(g.get()), "Assertion");
  graph_toggle(&g->e[3]);
  graph_toggle(&g->v[1]);
  EXPECT_DEATH(graph_check(g.get()), "Assertion");
}

TEST(GraphDeathTest, CheckSeesUnsortedNeighbours) {
  const graph_ptr g = triangle();
  std::swap(g->e[0], g->e[1]);
  std::swap(g->elabel[0], g->elabel[1]);
  EXPECT_DEATH(graph_check(g.get()), "Assertion");
}

TEST(GraphDeathTest, CheckSeesUnequalLabelsOfOneEdge) {
  const graph_ptr g = triangle();
  g->elabel[0] = 1;
  EXPECT_DEATH(graph_check(g.get()), "Assertion");
}

TEST(GraphDeathTest, CheckSeesAnOffsetThatIsNotTheSlotCount) {
  const graph_ptr g = triangle();
  g->v[3] = 4;
  EXPECT_DEATH(graph_check(g.get()), "Assertion");
}

} // namespace kestro
