// Mining what is sought, over random databases: it finds what mining finds, as
// far as it is in a pattern that is sought.  Seeds are fixed.

#include <kestro/matcher.h>
#include <kestro/mine.h>

#include <array>
#include <numeric>
#include <utility>

#include <gtest/gtest.h>

#include "support/library_error.h"
#include "support/random_database.h"

namespace kestro {

namespace {

constexpr int database_count = 100;
constexpr int edge_limit = 9; // of a transaction

// A pattern as it was handed over; its parents by their positions.
struct found_pattern {
  std::vector<std::string> vertices;
  std::vector<std::array<int, 3>> edges; // ends, label
  std::vector<int> tids;
  std::vector<int> parents;
  bool operator==(const found_pattern &) const = default;
};

class collector : public listener {
public:
  void on_level(const level &of) override {
    const int below = begin_;
    begin_ = static_cast<int>(found.size());
    for (int id = 0; id < of.patterns(); id++)
      add(of[id], below);
  }

  std::vector<found_pattern> found;

private:
  void add(const pattern &p, int below) {
    const graph_view g = p.graph();
    found_pattern one;
    for (int v = 0; v < g.vertices(); v++)
      one.vertices.emplace_back(g.vertex_label(v));
    for (const edge &e : g.all_edges())
      one.edges.push_back({e.from, e.to, e.label});
    one.tids.assign(p.tids().begin(), p.tids().end());
    EXPECT_EQ(p.support(), static_cast<int>(one.tids.size()));
    for (const int id : p.parents())
      one.parents.push_back(below + id);
    found.push_back(std::move(one));
  }

  int begin_ = 0; // of the level that came last
};

mine_options exact(int minsup) {
  mine_options options;
  options.support = minimum_support::count(minsup);
  options.kind = form::exact;
  return options;
}

// Some of these patterns with their vertices in another order, as a database
// with the labels of the graphs.
database some_of(const std::vector<found_pattern> &found, const labels &known,
                 int most, dice *chance) {
  database_builder builder(known);
  for (int n = chance->between(0, most); n > 0 && !found.empty(); n--) {
    const found_pattern &one = found[static_cast<size_t>(
        chance->below(static_cast<int>(found.size())))];
    std::vector<int> place(one.vertices.size());
    std::iota(place.begin(), place.end(), 0);
    for (size_t i = place.size(); i > 1; i--)
      std::swap(place[i - 1],
                place[static_cast<size_t>(chance->below(static_cast<int>(i)))]);
    std::vector<std::string_view> vertices(one.vertices.size());
    for (size_t v = 0; v < place.size(); v++)
      vertices[static_cast<size_t>(place[v])] = one.vertices[v];
    std::vector<labelled_edge> edges;
    for (const auto &[from, to, label] : one.edges)
      edges.push_back({place[static_cast<size_t>(from)],
                       place[static_cast<size_t>(to)],
                       known.edge_label(label)});
    builder.add(vertices, edges);
  }
  return std::move(builder).build();
}

// The patterns of the whole run that are in one that is sought, with their
// parents at their new positions.
std::vector<found_pattern> part_of(const std::vector<found_pattern> &whole,
                                   const labels &known,
                                   const database &sought) {
  std::vector<found_pattern> part;
  std::vector<int> place(whole.size(), -1);
  for (size_t i = 0; i < whole.size(); i++) {
    database_builder builder(known);
    std::vector<std::string_view> vertices(whole[i].vertices.begin(),
                                           whole[i].vertices.end());
    std::vector<labelled_edge> edges;
    for (const auto &[from, to, label] : whole[i].edges)
      edges.push_back({from, to, known.edge_label(label)});
    builder.add(vertices, edges);
    const database alone = std::move(builder).build();
    const matcher in(alone[0]);
    bool wanted = false;
    for (int k = 0; k < sought.size(); k++)
      wanted = wanted || in.is_in(sought[k]);
    if (!wanted)
      continue;
    place[i] = static_cast<int>(part.size());
    part.push_back(whole[i]);
    for (int &parent : part.back().parents)
      parent = place[static_cast<size_t>(parent)];
  }
  return part;
}

std::vector<found_pattern> sought_in(const database &db, const database &sought,
                                     int minsup, int jobs) {
  mine_options options = exact(minsup);
  options.jobs = jobs;
  collector to;
  mine_sought(db, sought, options, to);
  return to.found;
}

database random_graphs(dice *chance) {
  return database::parse(
      database_text(random_database(chance, edge_limit), text_style{}));
}

} // namespace

TEST(SoughtPatterns, AreFoundAsMiningFindsThem) {
  size_t found = 0;
  size_t left_out = 0;
  for (uint64_t seed = 0; seed < database_count; seed++) {
    dice chance(seed);
    const database db = random_graphs(&chance);
    const int minsup = chance.between(1, 2);
    mine_options options = exact(minsup);
    options.max_size = 6;
    collector whole;
    mine(db, options, whole);
    const database sought = some_of(whole.found, db.label_set(), 6, &chance);
    const auto expected = part_of(whole.found, db.label_set(), sought);
    for (const int jobs : {1, 3})
      ASSERT_EQ(sought_in(db, sought, minsup, jobs), expected)
          << "seed " << seed << ", " << jobs << " jobs";
    found += expected.size();
    left_out += whole.found.size() - expected.size();
  }
  EXPECT_GT(found, 5U * database_count);
  EXPECT_GT(left_out, 10U * database_count);
}

TEST(SoughtPatterns, OfAnotherDatabaseAreFoundWhereTheyAre) {
  const database db = database::parse("t\nv 0 A\nv 1 B\nv 2 A\nu 0 1 x\n"
                                      "t\nv 0 A\nv 1 B\nv 2 A\nu 0 1 x\n"
                                      "u 1 2 y\n");
  database_builder builder(db.label_set());
  builder.add({"A", "B", "A"}, {{0, 1, "x"}, {1, 2, "x"}});
  const std::vector<found_pattern> found =
      sought_in(db, std::move(builder).build(), 1, 1);
  ASSERT_EQ(found.size(), 1U);
  EXPECT_EQ(found[0].vertices, (std::vector<std::string>{"A", "B"}));
  EXPECT_EQ(found[0].tids, (std::vector<int>{0, 1}));
}

TEST(SoughtPatterns, WithoutEdgesNothingIsSought) {
  const database db = database::parse("t\nv 0 A\nv 1 B\nu 0 1 x\n");
  database_builder builder(db.label_set());
  builder.add({"A"}, {});
  builder.add({}, {});
  EXPECT_TRUE(sought_in(db, std::move(builder).build(), 1, 1).empty());
}

TEST(SoughtPatterns, MakeSense) {
  const database db = database::parse("t\nv 0 A\nv 1 B\nu 0 1 x\n");
  const auto refusal = [&](const database &sought, form kind) {
    return error_text([&] {
      mine_options options = exact(1);
      options.kind = kind;
      collector to;
      mine_sought(db, sought, options, to);
    });
  };
  EXPECT_EQ(refusal(db, form::exact), "nothing was thrown");
  EXPECT_EQ(refusal(db, form::prescribed),
            "sought patterns are in the exact form only");
  const std::string other = "the patterns have other labels than the graphs";
  for (const char *text :
       {"t\nv 0 A\nv 1 A\nu 0 1 x\n", "t\nv 0 A\nv 1 C\nu 0 1 x\n",
        "t\nv 0 A\nv 1 B\nu 0 1 y\n"})
    EXPECT_EQ(refusal(database::parse(text), form::exact), other);
  database_builder apart(db.label_set());
  apart.add({"A", "B"}, {{0, 1, "x"}});
  apart.add({"A", "B", "A"}, {{0, 1, "x"}});
  EXPECT_EQ(refusal(std::move(apart).build(), form::exact),
            "pattern 1 is not connected");
}

} // namespace kestro
