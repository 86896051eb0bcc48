// SPDX-License-Identifier: GPL-2.0-or-later
#include "measurements.h"

#include <pybind11/stl.h>

#include <array>
#include <string>
#include <vector>

#include "raise.h"

namespace tolvik::python {
namespace {

// Sets a member where the dictionary has it.
template <class Value>
void TakeMember(const py::dict& given, const char* name, Value& to) {
  if (given.contains(name)) to = given[name].cast<Value>();
}

}  // namespace

analysis::Measurement TakeMeasurement(const py::dict& given, const CState& state) {
  std::int32_t dataset = -1;
  TakeMember(given, "dataset", dataset);
  analysis::Measurement m = dataset < 0 ? analysis::Measurement() : analysis::FromDataset(state, dataset);
  TakeMember(given, "name", m.name);
  if (given.contains("kind")) m.kind = static_cast<analysis::MeasurementKind>(given["kind"].cast<int>());
  TakeMember(given, "q", m.q);
  TakeMember(given, "R", m.R);
  TakeMember(given, "dR", m.dR);
  TakeMember(given, "R2", m.R2);
  TakeMember(given, "dR2", m.dR2);
  TakeMember(given, "dq", m.dq);
  TakeMember(given, "energies", m.energies);
  TakeMember(given, "masked", m.masked);
  if (given.contains("energy")) m.energy = given["energy"].cast<double>();
  if (given.contains("resolution")) m.resolution = given["resolution"].cast<double>();
  if (given.contains("rays")) m.rays = given["rays"].cast<std::array<double, 8>>();
  return m;
}

}  // namespace tolvik::python
