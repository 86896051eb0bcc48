// SPDX-License-Identifier: GPL-2.0-or-later
#include "raise.h"

#include <new>
#include <stdexcept>

namespace tolvik::python {

void TranslateMemoryErrors() {
  py::register_exception_translator([](std::exception_ptr thrown) {
    const auto set_error = [] {
      try {
        Raise("out_of_memory");
      } catch (py::error_already_set& error) {
        error.restore();
      }
    };
    try {
      if (thrown) std::rethrow_exception(thrown);
    } catch (const std::bad_alloc&) {
      set_error();
    } catch (const std::length_error&) {
      set_error();
    }
  });
}

}  // namespace tolvik::python
