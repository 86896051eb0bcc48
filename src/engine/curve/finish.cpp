// SPDX-License-Identifier: GPL-2.0-or-later
#include "engine/curve/finish.h"

#include <algorithm>
#include <cmath>

#include "engine/curve/grazing.h"
#include "optics/angles.h"
#include "optics/energy.h"
#include "optics/rays.h"

namespace tolvik::engine {
namespace {

// Photon energy in eV to wavevector in Å⁻¹.
constexpr double kWavevectorPerEnergy = kTwoPi / kEnergyTimesLambda;

void MultiplyQz4(const CArray<double>& qz, CArray<double>& curve) {
  const std::int32_t count = std::min(curve.size, qz.size);
  for (std::int32_t i = 0; i < count; ++i) {
    const double square = qz[i] * qz[i];
    curve[i] *= square * square;
  }
}

void DivideAt(CArray<double>& curve, std::int32_t i, double divisor) {
  if (i < curve.size) curve[i] /= divisor;
}

double PointEnergy(const CSolution& solution, std::int32_t i) {
  return i < solution.dataset_eng.size ? solution.dataset_eng[i] : solution.datasetenergy;
}

void CorrectPolarisation(CSolution& solution) {
  const bool first = IsPiRay(FirstRay(solution));
  const bool second = IsPiRay(SecondRay(solution));
  if (!first && !second) return;
  for (std::int32_t i = 0; i < solution.dataset_qz.size; ++i) {
    const double k = kWavevectorPerEnergy * PointEnergy(solution, i);
    const double s = GrazingSine(solution.dataset_qz[i], k);
    // A point without an angle is divided by cos²(-2), since a missing angle is -1 everywhere.
    const double theta = std::abs(s) < 1 ? GrazingAngle(s) : -1;
    const double cosine = std::cos(2 * theta);
    const double divisor = cosine * cosine;
    if (first) {
      DivideAt(solution.dataset_R0, i, divisor);
      DivideAt(solution.dataset_Rp, i, divisor);
    }
    if (second) DivideAt(solution.dataset_Rm, i, divisor);
  }
}

void CalcAsymmetry(CSolution& solution) {
  const std::int32_t count =
      std::min({solution.dataset_Rp.size, solution.dataset_Rm.size, solution.dataset_A.size});
  for (std::int32_t i = 0; i < count; ++i) {
    const double plus = solution.dataset_Rp[i];
    const double minus = solution.dataset_Rm[i];
    const double sum = plus + minus;
    solution.dataset_A[i] = sum == 0 ? 0 : (plus - minus) / sum;
  }
}

void Smooth(CArray<double>& curve, std::int32_t points, std::int64_t width) {
  const CArray<double> original(curve);
  const std::int64_t count = std::min(points, original.size);
  for (std::int64_t i = 0; i < count; ++i) {
    const std::int64_t begin = std::max<std::int64_t>(i - width, 0);
    const std::int64_t end = std::min<std::int64_t>(i + width + 1, count);
    double sum = 0;
    for (std::int64_t k = begin; k < end; ++k) sum += original[static_cast<std::int32_t>(k)];
    const auto kept = static_cast<double>(std::max<std::int64_t>(end - begin, 0));
    curve[static_cast<std::int32_t>(i)] = sum / kept;
  }
}

}  // namespace

void FinishSolution(CSolution& solution, std::int32_t mulqz4, std::int32_t polcorrection,
                    std::int32_t averaging) {
  if (mulqz4 != 0) {
    MultiplyQz4(solution.dataset_qz, solution.dataset_R0);
    MultiplyQz4(solution.dataset_qz, solution.dataset_Rp);
    MultiplyQz4(solution.dataset_qz, solution.dataset_Rm);
  }
  if (polcorrection != 0) CorrectPolarisation(solution);
  CalcAsymmetry(solution);
  if (averaging != 0) {
    const std::int32_t points = solution.dataset_qz.size;
    for (CArray<double>* curve :
         {&solution.dataset_R0, &solution.dataset_Rp, &solution.dataset_Rm, &solution.dataset_A}) {
      Smooth(*curve, points, averaging);
    }
  }
}

}  // namespace tolvik::engine
