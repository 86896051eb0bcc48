// SPDX-License-Identifier: GPL-2.0-or-later
#include "tolvik/analysis/parameters.h"

#include <algorithm>
#include <cmath>
#include <sstream>

#include "model/fit_variable_names.h"
#include "tolvik/analysis/errors.h"

namespace tolvik::analysis {
namespace {

// Relative steps of central differences: where rounding and the cubic term are equal. An index 1 - delta is
// rounded relative to 1, which hides a small step in delta.
constexpr double kStep = 6e-6;
constexpr double kOpticalStep = 1e-4;

// Bounds of a variable without bounds, or wider ones.
constexpr double kNoBound = 1e10;

std::string Text(double value) {
  std::ostringstream text;
  text.imbue(std::locale::classic());
  text.precision(9);
  text << value;
  return text.str();
}

bool IsOptical(const CFitVariable& variable) {
  switch (variable.fit_id) {
    case FitKind::kDelta:
    case FitKind::kBeta:
    case FitKind::kDeltaM:
    case FitKind::kBetaM:
    case FitKind::kBetaKK:
    case FitKind::kDeltaKK:
      return true;
    default:
      return false;
  }
}

Bounds BoundsOf(const CFitVariable& variable) {
  Bounds bounds{variable.fit_lower_boundary, variable.fit_upper_boundary};
  if (bounds.lower <= -kNoBound) bounds.lower = -std::numeric_limits<double>::infinity();
  if (bounds.upper >= kNoBound) bounds.upper = std::numeric_limits<double>::infinity();
  return bounds;
}

void CheckBounds(const Parameter& parameter) {
  const Bounds& bounds = parameter.bounds;
  const std::string interval = Text(bounds.lower) + " to " + Text(bounds.upper);
  if (std::isnan(bounds.lower) || std::isnan(bounds.upper)) {
    throw DataError(parameter.name + ": its bounds " + interval + " are not numbers; give two numbers");
  }
  if (bounds.lower > bounds.upper) {
    throw DataError(parameter.name + ": its bounds are crossed (" + interval + "); swap them");
  }
  if (!std::isfinite(parameter.value)) {
    throw DataError(parameter.name + ": its start " + Text(parameter.value) + " is not a number; give one");
  }
  if (!IsValid(parameter.prior, bounds)) {
    throw DataError(parameter.name + ": its prior does not fit the bounds " + interval +
                    "; a normal prior needs sigma > 0, a log-uniform one finite bounds above 0");
  }
}

void MoveInside(Parameter& parameter, std::vector<std::string>& warnings) {
  const double start = parameter.value;
  if (parameter.bounds.Hold(start)) return;
  parameter.value = std::clamp(start, parameter.bounds.lower, parameter.bounds.upper);
  warnings.push_back(parameter.name + ": the start " + Text(start) +
                     " lies outside of its bounds and was moved to " + Text(parameter.value));
}

// The step of the variable is not its scale: without one in the file it is 0.1 in any unit.
double ScaleOf(const Parameter& parameter) {
  const double width = parameter.bounds.upper - parameter.bounds.lower;
  double scale = std::abs(parameter.value);
  if (parameter.prior.kind == PriorKind::kNormal) scale = std::max(scale, parameter.prior.sigma);
  if (std::isfinite(width) && width > 0 && (scale == 0 || scale > width)) scale = width;
  return scale > 0 ? scale : 1.0;
}

void Finish(Parameter& parameter, bool optical, std::vector<std::string>& warnings) {
  CheckBounds(parameter);
  MoveInside(parameter, warnings);
  parameter.scale = ScaleOf(parameter);
  parameter.step = parameter.scale * (optical ? kOpticalStep : kStep);
}

void AddQuantities(const Measurement& measurement, std::size_t i, std::vector<Parameter>& list) {
  struct Row {
    ParameterKind kind;
    const char* name;
    bool there;
  };
  const bool footprint = measurement.footprint.shape != BeamShape::kNone;
  const Row rows[] = {
      {ParameterKind::kScale, "scale", true},
      {ParameterKind::kBackground, "background", true},
      {ParameterKind::kOffset, "offset", true},
      {ParameterKind::kBeamWidth, "beam width", footprint},
      {ParameterKind::kSampleLength, "sample length", footprint},
  };
  for (const Row& row : rows) {
    const Quantity& quantity = QuantityOf(const_cast<Measurement&>(measurement), row.kind);
    if (!quantity.free || !row.there) continue;
    Parameter parameter;
    parameter.name = LabelOf(i) + " " + row.name;
    parameter.kind = row.kind;
    parameter.index = static_cast<std::int32_t>(i);
    parameter.value = quantity.value;
    parameter.bounds = quantity.bounds;
    parameter.prior = quantity.prior;
    list.push_back(parameter);
  }
}

// Two variables of one name: both get their number.
void MakeUnique(std::vector<Parameter>& list) {
  std::vector<std::string> names;
  for (const Parameter& parameter : list) names.push_back(parameter.name);
  for (std::size_t i = 0; i < list.size(); ++i) {
    if (std::ranges::count(names, names[i]) > 1)
      list[i].name += " (variable " + std::to_string(list[i].index) + ")";
  }
}

}  // namespace

std::string LabelOf(std::size_t i) {
  return "data " + std::to_string(i);
}

std::string NameOfVariable(const CFitVariable& variable) {
  const auto number = [](std::int32_t i) { return std::to_string(i); };
  const std::string one = number(variable.fit_additional_id);
  const std::string slice = "element " + number(variable.fit_element_id) + " slice " + one;
  std::string ties;
  const auto kind = variable.fit_id;
  if ((kind == FitKind::kDelta || kind == FitKind::kBeta) && variable.fit_dataset1 != -1) {
    ties = " (dataset " + number(variable.fit_dataset1);
    if (variable.fit_dataset2 != -1) ties += " and " + number(variable.fit_dataset2);
    ties += ")";
  }
  switch (kind) {
    case FitKind::kThickness:
      return "layer " + one + " thickness";
    case FitKind::kDelta:
      return "layer " + one + " delta" + ties;
    case FitKind::kBeta:
      return "layer " + one + " beta" + ties;
    case FitKind::kSigma:
      return "layer " + one + " roughness";
    case FitKind::kDeltaM:
      return "layer " + one + " magnetic delta";
    case FitKind::kBetaM:
      return "layer " + one + " magnetic beta";
    case FitKind::kResolution:
      return "resolution";
    case FitKind::kMultiplicator:
      return "multiplicator";
    case FitKind::kQzMovement:
      return "q shift";
    case FitKind::kGaussDelta:
      return "gauss " + one + " delta";
    case FitKind::kGaussBeta:
      return "gauss " + one + " beta";
    case FitKind::kGaussVariance:
      return "gauss " + one + " width";
    case FitKind::kGaussZ:
      return "gauss " + one + " z";
    case FitKind::kScript:
      return "script parameter " + one;
    case FitKind::kElementDensity:
      return slice + " density";
    case FitKind::kElementThickness:
      return slice + " thickness";
    case FitKind::kElementSigma:
      return slice + " roughness";
    case FitKind::kBetaKK:
      return "table row " + one + " beta";
    case FitKind::kDeltaKK:
      return "table row " + one + " delta";
    case FitKind::kElementF1:
      return "element " + number(variable.fit_element_id) + " f1";
    case FitKind::kElementF2:
      return "element " + number(variable.fit_element_id) + " f2";
  }
  return "unknown kind " + number(variable.fit_id);
}

Quantity& QuantityOf(Measurement& measurement, ParameterKind kind) {
  switch (kind) {
    case ParameterKind::kBackground:
      return measurement.background;
    case ParameterKind::kOffset:
      return measurement.offset;
    case ParameterKind::kBeamWidth:
      return measurement.footprint.beam_width;
    case ParameterKind::kSampleLength:
      return measurement.footprint.sample_length;
    default:
      return measurement.scale;
  }
}

std::vector<Parameter> CollectParameters(const CState& state, std::span<const Measurement> measurements,
                                         std::vector<std::string>& warnings) {
  std::vector<Parameter> list;
  for (std::int32_t i = 0; i < state.fitvariables.size; ++i) {
    const CFitVariable& variable = state.fitvariables[i];
    Parameter parameter;
    parameter.name = NameOfVariable(variable);
    parameter.index = i;
    parameter.value = variable.fit_value;
    parameter.bounds = BoundsOf(variable);
    list.push_back(parameter);
  }
  for (std::size_t i = 0; i < measurements.size(); ++i) AddQuantities(measurements[i], i, list);
  MakeUnique(list);
  for (Parameter& parameter : list) {
    const bool variable = parameter.kind == ParameterKind::kVariable;
    Finish(parameter, variable && IsOptical(state.fitvariables[parameter.index]), warnings);
  }
  return list;
}

}  // namespace tolvik::analysis
