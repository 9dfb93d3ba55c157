// Reducing the output files of a finished run to its maximal patterns.
#pragma once

#include <cstdio>

#include "base/ksstack.h"
#include "graph/label_set.h"
#include "mining/statistics.h"

namespace kestro {

// A written pattern.
struct pattern_tag {
  int size;   // edges
  int id;     // position in its level
  int active; // 1; 0 once known not to be maximal
};

// Rewrites the files to hold only the maximal patterns: those that no written
// pattern of the next size names as a parent.  Patterns keep their ids.  The
// run's statistics are recounted.  The flags are not consulted; a null tid_file
// means that there is none.  With no pattern at all the files stay as they are.
void select_maximal_patterns(const label_set *ls, int minsize, int maximal,
                             int parent_children_list, int tid_list,
                             const char *pattern_file, const char *pc_file,
                             const char *tid_file, statistics *stats);

// A new stack of the tags of the maximal patterns by size, then id; sets the
// run's statistics to count them.  Parents smaller than minsize are not looked
// up.
ksstack *find_maximal_tags(const char *pc_file, int minsize, statistics *stats);

// Parses one line of a PC-list file: the pattern's size and id into *tag, its
// parents' ids into the int stack parents, emptied before.  False for a line
// that does not start with an id, and for the size INT_MIN.  Dies with "invalid
// input at" at a token that is no id.
bool get_pattern_and_parents(const char *line, pattern_tag *tag,
                             ksstack *parents);

// Keeps the patterns of tags in a pattern file, and the comments before its
// first graph and behind its last.
void rewrite_pattern_file(const ksstack *tags, const label_set *ls,
                          const char *pattern_file);
// Keeps the lines that start with the id of one of tags.
void filter_id_lines(const ksstack *tags, const char *file);

} // namespace kestro
