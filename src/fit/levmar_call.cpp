// SPDX-License-Identifier: GPL-2.0-or-later
#include "fit/levmar_call.h"

#include <vector>

extern "C" {
#include TOLVIK_LEVMAR_HEADER
}

namespace tolvik::fit {
std::size_t LevmarWorkSize(int m, int n) {
  if (m < 0 || n < 0) return 0;
  const auto npar = static_cast<std::size_t>(m), nmeas = static_cast<std::size_t>(n);
  return LM_BC_DIF_WORKSZ(npar, nmeas);
}

int CallLevmar(LevmarFunction func, double* p, double* x, int m, int n, double* lb, double* ub, int itmax,
               double* opts, double* info, double* work, double* covar, void* adata) {
  std::vector<double> memory;
  if (work == nullptr) {
    memory.resize(LevmarWorkSize(m, n));
    work = memory.data();
  }
#ifdef TOLVIK_LEVMAR_SCALED
  return dlevmar_bc_dif(func, p, x, m, n, lb, ub, nullptr, itmax, opts, info, work, covar, adata);
#else
  return dlevmar_bc_dif(func, p, x, m, n, lb, ub, itmax, opts, info, work, covar, adata);
#endif
}

}  // namespace tolvik::fit
