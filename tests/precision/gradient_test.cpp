// SPDX-License-Identifier: GPL-2.0-or-later
// Derivatives of a curve against differences of 200 bits on random stacks: below and above critical edges,
// with thick absorbers, roughness and absorption of 0, and the magnetic shift in both senses.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <map>
#include <numeric>

#include "engine/curve/grazing.h"
#include "precision/gradient_reference.h"
#include "precision/lanes_support.h"

namespace tolvik::testing {
namespace {

using engine::ChainTerm;
using engine::lanes::LaneSet;

constexpr int kStacks = 120;
constexpr int kSines = 6;
constexpr int kTerms = 8;         // of a stack, drawn from all fields of all entries
constexpr double kNoise = 1e-33;  // of differences at 200 bits with the step 1e-25

// A thick absorber now and then; 1 - delta a double, so that every number type has the same stack.
RandomCase StackOf(RandomCases& random) {
  RandomCase test = random.Ordinary(kSines);
  if (random.OneIn(5)) {
    engine::CLayer<double>& layer = test.layers[test.layers.size() / 2];
    layer.layer_d = random.Logarithmic(1e4, 1e6);
    layer.layer_beta = random.Logarithmic(1e-5, 1e-3);
    layer.layer_dbeta = layer.layer_beta * random.Uniform(-0.5, 0.5);
  }
  for (engine::CLayer<double>& layer : test.layers) layer.layer_delta = 1.0 - (1.0 - layer.layer_delta);
  return test;
}

// Parameters that move one field each, and a last one that moves all sines alike.
engine::ProfileChain SomeFields(const RandomCase& test, RandomCases& random) {
  engine::ProfileChain chain;
  for (int i = 0; i < kTerms; ++i) {
    const int entry = random.Below(static_cast<int>(test.layers.size()));
    const ProfileField field = kAllFields[random.Below(static_cast<int>(std::size(kAllFields)))];
    chain.terms.push_back({chain.parameters++, entry, field, 1.0});
  }
  ++chain.parameters;
  return chain;
}

// Every angle a point of its own.
engine::CurveJacobian EveryAngle(const RandomCase& test, const engine::ProfileChain& chain) {
  engine::Profile<double> profile = ConvertProfile<double>(test.layers);
  const std::vector<double> ones(test.sines.size(), 1.0);
  std::vector<std::int32_t> ends(test.sines.size());
  std::iota(ends.begin(), ends.end(), 1);
  const engine::NodeTerm sine{chain.parameters - 1, ones.data(), nullptr};
  const engine::CurveNodes nodes{test.sines, ones, ends, {&sine, 1}};
  engine::CurveJacobian result;
  engine::GradientWork work;
  engine::CalcJacobian({profile, test.k0, test.options, nodes, chain, engine::Rays::kBoth}, result, work);
  return result;
}

class Errors {
 public:
  void Add(LaneSet set, double derivative, const ReferenceSlope& exact) {
    const double error = std::abs(derivative - exact.derivative);
    EXPECT_LE(error, 1e-8 * exact.modulus + kNoise) << NameOf(set) << ": " << derivative << " instead of "
                                                    << exact.derivative << ", modulus " << exact.modulus;
    if (exact.modulus > 1e12 * kNoise) errors_[set].push_back(error / exact.modulus);
  }

  void Print() {
    for (auto& [set, errors] : errors_) {
      std::sort(errors.begin(), errors.end());
      std::printf("%-7s %zu derivatives, error over 2 |r| |dr/dp|: median %.1e, 99.9 %% %.1e, worst %.1e\n",
                  NameOf(set), errors.size(), errors[errors.size() / 2], errors[errors.size() * 999 / 1000],
                  errors.back());
    }
  }

 private:
  std::map<LaneSet, std::vector<double>> errors_;
};

class Comparison {
 public:
  Comparison(RandomCases& random, int number)
      : test_(StackOf(random)), chain_(SomeFields(test_, random)), number_(number) {}

  void Run(Errors& errors) {
    std::map<LaneSet, engine::CurveJacobian> jacobians;
    for (const LaneSet set : engine::lanes::kAllLaneSets) {
      if (!IsSupported(set)) continue;
      const LanesForNow lanes(set);
      jacobians[set] = EveryAngle(test_, chain_);
    }
    for (const int ray : {1, 2}) {
      ReferenceStack reference(test_, ray);
      for (std::size_t i = 0; i < test_.sines.size(); ++i) {
        for (std::int32_t p = 0; p < chain_.parameters; ++p) {
          SCOPED_TRACE(::testing::Message() << "stack " << number_ << " ray " << ray << " sine "
                                            << test_.sines[i] << " parameter " << p);
          const ReferenceSlope exact = SlopeOf(reference, test_.sines[i], p);
          const std::size_t at =
              i * static_cast<std::size_t>(chain_.parameters) + static_cast<std::size_t>(p);
          for (const auto& [set, jacobian] : jacobians) {
            errors.Add(set, (ray == 1 ? jacobian.first : jacobian.second).jacobian[at], exact);
          }
        }
      }
    }
  }

 private:
  ReferenceSlope SlopeOf(ReferenceStack& reference, double sine, std::int32_t parameter) const {
    if (parameter + 1 == chain_.parameters) return reference.SlopeOfSine(sine);
    const ChainTerm& term = chain_.terms[static_cast<std::size_t>(parameter)];
    return reference.Slope(sine, static_cast<std::size_t>(term.entry), term.field);
  }

  RandomCase test_;
  engine::ProfileChain chain_;
  int number_;
};

TEST(Gradient, AgreesWithDifferencesOf200Bits) {
  RandomCases random(11);
  Errors errors;
  for (int number = 0; number < kStacks && !HasFailure(); ++number) {
    Comparison(random, number).Run(errors);
  }
  errors.Print();
}

}  // namespace
}  // namespace tolvik::testing
