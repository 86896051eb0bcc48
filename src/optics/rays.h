// SPDX-License-Identifier: GPL-2.0-or-later
// Polarisation vectors: a sigma and a pi amplitude, each complex, held as four doubles in the order
// sigma real, sigma imaginary, pi real, pi imaginary.
#pragma once

#include <algorithm>
#include <span>
#include <string>

#include "tolvik/state.h"

namespace tolvik {

using Ray = std::span<double, 4>;
using ConstRay = std::span<const double, 4>;

/// The rays of a state or of a dataset, as views into the record: four doubles that follow one another.
inline Ray FirstRay(CState& state) {
  return Ray(&state.ray1sigmare, 4);
}
inline Ray SecondRay(CState& state) {
  return Ray(&state.ray2sigmare, 4);
}
inline Ray FirstRay(CDataset& dataset) {
  return Ray(&dataset.datasetray1sigmare, 4);
}
inline Ray SecondRay(CDataset& dataset) {
  return Ray(&dataset.datasetray2sigmare, 4);
}
inline ConstRay FirstRay(const CState& state) {
  return ConstRay(&state.ray1sigmare, 4);
}
inline ConstRay SecondRay(const CState& state) {
  return ConstRay(&state.ray2sigmare, 4);
}
inline ConstRay FirstRay(const CDataset& dataset) {
  return ConstRay(&dataset.datasetray1sigmare, 4);
}
inline ConstRay SecondRay(const CDataset& dataset) {
  return ConstRay(&dataset.datasetray2sigmare, 4);
}

/// Copies both rays of a state or a dataset to another.
template <class From, class To>
void CopyRays(const From& from, To& to) {
  std::ranges::copy(FirstRay(from), FirstRay(to).begin());
  std::ranges::copy(SecondRay(from), SecondRay(to).begin());
}

/// Divides the four numbers by the root of the sum of their squares; a zero ray becomes NaN.
void NormalizeRay(Ray ray);

/// "s" sigma, "p" pi, "l" left and "r" right circular: (1, ±i)/√2 in (sigma, pi). Any other letter leaves the
/// ray as it is.
void SetRayFromLetter(Ray ray, char letter);

/// Both rays from one ratio x: (1 - x, +ix) and (1 - x, -ix) in (sigma, pi), normalised.
void SetRaysFromPiRatio(Ray ray1, Ray ray2, double x);

/// Whether the ray is exactly 0, 0, 1, 0.
bool IsPiRay(ConstRay ray);

/// "sigma", "pi", "left circular", "right circular", or the four numbers with six decimals each. Sigma and pi
/// are compared exactly, the two equal amplitudes of circular light within 0.0001.
std::string GetRayName(ConstRay ray);

}  // namespace tolvik
