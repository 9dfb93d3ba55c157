#include "graph/label_index.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "support/label_sets.h"

namespace kestro {

TEST(LabelIndex, EmptyOneFindsNothing) {
  const label_index index;
  EXPECT_EQ(index.find("C"), -1);
  EXPECT_EQ(index.find(""), -1);
}

TEST(LabelIndex, WordsHaveTheirNumbers) {
  label_index index;
  index.add("C", 5);
  index.add("", 0);
  index.add("Cl", 3);
  EXPECT_EQ(index.find("C"), 5);
  EXPECT_EQ(index.find(""), 0);
  EXPECT_EQ(index.find("Cl"), 3);
  EXPECT_EQ(index.find("l"), -1);
  EXPECT_EQ(index.find("c"), -1);
}

TEST(LabelIndex, WordEndsWithItsLengthNotWithAZero) {
  label_index index;
  const char line[] = "label and more";
  index.add(std::string_view(line, 5), 1);
  EXPECT_EQ(index.find("label"), 1);
  EXPECT_EQ(index.find(line), -1);
}

TEST(LabelIndex, ManyWordsOutgrowTheTable) {
  std::vector<std::string> words;
  for (int i = 0; i < 5000; i++)
    words.push_back("w" + std::to_string(i));
  label_index index;
  for (int i = 0; i < 5000; i++)
    index.add(words[static_cast<size_t>(i)], i);
  for (int i = 0; i < 5000; i++)
    ASSERT_EQ(index.find("w" + std::to_string(i)), i);
  EXPECT_EQ(index.find("w5000"), -1);
}

TEST(LabelIndex, NumbersOfAStackAreItsPositions) {
  const label_set_ptr ls = label_set_of({"b", "a", "\xe9"}, {"x"});
  const label_index index(ls->edge_labels);
  EXPECT_EQ(index.find("a"), 0);
  EXPECT_EQ(index.find("b"), 1);
  EXPECT_EQ(index.find("\xe9"), 2);
  EXPECT_EQ(index.find("x"), -1);
}

} // namespace kestro
