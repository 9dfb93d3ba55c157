// Memory runs out at every allocation that the public face makes: what comes of
// it is an error or std::bad_alloc, nothing is left behind, and what was there
// before stays usable.

#include <kestro/database.h>
#include <kestro/matcher.h>

#include <functional>
#include <new>
#include <utility>

#include <gtest/gtest.h>

#include <kestro/error.h>

#include "support/failing_memory.h"
#include "support/same_database.h"
#include "support/temp_file.h"

namespace kestro {
namespace {

const char two_graphs[] = "t # 0\n"
                          "v 7 C\nv 5 O\nv 3 N\nv 1 C\n"
                          "u 7 5 s\nu 5 3 d\nu 3 1 s\n"
                          "t # 1\n"
                          "v 0 C\nv 1 N\nu 0 1 s\n";

const char same_labels[] = "V C\nV N\nV O\nE d\nE s\n";

// What a call does: it ends well, or as memory does.
enum class end { well, in_error, in_bad_alloc };

end end_of(const std::function<void()> &call, long n, refusal how) {
  end found = end::well;
  refuse_allocation(n, how);
  try {
    call();
  } catch (const error &) {
    found = end::in_error;
  } catch (const std::bad_alloc &) {
    found = end::in_bad_alloc;
  }
  refuse_no_allocation();
  return found;
}

// Refuses every allocation of a call in turn, at least as many as given.  More
// than that share of them must end the call: some the C++ library makes up for.
void sweep(
    const std::function<void()> &call, long least,
    const std::function<void()> &afterwards = [] {},
    double share_of_once = 0.8) {
  constexpr long never = 1000000000;
  call(); // what the libraries set aside for good is there from here on
  for (const refusal how : {refusal::once, refusal::lasting}) {
    refuse_allocation(never, how);
    call();
    const long asked = refuse_no_allocation();
    ASSERT_GE(asked, least);
    long failed = 0;
    for (long n = 1; n <= asked; n++) {
      const long before = live_blocks();
      const end ended = end_of(call, n, how);
      ASSERT_EQ(live_blocks(), before) << "allocation " << n;
      failed += ended != end::well;
      afterwards();
    }
    const double share = how == refusal::once ? share_of_once : 0.8;
    EXPECT_GT(static_cast<double>(failed), static_cast<double>(asked) * share);
    ASSERT_EQ(end_of(call, never, how), end::well);
  }
}

} // namespace

TEST(LibraryMemory, RefusedWhileReading) {
  const temp_file file(two_graphs);
  const std::string path = file.path();
  sweep([&] { database::read(path); }, 20);
}

TEST(LibraryMemory, RefusedWhileReadingWithLabels) {
  const temp_file file(two_graphs);
  const temp_file label_file(same_labels);
  const std::string path = file.path();
  const std::string label_path = label_file.path();
  sweep([&] { database::read(path, labels::of_label_file(label_path)); }, 20);
}

TEST(LibraryMemory, RefusedWhileParsing) {
  sweep([] { database::parse(two_graphs); }, 20);
}

TEST(LibraryMemory, RefusedWhileAnErrorIsTold) {
  sweep(
      [] {
        try {
          database::parse("t\nv 0 C\nv 1 C\nu 0 7 s\n", "db.g");
        } catch (const error &e) {
          const error copy = e;
          if (copy.line() == 4)
            return; // as it is with memory
          throw;
        }
      },
      20, [] {},
      0.6); // the error is told all the same when the first pass fails
}

TEST(LibraryMemory, RefusedWhileBuilding) {
  sweep(
      [] {
        database_builder builder;
        builder.add({"C", "O", "N"}, {{0, 1, "s"}, {1, 2, "d"}});
        builder.add({"N", "C"}, {{0, 1, "s"}});
        std::move(builder).build();
      },
      20);
}

// A graph of which too little could be kept is not in the database, nor are its
// labels; the builder goes on.
TEST(LibraryMemory, BuilderIsAsItWasAfterARefusal) {
  std::vector<std::string> texts; // enough of them for tables to grow
  for (int i = 0; i < 200; i++)
    texts.push_back("label" + std::to_string(i));
  const std::vector<std::string_view> many(texts.begin(), texts.end());
  const std::vector<labelled_edge> edges = {{0, 1, "new"}, {1, 2, "newer"}};
  const auto add_some = [](database_builder *builder) {
    builder->add({"C", "O", "label7"}, {{0, 1, "s"}, {1, 2, "d"}});
  };
  database_builder plain;
  add_some(&plain);
  add_some(&plain);
  const database expected = std::move(plain).build();
  for (long n = 1;; n++) {
    database_builder builder;
    add_some(&builder);
    const end ended = end_of([&] { builder.add(many, edges); }, n,
                             n % 2 ? refusal::once : refusal::lasting);
    if (ended == end::well) {
      ASSERT_GT(n, 200);
      break;
    }
    ASSERT_EQ(builder.size(), 1);
    if (n % 7 == 0) { // the same again, now with memory
      builder.add(many, edges);
      ASSERT_EQ(std::move(builder).build()[1].vertices(), 200);
      continue;
    }
    add_some(&builder);
    ASSERT_EQ(difference(std::move(builder).build(), expected), "") << n;
  }
}

TEST(LibraryMemory, RefusedWhileMatching) {
  const database db = database::parse(two_graphs);
  const database other = database::parse("t\nv 0 B\nv 1 C\nv 2 N\nu 2 1 s\n");
  const matcher known(db[1]);
  sweep(
      [&] {
        const matcher m(db[1]);
        m.all(db[0]);
        m.first(other[0]);
        known.count(other[0]);
      },
      20, [&] { ASSERT_EQ(known.count(other[0]), 1); });
}

} // namespace kestro
