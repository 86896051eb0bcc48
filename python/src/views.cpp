// SPDX-License-Identifier: GPL-2.0-or-later
#include "views.h"

#include <algorithm>
#include <stdexcept>

namespace tolvik::python {
namespace {

struct Token {
  Shared box;
  Block block;
};

}  // namespace

py::capsule ViewToken(const Shared& box, Block block) {
  py::capsule token(new Token{box, block}, [](void* pointer) {
    auto* held = static_cast<Token*>(pointer);
    --held->box->views[static_cast<std::size_t>(held->block)];
    delete held;
  });
  ++box->views[static_cast<std::size_t>(block)];
  return token;
}

py::capsule ViewToken(const Shared& box) {
  return py::capsule(new Shared(box), [](void* pointer) { delete static_cast<Shared*>(pointer); });
}

void MakeReadOnly(py::array& view) {
  view.attr("setflags")(py::arg("write") = false);
}

void AssignInto(const py::array& view, const py::object& values) {
  view.attr("__setitem__")(py::ellipsis(), values);
}

void AssignArray(CArray<double>& to, const py::object& values, const StateBox& box, Block block) {
  auto numbers = py::array_t<double, py::array::c_style | py::array::forcecast>::ensure(values);
  if (!numbers) throw py::error_already_set();
  const auto flat = numbers.reshape({py::ssize_t{-1}});
  const auto* from = static_cast<const double*>(flat.data());
  if (flat.size() > INT32_MAX) throw std::length_error("AssignArray");
  const auto count = static_cast<std::int32_t>(flat.size());
  if (count != to.size) {
    box.RequireMovable(block);
    to.Assign(count, 0.0);
  }
  std::copy_n(from, count, to.begin());
}

}  // namespace tolvik::python
