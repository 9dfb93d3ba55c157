#include "mining/core_links.h"

#include <vector>

#include <gtest/gtest.h>

#include "reference/mining/subgraph.h"
#include "support/mined_levels.h"
#include "support/records.h"

namespace kestro {

using ints = std::vector<int>;

TEST(CoreLinks, TellWhatTheRecordsTold) {
  const graph_list_ptr database =
      database_of(make_graph({0, 1, 0, 0}, {{0, 1}, {1, 2}, {2, 3}}),
                  ring_graph(4), star_graph(4));
  two_levels levels = first_two_levels(database.get(), 1, 3, 4);
  const core_links links = links_of(levels);
  ASSERT_EQ(links.size(), sg_set_size(levels.cores.get()));
  ASSERT_GT(links.size(), 1);
  for (int id = 0; id < links.size(); id++) {
    const subgraph *core = sg_set_get(levels.cores.get(), id);
    ints children;
    for (int i = 0; i < sg_child_size(core); i++)
      children.push_back(sg_child_at(core, i));
    EXPECT_EQ(ints(links.children(id).begin(), links.children(id).end()),
              children);
    int entries = 0;
    for (int i = 0; i < sg_set_size(levels.children.get()); i++) {
      const subgraph *child = sg_set_get(levels.children.get(), i);
      for (int l = 0; l < sg_parent_size(child); l++)
        entries += sg_parent_at(child, l)->pid == id;
    }
    EXPECT_EQ(links.entries(id), entries);
    EXPECT_EQ(links.is_invariant(id), core->invariant);
    // An edge with equal ends can be turned round.
    const bool turns = core->g->vlabel[0] == core->g->vlabel[1];
    EXPECT_EQ(links.group(id).count, turns ? 1 : 0);
  }
}

TEST(CoreLinks, LastALevelThatIsGone) {
  const graph_list_ptr database = database_of(path_graph(3), ring_graph(5));
  two_levels levels = first_two_levels(database.get(), 1, 3, 4);
  const sg_set_ptr with =
      sg_generate_candidates(levels.children.get(), levels.cores.get())
          .candidates;
  const core_links links = links_of(levels);
  levels.cores.reset();
  const sg_set_ptr without =
      sg_generate_candidates(levels.children.get(), links).candidates;
  ASSERT_EQ(sg_set_size(with.get()), sg_set_size(without.get()));
  ASSERT_GT(sg_set_size(with.get()), 0);
  for (int i = 0; i < sg_set_size(with.get()); i++)
    EXPECT_EQ(
        sg_compare(sg_set_get(with.get(), i), sg_set_get(without.get(), i)), 0);
}

} // namespace kestro
