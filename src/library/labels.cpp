// Label sets as the public face shows them.
//
// A set is complete before it is handed out and stays as it is, so copies share
// it through a counted pointer.

#include <kestro/labels.h>

#include <algorithm>
#include <string>
#include <utility>

#include <kestro/database.h>
#include <kestro/error.h>

#include "library/access.h"
#include "library/arguments.h"

namespace kestro {

struct labels::state {
  label_set_ptr set;
};

labels::labels(std::shared_ptr<const state> s) : state_(std::move(s)) {}

labels::labels()
    : labels(std::make_shared<const state>(
          state{label_set_ptr(label_set_create())})) {}

labels access::make_labels(label_set_ptr ls) {
  return labels(
      std::make_shared<const labels::state>(labels::state{std::move(ls)}));
}

const kestro::label_set *access::label_set(const labels &l) {
  return l.state_->set.get();
}

labels labels::of_transactions(const std::string &path) {
  label_set_ptr ls(label_set_create());
  label_set_build(read_file(checked_path(path)), ls.get());
  return access::make_labels(std::move(ls));
}

labels labels::of_label_file(const std::string &path) {
  return access::make_labels(label_set_ptr(label_set_load(checked_path(path))));
}

// The texts without repeats.
static xvector<std::string_view>
distinct(std::span<const std::string_view> texts, const char *kind) {
  for (const std::string_view text : texts)
    if (const std::string fault = label_fault(text, label_rule::readable);
        !fault.empty())
      throw error(std::string(kind) + " label '" + std::string(text) +
                  "': " + fault);
  xvector<std::string_view> all(texts.begin(), texts.end());
  std::sort(all.begin(), all.end());
  all.erase(std::unique(all.begin(), all.end()), all.end());
  return all;
}

labels labels::of_texts(std::span<const std::string_view> vertex_labels,
                        std::span<const std::string_view> edge_labels) {
  label_set_ptr ls(label_set_create());
  label_set_add(distinct(vertex_labels, "vertex"),
                distinct(edge_labels, "edge"), ls.get());
  return access::make_labels(std::move(ls));
}

int labels::vertex_labels() const {
  return label_set_vertex_labels(state_->set.get());
}

int labels::edge_labels() const {
  return label_set_edge_labels(state_->set.get());
}

std::string_view labels::vertex_label(int id) const {
  return vertex_label_text(state_->set.get(), id);
}

std::string_view labels::edge_label(int id) const {
  return edge_label_text(state_->set.get(), id);
}

// Labels are in the order of their bytes, which strings compare in, too.
static std::optional<int> position(const ksstack *texts,
                                   std::string_view wanted) {
  const char *const *const first = ksstack_array<const char *>(texts);
  const char *const *const last = first + texts->count;
  const char *const *const found = std::lower_bound(
      first, last, wanted, [](const char *text, std::string_view word) {
        return std::string_view(text) < word;
      });
  if (found == last || *found != wanted)
    return std::nullopt;
  return static_cast<int>(found - first);
}

std::optional<int> labels::find_vertex_label(std::string_view label) const {
  return position(state_->set->vertex_labels, label);
}

std::optional<int> labels::find_edge_label(std::string_view label) const {
  return position(state_->set->edge_labels, label);
}

} // namespace kestro
