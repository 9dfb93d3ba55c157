// Patterns in other graphs.
//
// Graphs are matched a range at a time, without the global lock; the package
// hands ranges to threads of its own, and looks for signals in between.

#include "matching.h"

#include <cstdint>
#include <span>
#include <vector>

#include <kestro/kestro.h>

#include <nanobind/stl/vector.h>

#include "arrays.h"

namespace kestro_python {

using kestro::database;
using kestro::lattice_matcher;

static void make_lattice(lattice_matcher *place, const database &patterns,
                         input<int64_t> first_parents, input<int32_t> parents) {
  const std::span<const int64_t> first(first_parents.data(),
                                       first_parents.size());
  const std::span<const int> all(parents.data(), parents.size());
  const nb::gil_scoped_release free;
  new (place) lattice_matcher(patterns, first, all);
}

// How many patterns each graph from first up to end has, and which.
static nb::tuple contained(const lattice_matcher &lattice, const database &db,
                           int first, int end) {
  std::vector<int64_t> counts;
  std::vector<int32_t> patterns;
  {
    const nb::gil_scoped_release free;
    for (int tid = first; tid < end; tid++) {
      const std::vector<int> found = lattice.contained(db[tid]);
      counts.push_back(static_cast<int64_t>(found.size()));
      patterns.insert(patterns.end(), found.begin(), found.end());
    }
  }
  return nb::make_tuple(array_of(std::move(counts)),
                        array_of(std::move(patterns)));
}

// Lets Python handle signals; throws what a handler raised.
static void look_for_signals() {
  const nb::gil_scoped_acquire lock;
  if (PyErr_CheckSignals() != 0)
    throw nb::python_error();
}

// One row per embedding: the graph's vertices, per vertex of the pattern.  They
// can be many millions, so signals are looked for in between.
static nb::object embeddings(const database &patterns, const database &db,
                             int tid, long long most) {
  static constexpr long long between_looks = 1 << 14;
  std::vector<int32_t> images;
  const kestro::graph_view pattern = patterns[0];
  long long rows = 0;
  if (most != 0) {
    const nb::gil_scoped_release free;
    kestro::matcher(pattern).each(db[tid], [&](const kestro::embedding &e) {
      images.insert(images.end(), e.begin(), e.end());
      if (++rows % between_looks == 0)
        look_for_signals();
      return rows != most;
    });
  }
  return array_of(std::move(images), {static_cast<size_t>(rows),
                                      static_cast<size_t>(pattern.vertices())});
}

void bind_matching(nb::module_ &m) {
  nb::class_<lattice_matcher>(m, "LatticeMatcher",
                              "Patterns that are looked for together.")
      .def("__init__", &make_lattice, nb::arg("patterns"),
           nb::arg("first_parents"), nb::arg("parents"))
      .def("contained", &contained, nb::arg("db"), nb::arg("first"),
           nb::arg("end"),
           nb::sig("def contained(self, db: Database, first: int, end: int) -> "
                   "tuple[numpy.typing.NDArray[numpy.int64], "
                   "numpy.typing.NDArray[numpy.int32]]"),
           "How many patterns each graph from first up to end contains, and "
           "their positions.");
  m.def("embeddings", &embeddings, nb::arg("patterns"), nb::arg("db"),
        nb::arg("tid"), nb::arg("most"),
        nb::sig("def embeddings(patterns: Database, db: Database, tid: int, "
                "most: int) -> numpy.typing.NDArray[numpy.int32]"),
        "Where the first of the patterns lies in a graph: a row per "
        "embedding; all for a negative number.");
}

} // namespace kestro_python
