// kestro: every frequent connected subgraph of a database of labelled,
// undirected graphs.
//
//   kestro::database_builder molecules;
//   molecules.add({"C", "C", "O"}, {{0, 1, "1"}, {1, 2, "2"}});
//   ...
//   const kestro::database db = std::move(molecules).build();
//   kestro::mine_options options;
//   options.support = kestro::minimum_support::percentage(10);
//   const kestro::result found = kestro::mine(db, options);
//   for (const kestro::pattern &p : found)
//     std::printf("%d-%d: %d\n", p.size(), p.id(), p.support());
//
// Sizes of patterns are numbers of edges.  Support is the number of graphs of
// the database that contain a pattern.  Vertices and graphs are numbered from
// 0.
//
// Everything fails by throwing kestro::error; memory that runs out may come as
// std::bad_alloc, too.  Nothing is printed.  Databases, results and matchers
// may be used by any number of threads at once.
#pragma once

#include <kestro/database.h>
#include <kestro/error.h>
#include <kestro/form.h>
#include <kestro/graph_view.h>
#include <kestro/labels.h>
#include <kestro/matcher.h>
#include <kestro/mine.h>
#include <kestro/minimum_support.h>
#include <kestro/progress.h>
