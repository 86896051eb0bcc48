// SPDX-License-Identifier: GPL-2.0-or-later
// The only call of levmar: its header, its two call forms and its work memory stay in one file.
#pragma once

#include <cstddef>

namespace tolvik::fit {

/// Writes the n model values at the m parameters p to hx. May throw.
using LevmarFunction = void (*)(double* p, double* hx, int m, int n, void* adata);

/// Doubles of work memory that CallLevmar needs for m parameters and n measurements; 0 for a negative count.
std::size_t LevmarWorkSize(int m, int n);

/// Minimises the sum of (x - func(p))² in the box lb ≤ p ≤ ub by dlevmar_bc_dif, without scaling:
/// Levenberg-Marquardt with projected gradient steps after Kanzow, Yamashita and Fukushima, J. Comput. Appl.
/// Math. 172, 375 (2004), and a forward-difference Jacobian.
///
/// p: m parameters, start and result.  x: n measurements.  lb, ub: m bounds.  itmax: most iterations.
/// opts: scale of the first mu, thresholds on gradient, relative parameter change and squared error, relative
/// step of the differences (5 values).  info: 10 values or null.  work: LevmarWorkSize(m, n) doubles, or
/// null, then zeroed memory is taken for the run. (levmar 2.3 that stops before its first Jacobian computes
/// covar from the present content of work.)  covar: m × m values or null.  adata: passed to func.
///
/// Returns the number of iterations, or -1 when levmar refuses or fails; its messages go to standard error.
/// An exception of func passes through levmar at once, and func is not called again. The 2 n doubles that
/// levmar itself allocates for the Jacobian are then leaked: a library in C cannot free them.
int CallLevmar(LevmarFunction func, double* p, double* x, int m, int n, double* lb, double* ub, int itmax,
               double* opts, double* info, double* work, double* covar, void* adata);

}  // namespace tolvik::fit
