#include "graph/graph_list.h"

#include <gtest/gtest.h>

#include "support/graphs.h"

namespace kestro {

TEST(GraphList, IsCreatedEmptyWithRoomFor128) {
  const graph_list_ptr list(graph_list_new());
  EXPECT_EQ(list->count, 0);
  EXPECT_EQ(list->capacity, 128);
  EXPECT_EQ(list->element_size, static_cast<int>(sizeof(graph *)));
}

TEST(GraphList, KeepsGraphsInTheOrderPushed) {
  const graph_list_ptr list(graph_list_new());
  std::vector<const graph *> pushed;
  for (int n = 1; n <= 200; n++) {
    graph_ptr g = path_graph(n);
    pushed.push_back(g.get());
    graph_list_push(std::move(g), list.get());
  }
  ASSERT_EQ(list->count, 200);
  for (int i = 0; i < 200; i++) {
    EXPECT_EQ(graph_list_at(list.get(), i), pushed[static_cast<size_t>(i)]);
    EXPECT_EQ(graph_list_at(list.get(), i)->vs, i + 1);
  }
}

TEST(GraphList, PushTakesTheGraphOver) {
  const graph_list_ptr list(graph_list_new());
  graph_ptr g = path_graph(2);
  graph_list_push(std::move(g), list.get());
  EXPECT_EQ(g, nullptr);
}

TEST(GraphList, FreeOfNullDoesNothing) {
  EXPECT_NO_THROW(graph_list_free(nullptr));
}

} // namespace kestro
