// SPDX-License-Identifier: GPL-2.0-or-later
// Writes the state file. The empty lines are part of the format.
#include <ostream>
#include <span>
#include <type_traits>

#include "model/fit_variable_names.h"
#include "model/safe_file.h"
#include "model/state_file/keys.h"
#include "model/state_file/settings.h"
#include "model/state_file/stream_value.h"
#include "optics/energy.h"
#include "optics/energy_given.h"
#include "tolvik/state_file.h"

namespace tolvik {
namespace {

// Variables of the element mode and of the optical tables have no name in the file.
constexpr std::int32_t kNamedFitIds = 14;

class StateWriter {
 public:
  StateWriter(const CState& state, StateDigits digits) : state_(state), digits_(digits) {}

  std::string Write() {
    WriteHead();
    WriteLayers();
    WriteElements();
    WriteGaussFunctions();
    WriteFitVariables();
    WriteSettings(keys::kSettingsAboveEnergy);
    WriteEnergy();
    WriteSettings(keys::kSettingsBelowEnergy);
    WriteScripts();
    WriteDatasets();
    return std::move(out_);
  }

 private:
  void Comment(std::string_view text) {
    out_ += text;
    out_ += '\n';
  }
  void EmptyLines(int count = 1) { out_.append(static_cast<std::size_t>(count), '\n'); }

  // One line: its literal start and a value.
  void Line(std::string_view start, const CCharArray& text) {
    out_ += start;
    out_ += text.View();
    out_ += '\n';
  }
  template <class Number>
  void Line(std::string_view start, Number value) {
    out_ += start;
    if constexpr (std::is_same_v<Number, double>) {
      AppendValue(out_, value, IsExact() ? kExactDigits : kSixDigits);
    } else {
      AppendValue(out_, value);
    }
    out_ += '\n';
  }
  template <class Record>
  void Line(std::string_view start, const keys::Field<Record>& field, const Record& record) {
    std::visit([&](auto member) { Line(start, record.*member); }, field);
  }
  template <class Record>
  void Lines(std::span<const keys::Key<Record>> list, const Record& record) {
    for (const auto& key : list) Line(key.start, key.field, record);
  }
  // The elements of several arrays in turn; an array that ends early has no more lines.
  template <class Record>
  void PointLines(std::span<const keys::ArrayKey<Record>> list, const Record& record, std::int32_t count) {
    for (std::int32_t i = 0; i < count; ++i) {
      for (const auto& key : list) {
        const CArray<double>& values = record.*key.field;
        if (i < values.size) Line(key.start, values[i]);
      }
    }
  }
  // The reader keeps the blank after the "=" of a script line: a line grows by it, but in an exact file.
  void ScriptLine(std::string_view start, const CCharArray& line) {
    if (IsExact()) start.remove_suffix(1);
    Line(start, line);
  }
  // A comment that ends in a number, such as "# layer 0".
  void NumberedComment(std::string_view text, std::int32_t number) {
    out_ += text;
    AppendValue(out_, number);
    out_ += '\n';
  }

  void WriteHead() {
    Comment("# Complete Status of Tolvik");
    Comment("# File Version");
    Line(keys::kFileVersion, 1);
    EmptyLines();
  }

  void WriteLayers() {
    Comment("# layer configuration");
    Line(keys::kLayerVersion, 3);
    for (std::int32_t i = 0; i < state_.layers.size; ++i) {
      NumberedComment("# layer ", i);
      Line(keys::kLayer, i);
      Lines<CLayer>(keys::kLayerKeys, state_.layers[i]);
      EmptyLines();
    }
    EmptyLines();
  }

  void WriteElements() {
    Comment("# element configuration");
    Line(keys::kElementLayerVersion, 1);
    for (const CElementLayer& element : state_.elementlayers) {
      Lines<CElementLayer>(keys::kElementKeys, element);
      for (std::int32_t j = 0; j < element.slices.size; ++j) {
        Line(keys::kElementSlice, j);
        Lines<CElementSlice>(keys::kSliceKeys, element.slices[j]);
      }
    }
  }

  void WriteGaussFunctions() {
    Comment("# magnetic configuration with gauss");
    Line(keys::kMagneticVersion, 4);
    std::int32_t number = 0;
    for (const CGaussFunction& function : state_.gaussfunctions) {
      NumberedComment("# gauss function ", ++number);
      Line(keys::kGaussFunction, number);
      Lines<CGaussFunction>(keys::kGaussKeys, function);
      Line(keys::kGaussSplinePoints, function.gauss_splinex.size);
      PointLines<CGaussFunction>(keys::kSplineKeys, function, function.gauss_splinex.size);
      EmptyLines();
    }
    EmptyLines();
  }

  void WriteFitVariables() {
    Comment("# fit variables");
    Line(keys::kFitVariableVersion, 1);
    std::int32_t number = 0;
    for (const CFitVariable& variable : state_.fitvariables) {
      if (variable.fit_id >= 0 && variable.fit_id < kNamedFitIds) {
        out_ += "# ";
        Comment(kFitKindNames[static_cast<std::size_t>(variable.fit_id)]);
      }
      Line(keys::kFitVariable, ++number);
      Lines<CFitVariable>(keys::kFitVariableKeys, variable);
      EmptyLines();
    }
    EmptyLines(2);
  }

  void WriteSettings(std::span<const keys::Setting> settings) {
    for (const keys::Setting& setting : settings) {
      if (!setting.comment.empty()) Comment(setting.comment);
      Line(setting.start, setting.field, state_);
      EmptyLines(setting.blank_lines);
    }
  }

  void WriteEnergy() {
    Comment(keys::kEnergyComment);
    Line(keys::kEnergy, IsExact() ? EnergyGivenAs(state_.lambda) : EnergyFromLambda(state_.lambda));
    EmptyLines(2);
  }

  void WriteScripts() {
    Comment("# script parameters");
    for (double parameter : state_.scriptparameters) Line(keys::kScriptParameter, parameter);
    Comment("# script before calculation");
    for (const CCharArray& line : state_.scriptlines) ScriptLine(keys::kScriptLine, line);
    EmptyLines();
    Comment("# default script");
    for (const CCharArray& line : state_.defaultscriptlines) ScriptLine(keys::kDefaultScriptLine, line);
    EmptyLines();
  }

  // The empty dataset of a loaded state is omitted: the reader adds it again.
  void WriteDatasets() {
    WriteSettings(keys::kActiveDataset);
    Comment("# measurement data");
    Line(keys::kMeasurementDataVersion, 2);
    const CArray<CDataset>& datasets = state_.datasets;
    const std::int32_t first = !datasets.IsEmpty() && datasets[0].datasettitle == "Empty" ? 1 : 0;
    for (std::int32_t i = first; i < datasets.size; ++i) {
      NumberedComment("# dataset ", i);
      Line(keys::kDatasetNumber, i);
      Lines<CDataset>(keys::kDatasetKeys, datasets[i]);
      const std::int32_t points = datasets[i].dataset_qz.size;
      Line(keys::kDatasetPoints, points);
      PointLines<CDataset>(keys::kPointKeys, datasets[i], points);
      EmptyLines();
    }
  }

  bool IsExact() const { return digits_ == StateDigits::kExact; }

  const CState& state_;
  StateDigits digits_;
  std::string out_;
};

}  // namespace

std::string FormatState(const CState& state, StateDigits digits) {
  return StateWriter(state, digits).Write();
}

bool SaveState(const CState& state, const std::string& file_name, StateDigits digits) {
  SafeFile file(file_name);
  if (!file.IsOpen()) return false;
  file.Stream() << FormatState(state, digits);
  return file.Commit();
}

}  // namespace tolvik
