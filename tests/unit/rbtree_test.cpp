#include "reference/base/rbtree.h"

#include <algorithm>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "support/fatal.h"
#include "support/streams.h"

namespace kestro {

static int compar_keys(rbt_key a, rbt_key b) { return (a > b) - (a < b); }

static rbt_ptr new_tree() { return rbt_ptr(rbt_new(compar_keys)); }

static rbt_ptr tree_of(const std::vector<rbt_key> &keys) {
  rbt_ptr tree = new_tree();
  for (const rbt_key key : keys)
    rbt_insert(key, tree.get());
  rbt_check(tree.get());
  return tree;
}

static std::vector<rbt_key> keys_of(const rbt_ptr &tree) {
  std::vector<rbt_key> keys;
  for (rbt_node *x = rbt_min(tree->root); x; x = rbt_successor(x))
    keys.push_back(x->key);
  return keys;
}

static std::vector<rbt_key> keys_backwards(const rbt_ptr &tree) {
  std::vector<rbt_key> keys;
  for (rbt_node *x = rbt_max(tree->root); x; x = rbt_predecessor(x))
    keys.push_back(x->key);
  return keys;
}

static std::vector<rbt_key> one_to(rbt_key last) {
  std::vector<rbt_key> keys;
  for (rbt_key key = 1; key <= last; key++)
    keys.push_back(key);
  return keys;
}

// Nodes on the longest way down.
static int height(const rbt_node *node) {
  return rbt_is_nil(node) ? 0 : 1 + std::max(height(node->l), height(node->r));
}

// Black nodes on every way down, as on the leftmost one.
static int black_height(const rbt_node *node) {
  return rbt_is_nil(node) ? 0 : !node->red + black_height(node->l);
}

TEST(Rbtree, NewTreeIsEmpty) {
  const rbt_ptr tree = new_tree();
  EXPECT_EQ(tree->count, 0);
  EXPECT_TRUE(rbt_is_nil(tree->root));
  EXPECT_EQ(rbt_min(tree->root), nullptr);
  EXPECT_EQ(rbt_max(tree->root), nullptr);
  EXPECT_EQ(rbt_find(1, tree.get()), nullptr);
  rbt_check(tree.get());
}

TEST(Rbtree, NewTreeResetsTheSentinel) {
  const rbt_ptr tree = tree_of({1, 2, 3, 4});
  rbt_delete(rbt_find(4, tree.get()), tree.get()); // leaves a parent in it
  const rbt_ptr other = new_tree();
  const rbt_node *nil = other->root;
  EXPECT_EQ(nil->key, 0);
  EXPECT_EQ(nil->p, nil);
  EXPECT_EQ(nil->l, nil);
  EXPECT_EQ(nil->r, nil);
  EXPECT_EQ(nil->red, 0);
}

TEST(Rbtree, TreesShareOneSentinel) {
  EXPECT_EQ(new_tree()->root, new_tree()->root);
}

TEST(Rbtree, FirstNodeIsABlackRoot) {
  const rbt_ptr tree = new_tree();
  const rbt_node *node = rbt_insert(7, tree.get());
  EXPECT_EQ(node, tree->root);
  EXPECT_EQ(node->key, 7);
  EXPECT_EQ(node->red, 0);
  EXPECT_TRUE(rbt_is_nil(node->p));
  EXPECT_TRUE(rbt_is_nil(node->l));
  EXPECT_TRUE(rbt_is_nil(node->r));
  EXPECT_EQ(tree->count, 1);
}

TEST(Rbtree, InsertReturnsTheNodeOfTheKey) {
  const rbt_ptr tree = new_tree();
  for (const rbt_key key : {5, 3, 8, 1, 4, 7, 9, 2, 6}) {
    const rbt_node *node = rbt_insert(key, tree.get());
    EXPECT_EQ(rbt_find(key, tree.get()), node);
  }
  EXPECT_EQ(tree->count, 9);
  EXPECT_EQ(keys_of(tree), one_to(9));
}

TEST(Rbtree, NodeAlreadyInTheTreeIsFatalAndLeavesTheTree) {
  const rbt_ptr tree = tree_of({1, 2, 3, 4, 5});
  for (const rbt_key key : one_to(5))
    EXPECT_EQ(fatal_text([&] { rbt_insert(key, tree.get()); }),
              "rbtree.c:N: node aleady in the tree\n");
  EXPECT_EQ(tree->count, 5);
  EXPECT_EQ(keys_of(tree), one_to(5));
  rbt_check(tree.get());
}

TEST(Rbtree, AscendingKeysKeepTheTreeBalancedAndInOrder) {
  const rbt_ptr tree = tree_of(one_to(1000));
  EXPECT_EQ(tree->count, 1000);
  EXPECT_LE(height(tree->root), 2 * black_height(tree->root));
  EXPECT_EQ(keys_of(tree), one_to(1000));
}

TEST(Rbtree, DescendingKeysKeepTheTreeBalancedAndInOrder) {
  std::vector<rbt_key> keys = one_to(1000);
  std::reverse(keys.begin(), keys.end());
  const rbt_ptr tree = tree_of(keys);
  EXPECT_LE(height(tree->root), 2 * black_height(tree->root));
  EXPECT_EQ(keys_of(tree), one_to(1000));
  EXPECT_EQ(keys_backwards(tree), keys);
}

TEST(Rbtree, FindOfAnAbsentKeyIsNull) {
  const rbt_ptr tree = tree_of({10, 20, 30});
  for (const rbt_key absent : {5, 15, 25, 35})
    EXPECT_EQ(rbt_find(absent, tree.get()), nullptr);
}

// Keys may be addresses; this one orders the strings they lead to.
// NOLINTBEGIN(performance-no-int-to-ptr)
static int compar_texts(rbt_key a, rbt_key b) {
  return reinterpret_cast<const std::string *>(a)->compare(
      *reinterpret_cast<const std::string *>(b));
}
// NOLINTEND(performance-no-int-to-ptr)

TEST(Rbtree, KeysMayBeAddresses) {
  const std::vector<std::string> texts = {"c", "a", "b"};
  const rbt_ptr tree(rbt_new(compar_texts));
  for (const std::string &text : texts)
    rbt_insert(reinterpret_cast<rbt_key>(&text), tree.get());
  const std::string wanted = "a";
  EXPECT_EQ(rbt_find(reinterpret_cast<rbt_key>(&wanted), tree.get())->key,
            reinterpret_cast<rbt_key>(&texts[1]));
  EXPECT_EQ(rbt_max(tree->root)->key, reinterpret_cast<rbt_key>(texts.data()));
}

TEST(Rbtree, MinAndMaxAreThoseOfTheSubtree) {
  const rbt_ptr tree = tree_of({2, 1, 3}); // 2 at the root
  ASSERT_EQ(tree->root->key, 2);
  EXPECT_EQ(rbt_min(tree->root)->key, 1);
  EXPECT_EQ(rbt_max(tree->root)->key, 3);
  EXPECT_EQ(rbt_min(tree->root->r)->key, 3);
  EXPECT_EQ(rbt_max(tree->root->l)->key, 1);
}

TEST(Rbtree, NeighboursPastTheEndsAreNull) {
  const rbt_ptr tree = tree_of(one_to(10));
  EXPECT_EQ(rbt_successor(rbt_find(10, tree.get())), nullptr);
  EXPECT_EQ(rbt_predecessor(rbt_find(1, tree.get())), nullptr);
  EXPECT_EQ(rbt_successor(rbt_find(4, tree.get()))->key, 5);
  EXPECT_EQ(rbt_predecessor(rbt_find(4, tree.get()))->key, 3);
}

TEST(Rbtree, DeletionOfALeafReturnsItsKey) {
  const rbt_ptr tree = tree_of({2, 1, 3});
  EXPECT_EQ(rbt_delete(rbt_find(1, tree.get()), tree.get()), 1);
  EXPECT_EQ(keys_of(tree), (std::vector<rbt_key>{2, 3}));
  EXPECT_EQ(tree->count, 2);
  rbt_check(tree.get());
}

TEST(Rbtree, DeletionOfANodeWithOneChildReturnsItsKey) {
  const rbt_ptr tree = tree_of({2, 1, 3, 4}); // 4 is the right child of 3
  ASSERT_EQ(rbt_find(3, tree.get())->r->key, 4);
  EXPECT_EQ(rbt_delete(rbt_find(3, tree.get()), tree.get()), 3);
  EXPECT_EQ(keys_of(tree), (std::vector<rbt_key>{1, 2, 4}));
  rbt_check(tree.get());
}

TEST(Rbtree, DeletionWithTwoChildrenReturnsTheKeyOfTheSuccessor) {
  const rbt_ptr tree = tree_of({2, 1, 3});
  rbt_node *node = tree->root;
  EXPECT_EQ(rbt_delete(node, tree.get()), 3);
  EXPECT_EQ(node->key, 3); // the node stays and holds the successor's key
  EXPECT_EQ(tree->root, node);
  EXPECT_EQ(keys_of(tree), (std::vector<rbt_key>{1, 3}));
  rbt_check(tree.get());
}

TEST(Rbtree, DeletionOfTheOnlyNodeEmptiesTheTree) {
  const rbt_ptr tree = tree_of({6});
  EXPECT_EQ(rbt_delete(tree->root, tree.get()), 6);
  EXPECT_EQ(tree->count, 0);
  EXPECT_TRUE(rbt_is_nil(tree->root));
  rbt_check(tree.get());
}

// Deletes every key, those at stride apart first, checking after each.
static void delete_all(int count, int stride) {
  const rbt_ptr tree = tree_of(one_to(count));
  std::set<rbt_key> left;
  for (const rbt_key key : one_to(count))
    left.insert(key);
  for (int i = 0; i < count; i++) {
    const rbt_key key = 1 + i * stride % count;
    rbt_delete(rbt_find(key, tree.get()), tree.get());
    left.erase(key);
    rbt_check(tree.get());
    ASSERT_EQ(keys_of(tree), std::vector<rbt_key>(left.begin(), left.end()));
  }
}

TEST(Rbtree, DeletionKeepsTheTreeRedBlackInEveryOrder) {
  for (const int stride : {1, 2, 50, 77, 100}) // none shares a factor with 101
    delete_all(101, stride);
}

static std::set<const rbt_node *> nodes_of(const rbt_ptr &tree) {
  std::set<const rbt_node *> nodes;
  for (rbt_node *x = rbt_min(tree->root); x; x = rbt_successor(x))
    nodes.insert(x);
  return nodes;
}

TEST(Rbtree, FreedNodesServeTheNextInsertionsIntoAnyTree) {
  rbt_release_nodes();
  const rbt_ptr other = new_tree();
  rbt_ptr tree = tree_of(one_to(20));
  const std::set<const rbt_node *> freed = nodes_of(tree);
  tree.reset();
  for (const rbt_key key : one_to(20))
    rbt_insert(key, other.get());
  EXPECT_EQ(nodes_of(other), freed);
}

TEST(Rbtree, DeletedNodeServesTheNextInsertion) {
  const rbt_ptr tree = tree_of({1});
  const rbt_node *node = tree->root;
  rbt_delete(tree->root, tree.get());
  EXPECT_EQ(rbt_insert(2, tree.get()), node);
}

TEST(Rbtree, ReleasedNodesAreNotUsedAgain) {
  tree_of(one_to(5)).reset();
  rbt_release_nodes();
  rbt_release_nodes(); // nothing is left to free
  const rbt_ptr tree = tree_of(one_to(10));
  EXPECT_EQ(keys_of(tree), one_to(10));
}

TEST(Rbtree, FreeOfAnEmptyTree) {
  rbt *tree = rbt_new(compar_keys);
  EXPECT_NO_THROW(rbt_free(tree));
}

TEST(RbtreeDeathTest, FreeOfANullTreeFailsItsAssertion) {
  EXPECT_DEATH(rbt_free(nullptr), "rbt_free.*Assertion `rbt' failed");
}

TEST(RbtreeDeathTest, CheckSeesTwoRedsInARow) {
  const rbt_ptr tree = tree_of({2, 1, 3, 4}); // 4 is red
  rbt_find(3, tree.get())->red = 1;
  EXPECT_DEATH(rbt_check(tree.get()), "Assertion");
}

TEST(RbtreeDeathTest, CheckSeesARedRoot) {
  const rbt_ptr tree = tree_of({1});
  tree->root->red = 1;
  EXPECT_DEATH(rbt_check(tree.get()), "Assertion `!tree->root->red' failed");
}

TEST(RbtreeDeathTest, CheckSeesUnequalBlackHeights) {
  const rbt_ptr tree = tree_of({2, 1, 3});
  rbt_find(1, tree.get())->red = 0;
  EXPECT_DEATH(rbt_check(tree.get()), "Assertion");
}

TEST(RbtreeDeathTest, CheckSeesAGrandchildOnTheWrongSide) {
  const rbt_ptr tree = tree_of({20, 10, 30, 15}); // 15 is right of 10
  rbt_find(15, tree.get())->key = 25;
  EXPECT_DEATH(rbt_check(tree.get()), "Assertion");
}

TEST(RbtreeDeathTest, CheckSeesAWrongCount) {
  const rbt_ptr tree = tree_of({1, 2, 3});
  tree->count = 2;
  EXPECT_DEATH(rbt_check(tree.get()),
               "Assertion `nodes == tree->count' failed");
}

static void print_number(rbt_key key, FILE *out) {
  fprintf(out, "%d", static_cast<int>(key));
}

static std::string printed(const rbt_ptr &tree, int depth) {
  return written_text(
      [&](FILE *out) { rbt_print(tree->root, print_number, depth, out); });
}

TEST(Rbtree, PrintShowsColoursKeysAndChildren) {
  // 2 black at the root, 1 and 3 black, 4 red under 3.
  EXPECT_EQ(printed(tree_of({2, 1, 3, 4}), 0), "B 2: B 1 B 3\n"
                                               " B 1: NIL NIL\n"
                                               " B 3: NIL R 4\n"
                                               "  R 4: NIL NIL\n");
}

TEST(Rbtree, PrintStartsAtTheGivenDepth) {
  EXPECT_EQ(printed(tree_of({2, 1}), 3), "   B 2: R 1 NIL\n"
                                         "    R 1: NIL NIL\n");
}

TEST(Rbtree, PrintOfAnEmptyTreeIsNothing) {
  EXPECT_EQ(printed(new_tree(), 0), "");
}

} // namespace kestro
