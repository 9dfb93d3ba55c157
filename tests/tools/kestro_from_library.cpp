// The program kestro, with files that hold what the library gives.
//
// A run is made as the program makes it, for its report and its messages.  Then
// every line of its files that is no comment is replaced by what the library's
// public face tells of the same input: patterns, TID lists, parents, maximal
// patterns, and candidates from a listener.  KESTRO_FROM=listener takes levels
// as they come, without a result; a run for maximal patterns needs the result.
// Whatever the face tells wrongly shows as a difference in a file.

#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>

#include <kestro/kestro.h>

#include "driver/command.h"
#include "driver/options.h"

namespace kestro {
namespace {

// The contents of the files.
struct texts {
  std::ostringstream patterns;
  std::ostringstream tids;
  std::ostringstream parents;
  std::ostringstream candidates;
};

void write_graph(const pattern &p, std::ostream &out) {
  const graph_view g = p.graph();
  for (int i = 0; i < g.vertices(); i++)
    out << "v " << i << ' ' << g.vertex_label(i) << '\n';
  for (const edge &e : g.all_edges())
    out << "u " << e.from << ' ' << e.to << ' ' << g.edge_label(e.label)
        << '\n';
}

void write_pattern(const pattern &p, std::ostream &out) {
  out << "t # " << p.size() << '-' << p.id() << ", " << p.support() << '\n';
  write_graph(p, out);
}

void write(const pattern &p, texts *to) {
  write_pattern(p, to->patterns);
  to->tids << p.size() << '-' << p.id();
  for (const int tid : p.tids())
    to->tids << ' ' << tid;
  to->tids << '\n';
  to->parents << p.size() << '-' << p.id();
  for (const int parent : p.parents())
    to->parents << ' ' << p.size() - 1 << '-' << parent;
  to->parents << '\n';
}

class scribe : public listener {
public:
  scribe(texts *to, bool levels) : to_(to), levels_(levels) {}
  bool wants_candidates() const override { return true; }
  void on_candidates(const level &generated) override {
    for (int id = 0; id < generated.patterns(); id++)
      write_pattern(generated[id], to_->candidates);
  }
  void on_level(const level &found) override {
    if (levels_)
      for (int id = 0; id < found.patterns(); id++)
        write(found[id], to_);
  }

private:
  texts *to_;
  bool levels_;
};

mine_options options_of(const options &o) {
  mine_options m;
  // Out of range is as near as a support can be; no number is none.
  const double percent = o.support > 100 ? 100 : o.support > 0 ? o.support : 0;
  m.support = minimum_support::percentage(percent);
  m.min_size = o.minsize;
  m.max_size = o.maxsize;
  m.stabilizer_threshold = o.stabilizer_threshold;
  if (const char *jobs = getenv("KESTRO_JOBS"))
    m.jobs = static_cast<int>(strtol(jobs, nullptr, 10));
  return m;
}

database read(const options &o) {
  if (!o.load_labels)
    return database::read(o.input_file);
  const std::string name = o.load_labels_file
                               ? o.load_labels_file
                               : make_output_name(o.input_file, ".ls").get();
  return database::read(o.input_file, labels::of_label_file(name));
}

// What the files of the run have to hold.
void collect(const options &o, texts *to) {
  const char *from = getenv("KESTRO_FROM");
  const bool listens = from && !strcmp(from, "listener") && !o.maximal;
  const database db = read(o);
  const mine_options m = options_of(o);
  scribe s(to, listens);
  mine(db, m, s);
  if (listens)
    return;
  const result found = mine(db, m);
  for (int i = 0; i < found.size(); i++)
    if (!o.maximal || found.is_maximal(i) != answer::no)
      write(found[i], to);
}

// Replaces what is no comment in the file of that suffix.
void replace_lines(const options &o, const char *suffix,
                   const std::ostringstream &text) {
  const std::string name = make_output_name(o.input_file, suffix).get();
  std::string head;
  std::string foot;
  std::ifstream in(name, std::ios::binary);
  bool behind = false;
  for (std::string line; std::getline(in, line);) {
    if (line.starts_with('#'))
      (behind ? foot : head) += line + '\n';
    else
      behind = true;
  }
  in.close();
  std::ofstream(name, std::ios::binary) << head << text.str() << foot;
}

void rewrite_files(const options &o) {
  texts found;
  collect(o, &found);
  replace_lines(o, ".fp", found.patterns);
  if (o.tid_list)
    replace_lines(o, ".tid", found.tids);
  if (o.parent_children_list)
    replace_lines(o, ".pc", found.parents);
  if (o.candidates)
    replace_lines(o, ".c.g", found.candidates);
}

} // namespace
} // namespace kestro

int main(int argc, char **argv) {
  char name[] = "kestro";
  if (argc > 0)
    argv[0] = name;
  std::vector<char *> words(argv, argv + argc); // parsing permutes them
  const int status = kestro::run_command(argc, argv, 1);
  kestro::options o;
  words.push_back(nullptr);
  if (status == 0 &&
      kestro::parse_command_line(argc, words.data(), &o) ==
          kestro::command::run &&
      !o.save_labels)
    kestro::rewrite_files(o);
  return status;
}
