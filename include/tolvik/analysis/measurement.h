// SPDX-License-Identifier: GPL-2.0-or-later
// A measured curve with its error bars and the conditions of the measurement.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "tolvik/analysis/prior.h"
#include "tolvik/state.h"

namespace tolvik::analysis {

/// The measured quantity.
enum class MeasurementKind : std::uint8_t {
  kReflectivity,         ///< of the first ray, over q
  kSecondRay,            ///< of the second ray, over q; algorithm 0 reverses the magnetisation for it
  kBothRays,             ///< both, as R and R2
  kAsymmetry,            ///< (Rp - Rm) / (Rp + Rm) of both rays
  kEnergyScan,           ///< of the first ray, each point at an energy of its own
  kEnergyScanBothRays,   ///< both, as R and R2
  kEnergyScanAsymmetry,  ///< of both rays
};

bool IsEnergyScan(MeasurementKind kind);
bool IsAsymmetry(MeasurementKind kind);
/// Whether R2 and dR2 belong to the measurement.
bool HasTwoCurves(MeasurementKind kind);

/// A number of the measurement that is fixed or free.
struct Quantity {
  double value = 0;
  bool free = false;
  Bounds bounds = {};
  Prior prior = {};
};

enum class BeamShape : std::uint8_t {
  kNone,      ///< the sample intercepts the whole beam at every angle
  kGaussian,  ///< beam_width is the sigma of the beam
  kBox,       ///< beam_width is its full width
};

/// The share of the beam that hits the sample. Both lengths in one unit, usually mm.
struct Footprint {
  BeamShape shape = BeamShape::kNone;
  Quantity beam_width = {.value = 1.0};
  Quantity sample_length = {.value = 1.0};
};

/// Share of the beam on a sample at sin θ. Gaussian: erf(L sin θ / (2 √2 width)); box: L sin θ / width, at
/// most 1 (A. Gibaud, G. Vignaud and S. K. Sinha, Acta Cryst. A 49, 642 (1993)). 0 below the horizon.
double FootprintShare(BeamShape shape, double beam_width, double sample_length, double sine);

/// A measurement. Columns are empty or as long as q.
///
/// The model of a reflectivity is scale * footprint * R(q') / multiplicator - translator + background, that
/// of an asymmetry scale * A(q') + background. q' = 2 k0 sin(θ + offset) + q_shift, with θ from sin θ = q /
/// (2 k0).
struct Measurement {
  std::string name;  ///< for messages; empty: "data" and its number
  MeasurementKind kind = MeasurementKind::kReflectivity;
  std::vector<double> q;             ///< Å⁻¹
  std::vector<double> R, dR;         ///< values and their standard deviations
  std::vector<double> R2, dR2;       ///< of the second ray, for kinds with two curves
  std::vector<double> dq;            ///< standard deviation of q, Å⁻¹
  std::vector<double> energies;      ///< of each point of an energy scan, eV
  std::vector<std::uint8_t> masked;  ///< non-zero: the point is left out
  bool counts = false;               ///< R without dR are counts: Poisson statistics

  std::optional<double> energy;      ///< eV; without: that of the state
  std::optional<double> resolution;  ///< r of the rule of the program, two sigma, Å⁻¹; without: the state's
  std::optional<std::array<double, 8>> rays;   ///< both rays as in optics/rays.h; without: those of the state
  std::int32_t dataset = -1;                   ///< dataset of the state that it replaces; -1: a new one
  double multiplicator = 1.0, translator = 0;  ///< as in CDataset
  double q_shift = 0;                          ///< datasetqztranslation, Å⁻¹

  Quantity scale = {.value = 1.0};
  Quantity background;
  Quantity offset;  ///< degrees, of the angle θ
  Footprint footprint;

  std::int32_t size() const { return static_cast<std::int32_t>(q.size()); }
};

/// The dataset `index` of a state, which exists, without error bars. kind is that of state.fitasymmetry.
Measurement FromDataset(const CState& state, std::int32_t index);

/// FromDataset of all active datasets, in order.
std::vector<Measurement> ActiveDatasets(const CState& state);

/// Throws DataError for columns of unequal lengths, missing columns, and quantities whose bounds cross.
/// label: the name of the measurement in messages.
void CheckMeasurement(const Measurement& measurement, const std::string& label);

}  // namespace tolvik::analysis
