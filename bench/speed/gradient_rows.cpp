// SPDX-License-Identifier: GPL-2.0-or-later
#include "bench/speed/gradient_rows.h"

#include <memory>

#include "bench/speed/stacks.h"
#include "engine/curve/jacobian.h"

namespace tolvik::bench {

namespace {

constexpr int kNodes = 9;
constexpr int kAngles = 200 * kNodes;

// All that a calculation refers to.
struct Problem {
  engine::Profile<double> profile;
  engine::IntensityOptions<double> options;
  std::vector<double> sines = Sines<double>(kAngles), weights, intensities;
  std::vector<std::int32_t> ends;
  engine::ProfileChain chain;
  engine::CurveNodes nodes;
  engine::CurveJacobian jacobian;
  engine::GradientWork work;
  engine::IntensityWork<double> value_work;
};

// The parameters are delta, beta, thickness and roughness of entries spread over the stack.
std::shared_ptr<Problem> ProblemOf(const Stack& stack, int parameters) {
  const auto problem = std::make_shared<Problem>();
  problem->profile = ProfileOf<double>(stack, Magnetism::kNone);
  problem->options.polarisation[0] = problem->options.polarisation[2] = 1;
  problem->weights.assign(kAngles, 1.0 / kNodes);
  problem->intensities.resize(kAngles);
  for (int end = kNodes; end <= kAngles; end += kNodes) problem->ends.push_back(end);
  problem->nodes = {problem->sines, problem->weights, problem->ends, {}};
  problem->chain.parameters = parameters;
  const int entries = static_cast<int>(stack.size()), kinds = (parameters + 3) / 4;
  for (int p = 0; p < parameters; ++p) {
    const int entry = p / 4 * entries / kinds;
    problem->chain.terms.push_back({p, entry, static_cast<engine::ProfileField>(p % 4), 1.0});
  }
  return problem;
}

GradientRow RowOf(const char* name, const char* title, const Stack& stack, int parameters) {
  const std::shared_ptr<Problem> problem = ProblemOf(stack, parameters);
  return {name, title, kAngles * static_cast<double>(stack.size() - 1),
          [problem] {
            Problem& p = *problem;
            engine::CalcIntensities<double>({p.profile, kK0, p.options, p.sines, p.intensities.data()},
                                            p.value_work);
          },
          [problem] {
            Problem& p = *problem;
            engine::CalcJacobian({p.profile, kK0, p.options, p.nodes, p.chain}, p.jacobian, p.work);
          }};
}

}  // namespace

std::vector<GradientRow> GradientRows() {
  return {RowOf("gradient_3", "value and Jacobian, 3 rough layers, 10 parameters", Graded(3, 20, 3), 10),
          RowOf("gradient_100", "100 rough layers, 100 parameters", Graded(100, 20, 3), 100),
          RowOf("gradient_1000", "1000 slices, no roughness, 100 parameters", Graded(1000, 0.5, 0), 100),
          RowOf("gradient_periodic", "50 equal periods of 2 layers, 10 parameters", Periodic(50), 10)};
}

}  // namespace tolvik::bench
