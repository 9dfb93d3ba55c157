// Showing pattern records to a developer.
#pragma once

#include <cstdio>

#include "mining/subgraph.h"

namespace kestro {

// The graph, then count, parent, child and pid, a line each.
void sg_print(const subgraph *sg, FILE *out);
// "child: " and the ids, or "child: NULL"; the ids of pid; those of cover.
void sg_print_child(const subgraph *sg, FILE *out);
void sg_print_pid(const subgraph *sg, FILE *out);
void sg_print_cover(const subgraph *sg, FILE *out);
// "pid(u,v): " and the map.
void sg_print_parent(const sg_parent *entry, FILE *out);

} // namespace kestro
