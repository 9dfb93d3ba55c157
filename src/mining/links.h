// Links: for each removable edge of a pattern, the parent that lacks it and a
// map to that parent.  Kept until the next size has been counted.
#pragma once

#include <cstdint>

#include "mining/extension_map.h"
#include "mining/subgraph.h"

namespace kestro {

// What sg->links holds: one element per removable edge, by u, then v, laid out
// as a header of six bytes and a map.
struct sg_link {
  int pid;   // the parent's id in the previous level
  uint8_t u; // the edge u-v, u < v, of this pattern that the parent lacks
  uint8_t v;
  uint8_t map[]; // per vertex, the parent's vertex; link_gone for none
};
inline constexpr uint8_t link_gone = 255;

// Patterns with more vertices have no links.
inline constexpr int link_max_vertices = 254;

// An empty stack for the links of patterns of up to vs vertices; null when that
// is too many.
ksstack *sg_links_create(int vs);
int sg_link_size(const subgraph *sg); // 0 without links
const sg_link *sg_link_at(const subgraph *sg, int i);
// Appends a parent entry as a link; does nothing where sg has no stack.
void sg_add_link(subgraph *sg, const sg_parent *entry);
void sg_clear_links(subgraph *sg);
// The edge of a link as an extension of the parent.
extension sg_link_edge(const subgraph *sg, const sg_link *link);

} // namespace kestro
