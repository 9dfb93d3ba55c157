#include "driver/report.h"

#include <cmath>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "graph/graph_list.h"
#include "library/access.h"
#include "mining/statistics.h"
#include "support/graphs.h"
#include "support/streams.h"

namespace kestro {
namespace {

xptr<char> file_name(const char *input, const char *suffix) {
  return make_output_name(input, suffix);
}

// Settings after the outputs were named, and two transactions: a triangle and
// an edge.
class Header : public testing::Test {
protected:
  Header() {
    o.input_file = "db.g";
    o.min_support_count = 2;
    o.pattern_file = file_name("db.g", ".fp");
  }

  void add(graph_ptr g) { graphs.push_back(std::move(g)); }
  // The graphs, with three vertex labels and one edge label.
  database transactions() const {
    label_set_ptr ls(label_set_create());
    for (const char *label : {"A", "B", "C"})
      label_set_add_vertex_label(ls.get(), label);
    label_set_add_edge_label(ls.get(), "s");
    graph_list_ptr list(graph_list_new());
    for (const graph_ptr &g : graphs)
      graph_list_push(graph_ptr(graph_copy(g.get())), list.get());
    return access::make_database(std::move(list),
                                 access::make_labels(std::move(ls)));
  }
  std::string text(const char *prefix = "") const {
    return written_text(
        [&](FILE *out) { print_header(&o, transactions(), out, prefix); });
  }
  // The value shown behind name.
  std::string value(const std::string &name) const {
    const std::string header = text();
    const size_t at = header.find("  " + name + ":");
    if (at == std::string::npos)
      return "no such line";
    const size_t from = header.find_first_not_of(' ', header.find(':', at) + 1);
    return header.substr(from, header.find('\n', from) - from);
  }

  options o;
  std::vector<graph_ptr> graphs;
};

class Table : public testing::Test {
protected:
  Table() { stats_init(&stats); }

  // The table of sizes up to last.
  std::string text(int last, int mask = mask_full, const char *prefix = "") {
    return written_text([&](FILE *out) {
      print_size_table(&o, &stats, last, out, prefix, mask);
    });
  }
  std::string summary(const char *prefix = "") {
    return written_text(
        [&](FILE *out) { print_summary(&o, &stats, out, prefix); });
  }
  void set_frequent(const std::vector<int> &counts) {
    for (size_t i = 0; i < counts.size(); i++)
      stats_set(&stats, stats_frequent, static_cast<int>(i) + 1, counts[i]);
  }
  std::string row(int size, const char *prefix, int mask) const {
    return written_text(
        [&](FILE *out) { print_table_row(&stats, size, out, prefix, mask); });
  }

  options o;
  statistics stats;
};

std::string heading(int mask) {
  return written_text([&](FILE *out) { print_table_heading(out, "# ", mask); });
}

} // namespace

TEST_F(Header, TextByteForByte) {
  add(ring_graph(3));
  add(path_graph(2));
  EXPECT_EQ(text(), "*******************************************************\n"
                    "kestro 1.34 (VESK 1.0)\n"
                    "\n"
                    "Transaction File Information --------------------------\n"
                    "  Transaction File Name:                       db.g\n"
                    "  Number of Input Transactions:                2\n"
                    "  Number of Distinct Edge Labels:              1\n"
                    "  Number of Distinct Vertex Labels:            3\n"
                    "  Average Number of Edges In a Transaction:    2\n"
                    "  Average Number of Vertices In a Transaction: 2\n"
                    "  Max Number of Edges In a Transaction:        3\n"
                    "  Max Number of Vertices In a Transaction:     3\n"
                    "\n"
                    "Options -----------------------------------------------\n"
                    "  Min Output Pattern Size:                     1\n"
                    "  Max Output Pattern Size:                     "
                    "2147483647(INT_MAX)\n"
                    "  Min Support Threshold:                       5.0% "
                    "(2 transactions)\n"
                    "  Generate Only Maximal Patterns:              No\n"
                    "  Generate PC-List:                            No\n"
                    "  Generate TID-List:                           No\n"
                    "\n"
                    "Outputs -----------------------------------------------\n"
                    "  Frequent Pattern File:                       db.fp\n"
                    "\n");
}

TEST_F(Header, EveryLineBeginsWithThePrefix) {
  add(ring_graph(3));
  std::string marked = "# ";
  for (const char c : text())
    marked += c == '\n' ? "\n# " : std::string(1, c);
  marked.resize(marked.size() - 2);
  EXPECT_EQ(text("# "), marked);
}

TEST_F(Header, OutputsAreNamedWhenAskedFor) {
  o.parent_children_list = o.tid_list = o.candidates = 1;
  o.pc_file = file_name("db.g", ".pc");
  o.tid_file = file_name("db.g", ".tid");
  o.candidates_file = file_name("db.g", ".c.g");
  const std::string header = text();
  EXPECT_EQ(header.substr(header.find("Outputs")),
            "Outputs -----------------------------------------------\n"
            "  Frequent Pattern File:                       db.fp\n"
            "  PC-List File:                                db.pc\n"
            "  TID-List File:                               db.tid\n"
            "\n");
}

TEST_F(Header, FlagsReadYes) {
  o.maximal = 1;
  EXPECT_EQ(value("Generate Only Maximal Patterns"), "Yes");
  EXPECT_EQ(value("Generate PC-List"), "No");
  o.parent_children_list = 1;
  o.pc_file = file_name("db.g", ".pc");
  EXPECT_EQ(value("Generate PC-List"), "Yes");
  o.tid_list = 1;
  o.tid_file = file_name("db.g", ".tid");
  EXPECT_EQ(value("Generate TID-List"), "Yes");
}

TEST_F(Header, OneTransactionIsSingular) {
  o.min_support_count = 1;
  EXPECT_EQ(value("Min Support Threshold"), "5.0% (1 transaction)");
}

TEST_F(Header, SupportIsShownToOneDecimal) {
  o.support = 33.35;
  EXPECT_EQ(value("Min Support Threshold"), "33.4% (2 transactions)");
  o.support = -7.5;
  EXPECT_EQ(value("Min Support Threshold"), "-7.5% (2 transactions)");
}

TEST_F(Header, LimitedMaxsizeIsShownPlain) {
  o.maxsize = 2147483646;
  o.minsize = 4;
  EXPECT_EQ(value("Max Output Pattern Size"), "2147483646");
  EXPECT_EQ(value("Min Output Pattern Size"), "4");
}

TEST_F(Header, NoTransactionsAverageToNegativeNan) {
  EXPECT_EQ(value("Number of Input Transactions"), "0");
  EXPECT_EQ(value("Average Number of Edges In a Transaction"), "-nan");
  EXPECT_EQ(value("Average Number of Vertices In a Transaction"), "-nan");
  EXPECT_EQ(value("Max Number of Edges In a Transaction"), "0");
  EXPECT_EQ(value("Max Number of Vertices In a Transaction"), "0");
}

TEST_F(Header, EmptyTransactionsAverageToZero) {
  add(make_graph({}, {}));
  EXPECT_EQ(value("Average Number of Edges In a Transaction"), "0");
  EXPECT_EQ(value("Average Number of Vertices In a Transaction"), "0");
}

TEST_F(Header, AverageOfTwoAndAHalfRoundsToEven) {
  add(path_graph(2));
  add(path_graph(3));
  EXPECT_EQ(value("Average Number of Vertices In a Transaction"), "2");
  EXPECT_EQ(value("Average Number of Edges In a Transaction"), "2"); // 1.5
}

TEST_F(Header, LargestTransactionMayComeAnywhere) {
  add(path_graph(2));
  add(complete_graph(4));
  add(path_graph(6));
  EXPECT_EQ(value("Max Number of Edges In a Transaction"), "6");
  EXPECT_EQ(value("Max Number of Vertices In a Transaction"), "6");
}

TEST_F(Table, HeadingFollowsTheMask) {
  EXPECT_EQ(heading(mask_full), "#   Size Candidates Frequent Patterns \n");
  EXPECT_EQ(heading(mask_maximal), "#   Size Frequent Patterns \n");
  EXPECT_EQ(heading(mask_candidate_half), "#   Size Candidates ");
  EXPECT_EQ(heading(mask_frequent_half), "Frequent Patterns \n");
  EXPECT_EQ(heading(0), "");
}

TEST_F(Table, RowFollowsTheMask) {
  stats_set(&stats, stats_candidates, 3, 25);
  stats_set(&stats, stats_frequent, 3, 9);
  EXPECT_EQ(row(3, "# ", mask_full),
            "#   3    25         9                 \n");
  EXPECT_EQ(row(3, "# ", mask_maximal), "#   3    9                 \n");
  EXPECT_EQ(row(3, "# ", mask_candidate_half), "#   3    25         ");
  EXPECT_EQ(row(3, "# ", mask_frequent_half), "9                 \n");
  EXPECT_EQ(row(3, "# ", 8 | 16), "");
}

TEST_F(Table, SizesOneAndTwoShowNoCandidates) {
  stats_set(&stats, stats_candidates, 2, 25);
  stats_set(&stats, stats_frequent, 2, 9);
  EXPECT_EQ(row(2, "", mask_full), "  2               9                 \n");
}

TEST_F(Table, WideNumbersWidenTheirColumn) {
  stats_set(&stats, stats_candidates, 12345, 2147483647);
  EXPECT_EQ(row(12345, "", mask_full),
            "  12345 2147483647 0                 \n");
}

TEST_F(Table, NothingMinedIsAnEmptyLine) {
  EXPECT_EQ(text(0), "\n");
  EXPECT_EQ(text(0, mask_full, "# "), "# \n");
}

TEST_F(Table, RowsUpToTheLastSize) {
  set_frequent({5, 6, 1});
  stats_set(&stats, stats_candidates, 3, 8);
  EXPECT_EQ(text(3, mask_full, "# "), "#   Size Candidates Frequent Patterns \n"
                                      "#   1               5                 \n"
                                      "#   2               6                 \n"
                                      "#   3    8          1                 \n"
                                      "# \n");
}

TEST_F(Table, LastSizeWithoutAnyCountIsLeftOut) {
  set_frequent({5});
  EXPECT_EQ(text(2), "  Size Candidates Frequent Patterns \n"
                     "  1               5                 \n"
                     "\n");
}

TEST_F(Table, LastSizeWithCandidatesOnlyIsShown) {
  set_frequent({5, 6});
  stats_set(&stats, stats_candidates, 3, 8);
  EXPECT_EQ(text(3), "  Size Candidates Frequent Patterns \n"
                     "  1               5                 \n"
                     "  2               6                 \n"
                     "  3    8          0                 \n"
                     "\n");
}

TEST_F(Table, EmptySizesBeforeTheLastAreShown) {
  set_frequent({0, 0, 2});
  EXPECT_EQ(text(3, mask_maximal), "  Size Frequent Patterns \n"
                                   "  1    0                 \n"
                                   "  2    0                 \n"
                                   "  3    2                 \n"
                                   "\n");
}

TEST_F(Table, NoHeadingWithoutARow) { EXPECT_EQ(text(1), "\n"); }

TEST_F(Table, OnlyReportedSizesAreShown) {
  set_frequent({5, 6, 1, 3});
  o.minsize = 2;
  o.maxsize = 3;
  EXPECT_EQ(text(4, mask_maximal), "  Size Frequent Patterns \n"
                                   "  2    6                 \n"
                                   "  3    1                 \n"
                                   "\n");
}

TEST_F(Table, MinsizeAboveTheLastSizeLeavesTheTableEmpty) {
  set_frequent({5, 6});
  o.minsize = 3;
  EXPECT_EQ(text(2), "\n");
}

TEST_F(Table, NegativeMinsizeStartsAtOne) {
  set_frequent({5});
  o.minsize = -3;
  EXPECT_EQ(text(1), "  Size Candidates Frequent Patterns \n"
                     "  1               5                 \n"
                     "\n");
}

TEST_F(Table, SummaryByteForByte) {
  set_frequent({5, 6, 1});
  stats_set(&stats, stats_candidates, 3, 8);
  stats_set(&stats, stats_candidates, 4, 2);
  EXPECT_EQ(summary("# "),
            "#   Largest Frequent Pattern Size:               3\n"
            "#   Total Number of Candidates Generated:        10\n"
            "#   Total Number of Frequent Patterns Found:     12\n"
            "# \n");
}

TEST_F(Table, SummaryWithoutCandidatesHasNoSuchLine) {
  set_frequent({5, 6});
  EXPECT_EQ(summary(), "  Largest Frequent Pattern Size:               2\n"
                       "  Total Number of Frequent Patterns Found:     11\n"
                       "\n");
}

TEST_F(Table, SummaryOfNothing) {
  EXPECT_EQ(summary(), "  Largest Frequent Pattern Size:               0\n"
                       "  Total Number of Frequent Patterns Found:     0\n"
                       "\n");
}

TEST_F(Table, SummaryTotalsCountReportedSizesOnly) {
  set_frequent({5, 6, 1, 3});
  stats_set(&stats, stats_candidates, 3, 8);
  stats_set(&stats, stats_candidates, 4, 20);
  o.minsize = 2;
  o.maxsize = 3;
  EXPECT_EQ(summary(), "  Largest Frequent Pattern Size:               4\n"
                       "  Total Number of Candidates Generated:        8\n"
                       "  Total Number of Frequent Patterns Found:     7\n"
                       "\n");
}

TEST_F(Table, SummaryTotalsMayExceedAnInt) {
  stats_set(&stats, stats_candidates, 3, 2147483647);
  stats_set(&stats, stats_candidates, 4, 2147483647);
  stats_set(&stats, stats_frequent, 3, 2147483647);
  stats_set(&stats, stats_frequent, 4, 3);
  const std::string text =
      written_text([&](FILE *out) { print_summary(&o, &stats, out, ""); });
  EXPECT_NE(text.find("Generated:        4294967294\n"), std::string::npos);
  EXPECT_NE(text.find("Found:     2147483650\n"), std::string::npos);
}

TEST_F(Table, SummaryWithMinsizeAboveAllTotalsNothing) {
  set_frequent({5, 6});
  stats_set(&stats, stats_candidates, 3, 8);
  o.minsize = 9;
  EXPECT_EQ(summary(), "  Largest Frequent Pattern Size:               2\n"
                       "  Total Number of Frequent Patterns Found:     0\n"
                       "\n");
}

TEST_F(Table, SummaryCountsSizesBeyondTheFirstTable) {
  stats_set(&stats, stats_frequent, 200, 3);
  stats_set(&stats, stats_candidates, 200, 4);
  EXPECT_EQ(summary(), "  Largest Frequent Pattern Size:               200\n"
                       "  Total Number of Candidates Generated:        4\n"
                       "  Total Number of Frequent Patterns Found:     3\n"
                       "\n");
}

TEST_F(Table, SummaryAfterARecountForgetsCandidates) {
  set_frequent({5, 6});
  stats_set(&stats, stats_candidates, 3, 8);
  stats_reset(&stats);
  stats_increment(&stats, stats_frequent, 2);
  EXPECT_EQ(summary(), "  Largest Frequent Pattern Size:               2\n"
                       "  Total Number of Frequent Patterns Found:     1\n"
                       "\n");
}

TEST(Timing, ByteForByte) {
  EXPECT_EQ(written_text([](FILE *out) { print_timing(12.34, out, "# "); }),
            "# Timing Information ------------------------------------\n"
            "#   Elapsed User CPU Time:                       12.3[sec]\n"
            "# *******************************************************\n");
}

} // namespace kestro
