// SPDX-License-Identifier: GPL-2.0-or-later
// Curves and scans as arrays. Each works on a copy of the state, without the GIL.
#include <pybind11/stl.h>

#include <algorithm>
#include <limits>
#include <optional>

#include "analysis_call.h"
#include "calculations.h"
#include "engine/curve/calculations.h"
#include "optics/energy.h"
#include "optics/layer_constants.h"
#include "parts.h"
#include "tolvik/analysis/objective.h"
#include "views.h"

namespace tolvik::python {
namespace {

using Numbers = py::array_t<double, py::array::c_style | py::array::forcecast>;

CSolution Grid(const Numbers& q) {
  if (q.size() > INT32_MAX) throw std::length_error("Grid");
  CSolution curve;
  curve.dataset_qz.Assign(static_cast<std::int32_t>(q.size()), 0.0);
  std::copy_n(q.data(), q.size(), curve.dataset_qz.begin());
  return curve;
}

Numbers Column(const CArray<double>& values) {
  return Numbers(values.size, values.data);
}

// width: half width of the resolution, Å⁻¹; energy in eV; None leaves those of the state.
void TakeConditions(CState& state, const std::optional<double>& width, const std::optional<double>& energy) {
  if (width) state.resolution = *width;
  if (energy) state.lambda = LambdaFromEnergy(*energy);
}

py::object Curve(const PyState& self, const Numbers& q, std::optional<double> width,
                 std::optional<double> energy, std::int32_t threads) {
  CState state = WorkingCopy(*self.box);
  TakeConditions(state, width, energy);
  CSolution curve = Grid(q);
  RunWithoutGil([&](Outcome& outcome) { CalcCurveInThreads(curve, state, false, threads, outcome); });
  return Column(curve.dataset_R0);
}

py::tuple Dichroism(const PyState& self, const Numbers& q, std::optional<double> width,
                    std::optional<double> energy, std::int32_t threads) {
  CState state = WorkingCopy(*self.box);
  TakeConditions(state, width, energy);
  CSolution curve = Grid(q);
  RunWithoutGil([&](Outcome& outcome) { CalcCurveInThreads(curve, state, true, threads, outcome); });
  return py::make_tuple(Column(curve.dataset_Rp), Column(curve.dataset_Rm), Column(curve.dataset_A));
}

// Pairs of energy and qz, as the program scans them. A point beyond its tables stays NaN.
py::object EnergyScan(const PyState& self, const Numbers& energies, const Numbers& q) {
  CState state = WorkingCopy(*self.box, true);
  CSolution scan = Grid(q);
  scan.dataset_eng = Grid(energies).dataset_qz;
  scan.dataset_R0.Assign(scan.dataset_qz.size, std::numeric_limits<double>::quiet_NaN());
  RunWithoutGil([&](Outcome& outcome) {
    for (std::int32_t i = 0; i < scan.dataset_qz.size; ++i) {
      const std::span<const double> point(&scan.dataset_qz[i], 1);
      if (!CheckReach(point, state, LambdaFromEnergy(scan.dataset_eng[i]), outcome)) {
        outcome.index = i;
        return;
      }
    }
    ScriptNotes notes(outcome);
    outcome.code = engine::CalcEScan(scan, state, &notes);
  });
  return Column(scan.dataset_R0);
}

// A curve at each energy: rows (1, energies, q), or (2, energies, q) for both rays. The constants come from
// the tables; an energy beyond them is a row of NaN.
py::object EnergyRows(const PyState& self, const Numbers& energies, const Numbers& q, bool both_rays) {
  const CState pristine = WorkingCopy(*self.box, true);
  const CSolution grid = Grid(q);
  const py::ssize_t rays = both_rays ? 2 : 1, rows = energies.size(), points = q.size();
  Numbers result({rays, rows, points});
  std::fill_n(result.mutable_data(), result.size(), std::numeric_limits<double>::quiet_NaN());
  double* out = result.mutable_data();
  RunWithoutGil([&](Outcome& outcome) {
    for (py::ssize_t row = 0; row < rows; ++row) {
      CState state = pristine;
      state.lambda = LambdaFromEnergy(energies.data()[row]);
      if (!SetLayerConstantsForEnergy(state)) continue;
      state.ocautomatic = 0;
      CSolution curve = grid;
      CalcCurve(curve, state, both_rays, outcome);
      if (outcome.code != ReturnCode::kSuccess) return;
      const CArray<double>& first = both_rays ? curve.dataset_Rp : curve.dataset_R0;
      std::copy(first.begin(), first.end(), out + row * points);
      if (both_rays) std::copy(curve.dataset_Rm.begin(), curve.dataset_Rm.end(), out + (rows + row) * points);
    }
  });
  return result;
}

// Curves with a sigma for each point: the model of a measurement without a fit, one column for each ray.
analysis::ModelCurve ModelOfPoints(const PyState& self, const Numbers& q, const Numbers& sigma,
                                   std::optional<double> energy, bool both_rays) {
  CState state = WorkingCopy(*self.box);
  TakeConditions(state, std::nullopt, energy);
  state.fitvariables.Clear();
  analysis::Measurement grid;
  grid.kind = both_rays ? analysis::MeasurementKind::kBothRays : analysis::MeasurementKind::kReflectivity;
  grid.q.assign(q.data(), q.data() + q.size());
  grid.dq.assign(sigma.data(), sigma.data() + sigma.size());
  grid.R.assign(grid.q.size(), 1.0);
  if (both_rays) grid.R2 = grid.R;
  analysis::ObjectiveOptions options;
  options.weights = analysis::Weights::kLog;  // needs no error bars
  options.resolution = analysis::Resolution::kPoints;
  RunWithoutGil([&](Outcome& outcome) {
    for (std::size_t i = 0; i < grid.q.size(); ++i) {
      state.resolution = 2 * grid.dq[i];
      state.fastresolution = false;
      if (CheckReach({&grid.q[i], 1}, state, state.lambda, outcome)) continue;
      outcome.index = static_cast<std::int32_t>(i);
      return;
    }
  });
  return CallAnalysis([&] {
    analysis::Objective objective(state, {grid}, options);
    return objective.ModelAt({}, 0);
  });
}

Numbers ModelColumn(const std::vector<double>& values) {
  return Numbers(static_cast<py::ssize_t>(values.size()), values.data());
}

py::object CurveOfPoints(const PyState& self, const Numbers& q, const Numbers& sigma,
                         std::optional<double> energy) {
  return ModelColumn(ModelOfPoints(self, q, sigma, energy, false).values[0]);
}

py::tuple DichroismOfPoints(const PyState& self, const Numbers& q, const Numbers& sigma,
                            std::optional<double> energy) {
  const auto model = ModelOfPoints(self, q, sigma, energy, true);
  return py::make_tuple(ModelColumn(model.values[0]), ModelColumn(model.values[1]));
}

}  // namespace

void DefineCurves(py::module_& module) {
  module.def("curve", &Curve);
  module.def("dichroism", &Dichroism);
  module.def("curve_points", &CurveOfPoints);
  module.def("dichroism_points", &DichroismOfPoints);
  module.def("energy_scan", &EnergyScan);
  module.def("energy_rows", &EnergyRows);
}

}  // namespace tolvik::python
