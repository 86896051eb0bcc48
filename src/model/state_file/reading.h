// SPDX-License-Identifier: GPL-2.0-or-later
// Common to the parts of the state reader: the records being read and the table of actions by key.
#pragma once

#include <cstdint>
#include <functional>
#include <string_view>
#include <unordered_map>

#include "model/state_file/setting_lines.h"
#include "model/state_file/stream_value.h"
#include "tolvik/state.h"

namespace tolvik {

/// State of the reader between lines: the records that are being read, not yet part of the CState.
struct StateReading {
  CState& state;
  SettingLines lines;
  std::string_view file_name;
  CDataset dataset{};        // pending: appended by the next datasetnumber or at the end
  CGaussFunction gauss{};    // pending: appended by the next gauss_function or at the end
  double measuremult = 1.0;  // multiplicator and qz shift of the datasets that follow
  double deltaqz = 0;
  std::int32_t layerversion = 0;
  bool thicknesses_given = false;
  bool refused = false;  // a file of another version
};

/// The action of a key. Keys are looked up by their name without blanks.
using Action = std::function<void(StateReading&, const SettingLine&)>;
using Actions = std::unordered_map<std::string_view, Action>;

/// The number at the front of a value; `otherwise` for an empty one.
template <class Number>
Number Parse(std::string_view value, Number otherwise = {}) {
  ReadValue(value, otherwise);
  return otherwise;
}

/// The record begun last, or null.
template <class Record>
Record* Last(CArray<Record>& records) {
  return records.IsEmpty() ? nullptr : &records.Last();
}
CElementSlice* LastSlice(CState& state);

/// Keys that begin a section, a table of an old version, or a record.
void AddSectionKeys(Actions& actions);

/// Keys that do more than set one member, and those of older files. They replace plain keys of the same name.
void AddSpecialKeys(Actions& actions);

/// Moves a pending record with content into the state and begins a new one.
void FlushDataset(StateReading& reading);
void FlushGauss(StateReading& reading);

}  // namespace tolvik
