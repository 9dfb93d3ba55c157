// Compares the canonical labelling with its reference on as many graphs as
// asked for: canonical [GRAPHS [FIRST_SEED [LEAF_LIMIT]]].
//
// Every other seed is a symmetric graph with two edge labels.  Prints the first
// ten differences, each shrunk, and a line of counts per family; exits with 1
// when there was a difference.

#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <map>

#include "support/engine_comparison.h"

static uint64_t argument(int argc, char **argv, int i, uint64_t otherwise) {
  return i < argc ? strtoull(argv[i], nullptr, 10) : otherwise;
}

int main(int argc, char **argv) {
  using namespace kestro;
  const uint64_t graphs = argument(argc, argv, 1, 10000);
  const uint64_t first = argument(argc, argv, 2, 0);
  const uint64_t leaf_limit = argument(argc, argv, 3, 1000000);
  std::map<std::string, comparison_counts> by_family;
  int differences = 0;
  for (uint64_t seed = first; seed < first + graphs && differences < 10;
       seed++) {
    const drawn_graph drawn =
        seed % 2 ? draw_two_label_graph(seed) : draw_graph(seed);
    const std::string text =
        engine_difference_of(drawn, seed, threshold_of_seed(seed), leaf_limit,
                             &by_family[drawn.family]);
    if (text.empty())
      continue;
    printf("%s\n", text.c_str());
    differences++;
  }
  for (const auto &[family, counts] : by_family)
    printf("%-14s %9" PRIu64 " compared %6" PRIu64 " skipped %8" PRIu64
           " variant %8" PRIu64 " in another order\n",
           family.c_str(), counts.compared, counts.skipped, counts.variant,
           counts.other_order);
  return differences > 0;
}
