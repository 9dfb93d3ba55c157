// Arrays and texts on their way between C++ and Python.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <memory>
#include <string_view>
#include <utility>
#include <vector>

#include <nanobind/nanobind.h>
#include <nanobind/ndarray.h>

namespace kestro_python {

namespace nb = nanobind;

// An array of NumPy's that is read and not kept.
template <class T>
using input = nb::ndarray<const T, nb::ndim<1>, nb::c_contig, nb::device::cpu>;
template <class T>
using input_pairs =
    nb::ndarray<const T, nb::shape<-1, 2>, nb::c_contig, nb::device::cpu>;

// Hands the numbers over to a NumPy array of this shape, without a copy.
template <class T>
nb::object array_of(std::vector<T> numbers,
                    std::initializer_list<size_t> shape) {
  auto kept = std::make_unique<std::vector<T>>(std::move(numbers));
  kept->reserve(1); // so that an empty array has an address, too
  T *const data = kept->data();
  const nb::capsule owner(kept.get(), [](void *p) noexcept {
    delete static_cast<std::vector<T> *>(p);
  });
  static_cast<void>(kept.release());
  return nb::cast(nb::ndarray<nb::numpy, T>(data, shape, owner));
}

template <class T> nb::object array_of(std::vector<T> numbers) {
  const size_t size = numbers.size();
  return array_of(std::move(numbers), {size});
}

// Pairs that lie one behind another, one a row.
template <class T> nb::object pairs_of(std::vector<T> numbers) {
  const size_t rows = numbers.size() / 2;
  return array_of(std::move(numbers), {rows, size_t{2}});
}

// Labels are bytes; those that are no UTF-8 come as lone surrogates, from which
// encoding with the same error handler makes the same bytes again.
inline nb::str text_of(std::string_view label) {
  PyObject *const text = PyUnicode_DecodeUTF8(
      label.data(), static_cast<Py_ssize_t>(label.size()), "surrogateescape");
  if (!text)
    throw nb::python_error();
  return nb::steal<nb::str>(text);
}

} // namespace kestro_python
