// SPDX-License-Identifier: GPL-2.0-or-later
#include "fit/levmar_call.h"

#include <gtest/gtest.h>

#include <cmath>
#include <stdexcept>
#include <utility>
#include <vector>

#include "support/leaks.h"

namespace tolvik::fit {
namespace {

// Rosenbrock, Comput. J. 3, 175 (1960): f = 100 (p1 - p0²)² + (1 - p0)², as two residuals. Minimum 0 at (1,
// 1).
void Rosenbrock(double* p, double* hx, int, int, void* adata) {
  if (adata != nullptr) ++*static_cast<int*>(adata);
  hx[0] = 10 * (p[1] - p[0] * p[0]);
  hx[1] = 1 - p[0];
}

struct Problem {
  Problem(std::vector<double> lb, std::vector<double> ub) : lower(std::move(lb)), upper(std::move(ub)) {}

  std::vector<double> p{-1.2, 1.0}, x{0, 0}, lower, upper, info = std::vector<double>(10),
                                                           covar = {-7, -7, -7, -7};
  std::vector<double> opts{1e-3, 1e-15, 1e-15, 1e-20, 1e-6};
  std::vector<double> work = std::vector<double>(LevmarWorkSize(2, 2));
  int calls = 0;

  int Minimise(LevmarFunction func, double* memory) {
    return CallLevmar(func, p.data(), x.data(), 2, 2, lower.data(), upper.data(), 500, opts.data(),
                      info.data(), memory, covar.data(), &calls);
  }
};

TEST(LevmarCall, FindsTheMinimumOfRosenbrockInsideTheBox) {
  Problem run({-5, -5}, {5, 5});
  EXPECT_GT(run.Minimise(&Rosenbrock, run.work.data()), 0);
  EXPECT_NEAR(run.p[0], 1, 1e-6);
  EXPECT_NEAR(run.p[1], 1, 1e-6);
  EXPECT_LT(run.info[1], 1e-12);
  EXPECT_GT(run.calls, 10);
}

TEST(LevmarCall, TakesItsOwnWorkMemory) {
  Problem run({-5, -5}, {5, 5});
  run.Minimise(&Rosenbrock, nullptr);
  EXPECT_NEAR(run.p[0], 1, 1e-6);
  EXPECT_NEAR(run.p[1], 1, 1e-6);
}

TEST(LevmarCall, StopsAtAnActiveBound) {
  // With p0 held to at most 0.5 the first residual can still be made 0: minimum (0.5, 0.25) with f = 0.25.
  Problem run({-5, -5}, {0.5, 5});
  run.Minimise(&Rosenbrock, run.work.data());
  EXPECT_DOUBLE_EQ(run.p[0], 0.5);
  EXPECT_NEAR(run.p[1], 0.25, 1e-5);
  EXPECT_NEAR(run.info[1], 0.25, 1e-9);
}

TEST(LevmarCall, ProjectsAStartOutsideTheBox) {
  Problem run({2, -5}, {5, 5});
  run.Minimise(&Rosenbrock, run.work.data());
  // Held to at least 2, p0 stays there: minimum (2, 4) with f = 1.
  EXPECT_DOUBLE_EQ(run.p[0], 2);
  EXPECT_NEAR(run.p[1], 4, 1e-4);
  EXPECT_NEAR(run.info[1], 1, 1e-7);
}

TEST(LevmarCall, LeavesTheCovarianceWhenItStopsBeforeTheFirstJacobian) {
  Problem run({-5, -5}, {5, 5});
  run.p = {1, 1};  // already exact
  EXPECT_EQ(run.Minimise(&Rosenbrock, nullptr), 0);
  EXPECT_EQ(run.info[6], 6);  // small error
  // The inverse of a zero matrix does not exist: levmar reports it on standard error and does not change the
  // matrix.
  for (double element : run.covar) EXPECT_EQ(element, -7);
}

TEST(LevmarCall, RefusesFewerMeasurementsThanParameters) {
  Problem run({-5, -5}, {5, 5});
  EXPECT_EQ(CallLevmar(&Rosenbrock, run.p.data(), run.x.data(), 2, 1, run.lower.data(), run.upper.data(), 100,
                       run.opts.data(), run.info.data(), nullptr, run.covar.data(), &run.calls),
            -1);
  EXPECT_EQ(run.calls, 0);
  EXPECT_EQ(run.p[0], -1.2);
}

// Throws at one call, and counts.
struct Fuse {
  int burns_at, calls;
};

void Burn(double* p, double* hx, int m, int n, void* adata) {
  Fuse& fuse = *static_cast<Fuse*>(adata);
  if (++fuse.calls == fuse.burns_at) throw std::runtime_error("burnt");
  Rosenbrock(p, hx, m, n, nullptr);
}

TEST(LevmarCall, PassesAnExceptionThroughWhereverItHappens) {
  for (int burns_at = 1; burns_at <= 60; ++burns_at) {  // first look, Jacobians, steps, line searches
    Problem run({-5, -5}, {5, 5});
    Fuse fuse{burns_at, 0};
    const testing::LeaksAllowed levmar_loses_its_jacobian_rows;
    try {
      CallLevmar(&Burn, run.p.data(), run.x.data(), 2, 2, run.lower.data(), run.upper.data(), 500,
                 run.opts.data(), run.info.data(), nullptr, run.covar.data(), &fuse);
      ADD_FAILURE() << "no exception at call " << burns_at;
    } catch (const std::runtime_error& thrown) {
      EXPECT_STREQ(thrown.what(), "burnt");
    }
    EXPECT_EQ(fuse.calls, burns_at);
  }
}

TEST(LevmarCall, KnowsTheDocumentedWorkSize) {
  // levmar's manual: 2 n + 4 m + n m + m² values, here for m = 2, n = 3.
  EXPECT_EQ(LevmarWorkSize(2, 3), 24U);
  EXPECT_EQ(LevmarWorkSize(-1, 3), 0U);
  // No 32-bit overflow for large fits.
  EXPECT_EQ(LevmarWorkSize(1000, 5000000), 2U * 5000000U + 4U * 1000U + 5000000ULL * 1000U + 1000000U);
}

}  // namespace
}  // namespace tolvik::fit
