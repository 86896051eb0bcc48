// SPDX-License-Identifier: GPL-2.0-or-later
#include "optics/rays.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

namespace tolvik {
namespace {

constexpr double kCircular = 0.7071067811865476;
constexpr double kCircularTolerance = 0.0001;

void SetRay(Ray ray, const std::array<double, 4>& values) {
  std::copy(values.begin(), values.end(), ray.begin());
}

bool Equals(ConstRay ray, const std::array<double, 4>& values) {
  return std::equal(ray.begin(), ray.end(), values.begin());
}

// Circular light with pi = ±i sigma; the two zeros are exact, the amplitudes are not.
bool IsCircular(ConstRay ray, double pi_imag) {
  return std::abs(ray[0] - kCircular) < kCircularTolerance && ray[1] == 0 && ray[2] == 0 &&
         std::abs(ray[3] - pi_imag) < kCircularTolerance;
}

// As printf's %f, independent of the locale of the process.
void AppendFixed(std::string& text, double value) {
  std::array<char, 400> digits;  // the largest double has 309 digits before the point
  const auto end =
      std::to_chars(digits.data(), digits.data() + digits.size(), value, std::chars_format::fixed, 6);
  text.append(digits.data(), end.ptr);
}

}  // namespace

void NormalizeRay(Ray ray) {
  double sum = 0;
  for (double value : ray) sum += value * value;
  const double norm = std::sqrt(sum);
  for (double& value : ray) value /= norm;
}

void SetRayFromLetter(Ray ray, char letter) {
  switch (letter) {
    case 's':
      return SetRay(ray, {1, 0, 0, 0});
    case 'p':
      return SetRay(ray, {0, 0, 1, 0});
    case 'l':
      SetRay(ray, {1, 0, 0, 1});
      return NormalizeRay(ray);
    case 'r':
      SetRay(ray, {1, 0, 0, -1});
      return NormalizeRay(ray);
    default:
      return;
  }
}

void SetRaysFromPiRatio(Ray ray1, Ray ray2, double x) {
  SetRay(ray1, {1 - x, 0, 0, x});
  SetRay(ray2, {1 - x, 0, 0, -x});
  NormalizeRay(ray1);
  NormalizeRay(ray2);
}

bool IsPiRay(ConstRay ray) {
  return Equals(ray, {0, 0, 1, 0});
}

std::string GetRayName(ConstRay ray) {
  if (Equals(ray, {1, 0, 0, 0})) return "sigma";
  if (IsPiRay(ray)) return "pi";
  if (IsCircular(ray, kCircular)) return "left circular";
  if (IsCircular(ray, -kCircular)) return "right circular";
  std::string text;
  for (double value : ray) {
    if (!text.empty()) text += ' ';
    AppendFixed(text, value);
  }
  return text;
}

}  // namespace tolvik
