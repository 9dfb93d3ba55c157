// An ordered set of one-word keys in a red-black tree (Cormen, Leiserson,
// Rivest, Stein: Introduction to Algorithms, chapter 13).
#pragma once

#include <cstdint>
#include <cstdio>
#include <memory>

namespace kestro {

// An int, or an object's address.
using rbt_key = std::intptr_t;
using rbt_comparator = int (*)(rbt_key, rbt_key);

struct rbt_node {
  rbt_key key;
  rbt_node *p; // parent
  rbt_node *l; // left child; the next node while on the free list
  rbt_node *r; // right child
  int red;     // 1 red, 0 black
};

struct rbt {
  rbt_comparator compare;
  rbt_node *root; // the sentinel when empty
  int count;      // nodes
};

// All trees of a thread share one sentinel and one list of recycled nodes, so
// a tree must not cross threads.

// A new empty tree, and its end: nodes go to the free list, keys stay.
rbt *rbt_new(rbt_comparator compare);
void rbt_free(rbt *tree);

// Inserts key and returns its node; dies with "node aleady in the tree" when an
// equal key is present.
rbt_node *rbt_insert(rbt_key key, rbt *tree);
// The node with an equal key, or null.
rbt_node *rbt_find(rbt_key key, const rbt *tree);
// Leftmost and rightmost node of the subtree, null for the sentinel.
rbt_node *rbt_min(rbt_node *node);
rbt_node *rbt_max(rbt_node *node);
// In-order neighbours, null past the ends.
rbt_node *rbt_successor(rbt_node *node);
rbt_node *rbt_predecessor(rbt_node *node);
// Deletes the key of node.  With two children the successor's node is spliced
// out and its key moves into node.  Returns the key of the spliced node: read
// node->key before the call if the deleted key is wanted.
rbt_key rbt_delete(rbt_node *node, rbt *tree);
// Whether node is the sentinel.
bool rbt_is_nil(const rbt_node *node);

// Frees every node on this thread's free list.
void rbt_release_nodes();

// Dies through an assertion unless tree is a red-black tree, its keys in
// ascending order and counted.
void rbt_check(const rbt *tree);

// Debug print of a subtree to out, indented by depth.
void rbt_print(const rbt_node *node, void (*print_key)(rbt_key, FILE *),
               int depth, FILE *out);

struct rbt_deleter {
  void operator()(rbt *tree) const { rbt_free(tree); }
};
using rbt_ptr = std::unique_ptr<rbt, rbt_deleter>;

} // namespace kestro
