// SPDX-License-Identifier: GPL-2.0-or-later
// What a state can do beside curves: tables, constants, script, profile.
#include <algorithm>
#include <string>
#include <vector>

#include "engine/profile/profile.h"
#include "fields.h"
#include "optics/column_table.h"
#include "optics/energy.h"
#include "optics/layer_constants.h"
#include "optics/material.h"
#include "parts.h"
#include "script/host.h"
#include "views.h"
#include "working_copy.h"

namespace tolvik::python {
namespace {

// The stems that the sample names, each once, in their order.
std::vector<std::string_view> StemsOf(const CState& state) {
  std::vector<std::string_view> stems;
  const auto add = [&](std::string_view stem) {
    if (std::find(stems.begin(), stems.end(), stem) == stems.end()) stems.push_back(stem);
  };
  if (state.mode == Mode::kElement) {
    for (const CElementLayer& element : state.elementlayers) add(element.element.View());
  } else {
    for (const CLayer& layer : state.layers) add(layer.layer_db.View());
  }
  return stems;
}

std::int32_t KindOf(const CState& state) {
  return state.mode == Mode::kElement ? TableKind::kElement : TableKind::kLayer;
}

// Loads the tables that are lacking from files that begin with prefix. Returns the names of the files that
// are missing or empty.
py::list LoadTables(const PyState& self, const std::string& prefix) {
  CState& state = self.get();
  const std::int32_t kind = KindOf(state);
  py::list missing;
  for (const std::string_view stem : StemsOf(state)) {
    if (FindOpticalTable(stem, state.opticaltables, kind) >= 0) continue;
    COpticalTable material;
    material.kind = kind;
    const std::string path = prefix + std::string(stem);
    if (LoadOpticalTable(material, path)) {
      material.name.Set(stem);
      state.opticaltables.Append(std::move(material));
    } else {
      missing.append(TextOf(path + (kind == TableKind::kElement ? ".ff" : ".db")));
    }
  }
  return missing;
}

// Each stem of the sample with the energies of its table, or None without one.
py::list TableRanges(const PyState& self) {
  CState& state = self.get();
  py::list ranges;
  for (const std::string_view stem : StemsOf(state)) {
    const std::int32_t found = FindOpticalTable(stem, state.opticaltables, KindOf(state));
    if (found < 0) {
      ranges.append(py::make_tuple(TextOf(stem), py::none()));
      continue;
    }
    const COpticalTable& material = state.opticaltables[found];
    const CColumnTable& table = material.kind == TableKind::kElement ? material.ff : material.db;
    ranges.append(py::make_tuple(TextOf(stem),
                                 py::make_tuple(table.rows[0].energy, table.rows[table.count - 1].energy)));
  }
  return ranges;
}

bool SetConstants(const PyState& self) {
  self.box->Refresh();
  const bool all = SetLayerConstantsForEnergy(self.get());
  self.box->Settle();
  return all;
}

// In place and with the GIL: others must not see a state that is half changed.
void RunStateScript(const PyState& self) {
  self.box->Refresh();
  ScriptSession script(self.get());
  script.Run();
  self.box->Refresh();
  Outcome outcome;
  outcome.script = script.Outcome();
  if (outcome.script.code != kScriptReady) RaiseOutcome(outcome);
}

// Heights of the upper interfaces and constants of each entry of the profile, as a calculation prepares it.
py::tuple ProfileOf(const PyState& self) {
  CState state = WorkingCopy(*self.box);
  engine::Profile<double> profile;
  RunWithoutGil([&](Outcome& outcome) {
    ScriptNotes notes(outcome);
    engine::BringUpToDate(state, &notes);
    engine::PrepareProfile<double>(state, profile);
  });
  using Entry = engine::CLayer<double>;
  py::list columns;
  for (const auto member : {&Entry::layer_z, &Entry::layer_delta, &Entry::layer_beta, &Entry::layer_ddelta,
                            &Entry::layer_dbeta}) {
    py::array_t<double> column(profile.size);
    for (std::int32_t i = 0; i < profile.size; ++i) column.mutable_at(i) = profile[i].*member;
    columns.append(column);
  }
  return py::tuple(columns);
}

}  // namespace

void DefineServices(StateClass& cls) {
  cls.def("_load_tables", &LoadTables);
  cls.def("_table_ranges", &TableRanges);
  cls.def("_set_constants", &SetConstants);
  cls.def("_run_script", &RunStateScript);
  cls.def("_profile", &ProfileOf);
}

}  // namespace tolvik::python
