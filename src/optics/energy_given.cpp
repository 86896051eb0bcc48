// SPDX-License-Identifier: GPL-2.0-or-later
#include "optics/energy_given.h"

#include <array>
#include <charconv>
#include <cmath>
#include <limits>

#include "optics/energy.h"

namespace tolvik {

double EnergyGivenAs(double lambda) {
  const double energy = EnergyFromLambda(lambda);
  if (!std::isfinite(energy)) return energy;
  for (int digits = 1; digits <= std::numeric_limits<double>::max_digits10; ++digits) {
    std::array<char, 32> text;
    const auto end =
        std::to_chars(text.data(), text.data() + text.size(), energy, std::chars_format::general, digits);
    double rounded = energy;
    std::from_chars(text.data(), end.ptr, rounded);
    if (LambdaFromEnergy(rounded) == lambda) return rounded;
  }
  // Two roundings may part the quotient from its energy by one unit in the last place.
  for (const double end : {0.0, std::numeric_limits<double>::infinity()}) {
    const double neighbour = std::nextafter(energy, std::copysign(end, energy));
    if (LambdaFromEnergy(neighbour) == lambda) return neighbour;
  }
  return energy;
}

}  // namespace tolvik
