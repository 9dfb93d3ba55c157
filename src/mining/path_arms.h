// The halves of frequent paths of two edges.
#pragma once

#include <cstddef>

#include "base/xmalloc.h"
#include "mining/label_table.h"
#include "mining/sg_set.h"

namespace kestro {

// An edge at the centre of a path: its label, and that of its other end.
struct path_arm {
  int elabel, vlabel;
};

// The arms that frequent edges can be, by the label of the centre.  Labels of
// vertices that have such arms are numbered anew, and so are the arms of each,
// by their vertex label, then their edge label.
class path_arms {
public:
  // For edges of at most nel labels between vertices of at most nvl; what it
  // looks arms up in may take as many bytes.
  path_arms(const sg_set *edges, int nel, int nvl, size_t limit);

  // The number of a centre with that label, -1 for one without arms.
  int centre_of(int vlabel) const {
    return vertex_[static_cast<size_t>(vlabel)];
  }
  // The number of an arm at a centre, -1 for one that is not frequent.
  int arm_of(int centre, int elabel, int vlabel) const {
    if (!by_labels_.empty())
      return by_labels_[place(centre, elabel, vlabel)];
    const int to = vertex_[static_cast<size_t>(vlabel)];
    const int e = edge_[static_cast<size_t>(elabel)];
    return to < 0 || e < 0 ? -1 : numbers_.number_of({centre, to, e}) - 1;
  }

  int centres() const { return static_cast<int>(centre_.size()); }
  int vlabel_of(int centre) const {
    return centre_[static_cast<size_t>(centre)];
  }
  path_arm arm(int centre, int number) const {
    return arms_[first_arm_[static_cast<size_t>(centre)] +
                 static_cast<size_t>(number)];
  }
  int most_arms() const { return most_; } // of any centre
  // Of all paths; the arms outlive it.
  key_space<path_key> paths() const { return {first_path_.data(), centres()}; }

private:
  void number_arms(const sg_set *edges);
  void list_by_labels(size_t limit);
  size_t place(int centre, int elabel, int vlabel) const {
    return (static_cast<size_t>(centre) * vertex_.size() +
            static_cast<size_t>(vlabel)) *
               edge_.size() +
           static_cast<size_t>(elabel);
  }

  xvector<int> vertex_;    // by label, its number as a centre or -1
  xvector<int> edge_;      // by label, its number among those in use or -1
  int edges_ = 0;          // edge labels in use
  xvector<int> centre_;    // by number, the label
  edge_table numbers_;     // of arms, plus 1, by the new numbers of labels
  xvector<int> by_labels_; // the same by centre and labels as they are, or
                           // empty where that would be large
  xvector<path_arm> arms_;
  xvector<size_t> first_arm_;  // by centre; the end
  xvector<size_t> first_path_; // by centre; the end
  int most_ = 0;
};

} // namespace kestro
