// Selection of maximal patterns.
//
// The PC-list file names every pattern with all its parents, so one pass over
// it shows which patterns are contained in a larger one.  The files are then
// rewritten through a temporary file; nothing else may use them meanwhile.

#include "mining/maximal.h"

#include <cctype>
#include <climits>
#include <string>
#include <utility>

#include "base/comparators.h"
#include "base/error.h"
#include "base/fgetl.h"
#include "base/open_file.h"
#include "base/output_file.h"
#include "base/text_lines.h"
#include "graph/graph_text.h"
#include "graph/transactions.h"

namespace kestro {

static int compare_tags(const void *a, const void *b) {
  return compare_int_arrays(static_cast<const int *>(a),
                            static_cast<const int *>(b), 2);
}

static ksstack_ptr new_stack(size_t element_size) {
  return ksstack_ptr(ksstack_new(1024, static_cast<int>(element_size)));
}

void select_maximal_patterns(const label_set *ls, int minsize, int /*maximal*/,
                             int /*parent_children_list*/, int /*tid_list*/,
                             const char *pattern_file, const char *pc_file,
                             const char *tid_file, statistics *stats) {
  const ksstack_ptr tags(find_maximal_tags(pc_file, minsize, stats));
  if (tags->count == 0)
    return;
  rewrite_pattern_file(tags.get(), ls, pattern_file);
  if (pc_file)
    filter_id_lines(tags.get(), pc_file);
  if (tid_file)
    filter_id_lines(tags.get(), tid_file);
}

static void deactivate_pattern_tag(ksstack *tags, int size, int id) {
  const pattern_tag key = {size, id, 0};
  void *ptr = ksstack_bsearch(&key, tags, compare_tags);
  KESTRO_CHECK(ptr);
  static_cast<pattern_tag *>(ptr)->active = 0;
}

// The tags of all patterns of a PC-list file, the non-maximal ones inactive.
static ksstack_ptr read_tags(const char *pc_file, int minsize) {
  const file_ptr stream(open_file(pc_file, "r"));
  line_buffer line;
  const ksstack_ptr parents = new_stack(sizeof(int));
  ksstack_ptr tags = new_stack(sizeof(pattern_tag));
  while (fgetl(line, stream.get())) {
    pattern_tag tag = {0, 0, 1};
    if (line.text[0] == '#' ||
        !get_pattern_and_parents(line.text, &tag, parents.get()))
      continue;
    ksstack_push(&tag, tags.get());
    for (int i = 0; tag.size - 1 >= minsize && i < parents->count; i++)
      deactivate_pattern_tag(tags.get(), tag.size - 1,
                             ksstack_array<int>(parents.get())[i]);
  }
  check_read(stream.get(), pc_file);
  return tags;
}

ksstack *find_maximal_tags(const char *pc_file, int minsize,
                           statistics *stats) {
  const ksstack_ptr tags = read_tags(pc_file, minsize);
  ksstack_ptr kept = new_stack(sizeof(pattern_tag));
  stats_reset(stats);
  for (int i = 0; i < tags->count; i++) {
    const pattern_tag *tag = &ksstack_array<pattern_tag>(tags.get())[i];
    if (!tag->active)
      continue;
    ksstack_push(tag, kept.get());
    stats_increment(stats, stats_frequent, tag->size);
  }
  return kept.release();
}

static const char *skip_blanks(const char *p) {
  while (isspace(static_cast<unsigned char>(*p)))
    p++;
  return p;
}

static const char *skip_word(const char *p) {
  while (*p && !isspace(static_cast<unsigned char>(*p)))
    p++;
  return p;
}

bool get_pattern_and_parents(const char *line, pattern_tag *pt,
                             ksstack *parents) {
  parents->count = 0;
  if (sscanf(line, "%d-%d", &pt->size, &pt->id) != 2 || pt->size == INT_MIN)
    return false; // no size is one less than INT_MIN
  const char *p = skip_blanks(skip_word(line));
  for (; *p; p = skip_blanks(skip_word(p))) {
    int size;
    int id;
    if (sscanf(p, "%d-%d", &size, &id) != 2)
      die("subgraph.c", "invalid input at %d in %s", static_cast<int>(p - line),
          line);
    KESTRO_CHECK(size == pt->size - 1);
    ksstack_push(&id, parents);
  }
  return true;
}

// The first non-blank character of a pattern-file line, in lower case.
static int first_character(const char *line) {
  char c;
  if (sscanf(line, " %c ", &c) != 1)
    die("subgraph.c", "invalid input line: %s\n", line);
  return tolower(static_cast<unsigned char>(c));
}

namespace {

// Walks a pattern file's graphs in step with the wanted tags.
class pattern_filter {
public:
  pattern_filter(const ksstack *tags, const label_set *ls, text_buffer &out)
      : tags_(tags), graphs_(ls), out_(out) {}

  // The graph behind the header line, which is copied with it if wanted.
  void graph_line(const char *header, const graph *g) {
    if (g->es / 2 > size_) {
      size_ = g->es / 2;
      index_ = 0;
    }
    if (wanted()) {
      out_.add(header);
      graphs_.write(g, out_);
      next_++;
    }
    index_++;
  }

private:
  bool wanted() const {
    if (next_ >= tags_->count)
      return false;
    const pattern_tag &tag = ksstack_array<pattern_tag>(tags_)[next_];
    return tag.size == size_ && tag.id == index_;
  }

  const ksstack *tags_;
  graph_writer graphs_;
  text_buffer &out_;
  int size_ = 0;  // of the graphs met last
  int index_ = 0; // of the next graph of that size
  int next_ = 0;  // the wanted tag
};

} // namespace

// Copies the wanted parts of a pattern file to a stream.  Lines are read as
// into a buffer of *size bytes.
static void filter_patterns(const file_text &patterns, const ksstack *tags,
                            const label_set *ls, int *size, FILE *stream) {
  text_buffer out(stream);
  pattern_filter filter(tags, ls, out);
  transaction_reader reader(ls);
  text_lines lines(patterns);
  size_t start = 0; // of the line read last
  bool at_graph = false;
  for (;;) {
    const size_t here = lines.position();
    const char *line = lines.next(size);
    if (!line)
      break;
    start = here;
    const int c = first_character(line);
    at_graph = c == 't';
    if (c == '#') {
      out.add(line);
    } else if (at_graph) {
      const std::string header = line; // which ends as reading goes on
      lines.seek(start);
      filter.graph_line(header.c_str(), reader.read(lines).get());
    }
  }
  if (!at_graph)
    return;
  // Reading the last graph has passed over the comments behind it.
  lines.seek(start);
  while (const char *line = lines.next(size))
    if (line[0] == '#')
      out.add(line);
}

// Goes back to where a temporary file that has been written begins.
static void start_reading(FILE *temporary) {
  flush_output(temporary, temporary_file);
  if (fseek(temporary, 0, SEEK_SET))
    throw fatal_error("can't read a file '" + std::string(temporary_file) +
                      "'\n");
}

void rewrite_pattern_file(const ksstack *tags, const label_set *ls,
                          const char *pattern_file) {
  file_text text = read_file(pattern_file);
  const file_ptr temporary = open_temporary();
  int size = line_buffer::first_size; // grown by the first pass, kept after it
  filter_patterns(text, tags, ls, &size, temporary.get());
  start_reading(temporary.get());
  text = read_text(temporary.get(), temporary_file);
  file_ptr patterns(open_file(pattern_file, "w"));
  text_lines lines(text);
  while (const char *line = lines.next(&size))
    fputs(line, patterns.get());
  close_output(std::move(patterns), pattern_file);
}

// All bytes of a temporary file.
static void copy_bytes(FILE *from, FILE *to) {
  char block[65536];
  size_t bytes;
  while ((bytes = fread(block, 1, sizeof block, from)) > 0)
    fwrite(block, 1, bytes, to);
  check_read(from, temporary_file);
}

void filter_id_lines(const ksstack *tags, const char *file) {
  file_ptr lines(open_file(file, "r"));
  const file_ptr temporary = open_temporary();
  line_buffer line;
  while (fgetl(line, lines.get())) {
    pattern_tag key = {0, 0, 0};
    if (sscanf(line.text, " %d-%d ", &key.size, &key.id) != 2)
      die("subgraph.c", "invalid input line: %s\n", line.text);
    if (ksstack_bsearch(&key, tags, compare_tags))
      fputs(line.text, temporary.get());
  }
  check_read(lines.get(), file);
  start_reading(temporary.get());
  lines.reset();
  lines.reset(open_file(file, "w"));
  copy_bytes(temporary.get(), lines.get());
  close_output(std::move(lines), file);
}

} // namespace kestro
