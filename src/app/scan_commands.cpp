// SPDX-License-Identifier: GPL-2.0-or-later
#include "app/scan_commands.h"

#include <algorithm>
#include <cstdio>

#include "app/calc_commands.h"
#include "app/memory_guard.h"
#include "app/report.h"
#include "model/dataset.h"
#include "optics/layer_constants.h"
#include "optics/material.h"
#include "tolvik/tolvik.h"

namespace tolvik {
namespace {

constexpr std::int64_t kArraysOfAScan = 3;  // qz, energy, reflectivity

// Start values, which stay at points that no thread calculates: 0 in the first and 1 in the others.
void SizeReflectivity(CSolution& solution) {
  solution.dataset_R0.Assign(solution.dataset_qz.size, 1.0);
  if (!solution.dataset_R0.IsEmpty()) solution.dataset_R0[0] = 0;
}

// False when the measurement has no energies to scan.
bool BuildMeasuredScan(const CState& state, CSolution& solution) {
  solution = ActiveMeasurement(state);
  TranslateDataset(solution);
  return solution.dataset_eng.size == solution.dataset_qz.size;
}

}  // namespace

void BuildScanGrid(const CState& state, double start, double end, CSolution& solution) {
  const double step = (end - start) / state.numberofpoints;
  CheckCurveFits(std::int64_t{state.numberofpoints} + 1, kArraysOfAScan);
  for (double energy = start; energy <= end;) {
    solution.dataset_qz.Append(state.engscanqz);
    solution.dataset_eng.Append(energy);
    const double next = energy + step;
    if (!(next > energy)) break;
    energy = next;
  }
}

void CalcEnergyScanCommand(CState& state) {
  state.opticaltables.Clear();
  const LayerConstantsStatus tables = PrepareTables(state, TablesToLoad::kMissing);
  if (tables != LayerConstantsStatus::kReady) {
    std::puts(tables == LayerConstantsStatus::kMissingTables
                  ? "You need .db-files or .e-files for all layers"
                  : "You need .m-files or .e files for all layers");
    return;
  }
  CSolution solution;
  if (!state.usemeasurementqz) {
    const EnergyRange range = GetOpticalEnergyRange(state);
    const double start = state.engscanmin < range.lo ? range.lo : state.engscanmin;
    const double end = state.engscanmax > range.hi ? range.hi : state.engscanmax;
    BuildScanGrid(state, start, end, solution);
  } else if (!BuildMeasuredScan(state, solution)) {
    std::puts("Error: No energy values loaded. Either load dataset with energy values or use no dataset.");
    return;
  }
  SizeReflectivity(solution);
  CalcEScanParallelDLL(&solution, &state);
}

void BuildMapGrid(const CMapRange& range, CSolution& solution) {
  const std::int64_t points = std::int64_t{range.n1} * range.n2;
  CheckCurveFits(points, kArraysOfAScan);
  const auto size = static_cast<std::int32_t>(std::max<std::int64_t>(points, 0));
  solution.dataset_qz.Assign(size, 0.0);
  solution.dataset_eng.Assign(size, 0.0);
  SizeReflectivity(solution);
  for (std::int32_t j = 0; j < range.n2; ++j) {
    for (std::int32_t i = 0; i < range.n1; ++i) {
      const std::int32_t k = j * range.n1 + i;
      solution.dataset_eng[k] =
          range.min1 + (range.max1 - range.min1) * i / (static_cast<double>(range.n1) - 1);
      solution.dataset_qz[k] =
          range.min2 + (range.max2 - range.min2) * j / (static_cast<double>(range.n2) - 1);
    }
  }
}

std::int32_t CalcMap(CState& state, CMapRange& range, CSolution& solution) {
  if (!LoadOpticalTables(state)) {
    std::fputs("You need db-files for all layers", stderr);
    return ReturnCode::kTablesMissing;
  }
  const EnergyRange tables = GetOpticalEnergyRange(state);
  if (range.min1 < tables.lo) range.min1 = tables.lo;
  if (range.max1 > tables.hi) range.max1 = tables.hi;
  BuildMapGrid(range, solution);
  return CalcEScanParallelDLL(&solution, &state);
}

void CalcMapCommand(CState& state, CMapRange& range) {
  CSolution solution;
  const std::int32_t code = CalcMap(state, range, solution);
  if (code != ReturnCode::kSuccess) {
    ReportFailure(code);
    return;
  }
  for (std::int32_t j = 0; j < range.n2; ++j) {
    for (std::int32_t i = 0; i < range.n1; ++i) {
      const std::int32_t k = j * range.n1 + i;
      std::printf("%e %e %e\n", solution.dataset_eng[k], solution.dataset_qz[k], solution.dataset_R0[k]);
    }
    std::printf("\n");
  }
}

}  // namespace tolvik
