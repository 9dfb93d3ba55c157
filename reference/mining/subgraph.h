// The id sets of pattern records, further: children, covers, and what TID lists
// go without.
#pragma once

#include "mining/sg_set.h"

namespace kestro {

// Transactions in tid.
int sg_support(const subgraph *sg);

// The ids of all parents, ascending, each once.
int sg_pid_size(const subgraph *sg);
int sg_pid_at(const subgraph *sg, int i);

// add inserts unless present; clear keeps the memory.
int sg_child_size(const subgraph *sg);
int sg_child_at(const subgraph *sg, int i);
void sg_add_child(subgraph *sg, int id);
void sg_clear_child(subgraph *sg);
// Adds each pattern of level to the child sets of its kept parents in prev.
void sg_register_children(const sg_set *level, const sg_set *prev);

void sg_add_tid(subgraph *sg, int tid);
void sg_clear_tid(subgraph *sg);

int sg_cover_size(const subgraph *sg);
int sg_cover_at(const subgraph *sg, int i);
void sg_add_cover(subgraph *sg, int id);
bool sg_in_cover(const subgraph *sg, int id);
void sg_remove_cover(subgraph *sg, int id); // if present
void sg_clear_cover(subgraph *sg);

} // namespace kestro
