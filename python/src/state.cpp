// SPDX-License-Identifier: GPL-2.0-or-later
// State: made, read, written, and its settings as attributes.
#include <string>

#include "box.h"
#include "fields.h"
#include "model/state_file/settings.h"
#include "parts.h"
#include "raise.h"
#include "tolvik/state_file.h"

namespace tolvik::python {
namespace {

using StateClass = py::class_<PyState>;

// Members of the state that a calculation reads and the file does not hold.
constexpr keys::Key<CState> kUnsavedKeys[] = {
    {"epsilon = ", &CState::epsilon, "tolerance of the classes of tensors; not saved"},
    {"fitpenalty = ", &CState::fitpenalty, "weight of the penalties of a fit; not saved"},
    {"mulqz4 = ", &CState::mulqz4, "not 0: curves are multiplied by the fourth power of qz; not saved"},
    {"polcorrection = ", &CState::polcorrection,
     "not 0: curves of pi light are divided by cos² 2 theta; not saved"},
    {"kktableindex = ", &CState::kktableindex, "table of the Kramers-Kronig variables, -1 none; not saved"},
    {"kkoffset = ", &CState::kkoffset, "offset of the Kramers-Kronig transform; not saved"},
};

// Lines without a comment of their own share the one above.
void DefineSettings(StateClass& cls, std::span<const keys::Setting> settings) {
  std::string_view comment;
  for (const keys::Setting& setting : settings) {
    if (!setting.comment.empty()) comment = setting.comment;
    DefineField<PyState, CState>(cls, setting.start, setting.field,
                                 comment.substr(comment.find_first_not_of("# ")));
  }
}

// Takes the place of the whole state; whoever shares the box sees the new one.
void Replace(const PyState& self, CState&& state) {
  self.box->RequireAllMovable();
  self.box->state = std::move(state);
  self.box->Settle();
}

void Load(const PyState& self, const std::string& path) {
  CState state;
  if (!LoadState(state, path)) Raise("not_loaded", path);
  Replace(self, std::move(state));
}

void Read(const PyState& self, const std::string& text, const std::string& name) {
  CState state;
  if (!ReadState(state, text, name)) Raise("not_read", name);
  Replace(self, std::move(state));
}

void Save(const PyState& self, const std::string& path) {
  if (!SaveState(self.get(), path)) Raise("not_saved", path);
}

}  // namespace

void DefineState(py::module_& module) {
  StateClass cls(module, "State");
  cls.def(py::init([] { return PyState{std::make_shared<StateBox>()}; }));
  cls.def("_share", [](PyState& self, const PyState& other) { self.box = other.box; });
  cls.def("_load", &Load);
  cls.def("_read", &Read);
  cls.def("_save", &Save);
  cls.def("_text", [](const PyState& self) { return TextOf(FormatState(self.get())); });
  DefineSettings(cls, keys::kSettingsAboveEnergy);
  DefineSettings(cls, keys::kSettingsBelowEnergy);
  DefineSettings(cls, keys::kActiveDataset);
  DefineFields<PyState, CState>(cls, kUnsavedKeys);
}

}  // namespace tolvik::python
