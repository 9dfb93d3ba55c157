// The settings of a run: from the command line, and what the run derives from
// them.
#pragma once

#include <cstdio>
#include <memory>

#include <kestro/form.h>

#include "base/open_file.h"
#include "base/xmalloc.h"

namespace kestro {

// What to mine.
struct mining_settings {
  double support = 5.0;         // minimum support, per cent of transactions
  int maxsize = 2147483647;     // largest pattern size, in edges
  int minsize = 1;              // smallest pattern size to report, in edges
  int stabilizer_threshold = 5; // of canonical labelling
  int min_support_count = -1;   // in transactions, once these are read
  // What no option of the command line sets.
  int jobs = 1; // threads
  form kind = form::prescribed;
};

// What to read and to write.
struct output_settings {
  const char *input_file = nullptr;       // FILE, borrowed
  int candidates = 0;                     // flag: write the candidate file
  int maximal = 0;                        // flag: keep only maximal patterns
  int parent_children_list = 0;           // flag: write the PC list
  int tid_list = 0;                       // flag: write the TID list
  const char *load_labels_file = nullptr; // borrowed; null: derived from FILE
  const char *save_labels_file = nullptr; // borrowed; null: derived from FILE
  int load_labels = 0; // flag: read the label set from a label file
  int save_labels = 0; // flag: only write the label set
};

// The outputs of a run, null where there is none.
struct output_streams {
  xptr<char> candidates_file; // names
  xptr<char> pattern_file;
  xptr<char> pc_file;
  xptr<char> tid_file;
  file_ptr candidates_stream; // open while the run writes them
  file_ptr pattern_stream;
  file_ptr pc_stream;
  file_ptr tid_stream;
};

struct options : mining_settings, output_settings, output_streams {};

// What the command line asks for.
enum class command { run, show_usage, refuse };

// Reads the command line into o, whose strings borrow from argv.  run: mine
// o->input_file; show_usage: asked for, or FILE is missing; refuse: getopt has
// printed what is wrong on standard error.  getopt keeps its state in globals,
// so only one thread at a time may parse.
command parse_command_line(int argc, char **argv, options *o);

// Prints the usage text.
void usage(const char *program, FILE *out);

// A new name: file with suffix in place of its extension, which starts at its
// last "." wherever that stands, save at its very first character; appended
// when there is none.
xptr<char> make_output_name(const char *file, const char *suffix);

} // namespace kestro
