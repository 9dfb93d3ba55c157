// Links: the parents of a pattern with their maps, one byte per vertex.

#include "mining/links.h"

#include <cstddef>

namespace kestro {

static constexpr int header_bytes = static_cast<int>(offsetof(sg_link, map));

ksstack *sg_links_create(int vs) {
  if (vs > link_max_vertices)
    return nullptr;
  const int unit = static_cast<int>(alignof(sg_link));
  return ksstack_new(4, (header_bytes + vs + unit - 1) / unit * unit);
}

int sg_link_size(const subgraph *sg) {
  return sg->links ? sg->links->count : 0;
}

const sg_link *sg_link_at(const subgraph *sg, int i) {
  return static_cast<const sg_link *>(ksstack_at(sg->links, i));
}

void sg_add_link(subgraph *sg, const sg_parent *entry) {
  if (!sg->links)
    return;
  alignas(sg_link) uint8_t element[header_bytes + link_max_vertices + 4];
  auto *link = reinterpret_cast<sg_link *>(element);
  link->pid = entry->pid;
  link->u = static_cast<uint8_t>(entry->u);
  link->v = static_cast<uint8_t>(entry->v);
  for (int i = 0; i < entry->vs; i++)
    link->map[i] =
        entry->map[i] == -1 ? link_gone : static_cast<uint8_t>(entry->map[i]);
  ksstack_push(element, sg->links);
}

void sg_clear_links(subgraph *sg) {
  if (sg->links)
    sg->links->count = 0;
}

extension sg_link_edge(const subgraph *sg, const sg_link *link) {
  const int u = link->map[link->u];
  const int v = link->map[link->v];
  const int elabel = graph_edge_label(sg->g, link->u, link->v);
  if (u == link_gone)
    return pendant_extension(link->pid, v, elabel, sg->g->vlabel[link->u]);
  if (v == link_gone)
    return pendant_extension(link->pid, u, elabel, sg->g->vlabel[link->v]);
  return closing_extension(link->pid, u, v, elabel);
}

} // namespace kestro
