// SPDX-License-Identifier: GPL-2.0-or-later
#include "tolvik/analysis/covariance.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>

namespace tolvik::analysis {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
// A direction that moves the residuals less than this share of the strongest is not determined.
constexpr double kRankTolerance = 1e-10;
constexpr double kShareOfDirection = 1e-6;
// A parameter this near to a bound, relative to its scale, counts as at the bound.
constexpr double kBoundTolerance = 1e-9;

bool IsAtBound(const Parameter& parameter, double x) {
  const double margin = kBoundTolerance * parameter.scale;
  return x - parameter.bounds.lower <= margin || parameter.bounds.upper - x <= margin;
}

double NormOf(const Matrix& matrix, std::size_t column) {
  double sum = 0;
  for (std::size_t i = 0; i < matrix.rows; ++i) sum += matrix(i, column) * matrix(i, column);
  return std::sqrt(sum);
}

// QR with column pivots of chosen columns, each divided by its norm.
class PivotedQr {
 public:
  PivotedQr(const Matrix& jacobian, const std::vector<std::size_t>& columns)
      : a_(jacobian.rows, columns.size()), order_(columns.size()), norms_(columns.size()) {
    std::iota(order_.begin(), order_.end(), std::size_t{0});
    for (std::size_t j = 0; j < columns.size(); ++j) {
      norms_[j] = NormOf(jacobian, columns[j]);
      for (std::size_t i = 0; i < a_.rows; ++i) a_(i, j) = jacobian(i, columns[j]) / norms_[j];
    }
    while (rank_ < std::min(a_.rows, a_.columns) && Step()) ++rank_;
  }

  std::size_t rank() const { return rank_; }
  std::size_t columns() const { return a_.columns; }

  // Columns that belong to a direction without effect.
  std::vector<bool> Undetermined() const {
    std::vector<bool> result(columns(), false);
    for (std::size_t free = rank_; free < columns(); ++free) {
      result[order_[free]] = true;
      const std::vector<double> z = Solve(free);
      for (std::size_t k = 0; k < rank_; ++k) {
        if (std::abs(z[k]) > kShareOfDirection) result[order_[k]] = true;
      }
    }
    return result;
  }

  // (AᵀA)⁻¹ of the given columns; full rank.
  Matrix Inverse() const {
    const std::size_t n = columns();
    Matrix inverse_r(n, n), result(n, n);
    for (std::size_t j = 0; j < n; ++j) {
      std::vector<double> unit(n, 0.0);
      unit[j] = 1;
      BackSubstitute(unit);
      for (std::size_t i = 0; i < n; ++i) inverse_r(i, j) = unit[i];
    }
    for (std::size_t i = 0; i < n; ++i) {
      for (std::size_t j = 0; j < n; ++j) {
        double sum = 0;
        for (std::size_t k = std::max(i, j); k < n; ++k) sum += inverse_r(i, k) * inverse_r(j, k);
        result(order_[i], order_[j]) = sum / (norms_[order_[i]] * norms_[order_[j]]);
      }
    }
    return result;
  }

 private:
  double Below(std::size_t row, std::size_t column) const {
    double sum = 0;
    for (std::size_t i = row; i < a_.rows; ++i) sum += a_(i, column) * a_(i, column);
    return sum;
  }

  bool Step() {
    const std::size_t k = rank_;
    std::size_t best = k;
    for (std::size_t j = k; j < columns(); ++j) {
      if (Below(k, j) > Below(k, best)) best = j;
    }
    const double norm = std::sqrt(Below(k, best));
    if (!(norm > kRankTolerance)) return false;
    for (std::size_t i = 0; i < a_.rows; ++i) std::swap(a_(i, k), a_(i, best));
    std::swap(order_[k], order_[best]);
    Reflect(k, norm);
    return true;
  }

  // Householder reflection after which column k has only its diagonal.
  void Reflect(std::size_t k, double norm) {
    const double diagonal = a_(k, k) > 0 ? -norm : norm;
    std::vector<double> v(a_.rows, 0.0);
    for (std::size_t i = k; i < a_.rows; ++i) v[i] = a_(i, k);
    v[k] -= diagonal;
    const double length = std::inner_product(v.begin(), v.end(), v.begin(), 0.0);
    if (length == 0) return;
    for (std::size_t j = k; j < columns(); ++j) {
      double dot = 0;
      for (std::size_t i = k; i < a_.rows; ++i) dot += v[i] * a_(i, j);
      for (std::size_t i = k; i < a_.rows; ++i) a_(i, j) -= 2 * dot / length * v[i];
    }
  }

  void BackSubstitute(std::vector<double>& right) const {
    for (std::size_t i = right.size(); i-- > 0;) {
      for (std::size_t k = i + 1; k < right.size(); ++k) right[i] -= a_(i, k) * right[k];
      right[i] /= a_(i, i);
    }
  }

  // The dependent column as a sum of the independent ones.
  std::vector<double> Solve(std::size_t column) const {
    std::vector<double> right(rank_);
    for (std::size_t i = 0; i < rank_; ++i) right[i] = a_(i, column);
    BackSubstitute(right);
    return right;
  }

  Matrix a_;
  std::vector<std::size_t> order_;
  std::vector<double> norms_;
  std::size_t rank_ = 0;
};

void Invert(const Matrix& jacobian, std::vector<std::size_t> columns, Covariance& result) {
  PivotedQr qr(jacobian, columns);
  if (qr.rank() < columns.size()) {
    const std::vector<bool> undetermined = qr.Undetermined();
    std::vector<std::size_t> rest;
    for (std::size_t j = 0; j < columns.size(); ++j) {
      result.not_determined[columns[j]] = undetermined[j];
      if (!undetermined[j]) rest.push_back(columns[j]);
    }
    columns = rest;
    qr = PivotedQr(jacobian, columns);
  }
  const Matrix inverse = qr.Inverse();
  for (std::size_t i = 0; i < columns.size(); ++i) {
    for (std::size_t j = 0; j < columns.size(); ++j) {
      result.covariance(columns[i], columns[j]) = inverse(i, j);
      result.correlation(columns[i], columns[j]) = inverse(i, j) / std::sqrt(inverse(i, i) * inverse(j, j));
    }
    result.errors[columns[i]] = std::sqrt(inverse(i, i));
  }
}

}  // namespace

Covariance CalcCovariance(const Matrix& jacobian, std::span<const double> residuals,
                          std::span<const Parameter> parameters, std::span<const double> x) {
  const std::size_t m = jacobian.columns;
  Covariance result;
  result.covariance = result.correlation = Matrix(m, m, kNaN);
  result.errors.assign(m, kNaN);
  result.at_bound.assign(m, false);
  result.no_effect.assign(m, false);
  result.not_determined.assign(m, false);
  std::vector<std::size_t> columns;
  for (std::size_t j = 0; j < m; ++j) {
    const double norm = NormOf(jacobian, j);
    result.no_effect[j] = !(norm > 0 && std::isfinite(norm));
    result.at_bound[j] = IsAtBound(parameters[j], x[j]);
    if (!result.no_effect[j] && !result.at_bound[j]) columns.push_back(j);
  }
  Invert(jacobian, columns, result);
  for (const double r : residuals) result.chi_square += r * r;
  const auto freedom = static_cast<double>(residuals.size()) - static_cast<double>(columns.size());
  result.reduced = freedom > 0 ? result.chi_square / freedom : kNaN;
  return result;
}

}  // namespace tolvik::analysis
