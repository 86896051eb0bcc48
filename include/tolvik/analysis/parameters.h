// SPDX-License-Identifier: GPL-2.0-or-later
// The free parameters: the fit variables of a state, and quantities of its measurements.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "tolvik/analysis/measurement.h"
#include "tolvik/analysis/prior.h"
#include "tolvik/state.h"

namespace tolvik::analysis {

/// The kind of number of a parameter.
enum class ParameterKind : std::uint8_t {
  kVariable,  ///< a fit variable of the state
  kScale,     ///< of a measurement, and so on
  kBackground,
  kOffset,  ///< degrees
  kBeamWidth,
  kSampleLength,
};

/// One free number.
struct Parameter {
  std::string name;  ///< for people, such as "layer 2 thickness" or "data 0 scale"; unique
  ParameterKind kind = ParameterKind::kVariable;
  std::int32_t index = 0;  ///< of the fit variable, or of the measurement
  double value = 0;        ///< start of a fit, inside the bounds
  Bounds bounds;
  Prior prior;
  double scale = 1;    ///< a typical change, above 0
  double step = 6e-6;  ///< of central differences of the curve
};

/// The name of a fit variable: its kind and what it belongs to, layers counted from the substrate = 0.
std::string NameOfVariable(const CFitVariable& variable);

/// The free numbers of a state and of its measurements: the fit variables first, in their order, then those
/// of each measurement. Bounds of 1e10 and beyond count as none. A start outside of its bounds is moved to
/// the nearest one, with a line in warnings. Throws DataError for crossed bounds, for a value or bound that
/// is not a number and for a prior that does not fit its bounds.
std::vector<Parameter> CollectParameters(const CState& state, std::span<const Measurement> measurements,
                                         std::vector<std::string>& warnings);

/// The quantity of a measurement for a parameter whose kind is not kVariable.
Quantity& QuantityOf(Measurement& measurement, ParameterKind kind);

/// The name of measurement i in messages and parameters: "data i".
std::string LabelOf(std::size_t i);

}  // namespace tolvik::analysis
