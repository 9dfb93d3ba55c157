#include "mining/edge_placement.h"

#include <algorithm>

#include <gtest/gtest.h>

#include "mining/embeddings.h"
#include "support/records.h"

namespace kestro {

using ints = std::vector<int>;

template <class Image>
static ints placed(const graph_ptr &g, const parent_entry &entry,
                   const ints &parent_row, const graph_ptr &t) {
  const sg_ptr sg = record_of(g);
  const graph_list_ptr database = database_of(graph_ptr(graph_copy(t.get())));
  const edge_slots slots(database.get());
  edge_placement placement;
  placement.set(sg.get(), entry, &slots);
  const std::vector<Image> from(parent_row.begin(), parent_row.end());
  std::vector<Image> row(static_cast<size_t>(g->vs));
  if (!placement.extend(from.data(), 0, row.data()))
    return {};
  return ints(row.begin(), row.end());
}

// The row of pattern g in t by its entry from a parent's row, the same for both
// types of images; empty when the edge finds no place.
static ints extended(const graph_ptr &g, const parent_entry &entry,
                     const ints &parent_row, const graph_ptr &t) {
  ints row = placed<uint16_t>(g, entry, parent_row, t);
  EXPECT_EQ(placed<uint8_t>(g, entry, parent_row, t), row);
  return row;
}

// The path 1 - 0 - 2 and its parent entry: the edge 0-1, vertex 2 is new.
static graph_ptr path(int vlabel, int elabel) {
  return make_graph({0, 0, vlabel}, {{0, 1}, {0, 2, elabel}});
}
static parent_entry new_end() { return parent_entry(0, 0, 2, {0, 1, -1}); }

TEST(ExtendRow, NewVertexIsTheFirstFreeNeighbour) {
  const graph_ptr t = star_graph(4); // hub 0
  EXPECT_EQ(extended(path(0, 0), new_end(), {0, 1}, t), (ints{0, 1, 2}));
  EXPECT_EQ(extended(path(0, 0), new_end(), {0, 3}, t), (ints{0, 3, 1}));
}

TEST(ExtendRow, NewVertexMustBeFree) {
  EXPECT_EQ(extended(path(0, 0), new_end(), {1, 0}, star_graph(4)), ints());
}

TEST(ExtendRow, NewVertexMustHaveItsLabels) {
  const graph_ptr t =
      make_graph({0, 0, 5, 0, 5}, {{0, 1}, {0, 2, 1}, {0, 3, 7}, {0, 4, 7}});
  EXPECT_EQ(extended(path(5, 1), new_end(), {0, 1}, t), (ints{0, 1, 2}));
  EXPECT_EQ(extended(path(0, 7), new_end(), {0, 1}, t), (ints{0, 1, 3}));
  EXPECT_EQ(extended(path(5, 7), new_end(), {0, 1}, t), (ints{0, 1, 4}));
  EXPECT_EQ(extended(path(6, 7), new_end(), {0, 1}, t), ints());
  EXPECT_EQ(extended(path(0, 1), new_end(), {0, 1}, t), ints());
}

TEST(ExtendRow, NewVertexCanBeTheSmallerEnd) {
  // The edge 0-1 of a path 0 - 1 - 2 is lacking; 1 and 2 are the parent's 1, 0.
  const parent_entry entry(0, 0, 1, {-1, 1, 0});
  EXPECT_EQ(extended(path_graph(3), entry, {2, 0}, star_graph(4)),
            (ints{1, 0, 2}));
  EXPECT_EQ(extended(path_graph(3), entry, {0, 2}, star_graph(4)), ints());
}

TEST(ExtendRow, EdgeBetweenPlacedVerticesMustBeThereWithItsLabel) {
  // A triangle whose edge 1-2 is lacking in the parent 1 - 0 - 2.
  const graph_ptr g = make_graph({0, 0, 0}, {{0, 1}, {0, 2}, {1, 2, 3}});
  const parent_entry entry(0, 1, 2, {0, 1, 2});
  const graph_ptr t =
      make_graph({0, 0, 0, 0}, {{3, 0}, {3, 1}, {3, 2}, {0, 2, 3}, {0, 1}});
  EXPECT_EQ(extended(g, entry, {3, 0, 2}, t), (ints{3, 0, 2}));
  EXPECT_EQ(extended(g, entry, {3, 2, 0}, t), (ints{3, 2, 0}));
  EXPECT_EQ(extended(g, entry, {3, 0, 1}, t), ints()); // another label
  EXPECT_EQ(extended(g, entry, {3, 1, 2}, t), ints()); // no edge
}

TEST(ExtendRow, MapTellsWhichParentVertexIsWhich) {
  const graph_ptr g = make_graph({0, 0, 0}, {{0, 1}, {0, 2}, {1, 2}});
  const parent_entry entry(0, 0, 2, {2, 0, 1});
  EXPECT_EQ(extended(g, entry, {5, 6, 4},
                     make_graph(ints(7, 0), {{4, 5}, {5, 6}, {4, 6}})),
            (ints{4, 5, 6}));
}

TEST(ExtendRow, LastVertexThatFitsARowCanBePlaced) {
  const graph_ptr large = make_graph(ints(65536, 0), {{0, 1}, {0, 65535}});
  EXPECT_EQ(placed<uint16_t>(path(0, 0), new_end(), {0, 1}, large),
            (ints{0, 1, 65535}));
  EXPECT_EQ(placed<uint16_t>(path(0, 0), new_end(), {0, 65535}, large),
            (ints{0, 65535, 1}));
  const graph_ptr small = make_graph(ints(256, 0), {{0, 1}, {0, 255}});
  EXPECT_EQ(extended(path(0, 0), new_end(), {0, 1}, small), (ints{0, 1, 255}));
  EXPECT_EQ(extended(path(0, 0), new_end(), {0, 255}, small),
            (ints{0, 255, 1}));
}

TEST(ExtendRow, ManyNeighboursAreLookedThrough) {
  // A wheel of 40 around 0, of whose rim edges one is lacking.
  std::vector<test_edge> wheel;
  for (int i = 1; i <= 40; i++) {
    wheel.push_back({0, i});
    if (i < 40)
      wheel.push_back({i, i + 1});
  }
  const graph_ptr t = make_graph(ints(41, 0), wheel);
  const parent_entry closing(0, 0, 2, {0, 1, 2});
  for (int i = 1; i < 40; i++)
    EXPECT_EQ(extended(ring_graph(3), closing, {0, i, i + 1}, t),
              (ints{0, i, i + 1}));
  const parent_entry rim(0, 1, 2, {0, 1, 2});
  EXPECT_EQ(extended(ring_graph(3), rim, {0, 1, 40}, t), ints());
}

TEST(EdgePlacement, CanBecomeThatOfAnotherPattern) {
  const sg_ptr triangle = record_of(ring_graph(3));
  const sg_ptr star = record_of(path(0, 0));
  const graph_list_ptr database = database_of(complete_graph(4));
  const edge_slots slots(database.get());
  edge_placement placement;
  const ints parent_row = {2, 1, 0};
  const std::vector<uint8_t> from(parent_row.begin(), parent_row.end());
  for (int round = 0; round < 2; round++) {
    std::vector<uint8_t> row(3);
    placement.set(star.get(), new_end(), &slots);
    ASSERT_TRUE(placement.extend(from.data(), 0, row.data()));
    EXPECT_EQ(row, (std::vector<uint8_t>{2, 1, 0}));
    placement.set(triangle.get(), parent_entry(0, 1, 2, {1, 0, 2}), &slots);
    ASSERT_TRUE(placement.extend(from.data(), 0, row.data()));
    EXPECT_EQ(row, (std::vector<uint8_t>{1, 2, 0}));
  }
}

namespace {

// A parent with rows at random, a pattern of one edge more, and transactions.
class RandomRows : public testing::Test {
protected:
  int below(int n) { return random_below(random, n); }

  void add_transactions(int count, graph_list *list) {
    for (int t = 0; t < count; t++)
      graph_list_push(random_graph(random, {48, 400, 2, 2}), list);
  }

  // A parent of vs vertices whose transactions are, from the first of these on,
  // every second one and more, with rows of distinct images.
  template <class Image>
  sg_ptr parent_of(int vs, const graph_list *transactions, int first) {
    sg_ptr parent = record_of(path_graph(vs));
    ints tids;
    for (int t = first; t < transactions->count; t++)
      if (t % 2 == 0 || below(2) == 0)
        tids.push_back(t);
    set_tids(parent.get(), tids);
    parent->rows = ksstack_new(static_cast<int>(tids.size()),
                               vs * static_cast<int>(sizeof(Image)));
    for (const int tid : tids) {
      const int n = graph_list_at(transactions, tid)->vs;
      sg_push_row(parent.get(), random_permutation(random, n).data());
    }
    return parent;
  }

  // The vertices of a parent in any order, with -1 at the end where the pattern
  // has one more.
  ints map_to(int parent_vs, bool has_new) {
    ints map = random_permutation(random, parent_vs);
    if (has_new)
      map.push_back(-1);
    return map;
  }

  template <class Image>
  int extend_blocks(const edge_placement &placement, const subgraph *parent,
                    const row_places<Image> &to, int block) {
    row_cursor<Image> from(parent);
    int placed = 0;
    for (int i = 0; i < to.count; i += block)
      placed +=
          placement.extend_all(&from, to, i, std::min(to.count, i + block));
    return placed;
  }

  template <class Image>
  int extend_one_by_one(const edge_placement &placement, const subgraph *parent,
                        const row_places<Image> &to, int vs) {
    const ints tids = ids_of(parent->tid);
    int placed = 0;
    for (int i = 0; i < to.count; i++) {
      const auto at = std::find(tids.begin(), tids.end(), to.tids[i]);
      const Image *row =
          sg_row<Image>(parent, static_cast<int>(at - tids.begin()));
      to.found[i] = placement.extend(row, to.tids[i], to.row(i, vs));
      placed += to.found[i];
    }
    return placed;
  }

  // Compares extend_all, block after block, with extend on each row, looked up
  // by its transaction.
  template <class Image>
  void expect_same(const edge_placement &placement, const subgraph *parent,
                   int vs, int block, bool are_kept) {
    ints bound;
    for (int i = 0; i < sg_tid_size(parent); i++)
      if (below(3) != 0)
        bound.push_back(sg_tid_at(parent, i));
    const size_t n = bound.size();
    const int count = static_cast<int>(n);
    const size_t images =
        are_kept ? n * static_cast<size_t>(vs)
                 : static_cast<size_t>(vs) + edge_placement::spare_images;
    std::vector<Image> rows[2];
    std::vector<char> found[2];
    int placed[2] = {0, 0};
    for (size_t way = 0; way < 2; way++) {
      rows[way].resize(images);
      found[way].resize(n);
      const row_places<Image> to = {bound.data(), count, rows[way].data(),
                                    are_kept, found[way].data()};
      if (way == 0)
        placed[way] = extend_blocks(placement, parent, to, block);
      else
        placed[way] = extend_one_by_one(placement, parent, to, vs);
    }
    EXPECT_EQ(placed[0], placed[1]);
    EXPECT_EQ(found[0], found[1]);
    EXPECT_EQ(placed[1], std::count(found[1].begin(), found[1].end(), 1));
    all_placed += placed[1];
    all_tried += count;
    if (!are_kept)
      return;
    for (size_t i = 0; i < n; i++) {
      const auto first = static_cast<ptrdiff_t>(i) * vs;
      if (found[0][i]) {
        EXPECT_TRUE(std::equal(rows[0].begin() + first,
                               rows[0].begin() + first + vs,
                               rows[1].begin() + first))
            << vs << " vertices, row " << i << " of " << n;
      }
    }
  }

  template <class Image> void expect_same_for(int vs) {
    const graph_list_ptr list(graph_list_new());
    add_transactions(12, list.get());
    expect_same_in<Image>(edge_slots(list.get()), list.get(), 0, vs);
  }

  // In the transactions from the first on.
  template <class Image>
  void expect_same_in(const edge_slots &slots, const graph_list *list,
                      int first, int vs) {
    for (const bool has_new : {true, false}) {
      const int parent_vs = has_new ? vs - 1 : vs;
      if (parent_vs < 2 || (!has_new && vs < 3))
        continue;
      const sg_ptr parent = parent_of<Image>(parent_vs, list, first);
      const ints map = map_to(parent_vs, has_new);
      // The edge of a path at its end, or the one that makes it a ring.
      const graph_ptr g = has_new ? path_graph(vs) : ring_graph(vs);
      const parent_entry entry(0, has_new ? vs - 2 : 0, vs - 1, map);
      edge_placement placement;
      placement.set(record_of(g).get(), entry, &slots);
      for (const bool are_kept : {true, false})
        expect_same<Image>(placement, parent.get(), vs, 1 + below(12),
                           are_kept);
    }
  }

  test_rng random{7};
  long all_placed = 0;
  long all_tried = 0;
};

} // namespace

TEST_F(RandomRows, AllAtOnceAreAsOneByOne) {
  for (int round = 0; round < 12; round++)
    for (int vs = 2; vs <= 36; vs++) {
      expect_same_for<uint8_t>(vs);
      expect_same_for<uint16_t>(vs);
    }
  EXPECT_GT(all_placed, all_tried / 10); // both outcomes are met
  EXPECT_LT(all_placed, all_tried * 9 / 10);
}

// The kinds of the stars have all numbers for themselves.
TEST_F(RandomRows, KindsThatShareANumberAreAsOneByOne) {
  constexpr int leaves = 1000;
  const graph_list_ptr list(graph_list_new());
  int elabel = 2; // behind those of the random graphs
  while (elabel <= edge_slots::other_kinds + 2) {
    std::vector<test_edge> edges;
    for (int leaf = 1; leaf <= leaves; leaf++)
      edges.push_back({0, leaf, elabel++});
    graph_list_push(make_graph(ints(leaves + 1, 0), edges), list.get());
  }
  const int first = list->count;
  add_transactions(12, list.get());
  const edge_slots slots(list.get());
  ASSERT_EQ(slots.kind_of(1, 1), edge_slots::other_kinds);
  for (int round = 0; round < 4; round++)
    for (const int vs : {3, 5, 16, 17, 31, 32}) {
      expect_same_in<uint8_t>(slots, list.get(), first, vs);
      expect_same_in<uint16_t>(slots, list.get(), first, vs);
    }
  EXPECT_GT(all_placed, all_tried / 10); // both outcomes are met
  EXPECT_LT(all_placed, all_tried * 9 / 10);
}

} // namespace kestro
