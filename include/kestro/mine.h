// Mining a database.
#pragma once

#include <chrono>
#include <cstddef>
#include <iterator>
#include <memory>
#include <optional>
#include <span>
#include <stop_token>
#include <string_view>
#include <vector>

#include <kestro/database.h>
#include <kestro/export.h>
#include <kestro/form.h>
#include <kestro/graph_view.h>
#include <kestro/minimum_support.h>
#include <kestro/progress.h>

namespace kestro {

// What to mine, and how.
struct mine_options {
  minimum_support support = minimum_support::percentage(5);
  int min_size = 1;                 // smallest patterns reported, in edges
  std::optional<int> max_size = {}; // largest patterns, in edges; nothing: all
  int jobs = 1; // threads, 1 or more; results are the same for any number
  form kind = form::prescribed;
  int stabilizer_threshold = 5; // of canonical labelling, in vertices
  bool keep_embeddings = false; // one per pattern and graph
  std::stop_token stop = {};    // ends the run early when it is requested
  // Ends the run early when it has taken so long.  After that, or a request, it
  // still frees its memory, which for a million candidates takes two tenths of
  // a second.
  std::optional<std::chrono::duration<double>> time_limit = {};
  // Ends the run with the level after which there are more patterns than this,
  // which is reported whole.
  std::optional<long long> pattern_limit = {};
};

// Why a run ended.
enum class ending {
  complete,      // every frequent pattern was found
  max_size,      // larger patterns may exist, as after all endings below
  pattern_limit, // the level that passed it was reported
  time_limit,    // all complete levels were reported
  stopped,       // on request; likewise
};

enum class answer { no, yes, unknown };

struct level_data;

// One pattern of a level.  Borrows from what it came from: a level, which
// lasts for a call, or a result.
class KESTRO_API pattern {
public:
  int size() const; // edges
  int id() const;   // number in its level; the program calls it size-id
  graph_view graph() const;
  int support() const; // graphs of the database that contain it
  // Their numbers, ascending; none after mine_known.
  std::span<const int> tids() const;
  // The ids of its parents, ascending: the patterns of the level below that it
  // becomes when one edge is taken out.  Also where that level is below
  // min_size.  (Positions in a result: result::parents.)
  std::span<const int> parents() const;
  // Where it lies in graph tids()[i], per vertex of graph(): the embedding that
  // matcher::first gives.  Throws error for i out of range; empty unless
  // embeddings are kept.
  std::span<const int> embedding(int i) const;
  // Whether graph() may depend on the order in which vertices came.
  bool is_order_dependent() const;

private:
  friend struct access;
  pattern(const level_data *l, int id) : level_(l), id_(id) {}
  const level_data *level_;
  int id_;
};

// All patterns of one size, in the order of their ids.
class KESTRO_API level {
public:
  int size() const;                 // edges of each
  int patterns() const;             // how many
  pattern operator[](int id) const; // throws error for an id out of range

private:
  friend struct access;
  explicit level(const level_data *l) : level_(l) {}
  const level_data *level_;
};

// Who receives what a run finds, as it finds it.  All calls come from the
// thread that called mine; what they throw ends the run and comes out of it.  A
// call may request the stop that the options hold: no further level comes then.
class KESTRO_API listener {
public:
  virtual ~listener() = default;
  // A complete level of at least min_size, not empty; valid for the call.
  virtual void on_level(const level &found) = 0;
  // Whether the candidates are to be shown too.
  virtual bool wants_candidates() const { return false; }
  // The candidates of a size of 3 or more, below min_size too, before they are
  // counted: with their parents, without support and TIDs.  Valid for the call.
  virtual void on_candidates(const level &generated) {
    static_cast<void>(generated);
  }
  // After every item, or every few; some steps of a size may have none.
  virtual void on_progress(const progress &now) { static_cast<void>(now); }
};

// What is known of a run at its end.
struct mining_summary {
  struct counts {
    long long candidates = 0; // generated; 0 for sizes 1 and 2
    long long frequent = 0;
  };
  ending why = ending::complete;
  int min_support = 0; // graphs
  // The last size tried, which may have no pattern, 0 where there is no
  // frequent edge; after time_limit and stopped the last complete one.
  int last_size = 0;
  // Candidates, frequent or not, whose form may depend on the order of
  // vertices; where it is 0 both forms give the same patterns in the same
  // order.  The same for any number of jobs, but for runs that were stopped.
  long long order_dependent = 0;
  std::vector<counts> sizes; // by size, from 0 to last_size
};

// Mines and hands over level by level; only what the newest levels need is in
// memory.  Throws error for fewer than 1 job and for limits that are negative
// or no number.
KESTRO_API mining_summary mine(const database &db, const mine_options &options,
                               listener &to);

// Mines without graphs, by supports that are known from elsewhere, such as
// those of the parts of a database that no one machine holds.  What the
// listener is handed is what mine() over the whole database hands over, ids,
// parents and candidates included, but for TIDs, of which there are none.
//
// Pattern i of patterns is in supports[i] of so many graphs.  Those that are
// frequent have to be there, all of them, in the exact form and with the labels
// of the whole database (database_builder's labels given); then no candidate
// needs counting.  Patterns without an edge are passed over.
//
// Throws error for another form, for embeddings that are to be kept, for a
// negative number of graphs, for supports of another number than the patterns
// or outside of 0 to graphs, for two equal patterns, and where a frequent
// pattern of a size that is complete never came up: it is in another form, or
// one of its parents is missing.
KESTRO_API mining_summary mine_known(const database &patterns,
                                     std::span<const int> supports, int graphs,
                                     const mine_options &options, listener &to);

// Mines only patterns that are sought and what is contained in them: the
// patterns of mine() over the same database that are connected subgraphs of one
// of these, in the order of that run, with ids and parents among themselves.
// From three edges on all others are dropped before they are counted.
//
// Patterns without an edge are passed over.  Throws error for another form than
// the exact one, for other labels than the database's (database_builder's
// labels given), and for a pattern that is not connected.
KESTRO_API mining_summary mine_sought(const database &db,
                                      const database &patterns,
                                      const mine_options &options,
                                      listener &to);

struct result_data;

// All patterns of a run, in memory.  Copies share them; there is no move, so
// what was copied from stays.  Functions throw error for a position out of
// range.
class KESTRO_API result {
public:
  class iterator; // belongs to the result that it was taken from

  result(const result &) = default;
  result &operator=(const result &) = default;

  int size() const; // patterns
  // Pattern i, by size, then id.
  pattern operator[](int i) const;
  iterator begin() const;
  iterator end() const;

  // The position of a pattern by size and id, nothing when it is not there.
  std::optional<int> find(int size, int id) const;
  // Positions of the patterns one edge larger that contain pattern i, and of
  // those one edge smaller that it contains, ascending; none that are smaller
  // for patterns of min_size.
  std::span<const int> children(int i) const;
  std::span<const int> parents(int i) const;
  // Whether no pattern one edge larger with the same support, or none at all,
  // contains pattern i; unknown where larger ones may exist that the run did
  // not reach.
  answer is_closed(int i) const;
  answer is_maximal(int i) const;

  const mining_summary &summary() const;
  const database &mined() const;

private:
  friend struct access;
  explicit result(std::shared_ptr<const result_data> data);
  std::shared_ptr<const result_data> data_;
};

// Mines into memory.
KESTRO_API result mine(const database &db, const mine_options &options = {});

// Over the patterns of a result.
class result::iterator {
public:
  using value_type = pattern;
  using difference_type = std::ptrdiff_t;
  using iterator_category = std::input_iterator_tag;

  iterator() = default;
  iterator(const result *of, int at) : of_(of), at_(at) {}
  pattern operator*() const { return (*of_)[at_]; }
  iterator &operator++() {
    ++at_;
    return *this;
  }
  iterator operator++(int) { return {of_, at_++}; }
  bool operator==(const iterator &other) const = default;

private:
  const result *of_ = nullptr;
  int at_ = 0;
};

} // namespace kestro
