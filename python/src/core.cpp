// The extension module kestro._core.  It converts between Python's objects and
// the library's; everything that users call is Python.

#include <kestro/error.h>

#include <nanobind/nanobind.h>

#include "arrays.h"
#include "database.h"
#include "matching.h"
#include "mining_run.h"

namespace kestro_python {

// The class is Python's, so that it can be pickled and has attributes.
static void raise_kestro_error(const kestro::error &e) {
  const nb::object type =
      nb::module_::import_("kestro._errors").attr("KestroError");
  const nb::object path =
      e.path().empty() ? nb::none() : nb::object(text_of(e.path()));
  const nb::object line =
      e.line() == 0 ? nb::none() : nb::object(nb::int_(e.line()));
  const nb::object raised = type(text_of(e.what()), path, line);
  PyErr_SetObject(type.ptr(), raised.ptr());
}

static void translate(const std::exception_ptr &p, void *) {
  try {
    std::rethrow_exception(p);
  } catch (const kestro::error &e) {
    raise_kestro_error(e);
  }
}

} // namespace kestro_python

NB_MODULE(_core, m) {
  m.doc() = "The library of kestro; use the package kestro instead.";
  // Objects may outlive the module where a process ends in the middle of a run,
  // as a forked one does; that is nothing to tell its users.
  nanobind::set_leak_warnings(false);
  nanobind::register_exception_translator(kestro_python::translate);
  kestro_python::bind_database(m);
  kestro_python::bind_matching(m);
  kestro_python::bind_mine(m);
}
