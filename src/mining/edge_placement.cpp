// Placing one edge more.
//
// Most candidates that pass their bound occur in nearly all of its
// transactions, and mostly at the embedding of a parent; placing one edge there
// costs a walk over the slots of one vertex instead of a search.
//
// Where the images are bytes, up to thirty-two of them, and the processor can
// shuffle bytes, a row is read, compared and permuted as one or two vectors.
// Such a vector may reach beyond the row: into the next one, which does not
// matter when it is read and which is written later; the rows at the end of
// their memory go through a vector of their own.

#include "mining/edge_placement.h"

#include <algorithm>
#include <cassert>
#include <cstring>

#if defined(__x86_64__) && defined(__GNUC__)
#define KESTRO_SHUFFLES 1
#include <immintrin.h>
#endif

namespace kestro {

template <class Image>
row_cursor<Image>::row_cursor(const subgraph *parent)
    : tids(ksstack_array<int>(parent->tid)),
      rows(ksstack_array<Image>(parent->rows)), count(parent->tid->count),
      vs(parent->g->vs), at(0) {}

template <class Image> void row_cursor<Image>::move_to(int tid) {
  int i = at;
  while (i < count && tids[i] < tid)
    i++;
  assert(i < count && tids[i] == tid);
  at = i;
}

template struct row_cursor<uint8_t>;
template struct row_cursor<uint16_t>;

void edge_placement::set(const subgraph *sg, const sg_parent *entry,
                         const edge_slots *slots) {
  slots_ = slots;
  map_.resize(static_cast<size_t>(entry->vs));
  for (int i = 0; i < entry->vs; i++)
    map_[static_cast<size_t>(i)] =
        static_cast<uint16_t>(std::max(entry->image(i), 0));
  const bool v_is_new = entry->image(entry->v) == -1;
  const int from = v_is_new ? entry->u : entry->v;
  const int to = v_is_new ? entry->v : entry->u;
  from_ = entry->image(from);
  to_ = entry->image(to);
  new_vertex_ = to_ == -1 ? to : -1;
  parent_vs_ = sg->g->vs - (to_ == -1);
  elabel_ = graph_edge_label(sg->g, from, to);
  vlabel_ = sg->g->vlabel[to];
  kind_ = slots->kind_of(elabel_, vlabel_);
}

// Whether one of u's slots is of the edge's kind.
bool edge_placement::is_of_kind(int tid, int u, edge_slots::range slots,
                                const uint32_t *slot) const {
  return edge_slots::kind_in(*slot) == kind_ &&
         (kind_ != edge_slots::other_kinds ||
          slots_->is_of_kind(tid, u, slot - slots.first, elabel_, vlabel_));
}

// Whether the transaction has the edge between u and w.
bool edge_placement::has_edge(int tid, int u, int w) const {
  constexpr ptrdiff_t many = 16;
  const edge_slots::range slots = slots_->of(tid, u);
  const uint32_t wanted = edge_slots::slot(w, 0);
  const uint32_t *slot = slots.first;
  if (slots.last - slots.first > many)
    slot = std::lower_bound(slots.first, slots.last, wanted);
  while (slot < slots.last && *slot < wanted)
    slot++;
  return slot < slots.last && edge_slots::end_of(*slot) == w &&
         is_of_kind(tid, u, slots, slot);
}

// Whether the first n images of a row are others.
static bool is_free(const uint8_t *row, int n, int image) {
  return !memchr(row, image, static_cast<size_t>(n));
}
static bool is_free(const uint16_t *row, int n, int image) {
  return std::find(row, row + n, static_cast<uint16_t>(image)) == row + n;
}

// A neighbour of u for the new vertex that the row does not hold; -1 for none.
template <class Image>
int edge_placement::free_neighbour(int tid, int u, const Image *row) const {
  const edge_slots::range slots = slots_->of(tid, u);
  for (const uint32_t *slot = slots.first; slot < slots.last; slot++)
    if (is_of_kind(tid, u, slots, slot) &&
        is_free(row, parent_vs_, edge_slots::end_of(*slot)))
      return edge_slots::end_of(*slot);
  return -1;
}

// row[i] = parent_row[map[i]], four at a time.
template <class Image>
static void take_images(const Image *parent_row, const xvector<uint16_t> &map,
                        Image *row) {
  const uint16_t *from = map.data();
  const uint16_t *const end = from + map.size();
  for (; end - from >= 4; from += 4, row += 4) {
    row[0] = parent_row[from[0]];
    row[1] = parent_row[from[1]];
    row[2] = parent_row[from[2]];
    row[3] = parent_row[from[3]];
  }
  while (from < end)
    *row++ = parent_row[*from++];
}

template <class Image>
bool edge_placement::extend(const Image *parent_row, int tid,
                            Image *row) const {
  const int u = parent_row[from_];
  int image = 0; // of the new vertex
  if (to_ != -1) {
    if (!has_edge(tid, u, parent_row[to_]))
      return false;
  } else {
    image = free_neighbour(tid, u, parent_row);
    if (image == -1)
      return false;
  }
  take_images(parent_row, map_, row);
  if (new_vertex_ != -1)
    row[new_vertex_] = static_cast<Image>(image);
  return true;
}

template bool edge_placement::extend(const uint8_t *, int, uint8_t *) const;
template bool edge_placement::extend(const uint16_t *, int, uint16_t *) const;

template <class Image>
int edge_placement::extend_each(row_cursor<Image> *from,
                                const row_places<Image> &to, int first,
                                int end) const {
  const int vs = static_cast<int>(map_.size());
  int placed = 0;
  for (int i = first; i < end; i++) {
    const int tid = to.tids[i];
    from->move_to(tid);
    to.found[i] = extend(from->row(), tid, to.row(i, vs));
    placed += to.found[i];
  }
  return placed;
}

template int edge_placement::extend_each(row_cursor<uint8_t> *,
                                         const row_places<uint8_t> &, int,
                                         int) const;
template int edge_placement::extend_each(row_cursor<uint16_t> *,
                                         const row_places<uint16_t> &, int,
                                         int) const;

#ifdef KESTRO_SHUFFLES

// Rows of bytes as vectors.
class edge_placement::shuffling {
public:
  static constexpr int width = 16; // images in a vector
  static constexpr int most_vectors = 2;

  static bool serves(const edge_placement &placement) {
    return is_there && placement.map_.size() <= most_vectors * width &&
           placement.kind_ != edge_slots::other_kinds;
  }

  explicit shuffling(const edge_placement &placement);

  int extend_all(row_cursor<uint8_t> *from, const row_places<uint8_t> &to,
                 int first, int end) const {
    if (vs_ <= width)
      return placement_.to_ == -1 ? walk<1, true>(from, to, first, end)
                                  : walk<1, false>(from, to, first, end);
    return placement_.to_ == -1 ? walk<2, true>(from, to, first, end)
                                : walk<2, false>(from, to, first, end);
  }

private:
  static const bool is_there;

  template <int vectors, bool adds_vertex>
  [[gnu::target("ssse3")]] int walk(row_cursor<uint8_t> *from,
                                    const row_places<uint8_t> &to, int first,
                                    int end) const;

  const edge_placement &placement_;
  int vs_;
  // By vector written and vector read: for each image the place where it is
  // read, or 0x80 where it is not read there.
  alignas(width) uint8_t places_[most_vectors][most_vectors][width];
};

const bool edge_placement::shuffling::is_there = [] {
  __builtin_cpu_init();
  return __builtin_cpu_supports("ssse3") != 0;
}();

edge_placement::shuffling::shuffling(const edge_placement &placement)
    : placement_(placement), vs_(static_cast<int>(placement.map_.size())) {
  memset(places_, 0x80, sizeof places_);
  for (int i = 0; i < vs_; i++) {
    const int place = placement.map_[static_cast<size_t>(i)];
    places_[i / width][place / width][i % width] =
        static_cast<uint8_t>(place % width);
  }
}

// The number of rows, of count, from whose start on so many bytes are theirs.
static int rows_with_room(int count, int vs, int bytes) {
  return std::max(0, count - (bytes + vs - 1) / vs + 1);
}

template <int vectors, bool adds_vertex>
int edge_placement::shuffling::walk(row_cursor<uint8_t> *from,
                                    const row_places<uint8_t> &to, int first,
                                    int end) const {
  constexpr int bytes = vectors * width;
  const edge_placement &p = placement_;
  const edge_slots &slots = *p.slots_;
  const uint32_t kind = static_cast<uint32_t>(p.kind_);
  const uint32_t held = // bits of the parent's images
      static_cast<uint32_t>((uint64_t{1} << p.parent_vs_) - 1);
  __m128i places[vectors][vectors];
  for (int out = 0; out < vectors; out++)
    for (int in = 0; in < vectors; in++)
      places[out][in] =
          _mm_load_si128(reinterpret_cast<const __m128i *>(places_[out][in]));
  row_cursor<uint8_t> cursor = *from;
  const int readable = rows_with_room(cursor.count, cursor.vs, bytes);
  const int writable = to.are_kept ? rows_with_room(to.count, vs_, bytes) : end;
  alignas(width) uint8_t last[bytes] = {};
  int placed = 0;
  for (int i = first; i < end; i++) {
    const int tid = to.tids[i];
    cursor.move_to(tid);
    const uint8_t *parent_row = cursor.row();
    if (cursor.at >= readable) {
      memcpy(last, parent_row, static_cast<size_t>(cursor.vs));
      parent_row = last;
    }
    __m128i read[vectors];
    for (int in = 0; in < vectors; in++)
      read[in] = _mm_loadu_si128(
          reinterpret_cast<const __m128i *>(parent_row + in * width));
    const int u = parent_row[p.from_];
    uint32_t image = 0; // of the new vertex
    if constexpr (adds_vertex) {
      const edge_slots::range near = slots.of(tid, u);
      const uint32_t *slot = near.first;
      for (; slot < near.last; slot++) {
        if ((*slot & 0xffff) != kind)
          continue;
        image = *slot >> 16;
        const __m128i wanted = _mm_set1_epi8(static_cast<char>(image));
        uint32_t same = 0;
        for (int in = 0; in < vectors; in++)
          same |= static_cast<uint32_t>(
                      _mm_movemask_epi8(_mm_cmpeq_epi8(read[in], wanted)))
                  << in * width;
        if ((same & held) == 0)
          break;
      }
      to.found[i] = slot < near.last;
    } else {
      to.found[i] = p.has_edge(tid, u, parent_row[p.to_]);
    }
    if (!to.found[i])
      continue;
    placed++;
    uint8_t *const row = to.row(i, vs_);
    uint8_t *const written = i < writable ? row : last;
    for (int out = 0; out < vectors; out++) {
      __m128i images = _mm_setzero_si128();
      for (int in = 0; in < vectors; in++)
        images =
            _mm_or_si128(images, _mm_shuffle_epi8(read[in], places[out][in]));
      _mm_storeu_si128(reinterpret_cast<__m128i *>(written + out * width),
                       images);
    }
    if (adds_vertex)
      written[p.new_vertex_] = static_cast<uint8_t>(image);
    if (written != row)
      memcpy(row, written, static_cast<size_t>(vs_));
  }
  *from = cursor;
  return placed;
}

#endif

template <>
int edge_placement::extend_all(row_cursor<uint8_t> *from,
                               const row_places<uint8_t> &to, int first,
                               int end) const {
#ifdef KESTRO_SHUFFLES
  if (shuffling::serves(*this))
    return shuffling(*this).extend_all(from, to, first, end);
#endif
  return extend_each(from, to, first, end);
}

template <>
int edge_placement::extend_all(row_cursor<uint16_t> *from,
                               const row_places<uint16_t> &to, int first,
                               int end) const {
  return extend_each(from, to, first, end);
}

} // namespace kestro
