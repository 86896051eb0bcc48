// SPDX-License-Identifier: GPL-2.0-or-later
// Distances between a calculated curve and a measurement.
//
// Reflectivity spans many decades and is compared on a log10 scale; the asymmetry is a ratio already and is
// compared linearly. Common arguments of all functions:
//
// solution            the calculated curve, value c at each point
// dataset             the measurement, value m at each point and its abscissa q, Å⁻¹
// residuals           written by point index where it is long enough; an empty vector stays empty
// fitqzmin, fitqzmax  closed window of q in which points count; a NaN of q is outside
// multiplicator, translator   L(m) = log10(multiplicator * (m + translator)) is compared with log10 c
//
// The logarithmic functions accept a point with c > 0 and m > 0 only, tested before the translator is added:
// a sum m + translator that is not positive then makes the result NaN or infinite. A point beyond the end of
// a column in use is not accepted. Without an accepted point the result is 0. None of the functions fails.
#pragma once

#include <cstdint>

#include "tolvik/dataset.h"

namespace tolvik {

/// Mean of (L(m) - log10 c)² of R0 over the accepted points. Residual L(m) - log10 c.
double CalcLogError(const CSolution& solution, const CDataset& dataset, CArray<double>& residuals,
                    double fitqzmin, double fitqzmax, double multiplicator, double translator);

/// CalcLogError with a multiplicator of its own, returned through the reference: exp of the mean of
/// log10 m - log10 c of the values as measured. The natural exponential of a decadic mean stays, since stored
/// multiplicators depend on it. NaN without an accepted point.
double CalcScaledLogError(const CSolution& solution, const CDataset& dataset, CArray<double>& residuals,
                          double fitqzmin, double fitqzmax, double& multiplicator, double translator);

/// With a = L(m), b = log10 c of R0: Σ(a - b)² / Σ(a² + b²), or the numerator where the denominator is 0.
/// Writes no residuals, so a least-squares fit cannot use it.
double CalcRelativeLogError(const CSolution& solution, const CDataset& dataset, double fitqzmin,
                            double fitqzmax, double multiplicator, double translator);

/// Mean of (m - c)² of the asymmetry over the first count points in the window. Residual m - c.
double CalcAsymmetryError(const CSolution& solution, const CDataset& dataset, CArray<double>& residuals,
                          double fitqzmin, double fitqzmax, std::int32_t count);

/// Mean over the first count points of the sum of both squared differences of Rp and Rm; a point needs all
/// four values positive. Residual: the sum of both absolute differences.
double CalcPairLogError(const CSolution& solution, const CDataset& dataset, CArray<double>& residuals,
                        double fitqzmin, double fitqzmax, double multiplicator, double translator,
                        std::int32_t count);

// Further measures, not used by fits.

/// Sum of the distances in q from each interior maximum of dataset's R0 to the nearest one of solution, plus
/// the same for minima, Å⁻¹. An extremum without a partner adds 1e99.
double CalcExtremaError(const CSolution& solution, const CDataset& dataset);

/// Mean of (multiplicator * m - c)² of R0 over the window. Residuals by position among the points of the
/// window.
double CalcLinearError(const CSolution& solution, const CDataset& dataset, CArray<double>& residuals,
                       double fitqzmin, double fitqzmax, double multiplicator);

/// Mean of (log10(multiplicator * m) - log10 c)² of R0 over the window, for any signs. Residuals by
/// position among the points of the window.
double CalcWindowLogError(const CSolution& solution, const CDataset& dataset, CArray<double>& residuals,
                          double fitqzmin, double fitqzmax, double multiplicator);

/// With a = L(m), b = log10 c of R0: 2 Σ(b - a - b ln(b / a)).
double CalcDevianceError(const CSolution& solution, const CDataset& dataset, double fitqzmin, double fitqzmax,
                         double multiplicator, double translator);

/// Σ(m - c)² / Σ(m² + c²) of the asymmetry over the window, or the numerator where the denominator is 0.
double CalcRelativeAsymmetryError(const CSolution& solution, const CDataset& dataset, double fitqzmin,
                                  double fitqzmax);

/// The form of CalcRelativeLogError on Rp and Rm together, over the first count points: the size of
/// dataset_Rp, or of dataset_qz.
double CalcRelativePairLogError(const CSolution& solution, const CDataset& dataset, double fitqzmin,
                                double fitqzmax, double multiplicator, double translator, std::int32_t count);

}  // namespace tolvik
