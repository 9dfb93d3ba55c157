// How far a run is.
#pragma once

namespace kestro {

// How far a run is within one size of patterns.
struct progress {
  enum class step {
    joining,  // items are the patterns whose children are joined
    bounding, // items are the candidates generated
    counting, // items are the candidates that are left
    complete, // items are the patterns found; comes once they have been handed
              // over, but not for a size that has no candidate left to count
  };
  int size; // edges of what is being found; 1 and 2 only when complete
  step at;
  long long done;       // items, those that threads are at included
  long long known;      // items of this step and size
  long long candidates; // of this size, 0 while joining
};

} // namespace kestro
