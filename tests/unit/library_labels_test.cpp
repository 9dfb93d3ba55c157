#include <kestro/labels.h>

#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <utility>

#include <gtest/gtest.h>

#include "support/library_error.h"
#include "support/temp_file.h"

namespace kestro {

static const char two_graphs[] = "t # 0\nv 0 b\nv 1 \xc3\xa4\nu 0 1 -\n"
                                 "t # 1\nv 0 B\nv 1 b\nu 0 1 =\n";

static std::vector<std::string> vertex_texts(const labels &l) {
  std::vector<std::string> texts;
  for (int i = 0; i < l.vertex_labels(); i++)
    texts.emplace_back(l.vertex_label(i));
  return texts;
}

static std::vector<std::string> edge_texts(const labels &l) {
  std::vector<std::string> texts;
  for (int i = 0; i < l.edge_labels(); i++)
    texts.emplace_back(l.edge_label(i));
  return texts;
}

using texts = std::vector<std::string>;

TEST(LibraryLabels, NoneByDefault) {
  const labels none;
  EXPECT_EQ(none.vertex_labels(), 0);
  EXPECT_EQ(none.edge_labels(), 0);
  EXPECT_EQ(none.find_vertex_label("C"), std::nullopt);
}

TEST(LibraryLabels, OfTransactionsAreInTheOrderOfTheirBytes) {
  const temp_file file(two_graphs);
  const labels l = labels::of_transactions(file.path());
  EXPECT_EQ(vertex_texts(l), (texts{"B", "b", "\xc3\xa4"}));
  EXPECT_EQ(edge_texts(l), (texts{"-", "="}));
}

TEST(LibraryLabels, OfALabelFile) {
  const temp_file file("# some\nV z\nE 2\nV a\nE 1\nV z\n");
  const labels l = labels::of_label_file(file.path());
  EXPECT_EQ(vertex_texts(l), (texts{"a", "z"}));
  EXPECT_EQ(edge_texts(l), (texts{"1", "2"}));
}

TEST(LibraryLabels, OfTexts) {
  const std::vector<std::string_view> vertices = {"b", "B", "b", "\xc3\xa4"};
  const std::vector<std::string_view> edges = {"=", "-"};
  const labels l = labels::of_texts(vertices, edges);
  EXPECT_EQ(vertex_texts(l), (texts{"B", "b", "\xc3\xa4"}));
  EXPECT_EQ(edge_texts(l), (texts{"-", "="}));
  EXPECT_EQ(labels::of_texts({}, {}).vertex_labels(), 0);
}

TEST(LibraryLabels, OfTextsThatNoFileCanHold) {
  const auto refusal = [](std::string_view text, bool of_vertex) {
    const std::vector<std::string_view> one = {text};
    const std::vector<std::string_view> none;
    return error_text([&] {
      labels::of_texts(of_vertex ? one : none, of_vertex ? none : one);
    });
  };
  EXPECT_EQ(refusal("", true), "vertex label '': the label is empty");
  EXPECT_EQ(refusal("a b", false), "edge label 'a b': the label holds a blank "
                                   "or a control character");
  EXPECT_EQ(refusal("\x1b", true), "nothing was thrown"); // files hold it
  EXPECT_NE(refusal(std::string(1024, 'x'), true), "nothing was thrown");
}

TEST(LibraryLabels, AreFoundByTheirTexts) {
  const temp_file file(two_graphs);
  const labels l = labels::of_transactions(file.path());
  for (int i = 0; i < l.vertex_labels(); i++)
    EXPECT_EQ(l.find_vertex_label(l.vertex_label(i)), i);
  for (int i = 0; i < l.edge_labels(); i++)
    EXPECT_EQ(l.find_edge_label(l.edge_label(i)), i);
  for (const std::string_view other : {"", "A", "bb", "\xff", "-"})
    EXPECT_EQ(l.find_vertex_label(other), std::nullopt) << other;
  EXPECT_EQ(l.find_vertex_label(std::string_view("b\0", 2)), std::nullopt);
  EXPECT_EQ(l.find_edge_label("b"), std::nullopt);
}

TEST(LibraryLabels, RefuseIdsOutOfRange) {
  const temp_file file(two_graphs);
  const labels l = labels::of_transactions(file.path());
  EXPECT_EQ(error_text([&] { l.vertex_label(3); }),
            "there is no vertex label 3, only 3 of them");
  EXPECT_EQ(error_text([&] { l.vertex_label(-1); }),
            "there is no vertex label -1, only 3 of them");
  EXPECT_EQ(error_text([&] { l.edge_label(2); }),
            "there is no edge label 2, only 2 of them");
}

TEST(LibraryLabels, TellFileAndLineOfWhatCannotBeRead) {
  EXPECT_EQ(error_text([] { labels::of_transactions("/no/such"); }),
            "can't open a file '/no/such' at /no/such:0");
  EXPECT_EQ(error_text([] { labels::of_label_file("/no/such"); }),
            "can't open a file '/no/such' at /no/such:0");
  const temp_file broken("t\nv 0 C\n\nv 1 C\n");
  EXPECT_EQ(error_text([&] { labels::of_transactions(broken.path()); }),
            "graph.c:N: invalid input line: \n at " +
                std::string(broken.path()) + ":3");
  const temp_file other("V a\nE b\nE\n");
  EXPECT_EQ(error_text([&] { labels::of_label_file(other.path()); }),
            "graph.c:N: wrong formatted line at 3 at " +
                std::string(other.path()) + ":3");
}

// Else another file would be read than the one that was meant.
TEST(LibraryLabels, RefuseNamesWithAZeroByte) {
  const temp_file file(two_graphs);
  const std::string name = std::string(file.path()) + '\0' + "more";
  EXPECT_EQ(error_text([&] { labels::of_transactions(name); }),
            "the name of a file holds a zero byte at " + name + ":0");
  EXPECT_EQ(error_text([&] { labels::of_label_file(name); }),
            "the name of a file holds a zero byte at " + name + ":0");
}

TEST(LibraryLabels, CopiesShareTheirTexts) {
  const temp_file file(two_graphs);
  std::optional<labels> first = labels::of_transactions(file.path());
  const labels second = *first;
  const std::string_view text = first->vertex_label(1);
  EXPECT_EQ(text.data(), second.vertex_label(1).data());
  first.reset();
  EXPECT_EQ(text, "b");
}

TEST(LibraryLabels, WhatWasMovedFromStaysAsItWas) {
  const temp_file file(two_graphs);
  labels first = labels::of_transactions(file.path());
  const labels second = std::move(first);
  EXPECT_EQ(second.vertex_labels(), 3);
  EXPECT_EQ(first.vertex_labels(), 3); // NOLINT(bugprone-use-after-move)
}

TEST(LibraryLabels, ServeThreadsAtOnce) {
  const temp_file file(two_graphs);
  const labels l = labels::of_transactions(file.path());
  std::vector<int> found(4, 0);
  {
    std::vector<std::jthread> threads;
    for (int &sum : found)
      threads.emplace_back([copy = l, &sum] {
        for (int i = 0; i < 1000; i++)
          sum += *copy.find_vertex_label(copy.vertex_label(i % 3));
      });
  }
  EXPECT_EQ(found, std::vector<int>(4, 999));
}

} // namespace kestro
