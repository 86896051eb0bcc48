// SPDX-License-Identifier: GPL-2.0-or-later
#include "tolvik/analysis/measurement.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "optics/rays.h"
#include "tolvik/analysis/errors.h"

namespace tolvik::analysis {
namespace {

constexpr MeasurementKind kKindOfFit[] = {
    MeasurementKind::kReflectivity,       MeasurementKind::kAsymmetry,
    MeasurementKind::kBothRays,           MeasurementKind::kEnergyScan,
    MeasurementKind::kEnergyScanBothRays, MeasurementKind::kEnergyScanAsymmetry,
};

std::vector<double> Column(const CArray<double>& column) {
  return {column.begin(), column.end()};
}

MeasurementKind KindOfState(const CState& state) {
  const std::int32_t kind = state.fitasymmetry;
  if (kind < 0 || kind >= static_cast<std::int32_t>(std::size(kKindOfFit))) {
    throw DataError("fitasymmetry = " + std::to_string(kind) + " names no kind of curve; use 0 to 5");
  }
  return kKindOfFit[kind];
}

void CheckColumn(const Measurement& measurement, const std::vector<double>& column, const char* name,
                 bool needed, const std::string& label) {
  if (column.empty() && !needed) return;
  if (column.size() == measurement.q.size()) return;
  throw DataError(label + ": " + name + " has " + std::to_string(column.size()) + " values and q has " +
                  std::to_string(measurement.q.size()) + "; give one value for each point");
}

}  // namespace

bool IsEnergyScan(MeasurementKind kind) {
  return kind >= MeasurementKind::kEnergyScan;
}

bool IsAsymmetry(MeasurementKind kind) {
  return kind == MeasurementKind::kAsymmetry || kind == MeasurementKind::kEnergyScanAsymmetry;
}

bool HasTwoCurves(MeasurementKind kind) {
  return kind == MeasurementKind::kBothRays || kind == MeasurementKind::kEnergyScanBothRays;
}

double FootprintShare(BeamShape shape, double beam_width, double sample_length, double sine) {
  const double x = sample_length * sine / beam_width;
  switch (shape) {
    case BeamShape::kNone:
      return 1;
    case BeamShape::kGaussian:
      return std::max(0.0, std::erf(x / (2 * std::numbers::sqrt2)));
    case BeamShape::kBox:
      return std::clamp(x, 0.0, 1.0);
  }
  return 1;
}

Measurement FromDataset(const CState& state, std::int32_t index) {
  const CDataset& dataset = state.datasets[index];
  Measurement result;
  result.name = dataset.datasettitle.View();
  result.kind = KindOfState(state);
  result.q = Column(dataset.dataset_qz);
  const bool two = HasTwoCurves(result.kind);
  result.R = Column(two                        ? dataset.dataset_Rp
                    : IsAsymmetry(result.kind) ? dataset.dataset_A
                                               : dataset.dataset_R0);
  if (two) result.R2 = Column(dataset.dataset_Rm);
  if (IsEnergyScan(result.kind)) result.energies = Column(dataset.dataset_eng);
  result.energy = dataset.datasetenergy;
  result.resolution = dataset.datasetresolution;
  std::array<double, 8> rays;
  std::ranges::copy(FirstRay(dataset), rays.begin());
  std::ranges::copy(SecondRay(dataset), rays.begin() + 4);
  result.rays = rays;
  result.dataset = index;
  result.multiplicator = dataset.datasetmultiplicator;
  result.translator = dataset.datasettranslator;
  result.q_shift = dataset.datasetqztranslation;
  return result;
}

std::vector<Measurement> ActiveDatasets(const CState& state) {
  std::vector<Measurement> result;
  for (std::int32_t i = 0; i < state.datasets.size; ++i) {
    if (state.datasets[i].datasetactive != 0) result.push_back(FromDataset(state, i));
  }
  return result;
}

void CheckMeasurement(const Measurement& measurement, const std::string& label) {
  CheckColumn(measurement, measurement.R, "R", true, label);
  CheckColumn(measurement, measurement.dR, "dR", false, label);
  CheckColumn(measurement, measurement.dq, "dq", false, label);
  CheckColumn(measurement, measurement.R2, "R2", HasTwoCurves(measurement.kind), label);
  CheckColumn(measurement, measurement.dR2, "dR2", false, label);
  CheckColumn(measurement, measurement.energies, "energies", IsEnergyScan(measurement.kind), label);
  if (!measurement.masked.empty() && measurement.masked.size() != measurement.q.size()) {
    throw DataError(label + ": masked has " + std::to_string(measurement.masked.size()) +
                    " values and q has " + std::to_string(measurement.q.size()) +
                    "; give one value for each point");
  }
  if (HasTwoCurves(measurement.kind) && measurement.dR.empty() != measurement.dR2.empty()) {
    throw DataError(label + ": only one of the two curves has error bars; give both or none");
  }
}

}  // namespace tolvik::analysis
