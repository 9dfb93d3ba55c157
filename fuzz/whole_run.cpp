// Whole runs on any bytes, with options from the first six of them:
//
//   0  minimum support: a digit stands for as many tens of per cent
//   1  largest size, 0 to 5
//   2  smallest size, 0 to 5
//   3  stabilizer threshold, 0 to 7
//   4  flags: 1 -t, 2 -p, 4 -x, 8 --candidates, 16 the sizes in reverse order;
//      '@' has none, 'A' has -t, and so on
//   5  labels: 0 from the input, 1 saved, 2 saved and loaded, 3 loaded from the
//      text in front of the first "%%" line; '4' to '7' mine on two threads too
//
// The rest is FILE.  A second run on two threads must end alike and leave the
// same files.  The largest size is cut so that no input holds too many
// connected sets of edges.

#include "driver/run.h"

#include <algorithm>
#include <map>

#include "graph/transactions.h"
#include "inputs.h"
#include "support/scratch_folder.h"

namespace kestro {

namespace {

constexpr size_t option_bytes = 6;
constexpr size_t most_bytes = 4096;
constexpr int most_edge_sets = 20000; // per run, roughly

struct run_input {
  std::vector<std::string> words; // of the command line, but for labels
  int labels;
  bool threads;
  std::string label_file;
  std::string file;
};

// How a run ended, and what it left.
struct run_result {
  std::string failure;
  std::string report;
  std::map<std::string, std::string> files;
  bool operator==(const run_result &) const = default;
};

} // namespace

static std::vector<std::string> words_of(std::string_view bytes) {
  static const char *const supports[] = {
      "0",  "10", "20",  "30", "40",    "50",  "60",    "70",
      "80", "90", "100", "-5", "1e308", "nan", "0.001", "inf"};
  std::vector<std::string> words = {
      "kestro", std::string("-s") + supports[bytes[0] & 15],
      "--stabilizer-threshold=" + std::to_string(bytes[3] & 7)};
  const unsigned flags = static_cast<unsigned char>(bytes[4]);
  static const char *const flag_words[] = {"-t", "-p", "-x", "--candidates"};
  for (int i = 0; i < 4; i++)
    if (flags >> i & 1)
      words.emplace_back(flag_words[i]);
  words.push_back("-m" + std::to_string((bytes[2] & 15) % 6));
  words.push_back("-M" + std::to_string((bytes[1] & 15) % 6));
  if (flags >> 4 & 1)
    std::swap(words.back(), words.end()[-2]);
  return words;
}

static run_input input_of(std::string_view bytes) {
  run_input input = {words_of(bytes), bytes[5] & 3, (bytes[5] >> 2 & 7) == 5,
                     "", ""};
  bytes.remove_prefix(option_bytes);
  if (input.labels == 3) {
    constexpr std::string_view line = "%%\n";
    const size_t end = bytes.find(line);
    input.label_file = bytes.substr(0, end);
    bytes.remove_prefix(end == std::string_view::npos ? bytes.size()
                                                      : end + line.size());
  }
  input.file = bytes;
  return input;
}

// At least about as many as there are connected sets of edges around one,
// when size edges are taken in turn, each beside those before it.
static double edge_sets(const graph *g, int size) {
  int most = 0; // neighbours of an edge
  for (int i = 0; i < g->vs; i++)
    for (int j = g->v[i]; j < g->v[i + 1]; j++)
      most = std::max(most, graph_vertex_degree(g, i) +
                                graph_vertex_degree(g, g->e[j]) - 2);
  double sets = 0.5 * g->es;
  for (int i = 1; i < size; i++)
    sets *= most;
  return sets;
}

// The largest size that a run on this file can reach in a short time.
static int affordable_size(const std::string &file) {
  const label_set_ptr ls(label_set_create());
  graph_list_ptr graphs;
  const file_text text = text_of(file);
  const std::string failure = failure_of([&] {
    label_set_build(text, ls.get());
    graphs.reset(graph_read_transactions(text, ls.get()));
  });
  int size = 5;
  for (; failure.empty() && size > 2; size--) {
    double sets = 0;
    for (int i = 0; i < graphs->count; i++)
      sets += edge_sets(graph_list_at(graphs.get(), i), size);
    if (sets <= most_edge_sets)
      break;
  }
  return size;
}

// One command line, as run_command() would obey it.
static void obey(std::vector<std::string> words, int jobs, int most,
                 FILE *out) {
  std::vector<char *> argv;
  argv.reserve(words.size() + 1);
  for (std::string &word : words)
    argv.push_back(word.data());
  options o;
  argv.push_back(nullptr);
  const int argc = static_cast<int>(words.size());
  const command asked = parse_command_line(argc, argv.data(), &o);
  assert(asked == command::run);
  o.jobs = jobs;
  o.maxsize = std::min(o.maxsize, most);
  o.minsize = std::min(o.minsize, o.maxsize);
  run_kestro(&o, out);
}

// A text without its lines of CPU time.
static std::string timeless(const std::string &text) {
  std::string kept;
  for (size_t at = 0; at < text.size();) {
    const size_t end = std::min(text.find('\n', at), text.size() - 1) + 1;
    const std::string line = text.substr(at, end - at);
    if (line.find("Elapsed User CPU Time:") == std::string::npos)
      kept += line;
    at = end;
  }
  return kept;
}

static void run_commands(const run_input &input, const scratch_folder &folder,
                         int jobs, FILE *out) {
  const int most = affordable_size(input.file);
  std::vector<std::string> words = input.words;
  words.push_back(folder.name("db.txt"));
  std::vector<std::string> more = words;
  more.insert(more.end() - 1, input.labels == 1 || input.labels == 2
                                  ? "--save-labels"
                                  : "--load-labels");
  if (input.labels != 0)
    obey(more, jobs, most, out);
  if (input.labels == 2)
    more.end()[-2] = "--load-labels";
  if (input.labels == 0 || input.labels == 2)
    obey(input.labels == 0 ? words : more, jobs, most, out);
}

// All runs share a folder, whose name is part of the report.
static run_result result_of(const run_input &input, int jobs) {
  static const scratch_folder folder;
  folder.write("db.txt", input.file);
  if (input.labels == 3)
    folder.write("db.ls", input.label_file);
  char *report = nullptr;
  size_t size = 0;
  run_result result;
  {
    const file_ptr out(open_memstream(&report, &size));
    result.failure =
        failure_of([&] { run_commands(input, folder, jobs, out.get()); });
  }
  const xptr<char> owner(report);
  result.report = timeless(std::string(report, size));
  for (const auto &[name, text] : folder.files()) {
    result.files[name] = timeless(text);
    folder.remove(name);
  }
  return result;
}

static void fuzz(std::string_view bytes) {
  if (bytes.size() < option_bytes || bytes.size() > most_bytes)
    return;
  const run_input input = input_of(bytes);
  const run_result one = result_of(input, 1);
  if (input.threads)
    assert(result_of(input, 2) == one);
}

} // namespace kestro

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  kestro::fuzz(kestro::view_of(data, size));
  return 0;
}
