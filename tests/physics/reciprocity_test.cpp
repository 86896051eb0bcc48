// SPDX-License-Identifier: GPL-2.0-or-later
// Source and detector exchanged: reciprocity holds with absorption too, where energy conservation cannot be
// tested.
#include <gtest/gtest.h>

#include "support/intensities.h"
#include "support/stacks.h"

namespace tolvik::testing {
namespace {

constexpr double kWavevector = 0.32;

// R. J. Potton, Rep. Prog. Phys. 67, 717 (2004): a free-standing stack transmits alike from both sides.
// Detects a wrong field matrix or interface; the same wrong phase in all slabs keeps the symmetry.
TEST(Reciprocity, AFreeStandingStackTransmitsAlikeFromBothSides) {
  const Slab first{30, 0.02, 0.01}, second{15, -0.01, 0.03}, third{50, 0.04, 0.002}, vacuum{};
  const auto stack = MakeProfile<double>({vacuum, first, second, third, vacuum});
  const auto turned = MakeProfile<double>({vacuum, third, second, first, vacuum});
  for (double theta : {0.15, 0.4, 1.2}) {
    for (const Ray& ray : {kSigma, kPi}) {
      const double t = TensorIntensity(stack, kWavevector, theta, ray, true);
      EXPECT_NEAR(TensorIntensity(turned, kWavevector, theta, ray, true), t, 1e-12 * t) << theta;
      const double r = TensorIntensity(stack, kWavevector, theta, ray);
      EXPECT_GT(std::abs(TensorIntensity(turned, kWavevector, theta, ray) - r), 0.01 * r) << "but not R";
    }
  }
}

double Unpolarised(const engine::Profile<double>& profile, double theta) {
  return TensorIntensity(profile, kWavevector, theta, kSigma) +
         TensorIntensity(profile, kWavevector, theta, kPi);
}

// L. Onsager, Phys. Rev. 37, 405 (1931): reversing the beam is equivalent to reversing the magnetisation. A
// rotation of the sample by half a circle about its normal restores the beam, so that only the normal part
// has changed its sign. A mirror at the plane of incidence reverses that part and the one along the beam, so
// either may be reversed alone.
TEST(Reciprocity, UnpolarisedLightDoesNotSeeTheSignOfTheNormalPart) {
  const auto magnetised = [](double gamma, double phi) {
    return MakeProfile<double>({{0, 0.02, 0.01, 0, 0.004, 0.001},
                                {30, 0.03, 0.008, 0, 0.006, -0.003},
                                {20, 0.01, 0.002, 0, -0.002, 0.005},
                                {}},
                               Magnetisation{gamma, phi, true});
  };
  for (double theta : {0.3, 0.7, 1.2}) {
    const double r = Unpolarised(magnetised(35, 50), theta);
    EXPECT_NEAR(Unpolarised(magnetised(35, 130), theta), r, 1e-9 * r) << theta;
    EXPECT_NEAR(Unpolarised(magnetised(-35, 50), theta), r, 1e-9 * r) << theta;
    EXPECT_GT(std::abs(Unpolarised(magnetised(215, 50), theta) - r), 1e-4 * r) << "but that of all parts";
  }
}

}  // namespace
}  // namespace tolvik::testing
