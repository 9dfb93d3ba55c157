// Mines molecules held in memory: prints the most frequent large patterns, and
// stops a second run by request.

#include <algorithm>
#include <cstdio>
#include <initializer_list>
#include <stop_token>
#include <string>
#include <string_view>
#include <vector>

#include <kestro/kestro.h>

namespace {

// A ring of six carbons and what hangs on its atoms 0, 1, ...
int add_benzene(kestro::database_builder *db,
                std::initializer_list<std::string_view> substituents) {
  std::vector<std::string_view> atoms(6, "C");
  std::vector<kestro::labelled_edge> bonds;
  for (int i = 0; i < 6; i++)
    bonds.push_back({i, (i + 1) % 6, "aromatic"});
  for (const std::string_view s : substituents) {
    const int atom = static_cast<int>(atoms.size());
    bonds.push_back({atom - 6, atom, "single"});
    atoms.push_back(s);
  }
  return db->add(atoms, bonds);
}

kestro::database molecules() {
  kestro::database_builder db;
  db.add({"C", "C", "O"}, {{0, 1, "single"}, {1, 2, "single"}}); // ethanol
  db.add({"C", "C", "O", "O"},                                   // acetic acid
         {{0, 1, "single"}, {1, 2, "double"}, {1, 3, "single"}});
  add_benzene(&db, {});
  add_benzene(&db, {"O"});
  add_benzene(&db, {"C", "O"});
  add_benzene(&db, {"N", "C"});
  return std::move(db).build();
}

void print(const kestro::pattern &p) {
  std::printf("%d-%d in %d molecules:", p.size(), p.id(), p.support());
  const kestro::graph_view g = p.graph();
  for (const kestro::edge &e : g.all_edges())
    std::printf(" %s%d-%s%d", std::string(g.vertex_label(e.from)).c_str(),
                e.from, std::string(g.vertex_label(e.to)).c_str(), e.to);
  std::printf("\n");
}

void print_top(const kestro::result &found, int count) {
  std::vector<kestro::pattern> patterns(found.begin(), found.end());
  std::stable_sort(patterns.begin(), patterns.end(),
                   [](const auto &a, const auto &b) {
                     return a.support() * a.size() > b.support() * b.size();
                   });
  patterns.erase(patterns.begin() +
                     std::min(count, static_cast<int>(patterns.size())),
                 patterns.end());
  for (const kestro::pattern &p : patterns)
    print(p);
}

// Asks for a stop once patterns of three edges are there.
class impatient : public kestro::listener {
public:
  void on_level(const kestro::level &found) override {
    std::printf("size %d: %d patterns\n", found.size(), found.patterns());
    if (found.size() == 3)
      stop.request_stop();
  }
  std::stop_source stop;
};

} // namespace

int main() {
  try {
    const kestro::database db = molecules();
    kestro::mine_options options;
    options.support = kestro::minimum_support::fraction(0.5);
    const kestro::result found = kestro::mine(db, options);
    std::printf("%d patterns in at least %d of %d molecules\n", found.size(),
                found.summary().min_support, db.size());
    print_top(found, 3);

    impatient listener;
    options.stop = listener.stop.get_token();
    const kestro::mining_summary summary = kestro::mine(db, options, listener);
    std::printf("%s after size %d\n",
                summary.why == kestro::ending::stopped ? "stopped" : "ended",
                summary.last_size);
  } catch (const kestro::error &e) {
    std::fprintf(stderr, "%s\n", e.what());
    return 1;
  }
}
