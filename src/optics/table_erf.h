// SPDX-License-Identifier: GPL-2.0-or-later
// The error function of all interface profiles, by table.
//
// A profile evaluates it many times per slice, so the values come from 20001 table entries and one linear
// interpolation. The entries are the regularised incomplete gamma function P(1/2, x²), by the series
// and the continued fraction of Press, Teukolsky, Vetterling and Flannery, Numerical Recipes (1992),
// section 6.2, with W. J. Lentz, Appl. Opt. 15, 668 (1976), in the modified form of Thompson and Barnett.
#pragma once

namespace tolvik {

/// erf(x) within 5e-7 for |x| <= 5; -1 below and for NaN, 1 above. The table is made at the first call, under
/// a one-time guard; thread-safe.
double TableErf(double x);

/// Regularised lower incomplete gamma function P(a, x) by its power series, for a > 0 and 0 <= x < a + 1;
/// relative accuracy 3e-7. At most 100 terms.
double IncompleteGammaSeries(double a, double x);

/// Regularised upper incomplete gamma function Q(a, x) = 1 - P(a, x) by its continued fraction, for a > 0 and
/// x >= a + 1; relative accuracy 3e-7. At most 100 steps.
double IncompleteGammaFraction(double a, double x);

}  // namespace tolvik
