// SPDX-License-Identifier: GPL-2.0-or-later
#include "app/kk_command.h"

#include <array>
#include <bit>
#include <cstdio>
#include <cstdlib>
#include <exception>

#include "app/long_run.h"
#include "fit/kk_fit.h"
#include "optics/column_table.h"
#include "optics/kramers_kronig.h"
#include "optics/resample.h"

namespace tolvik {
namespace {

// The window of the fit and the range kept around it, eV.
constexpr double kWindowBegin = 800;
constexpr double kWindowEnd = 900;
constexpr double kKeptBegin = 790;
constexpr double kKeptEnd = 910;
constexpr double kGridStep = 2.5;
constexpr std::int32_t kGridRows = 100;
constexpr double kLargestBeta = 0.1;

bool IsInWindow(const CColumnRow& row) {
  return kWindowBegin <= row.energy && row.energy <= kWindowEnd;
}

int ClearWindow(CColumnTable& table) {
  int cleared = 0;
  for (CColumnRow& row : table) {
    if (!IsInWindow(row)) continue;
    row.values[1] = 0;
    ++cleared;
  }
  return cleared;
}

// The eV beyond the ends makes the open intervals hold the first and the last row.
void CutAroundWindow(CColumnTable& table) {
  if (table.count > 0) CutColumnTable(table, table.rows[0].energy - 1, kKeptBegin);
  if (table.count > 0) CutColumnTable(table, kKeptEnd, table.rows[table.count - 1].energy + 1);
}

CArray<CFitVariable> WindowVariables(const CColumnTable& table) {
  CArray<CFitVariable> variables;
  for (std::uint32_t i = 0; i < table.count; ++i) {
    if (!IsInWindow(table.rows[i])) continue;
    CFitVariable variable;
    variable.fit_id = FitKind::kBetaKK;
    variable.fit_additional_id = static_cast<std::int32_t>(i);
    variable.fit_value = table.rows[i].values[1];
    variable.fit_delta = variable.fit_value / 10;
    variable.fit_lower_boundary = 0;
    variable.fit_upper_boundary = kLargestBeta;
    variables.Append(variable);
  }
  return variables;
}

void SaveTable(const CColumnTable& table) {
  std::string text;
  std::array<char, 400> line;
  for (const CColumnRow& row : table) {
    std::snprintf(line.data(), line.size(), "%lf %e %e\n", row.energy, row.values[0], row.values[1]);
    text += line.data();
  }
  ReplaceResultFile("fitdb.txt", text);
}

void FitForever(CKKFit& fit) {
  fit.RestartFit();
  fit.lasterror = fit.CalcError(fit.fitvariables);
  for (long long i = 0;; ++i) {
    std::fprintf(stderr, "iteration=%lli: error=%e\n", i, fit.lasterror);
    SaveTable(fit.worktable);
    fit.LevenbergStep();
  }
}

}  // namespace

void AddMultiplicativeNoise(CColumnTable& table) {
  constexpr int kUpperBits = 15;  // of a rand with more bits the upper ones are used
  constexpr int kDropped = std::bit_width(static_cast<unsigned>(RAND_MAX)) - kUpperBits;
  constexpr double kStep = 1.2207403790398877e-05;  // 0.4 / 32767
  for (CColumnRow& row : table) {
    const double factor = (std::rand() >> kDropped) * kStep + 0.8;
    for (double& value : row.values) value *= factor;
  }
}

void FitKramersKronigCommand(const std::string& path) {
  BeginLongRun();
  CColumnTable measured(2);
  ReadColumnTable(measured, path);
  SortColumnTable(measured);
  CColumnTable grid = measured;
  ResampleColumnTable(grid, kWindowBegin, kWindowEnd, kGridStep, kGridRows);

  CColumnTable background = grid;
  std::fprintf(stderr, "number to fit: %i\n", ClearWindow(background));
  std::fputs("Calculate KK\n", stderr);
  ToTransformForm(background);
  KramersKronigAll(background);
  for (CColumnTable* table : {&background, &grid, &measured}) CutAroundWindow(*table);

  CKKFit fit(kWindowBegin, kWindowEnd, background, measured);
  fit.fitvariables = WindowVariables(grid);
  AddMultiplicativeNoise(fit.measuredtable);
  std::fprintf(stderr, "number to fit: %i\n", fit.fitvariables.size);
  try {
    FitForever(fit);
  } catch (const std::exception&) {
    std::fputs("Error in Fit-routine\n", stderr);
  }
}

}  // namespace tolvik
