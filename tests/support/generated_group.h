// What automorphism_search finds, and all that it generates.
#pragma once

#include <set>
#include <vector>

#include "cl/automorphism_group.h"

namespace kestro {

inline std::vector<std::vector<int>> generators_of(const graph *g) {
  automorphism_search search;
  xvector<int> perms;
  const int count = search.find(g, &perms);
  std::vector<std::vector<int>> generators;
  for (int i = 0; i < count; i++)
    generators.emplace_back(perms.begin() + i * g->vs,
                            perms.begin() + (i + 1) * g->vs);
  return generators;
}

// The group, up to limit members.
inline std::set<std::vector<int>> generated_group(const graph *g,
                                                  size_t limit = 100000) {
  const std::vector<std::vector<int>> generators = generators_of(g);
  std::vector<int> identity;
  for (int u = 0; u < g->vs; u++)
    identity.push_back(u);
  std::set<std::vector<int>> group = {identity};
  std::vector<std::vector<int>> todo = {identity};
  while (!todo.empty() && group.size() < limit) {
    const std::vector<int> perm = std::move(todo.back());
    todo.pop_back();
    for (const std::vector<int> &generator : generators) {
      std::vector<int> product;
      for (const int image : perm)
        product.push_back(generator[static_cast<size_t>(image)]);
      if (group.insert(product).second)
        todo.push_back(std::move(product));
    }
  }
  return group;
}

} // namespace kestro
