// Red-black trees with parent links and one shared sentinel.
//
// The sentinel stands for every missing child and for the root's parent, so the
// textbook steps need no special cases; deletion uses its parent field.  Nodes
// are recycled through a free list linked by their left field: a tree that is
// filled and emptied once per level allocates only while it outgrows all
// earlier ones.  Search, insertion and deletion cost O(log n) comparisons.

#include "reference/base/rbtree.h"

#include <utility>

#include "base/error.h"
#include "base/xmalloc.h"

namespace kestro {

namespace {

// What all trees of one thread share.
struct rbtree_state {
  rbt_node nil = {0, &nil, &nil, &nil, 0}; // the sentinel, always black
  rbt_node *free_nodes = nullptr;          // linked through l
  ~rbtree_state() { rbt_release_nodes(); }
};

} // namespace

static thread_local rbtree_state state;

static bool rbt_nil(const rbt_node *node) { return node == &state.nil; }

bool rbt_is_nil(const rbt_node *node) { return rbt_nil(node); }

rbt *rbt_new(rbt_comparator compare) {
  state.nil = {0, &state.nil, &state.nil, &state.nil, 0};
  rbt *tree = static_cast<rbt *>(xcalloc(1, sizeof(rbt)));
  tree->compare = compare;
  tree->root = &state.nil;
  return tree;
}

static rbt_node *new_node(rbt_key key) {
  rbt_node *node = state.free_nodes;
  if (node)
    state.free_nodes = node->l;
  else
    node = static_cast<rbt_node *>(xmalloc(sizeof(rbt_node)));
  *node = {key, &state.nil, &state.nil, &state.nil, 1};
  return node;
}

static void recycle(rbt_node *node) {
  node->l = state.free_nodes;
  state.free_nodes = node;
}

static void delete_subtree(rbt_node *rbn) {
  assert(rbn);
  assert(!rbt_nil(rbn));
  if (!rbt_nil(rbn->l))
    delete_subtree(rbn->l);
  if (!rbt_nil(rbn->r))
    delete_subtree(rbn->r);
  recycle(rbn);
}

void rbt_free(rbt *rbt) {
  assert(rbt);
  if (!rbt_nil(rbt->root))
    delete_subtree(rbt->root);
  xfree(rbt);
}

void rbt_release_nodes() {
  while (state.free_nodes)
    xfree(std::exchange(state.free_nodes, state.free_nodes->l));
}

// Puts child in the place that node has under node's parent.
static void replace_child(rbt_node *node, rbt_node *child, rbt *tree) {
  if (rbt_nil(node->p))
    tree->root = child;
  else if (node == node->p->l)
    node->p->l = child;
  else
    node->p->r = child;
  child->p = node->p;
}

static void rotate_l(rbt_node *x, rbt *tree) {
  assert(!rbt_nil(x));
  assert(!rbt_nil(x->r));
  rbt_node *y = x->r;
  x->r = y->l;
  if (!rbt_nil(y->l))
    y->l->p = x;
  replace_child(x, y, tree);
  y->l = x;
  x->p = y;
}

static void rotate_r(rbt_node *y, rbt *tree) {
  assert(!rbt_nil(y));
  assert(!rbt_nil(y->l));
  rbt_node *x = y->l;
  y->l = x->r;
  if (!rbt_nil(x->r))
    x->r->p = y;
  replace_child(y, x, tree);
  x->r = y;
  y->p = x;
}

static void insert_fixup(rbt_node *z, rbt *tree) {
  while (z->p->red) {
    rbt_node *grand = z->p->p;
    const bool left = z->p == grand->l;
    rbt_node *uncle = left ? grand->r : grand->l;
    if (uncle->red) {
      z->p->red = uncle->red = 0;
      grand->red = 1;
      z = grand;
      continue;
    }
    if (z == (left ? z->p->r : z->p->l)) { // inner grandchild: turn it outward
      z = z->p;
      left ? rotate_l(z, tree) : rotate_r(z, tree);
    }
    z->p->red = 0;
    grand->red = 1;
    left ? rotate_r(grand, tree) : rotate_l(grand, tree);
  }
  tree->root->red = 0;
}

rbt_node *rbt_insert(rbt_key key, rbt *tree) {
  rbt_node *parent = &state.nil;
  int side = 0;
  for (rbt_node *x = tree->root; !rbt_nil(x); x = side < 0 ? x->l : x->r) {
    parent = x;
    side = tree->compare(key, x->key);
    if (side == 0)
      die("rbtree.c", "node aleady in the tree\n");
  }
  rbt_node *node = new_node(key);
  node->p = parent;
  if (rbt_nil(parent))
    tree->root = node;
  else if (side < 0)
    parent->l = node;
  else
    parent->r = node;
  insert_fixup(node, tree);
  tree->count++;
  KESTRO_STRUCTURE(rbt_check(tree));
  return node;
}

rbt_node *rbt_find(rbt_key key, const rbt *tree) {
  rbt_node *x = tree->root;
  while (!rbt_nil(x)) {
    const int side = tree->compare(key, x->key);
    if (side == 0)
      return x;
    x = side < 0 ? x->l : x->r;
  }
  return nullptr;
}

rbt_node *rbt_min(rbt_node *node) {
  if (rbt_nil(node))
    return nullptr;
  while (!rbt_nil(node->l))
    node = node->l;
  return node;
}

rbt_node *rbt_max(rbt_node *node) {
  if (rbt_nil(node))
    return nullptr;
  while (!rbt_nil(node->r))
    node = node->r;
  return node;
}

rbt_node *rbt_successor(rbt_node *node) {
  if (!rbt_nil(node->r))
    return rbt_min(node->r);
  while (!rbt_nil(node->p) && node == node->p->r)
    node = node->p;
  return rbt_nil(node->p) ? nullptr : node->p;
}

rbt_node *rbt_predecessor(rbt_node *node) {
  if (!rbt_nil(node->l))
    return rbt_max(node->l);
  while (!rbt_nil(node->p) && node == node->p->l)
    node = node->p;
  return rbt_nil(node->p) ? nullptr : node->p;
}

static void delete_fixup(rbt_node *x, rbt *tree) {
  while (x != tree->root && !x->red) {
    const bool left = x == x->p->l;
    rbt_node *sibling = left ? x->p->r : x->p->l;
    if (sibling->red) {
      sibling->red = 0;
      x->p->red = 1;
      left ? rotate_l(x->p, tree) : rotate_r(x->p, tree);
      sibling = left ? x->p->r : x->p->l;
    }
    if (!sibling->l->red && !sibling->r->red) {
      sibling->red = 1;
      x = x->p;
      continue;
    }
    if (!(left ? sibling->r : sibling->l)->red) { // far nephew black
      (left ? sibling->l : sibling->r)->red = 0;
      sibling->red = 1;
      left ? rotate_r(sibling, tree) : rotate_l(sibling, tree);
      sibling = left ? x->p->r : x->p->l;
    }
    sibling->red = x->p->red;
    x->p->red = 0;
    (left ? sibling->r : sibling->l)->red = 0;
    left ? rotate_l(x->p, tree) : rotate_r(x->p, tree);
    x = tree->root;
  }
  x->red = 0;
}

rbt_key rbt_delete(rbt_node *node, rbt *tree) {
  const bool two_children = !rbt_nil(node->l) && !rbt_nil(node->r);
  rbt_node *spliced = two_children ? rbt_successor(node) : node;
  rbt_node *child = rbt_nil(spliced->l) ? spliced->r : spliced->l;
  replace_child(spliced, child, tree);
  const rbt_key key = spliced->key;
  if (spliced != node)
    node->key = key;
  if (!spliced->red)
    delete_fixup(child, tree);
  recycle(spliced);
  tree->count--;
  KESTRO_STRUCTURE(rbt_check(tree));
  return key;
}

// Black nodes on every path from node down to the sentinel.
static int checked_black_height(const rbt_node *node) {
  if (rbt_nil(node))
    return 0;
  assert(rbt_nil(node->l) || node->l->p == node);
  assert(rbt_nil(node->r) || node->r->p == node);
  assert(!node->red || (!node->l->red && !node->r->red));
  const int height = checked_black_height(node->l);
  assert(height == checked_black_height(node->r));
  return height + !node->red;
}

void rbt_check(const rbt *tree) {
  assert(!state.nil.red);
  assert(!tree->root->red);
  assert(rbt_nil(tree->root) || rbt_nil(tree->root->p));
  checked_black_height(tree->root);
  int nodes = 0;
  for (rbt_node *x = rbt_min(tree->root), *next; x; x = next, nodes++) {
    next = rbt_successor(x);
    assert(!next || tree->compare(x->key, next->key) < 0);
  }
  assert(nodes == tree->count);
}

static void print_child(const rbt_node *child,
                        void (*print_key)(rbt_key, FILE *), FILE *out) {
  if (rbt_nil(child)) {
    fputs("NIL", out);
    return;
  }
  fprintf(out, "%c ", child->red ? 'R' : 'B');
  print_key(child->key, out);
}

void rbt_print(const rbt_node *node, void (*print_key)(rbt_key, FILE *),
               int depth, FILE *out) {
  if (rbt_nil(node))
    return;
  fprintf(out, "%*s%c ", depth, "", node->red ? 'R' : 'B');
  print_key(node->key, out);
  fputs(": ", out);
  print_child(node->l, print_key, out);
  fputc(' ', out);
  print_child(node->r, print_key, out);
  fputc('\n', out);
  rbt_print(node->l, print_key, depth + 1, out);
  rbt_print(node->r, print_key, depth + 1, out);
}

} // namespace kestro
