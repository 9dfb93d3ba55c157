#include "cl/colouring.h"

#include <gtest/gtest.h>

#include <map>
#include <tuple>

#include "support/graphs.h"

namespace kestro {

using ints = std::vector<int>;

// Serves all of them, one after another.
static refinement_work work;

static colouring coloured(const graph_ptr &g) {
  colouring c;
  colouring_init(&c, g.get(), &work);
  return c;
}

static ints order_of(const colouring &c) {
  return ints(c.order.begin(), c.order.end());
}
static ints colours_of(const colouring &c) {
  return ints(c.colour.begin(), c.colour.end());
}

// The first positions of the cells, and the end of the last.
static ints starts_of(const colouring &c) {
  const int vs = static_cast<int>(c.order.size());
  ints starts = {0};
  while (starts.back() < vs)
    starts.push_back(c.cell_end[static_cast<size_t>(starts.back())]);
  return starts;
}

// Cells are ranges that cover order, and colours tell them.
static void expect_whole(const colouring &c, const graph *g) {
  ints sorted = order_of(c);
  std::sort(sorted.begin(), sorted.end());
  EXPECT_EQ(sorted, identity_of(g->vs));
  const ints starts = starts_of(c);
  EXPECT_EQ(static_cast<int>(starts.size()) - 1, c.cells);
  for (size_t k = 0; k + 1 < starts.size(); k++)
    for (int i = starts[k]; i < starts[k + 1]; i++)
      EXPECT_EQ(c.colour[static_cast<size_t>(c.order[static_cast<size_t>(i)])],
                starts[k]);
}

TEST(Colouring, HigherDegreesComeFirst) {
  const colouring c = coloured(path_graph(3));
  EXPECT_EQ(order_of(c), (ints{1, 0, 2}));
  EXPECT_EQ(starts_of(c), (ints{0, 1, 3}));
  EXPECT_EQ(colours_of(c), (ints{1, 0, 1}));
  EXPECT_EQ(c.cells, 2);
}

TEST(Colouring, ThenSmallerLabels) {
  const colouring c = coloured(make_graph({7, 9, 5}, {{0, 1}, {1, 2}}));
  EXPECT_EQ(order_of(c), (ints{1, 2, 0}));
  EXPECT_EQ(c.cells, 3);
}

TEST(Colouring, ThenEdgeLabels) {
  const colouring c = coloured(
      make_graph({0, 0, 0, 0}, {{0, 1, 1}, {1, 2, 0}, {2, 3, 0}, {3, 0, 0}}));
  EXPECT_EQ(order_of(c), (ints{2, 3, 0, 1}));
  EXPECT_EQ(starts_of(c), (ints{0, 2, 4}));
}

TEST(Colouring, PassesRepeatUntilNothingSplits) {
  // The first pass tells inner vertices from ends, the second the middle.
  const colouring c = coloured(path_graph(5));
  EXPECT_EQ(order_of(c), (ints{2, 1, 3, 0, 4}));
  EXPECT_EQ(starts_of(c), (ints{0, 1, 3, 5}));
}

TEST(Colouring, RingsStayWholeInAscendingNumber) {
  const colouring c = coloured(ring_graph(30)); // more than an insertion sort
  EXPECT_EQ(order_of(c), identity_of(30));
  EXPECT_EQ(c.cells, 1);
}

TEST(Colouring, LeavesOfALargeStarStayInAscendingNumber) {
  const graph_ptr g = relabelled(star_graph(60).get(), [] {
    ints perm = identity_of(60);
    std::swap(perm[0], perm[59]);
    return perm;
  }());
  const colouring c = coloured(g);
  ints expected = {59};
  for (int i = 0; i < 59; i++)
    expected.push_back(i);
  EXPECT_EQ(order_of(c), expected);
  EXPECT_EQ(starts_of(c), (ints{0, 1, 60}));
}

TEST(Colouring, OneVertexAndNone) {
  const colouring one = coloured(make_graph({4}, {}));
  EXPECT_EQ(order_of(one), ints{0});
  EXPECT_EQ(one.cells, 1);
  EXPECT_EQ(colouring_first_open(&one, 0), -1);
  const colouring none = coloured(make_graph({}, {}));
  EXPECT_EQ(none.cells, 0);
  EXPECT_TRUE(none.order.empty());
  EXPECT_EQ(colouring_first_open(&none, 0), -1);
}

TEST(Colouring, InitStartsOver) {
  colouring c = coloured(ring_graph(9));
  colouring_init(&c, path_graph(3).get(), &work);
  EXPECT_EQ(order_of(c), (ints{1, 0, 2}));
  EXPECT_EQ(starts_of(c), (ints{0, 1, 3}));
}

TEST(Colouring, FreshMemoryServesAsWell) {
  const graph_ptr g = path_graph(5);
  coloured(g);
  work = refinement_work();
  EXPECT_EQ(order_of(coloured(g)), (ints{2, 1, 3, 0, 4}));
}

TEST(Colouring, IndividualisedVertexGoesAheadAndRefines) {
  const graph_ptr g = ring_graph(4);
  colouring c = coloured(g);
  colouring_individualise(&c, g.get(), 2, &work);
  EXPECT_EQ(order_of(c), (ints{2, 1, 3, 0}));
  EXPECT_EQ(starts_of(c), (ints{0, 1, 3, 4}));
  EXPECT_EQ(colours_of(c), (ints{3, 1, 0, 1}));
  EXPECT_EQ(c.cells, 3);
}

TEST(Colouring, IndividualisingTheLastPairMakesItDiscrete) {
  const graph_ptr g = path_graph(2);
  colouring c = coloured(g);
  colouring_individualise(&c, g.get(), 1, &work);
  EXPECT_EQ(order_of(c), (ints{1, 0}));
  EXPECT_EQ(colours_of(c), (ints{1, 0}));
  EXPECT_EQ(c.cells, 2);
  EXPECT_EQ(colouring_first_open(&c, 0), -1);
}

TEST(Colouring, IndividualisedTwinLeavesTheOthersInTheirOrder) {
  const graph_ptr g = star_graph(6);
  colouring c = coloured(g);
  colouring_individualise(&c, g.get(), 4, &work);
  EXPECT_EQ(order_of(c), (ints{0, 4, 1, 2, 3, 5}));
  EXPECT_EQ(starts_of(c), (ints{0, 1, 2, 6}));
}

TEST(Colouring, OpenCellsAreFoundFromAFirstPositionOn) {
  const colouring c = coloured(path_graph(5)); // 2 | 1 3 | 0 4
  EXPECT_EQ(colouring_first_open(&c, 0), 1);
  EXPECT_EQ(colouring_first_open(&c, 1), 1);
  EXPECT_EQ(colouring_first_open(&c, 3), 3);
  EXPECT_EQ(colouring_first_open(&c, 5), -1);
}

TEST(Colouring, CoarsenedCellsReturnAndTheOrderStays) {
  const graph_ptr g = path_graph(5);
  colouring c = coloured(g); // 2 | 1 3 | 0 4
  const colouring before = c;
  colouring_individualise(&c, g.get(), 3, &work);
  ASSERT_EQ(order_of(c), (ints{2, 3, 1, 4, 0}));
  ASSERT_EQ(c.cells, 5);
  colouring_coarsen(&c, &before);
  EXPECT_EQ(order_of(c), (ints{2, 3, 1, 4, 0}));
  EXPECT_EQ(starts_of(c), (ints{0, 1, 3, 5}));
  EXPECT_EQ(colours_of(c), colours_of(before));
  expect_whole(c, g.get());
}

// Refinement by whole signatures, numbered in order, from the colours given,
// until none is new.
static ints slowly_refined(const graph *g, ints colours) {
  using signature = std::tuple<int, int, int, std::vector<std::pair<int, int>>>;
  for (size_t before = 0;;) {
    std::map<signature, int> numbers;
    std::vector<signature> signatures;
    for (int i = 0; i < g->vs; i++) {
      std::vector<std::pair<int, int>> seen;
      for (int j = g->v[i]; j < g->v[i + 1]; j++)
        seen.emplace_back(g->elabel[j], colours[static_cast<size_t>(g->e[j])]);
      std::sort(seen.begin(), seen.end());
      signatures.emplace_back(colours[static_cast<size_t>(i)],
                              g->v[i] - g->v[i + 1], g->vlabel[i], seen);
      numbers[signatures.back()] = 0;
    }
    int next = 0;
    for (auto &entry : numbers)
      entry.second = next++;
    for (size_t i = 0; i < colours.size(); i++)
      colours[i] = numbers[signatures[i]];
    if (numbers.size() == before)
      return colours;
    before = numbers.size();
  }
}

// Cells numbered 0, 1, ... by vertex.
static ints cell_numbers(const colouring &c) {
  const ints starts = starts_of(c);
  ints numbers;
  for (const int colour : c.colour)
    numbers.push_back(static_cast<int>(
        std::find(starts.begin(), starts.end(), colour) - starts.begin()));
  return numbers;
}

TEST(Colouring, CellsAreThoseOfWholeSignatures) {
  test_rng rng(3);
  for (int round = 0; round < 300; round++) {
    const int vs = 1 + random_below(rng, 12);
    const graph_ptr g = random_graph(rng, {.vs = vs,
                                           .extra_edges = random_below(rng, 6),
                                           .vlabels = 1 + round % 2,
                                           .elabels = 1 + round % 3,
                                           .connected = round % 5 != 0});
    colouring c = coloured(g);
    expect_whole(c, g.get());
    ints expected = slowly_refined(g.get(), ints(static_cast<size_t>(vs), 0));
    ASSERT_EQ(cell_numbers(c), expected) << round;
    for (int open; (open = colouring_first_open(&c, 0)) != -1;) {
      // The last vertex of the first open cell is set apart.
      const int end = c.cell_end[static_cast<size_t>(open)];
      const int v = c.order[static_cast<size_t>(end - 1)];
      for (int &colour : expected)
        colour = 2 * colour + 1;
      expected[static_cast<size_t>(v)]--;
      expected = slowly_refined(g.get(), expected);
      colouring_individualise(&c, g.get(), v, &work);
      expect_whole(c, g.get());
      ASSERT_EQ(cell_numbers(c), expected) << round;
    }
  }
}

TEST(Colouring, LabelsOfAnySizeAndManyEdgesAtAVertex) {
  test_rng rng(5);
  for (int round = 0; round < 300; round++) {
    const int vs = 6 + random_below(rng, 20);
    const graph_ptr g = random_graph(rng, {.vs = vs,
                                           .extra_edges = 3 * vs,
                                           .vlabels = 2,
                                           .elabels = 2,
                                           .connected = true});
    const int vlabel = round % 3 == 1 ? 65535 : 1; // the limits of small ones
    const int elabel = round % 3 == 2 ? 256 : 255;
    for (int i = 0; i < g->vs; i++)
      g->vlabel[i] *= vlabel + round % 2;
    for (int j = 0; j < g->es; j++)
      g->elabel[j] *= elabel;
    const colouring c = coloured(g);
    expect_whole(c, g.get());
    ASSERT_EQ(cell_numbers(c),
              slowly_refined(g.get(), ints(static_cast<size_t>(vs), 0)))
        << round;
  }
}

TEST(ColouringLargestCell, IsTheLargest) {
  colouring c;
  colouring_init(&c, path_graph(5).get(), &work); // 2 | 1 3 | 0 4
  EXPECT_EQ(colouring_largest_cell(&c), 2);
  colouring_init(&c, star_graph(6).get(), &work);
  EXPECT_EQ(colouring_largest_cell(&c), 5);
  colouring_init(&c, make_graph({}, {}).get(), &work);
  EXPECT_EQ(colouring_largest_cell(&c), 0);
}

} // namespace kestro
