// SPDX-License-Identifier: GPL-2.0-or-later
// What belongs to the process: its threads, and how the module was built.
#include <string>

#include "engine/lanes/kernels.h"
#include "engine/threads/processors.h"
#include "parts.h"

namespace tolvik::python {

void DefineProcess(pybind11::module_& module) {
  module.attr("__version__") = TOLVIK_VERSION;
  module.def("_set_threads", &engine::ForceProcessorCount);
  module.def("_threads", [] {
    engine::SystemInfo info;
    engine::GetSystemInfo(info);
    return info.processors;
  });
  module.def("_compiler", [] { return std::string(__VERSION__); });
  module.def("_lanes", [] {
    const engine::lanes::Kernels* kernels = engine::lanes::ChosenKernels();
    return std::string(kernels != nullptr ? kernels->name : NameOf(engine::lanes::LaneSet::kPlain));
  });
}

}  // namespace tolvik::python
