// SPDX-License-Identifier: GPL-2.0-or-later
// State: made, read, written, and its settings as attributes.
#include <string>

#include "archive.h"
#include "box.h"
#include "fields.h"
#include "model/state_file/settings.h"
#include "parts.h"
#include "raise.h"
#include "tolvik/state_file.h"

namespace tolvik::python {
namespace {

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

StateDigits DigitsOf(bool exact) {
  return exact ? StateDigits::kExact : StateDigits::kSix;
}

void Save(const PyState& self, const std::string& path, bool exact) {
  if (!SaveState(self.get(), path, DigitsOf(exact))) Raise("not_saved", path);
}

py::bytes Bytes(const PyState& self) {
  self.box->Refresh();
  return py::bytes(WriteArchive(self.get()));
}

void TakeBytes(const PyState& self, const py::bytes& bytes) {
  CState state;
  if (!ReadArchive(state, std::string_view(bytes))) Raise("not_unpickled");
  Replace(self, std::move(state));
}

}  // namespace

void DefineState(StateClass& cls) {
  cls.def(py::init([] { return PyState{std::make_shared<StateBox>()}; }));
  cls.def("_share", [](PyState& self, const PyState& other) { self.box = other.box; });
  cls.def("_load", &Load);
  cls.def("_read", &Read);
  cls.def("_save", &Save);
  cls.def("_text",
          [](const PyState& self, bool exact) { return TextOf(FormatState(self.get(), DigitsOf(exact))); });
  cls.def("_bytes", &Bytes);
  cls.def("_take_bytes", &TakeBytes);
  DefineSettings(cls, keys::kSettingsAboveEnergy);
  DefineSettings(cls, keys::kSettingsBelowEnergy);
  DefineSettings(cls, keys::kActiveDataset);
  DefineFields<PyState, CState>(cls, kUnsavedKeys);
}

}  // namespace tolvik::python
