// SPDX-License-Identifier: GPL-2.0-or-later
// Members of a state that are no plain settings: its lists, rays, energy and script.
#include <pybind11/stl.h>

#include <cmath>

#include "homes.h"
#include "optics/energy.h"
#include "optics/energy_given.h"
#include "optics/rays.h"
#include "parts.h"

namespace tolvik::python {
namespace {

template <class Record>
void DefineList(StateClass& cls, const char* name) {
  cls.def_property(
      name, [](const PyState& self) { return Sequence<Record>{self.box}; },
      [](const PyState& self, const Sequence<Record>& other) {
        AssignSequence(Sequence<Record>{self.box}, other);
      });
}

void DefineLines(StateClass& cls, const char* name, CArray<CCharArray> CState::*member) {
  cls.def_property(
      name,
      [member](const PyState& self) {
        py::list lines;
        for (const CCharArray& line : self.get().*member) lines.append(Give(line));
        return lines;
      },
      [member, name = std::string(name)](const PyState& self, const std::vector<py::object>& lines) {
        CArray<CCharArray> taken;
        for (const py::object& line : lines) {
          taken.Append(CCharArray());
          Take(taken.Last(), line, name.c_str());
        }
        self.get().*member = std::move(taken);
      });
}

// The eight numbers of both rays follow one another.
py::array Rays(const PyState& self) {
  constexpr py::ssize_t kNumber = sizeof(double);
  return py::array(py::dtype::of<double>(), {2, 4}, {4 * kNumber, kNumber}, FirstRay(self.get()).data(),
                   ViewToken(self.box));
}

void SetEnergy(const PyState& self, const py::object& value) {
  double energy = 0;
  Take(energy, value, "energy");
  if (!std::isfinite(energy) || energy <= 0) Raise("energy_range", energy);
  self.get().lambda = LambdaFromEnergy(energy);
}

}  // namespace

void DefineMembers(StateClass& cls) {
  DefineList<CLayer>(cls, "layers");
  DefineList<CElementLayer>(cls, "elementlayers");
  DefineList<CGaussFunction>(cls, "gaussfunctions");
  DefineList<CFitVariable>(cls, "fitvariables");
  DefineList<CDataset>(cls, "datasets");
  DefineLines(cls, "scriptlines", &CState::scriptlines);
  DefineLines(cls, "defaultscriptlines", &CState::defaultscriptlines);
  cls.def_property(
      "scriptparameters",
      [](const PyState& self) {
        return ArrayView(self.get().scriptparameters, ViewToken(self.box, Block::kScriptParameters));
      },
      [](const PyState& self, const py::object& values) {
        AssignArray(self.get().scriptparameters, values, *self.box, Block::kScriptParameters);
      });
  cls.def_property("rays", &Rays,
                   [](const PyState& self, const py::object& values) { AssignInto(Rays(self), values); });
  cls.def_property(
      "energy", [](const PyState& self) { return EnergyGivenAs(self.get().lambda); }, &SetEnergy);
  cls.def_property_readonly("wavelength", [](const PyState& self) { return self.get().lambda; });
}

}  // namespace tolvik::python
