// SPDX-License-Identifier: GPL-2.0-or-later
#include "fit/chi_square_fit.h"

#include <algorithm>

namespace tolvik {

CChiSquareFit::CChiSquareFit(std::uint32_t seed) {
  SeedStream(&seed, 1);
}

CChiSquareFit::CChiSquareFit(const CArray<CFitVariable>& variables, const std::uint32_t (&key)[4])
    : fitvariables(variables), restart(true) {
  SeedStream(key, 4);
}

void CChiSquareFit::SeedStream(const std::uint32_t* key, int length) {
  integergenerator.Seed(key, length);
  realgenerator.Seed(key, length);
  for (int i = 0; i < 1000; ++i) {
    integergenerator.Draw();
    realgenerator.Draw();
  }
}

void CChiSquareFit::RestartFit() {
  restart = true;
  parameters.Clear();
  for (const CFitVariable& variable : fitvariables) parameters.Append(variable.fit_value);
}

void CChiSquareFit::ClampParameters(CArray<double>& vector) {
  const std::int32_t n = std::min(fitvariables.size, vector.size);
  for (std::int32_t i = 0; i < n; ++i) {
    CFitVariable& variable = fitvariables[i];
    double value = vector[i];
    // Written with "not >=", so that a NaN ends at the lower bound.
    if (!(value >= variable.fit_lower_boundary)) value = variable.fit_lower_boundary;
    if (!(variable.fit_upper_boundary >= value)) value = variable.fit_upper_boundary;
    variable.fit_value = value;
    vector[i] = value;
  }
}

double CChiSquareFit::EvaluateAt(CArray<double>& vector) {
  ClampParameters(vector);
  lasterror = CalcError(fitvariables);
  return lasterror;
}

}  // namespace tolvik
