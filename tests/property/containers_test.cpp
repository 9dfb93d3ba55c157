// The containers against the standard library's under random operations.

#include <algorithm>
#include <functional>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "base/ksstack.h"
#include "reference/base/ksistack.h"
#include "reference/base/ksstack.h"
#include "reference/base/rbtree.h"
#include "support/graphs.h"

namespace kestro {

static constexpr unsigned seeds = 200;
static constexpr int steps = 300; // operations per seed

// Runs body with a generator of every seed, naming the seed in failures; stops
// at the first seed that fails.
static void for_each_seed(const std::function<void(test_rng &)> &body) {
  for (unsigned seed = 0; seed < seeds; seed++) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    test_rng rng(seed);
    body(rng);
    if (testing::Test::HasFailure())
      return;
  }
}

// An element wider than its key; equal keys are told apart by arrival.
struct tag {
  int key;
  int arrival;
  int check; // ~key, to see torn copies
  bool operator==(const tag &) const = default;
};

static tag new_tag(int key, int arrival) { return {key, arrival, ~key}; }

static std::vector<tag> tags_of(const ksstack *s) {
  const tag *first = ksstack_array<tag>(s);
  return std::vector<tag>(first, first + s->count);
}

static std::vector<int> ints_of(const ksistack *s) {
  return std::vector<int>(s->data, s->data + s->count);
}

static bool key_less(const tag &a, const tag &b) { return a.key < b.key; }

// One operation by position on a stack and its model.
static void step_by_position(test_rng &rng, int arrival, ksstack *s,
                             std::vector<tag> *model) {
  const tag fresh = new_tag(random_below(rng, 20), arrival);
  const int index = random_below(rng, s->count + 1);
  const bool inside = index < s->count;
  switch (random_below(rng, 5)) {
  case 0:
    ksstack_push(&fresh, s);
    EXPECT_EQ(*static_cast<tag *>(ksstack_top(s)), fresh);
    model->push_back(fresh);
    break;
  case 1:
    ksstack_insert_at(&fresh, s, index);
    model->insert(model->begin() + index, fresh);
    break;
  case 2:
    if (inside) {
      EXPECT_EQ(*static_cast<tag *>(ksstack_remove_at(s, index)),
                (*model)[static_cast<size_t>(index)]);
      model->erase(model->begin() + index);
    }
    break;
  case 3: {
    const void *popped = ksstack_pop(s);
    ASSERT_EQ(popped == nullptr, model->empty());
    if (popped) {
      EXPECT_EQ(*static_cast<const tag *>(popped), model->back());
      model->pop_back();
    }
    break;
  }
  default: {
    const auto found =
        std::find_if(model->begin(), model->end(),
                     [&](const tag &t) { return t.key == fresh.key; });
    const auto expected = found == model->end() ? -1 : found - model->begin();
    EXPECT_EQ(ksstack_find_index(&fresh, s, compar_int), expected);
  }
  }
}

TEST(KsstackProperty, ByPositionItIsAVector) {
  for_each_seed([](test_rng &rng) {
    const ksstack_ptr s(ksstack_new(1 + random_below(rng, 4), sizeof(tag)));
    std::vector<tag> model;
    for (int i = 0; i < steps; i++) {
      step_by_position(rng, i, s.get(), &model);
      ASSERT_EQ(tags_of(s.get()), model) << "step " << i;
      ASSERT_LE(s->count, s->capacity);
    }
    const ksstack_ptr copy(ksstack_copy(s.get()));
    EXPECT_EQ(tags_of(copy.get()), model);
  });
}

// The bounds of key in the sorted model, as indices.
struct key_range {
  int first;
  int last; // behind the equal ones
};
static key_range range_of(int key, const std::vector<tag> &model) {
  const auto [first, last] =
      std::equal_range(model.begin(), model.end(), new_tag(key, 0), key_less);
  return {static_cast<int>(first - model.begin()),
          static_cast<int>(last - model.begin())};
}

// One sorted operation; the model stays ordered by key, then by arrival.
static void step_sorted(test_rng &rng, int arrival, int keys, ksstack *s,
                        std::vector<tag> *model) {
  const tag fresh = new_tag(random_below(rng, keys), arrival);
  const key_range equals = range_of(fresh.key, *model);
  const bool present = equals.first < equals.last;
  EXPECT_EQ(ksstack_lower_bound(&fresh, s, compar_int),
            present ? equals.first : -1);
  const int hit = ksstack_bsearch_index(&fresh, s, compar_int);
  EXPECT_EQ(hit != -1, present);
  if (present) {
    EXPECT_TRUE(equals.first <= hit && hit < equals.last) << hit;
  }

  if (random_below(rng, 5) < 3) {
    ksstack_insert_sorted(&fresh, s, compar_int);
    model->insert(model->begin() + equals.last, fresh);
    return;
  }
  const void *removed = ksstack_remove_sorted(&fresh, s, compar_int);
  ASSERT_EQ(removed != nullptr, present);
  if (present) { // which of the equals goes depends on the narrowing
    const auto gone = std::find(model->begin(), model->end(),
                                *static_cast<const tag *>(removed));
    ASSERT_NE(gone, model->end());
    EXPECT_EQ(gone->key, fresh.key);
    model->erase(gone);
  }
}

TEST(KsstackProperty, SortedItIsAStableMultiset) {
  for_each_seed([](test_rng &rng) {
    const int keys = 1 + random_below(rng, 60);
    const ksstack_ptr s(ksstack_new(1, sizeof(tag)));
    std::vector<tag> model;
    for (int i = 0; i < steps; i++) {
      step_sorted(rng, i, keys, s.get(), &model);
      ASSERT_EQ(tags_of(s.get()), model) << "step " << i;
    }
  });
}

TEST(KsstackProperty, UpToEightElementsTheFirstEqualIsRemoved) {
  for_each_seed([](test_rng &rng) {
    const ksstack_ptr s(ksstack_new(1, sizeof(tag)));
    for (int i = 0; i < 8; i++) {
      const tag fresh = new_tag(random_below(rng, 3), i);
      ksstack_insert_sorted(&fresh, s.get(), compar_int);
    }
    std::vector<tag> model = tags_of(s.get());
    const int key = random_below(rng, 3);
    const key_range equals = range_of(key, model);
    ksstack_remove_sorted(&key, s.get(), compar_int);
    if (equals.first < equals.last)
      model.erase(model.begin() + equals.first);
    EXPECT_EQ(tags_of(s.get()), model);
  });
}

TEST(KsstackProperty, SortGivesTheOrderOfTheModel) {
  for_each_seed([](test_rng &rng) {
    const ksstack_ptr s(ksstack_new(1, sizeof(int)));
    std::vector<int> model;
    for (int i = random_below(rng, 100); i > 0; i--) {
      model.push_back(random_below(rng, 1000) - 500);
      ksstack_push(&model.back(), s.get());
    }
    ksstack_sort(s.get(), compar_int);
    std::sort(model.begin(), model.end());
    const int *first = ksstack_array<int>(s.get());
    EXPECT_EQ(std::vector<int>(first, first + s->count), model);
  });
}

static void step_by_position(test_rng &rng, ksistack *s,
                             std::vector<int> *model) {
  const int value = random_below(rng, 41) - 20;
  const int index = random_below(rng, s->count + 1);
  EXPECT_EQ(ksistack_top(s), model->empty() ? 0 : model->back());
  switch (random_below(rng, 5)) {
  case 0:
    ksistack_push(value, s);
    model->push_back(value);
    break;
  case 1:
    ksistack_insert_at(value, s, index);
    model->insert(model->begin() + index, value);
    break;
  case 2:
    if (index < s->count) {
      EXPECT_EQ(ksistack_remove_at(s, index),
                (*model)[static_cast<size_t>(index)]);
      model->erase(model->begin() + index);
    }
    break;
  case 3:
    EXPECT_EQ(ksistack_pop(s), model->empty() ? 0 : model->back());
    if (!model->empty())
      model->pop_back();
    break;
  default: {
    const auto found = std::find(model->begin(), model->end(), value);
    const auto expected = found == model->end() ? -1 : found - model->begin();
    EXPECT_EQ(ksistack_find_index(value, s, compar_int), expected);
  }
  }
}

TEST(KsistackProperty, ByPositionItIsAVector) {
  for_each_seed([](test_rng &rng) {
    const ksistack_ptr s(ksistack_new(1 + random_below(rng, 4)));
    std::vector<int> model;
    for (int i = 0; i < steps; i++) {
      step_by_position(rng, s.get(), &model);
      ASSERT_EQ(ints_of(s.get()), model) << "step " << i;
      ASSERT_LE(s->count, s->capacity);
    }
    ksistack_sort(s.get(), compar_int);
    std::sort(model.begin(), model.end());
    EXPECT_EQ(ints_of(s.get()), model);
  });
}

static void step_sorted(test_rng &rng, int values, ksistack *s,
                        std::multiset<int> *model) {
  const int value = 1 + random_below(rng, values);
  const auto below = static_cast<int>(
      std::distance(model->begin(), model->lower_bound(value)));
  const int equals = static_cast<int>(model->count(value));
  EXPECT_EQ(ksistack_lower_bound(value, s, compar_int), equals ? below : -1);
  EXPECT_EQ(ksistack_find_last(value, s, compar_int),
            equals ? below + equals - 1 : -1);
  const int *hit = ksistack_bsearch(value, s, compar_int);
  ASSERT_EQ(hit != nullptr, equals > 0);
  if (hit) {
    EXPECT_EQ(*hit, value);
  }
  if (random_below(rng, 5) < 3) {
    ksistack_insert_sorted(value, s, compar_int);
    model->insert(value);
  } else {
    EXPECT_EQ(ksistack_remove_sorted(value, s, compar_int), equals ? value : 0);
    if (equals)
      model->erase(model->find(value));
  }
}

TEST(KsistackProperty, SortedItIsAMultiset) {
  for_each_seed([](test_rng &rng) {
    const int values = 1 + random_below(rng, 60);
    const ksistack_ptr s(ksistack_new(1));
    std::multiset<int> model;
    for (int i = 0; i < steps; i++) {
      step_sorted(rng, values, s.get(), &model);
      ASSERT_EQ(ints_of(s.get()), std::vector<int>(model.begin(), model.end()))
          << "step " << i;
    }
  });
}

static int compar_keys(rbt_key a, rbt_key b) { return (a > b) - (a < b); }

// The key of a neighbour, -1 for none.
static rbt_key key_of(const rbt_node *node) { return node ? node->key : -1; }

// One operation on a tree and its model; keys are not negative.
static void step_tree(test_rng &rng, int keys, rbt *tree,
                      std::set<rbt_key> *model) {
  const rbt_key key = random_below(rng, keys);
  rbt_node *node = rbt_find(key, tree);
  ASSERT_EQ(node != nullptr, model->count(key) == 1);
  if (!node) {
    EXPECT_EQ(rbt_insert(key, tree)->key, key);
    model->insert(key);
    return;
  }
  const auto here = model->find(key);
  const rbt_key next = std::next(here) == model->end() ? -1 : *std::next(here);
  const rbt_key previous = here == model->begin() ? -1 : *std::prev(here);
  EXPECT_EQ(key_of(rbt_successor(node)), next);
  EXPECT_EQ(key_of(rbt_predecessor(node)), previous);
  if (random_below(rng, 4) == 0)
    return;
  const bool two_children = !rbt_is_nil(node->l) && !rbt_is_nil(node->r);
  EXPECT_EQ(rbt_delete(node, tree), two_children ? next : key);
  if (two_children) {
    EXPECT_EQ(node->key, next);
  }
  model->erase(here);
}

static std::vector<rbt_key> keys_of(const rbt *tree) {
  std::vector<rbt_key> keys;
  for (rbt_node *x = rbt_min(tree->root); x; x = rbt_successor(x))
    keys.push_back(x->key);
  return keys;
}

TEST(RbtreeProperty, ItIsASet) {
  for_each_seed([](test_rng &rng) {
    const int keys = 1 + random_below(rng, 120);
    const rbt_ptr tree(rbt_new(compar_keys));
    std::set<rbt_key> model;
    for (int i = 0; i < steps; i++) {
      step_tree(rng, keys, tree.get(), &model);
      rbt_check(tree.get());
      ASSERT_EQ(keys_of(tree.get()),
                std::vector<rbt_key>(model.begin(), model.end()))
          << "step " << i;
      ASSERT_EQ(static_cast<size_t>(tree->count), model.size());
    }
  });
}

TEST(RbtreeProperty, TreesSideBySideDoNotDisturbOneAnother) {
  for_each_seed([](test_rng &rng) {
    rbt_ptr trees[3];
    std::set<rbt_key> models[3];
    for (rbt_ptr &tree : trees)
      tree.reset(rbt_new(compar_keys));
    for (int i = 0; i < steps; i++) {
      const int which = random_below(rng, 3);
      if (random_below(rng, 40) == 0) {
        trees[which].reset(rbt_new(compar_keys)); // frees the one before
        models[which].clear();
      }
      step_tree(rng, 30, trees[which].get(), &models[which]);
      for (const rbt_ptr &tree : trees)
        rbt_check(tree.get());
    }
    for (int t = 0; t < 3; t++)
      EXPECT_EQ(keys_of(trees[t].get()),
                std::vector<rbt_key>(models[t].begin(), models[t].end()));
  });
}

} // namespace kestro
