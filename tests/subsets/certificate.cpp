// nauty knows colours of vertices only.  So an edge becomes a vertex of its
// own, coloured by its label, between the two it joins; only edges of label 0
// stay plain.  The graph can be read back from this, so two labelled graphs are
// isomorphic exactly when what becomes of them is.  A certificate is that graph
// in canonical order: how many vertices have which colour, then the rows of its
// matrix, one word each.

#include "subsets/certificate.h"

#include <algorithm>
#include <cassert>

#include <nauty/nauty.h>

namespace kestro {

certificate certificate_of(const std::vector<int> &vlabels,
                           const std::vector<test_edge> &edges) {
  std::vector<int> colours;
  for (const int label : vlabels)
    colours.push_back(2 * label);
  std::vector<test_edge> joined;
  for (const test_edge &edge : edges) {
    if (edge.label == 0) {
      joined.push_back(edge);
      continue;
    }
    const int middle = static_cast<int>(colours.size());
    colours.push_back(2 * edge.label + 1);
    joined.push_back({edge.u, middle});
    joined.push_back({edge.w, middle});
  }

  const int n = static_cast<int>(colours.size());
  assert(n <= WORDSIZE);
  std::vector<setword> rows(colours.size(), 0);
  std::vector<setword> canonical(colours.size());
  for (const test_edge &edge : joined)
    ADDONEEDGE(rows.data(), edge.u, edge.w, 1);
  // Cells of one colour, ascending: ptn is 0 at the end of each.
  std::vector<int> lab = identity_of(n);
  const auto colour = [&](int i) { return colours[static_cast<size_t>(i)]; };
  std::stable_sort(lab.begin(), lab.end(),
                   [&](int a, int b) { return colour(a) < colour(b); });
  std::vector<int> ptn(lab.size(), 0);
  for (size_t i = 1; i < lab.size(); i++)
    ptn[i - 1] = colour(lab[i - 1]) == colour(lab[i]);

  certificate found;
  for (const int i : lab)
    found.push_back(static_cast<uint64_t>(colour(i)));
  std::vector<int> orbits(lab.size());
  DEFAULTOPTIONS_GRAPH(settings);
  settings.getcanon = TRUE;
  settings.defaultptn = FALSE;
  statsblk stats;
  densenauty(rows.data(), lab.data(), ptn.data(), orbits.data(), &settings,
             &stats, 1, n, canonical.data());
  found.insert(found.end(), canonical.begin(), canonical.end());
  return found;
}

} // namespace kestro
