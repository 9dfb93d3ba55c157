#include <kestro/mine.h>

#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include <kestro/error.h>

#include "support/library_error.h"

namespace kestro {
namespace {

// What a listener is handed, as text.
class transcript : public listener {
public:
  bool wants_candidates() const override { return true; }
  void on_candidates(const level &generated) override {
    for (int id = 0; id < generated.patterns(); id++)
      log.push_back("candidate " + text_of(generated[id]));
  }
  void on_level(const level &found) override {
    for (int id = 0; id < found.patterns(); id++) {
      const pattern p = found[id];
      log.push_back("pattern " + text_of(p));
      supports.push_back(p.support());
      tids += p.tids().size();
      add(p.graph());
    }
  }

  std::vector<std::string> log;
  std::vector<int> supports;
  size_t tids = 0;

  // The patterns with labels of the database.
  database patterns(const labels &known) const {
    database_builder builder(known);
    for (const copied &g : copies_)
      builder.add(g.vertices, g.edges);
    return std::move(builder).build();
  }

private:
  struct copied {
    std::vector<std::string_view> vertices;
    std::vector<labelled_edge> edges;
  };

  static std::string text_of(const pattern &p) {
    std::string text = std::to_string(p.size()) + '-' + std::to_string(p.id()) +
                       ' ' + std::to_string(p.support()) + ':';
    const graph_view g = p.graph();
    for (int v = 0; v < g.vertices(); v++)
      text += ' ' + std::string(g.vertex_label(v));
    for (const edge &e : g.all_edges())
      text += ' ' + std::to_string(e.from) + '-' + std::to_string(e.to) +
              std::string(g.edge_label(e));
    for (const int parent : p.parents())
      text += " <" + std::to_string(parent);
    return text;
  }

  void add(graph_view g) {
    copied copy;
    for (int v = 0; v < g.vertices(); v++)
      copy.vertices.push_back(g.vertex_label(v));
    for (const edge &e : g.all_edges())
      copy.edges.push_back({e.from, e.to, g.edge_label(e)});
    copies_.push_back(std::move(copy));
  }

  std::vector<copied> copies_;
};

// Rings, paths and stars with labels of two kinds.
database some_graphs() {
  database_builder db;
  for (int i = 0; i < 3; i++) {
    db.add({"C", "C", "O", "C"},
           {{0, 1, "s"}, {1, 2, "s"}, {2, 3, "d"}, {3, 0, "s"}});
    db.add({"C", "O", "C"}, {{0, 1, "s"}, {1, 2, "d"}});
    db.add({"N", "C", "C", "C"}, {{0, 1, "s"}, {0, 2, "s"}, {0, 3, "t"}});
  }
  return std::move(db).build();
}

class MineKnown : public testing::Test {
protected:
  MineKnown() : db(some_graphs()) {
    options.support = minimum_support::count(2);
    options.kind = form::exact;
    whole = mine(db, options, told);
    patterns = told.patterns(db.label_set());
  }

  mining_summary mine_again(transcript *to) const {
    return mine_known(patterns, told.supports, db.size(), options, *to);
  }
  std::string refusal() const {
    transcript ignored;
    return error_text([&] { mine_again(&ignored); });
  }

  database db;
  mine_options options;
  transcript told;
  mining_summary whole;
  database patterns;
};

} // namespace

TEST_F(MineKnown, HandsOverWhatMiningTheGraphsDoes) {
  ASSERT_GT(told.log.size(), 10U);
  ASSERT_GT(told.tids, 0U);
  for (const int jobs : {1, 3}) {
    options.jobs = jobs;
    transcript again;
    const mining_summary summary = mine_again(&again);
    EXPECT_EQ(again.log, told.log);
    EXPECT_EQ(again.tids, 0U);
    EXPECT_EQ(summary.why, ending::complete);
    EXPECT_EQ(summary.min_support, whole.min_support);
    EXPECT_EQ(summary.last_size, whole.last_size);
    EXPECT_EQ(summary.order_dependent, whole.order_dependent);
    ASSERT_EQ(summary.sizes.size(), whole.sizes.size());
    for (size_t i = 0; i < whole.sizes.size(); i++) {
      EXPECT_EQ(summary.sizes[i].candidates, whole.sizes[i].candidates);
      EXPECT_EQ(summary.sizes[i].frequent, whole.sizes[i].frequent);
    }
  }
}

TEST_F(MineKnown, AHigherSupportAndBoundsOfSizesAreThoseOfMining) {
  for (const int support : {3, 4, 6, 9, 10})
    for (const int max_size : {1, 2, 3}) {
      options.support = minimum_support::count(support);
      options.min_size = support % 2;
      options.max_size = max_size;
      transcript expected;
      const ending why = mine(db, options, expected).why;
      transcript again;
      EXPECT_EQ(mine_again(&again).why, why);
      EXPECT_EQ(again.log, expected.log);
    }
}

TEST_F(MineKnown, ShareOfTheGraphs) {
  options.support = minimum_support::fraction(1);
  transcript none;
  EXPECT_EQ(mine_again(&none).min_support, 9);
}

TEST_F(MineKnown, LimitsEndIt) {
  options.pattern_limit = 0;
  transcript first;
  EXPECT_EQ(mine_again(&first).why, ending::pattern_limit);
  options.pattern_limit = {};
  options.time_limit = std::chrono::duration<double>(0);
  transcript none;
  EXPECT_EQ(mine_again(&none).why, ending::time_limit);
  EXPECT_TRUE(none.log.empty());
}

TEST_F(MineKnown, NoPatterns) {
  patterns = database();
  told.supports.clear();
  transcript none;
  EXPECT_EQ(mine_again(&none).last_size, 0);
}

TEST_F(MineKnown, PassesOverPatternsWithoutAnEdge) {
  database_builder builder(db.label_set());
  builder.add({"C"}, {});
  patterns = std::move(builder).build();
  told.supports = {9};
  transcript none;
  EXPECT_EQ(mine_again(&none).last_size, 0);
}

TEST_F(MineKnown, RefusesWhatMakesNoSense) {
  options.kind = form::prescribed;
  EXPECT_EQ(refusal(), "known patterns are in the exact form only");
  options.kind = form::exact;
  options.keep_embeddings = true;
  EXPECT_EQ(refusal(), "without graphs there are no embeddings to keep");
  options.keep_embeddings = false;
  told.supports[0] = 10;
  EXPECT_EQ(refusal(), "a known pattern cannot be in 10 of 9 graphs");
  told.supports[0] = -1;
  EXPECT_EQ(refusal(), "a known pattern cannot be in -1 of 9 graphs");
  told.supports = {2};
  EXPECT_EQ(refusal(), std::to_string(patterns.size()) +
                           " known patterns, but 1 supports");
  transcript ignored;
  EXPECT_EQ(
      error_text([&] { mine_known(database(), {}, -1, options, ignored); }),
      "there cannot be -1 graphs");
}

TEST_F(MineKnown, RefusesEqualPatterns) {
  database_builder builder(db.label_set());
  for (int i = 0; i < 2; i++)
    builder.add({"C", "C"}, {{0, 1, "s"}});
  patterns = std::move(builder).build();
  told.supports = {3, 3};
  EXPECT_EQ(refusal(), "two of the known patterns of 1 edges are equal");
}

// The path C-N-C is in the exact form with N first.
TEST_F(MineKnown, RefusesToLoseAPattern) {
  const auto missing = [&](std::initializer_list<std::string_view> vertices,
                           std::initializer_list<labelled_edge> edges) {
    database_builder builder(db.label_set());
    builder.add({"C", "N"}, {{0, 1, "s"}});
    builder.add(vertices, edges);
    patterns = std::move(builder).build();
    told.supports = {3, 3};
    return refusal();
  };
  EXPECT_EQ(missing({"N", "C", "C"}, {{0, 1, "s"}, {0, 2, "s"}}),
            "nothing was thrown");
  EXPECT_EQ(missing({"C", "N", "C"}, {{0, 1, "s"}, {1, 2, "s"}}),
            "of 1 known patterns of 2 edges only 0 came up");
  EXPECT_EQ(missing({"C", "O", "C"}, {{0, 1, "s"}, {1, 2, "s"}}),
            "of 1 known patterns of 2 edges only 0 came up");
  EXPECT_EQ(missing({"O", "C"}, {{0, 1, "s"}}),
            "of 2 known patterns of 1 edges only 1 came up");
  EXPECT_EQ(missing({"C", "C", "C"}, {{0, 1, "s"}, {0, 2, "s"}, {1, 2, "s"}}),
            "of 1 known patterns of 3 edges only 0 came up");
}

} // namespace kestro
