// The patterns of a run as arrays.
#pragma once

#include <cstdint>
#include <vector>

#include <kestro/mine.h>

#include <nanobind/nanobind.h>

namespace kestro_python {

// Patterns by size, then id, one behind another.  A pattern has as many edges
// as its size says, so edges need no offsets.
class packed_patterns {
public:
  packed_patterns();
  void add(const kestro::level &found);
  // The arrays by name, with TIDs or else supports; this is empty afterwards.
  // Needs the global lock.
  nanobind::dict hand_over(bool with_tids);

private:
  void make_room(const kestro::level &found);
  void add(const kestro::pattern &p);

  std::vector<int32_t> level_sizes_; // edges of each pattern, per level
  std::vector<int64_t> level_ends_;  // patterns up to its end, per level
  std::vector<int64_t> vertex_offsets_;
  std::vector<int32_t> vertex_labels_; // ids
  std::vector<int32_t> edges_;         // two ends per edge
  std::vector<int32_t> edge_labels_;   // ids
  std::vector<int32_t> supports_;
  std::vector<int64_t> tid_offsets_;
  std::vector<int32_t> tids_;
  std::vector<int64_t> parent_offsets_;
  std::vector<int32_t> parents_;         // ids in the level below
  std::vector<uint8_t> order_dependent_; // 0 or 1
};

} // namespace kestro_python
