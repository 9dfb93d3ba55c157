// The filter of TID lists and parent lists on any bytes, against a slow one.
//
// The first byte tells how many tags follow, a byte each: size and id are its
// two halves.  The rest is the file.  A digit stands for itself as a number of
// tags, and '3' as a tag for pattern 3-3.

#include <algorithm>

#include "ids.h"
#include "inputs.h"
#include "mining/maximal.h"

namespace kestro {

using pattern_ids = std::vector<std::pair<int, int>>;

// Takes the tags off the front of an input; ascending.
static pattern_ids take_tags(std::string_view *bytes) {
  if (bytes->empty())
    return {};
  const size_t count = std::min<size_t>(bytes->front() & 15, bytes->size() - 1);
  pattern_ids ids;
  for (const char c : bytes->substr(1, count))
    ids.emplace_back((c >> 4) & 15, c & 15);
  bytes->remove_prefix(1 + count);
  std::sort(ids.begin(), ids.end());
  return ids;
}

static ksstack_ptr stack_of(const pattern_ids &ids) {
  ksstack_ptr tags(ksstack_new(16, static_cast<int>(sizeof(pattern_tag))));
  for (const auto &[size, id] : ids) {
    const pattern_tag tag = {size, id, 1};
    ksstack_push(&tag, tags.get());
  }
  return tags;
}

// What has to be kept; false if a line has no id.
static bool slow_filter(std::string_view bytes, const pattern_ids &ids,
                        std::string *kept) {
  for (const std::string &line : lines_of(bytes)) {
    std::pair<int, int> id;
    if (!read_id(line.c_str(), &id))
      return false;
    if (std::find(ids.begin(), ids.end(), id) != ids.end())
      *kept += line;
  }
  return true;
}

static void fuzz(std::string_view bytes) {
  const pattern_ids ids = take_tags(&bytes);
  std::string expected;
  const bool readable = slow_filter(bytes, ids, &expected);
  const memory_file file(bytes);
  const std::string failure =
      failure_of([&] { filter_id_lines(stack_of(ids).get(), file.name()); });
  assert(failure.empty() == readable);
  assert(file.bytes() == (readable ? expected : bytes));
}

} // namespace kestro

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  kestro::fuzz(kestro::view_of(data, size));
  return 0;
}
