// SPDX-License-Identifier: GPL-2.0-or-later
// The 4×4 complex matrix of the transfer-matrix algorithms.
#pragma once

#include "engine/number/number.h"

namespace tolvik::engine {

/// 4×4 complex matrix, m(row, column). A new one is zero.
template <class T>
struct Matrix4 {
  Cplx<T> element[4][4] = {};

  Cplx<T>& operator()(int row, int column) { return element[row][column]; }
  const Cplx<T>& operator()(int row, int column) const { return element[row][column]; }

  static Matrix4 Identity() {
    Matrix4 result;
    for (int i = 0; i < 4; ++i) result(i, i) = Cplx<T>(T(1.0));
    return result;
  }
};

/// Rows of a against columns of b.
template <class T>
Matrix4<T> operator*(const Matrix4<T>& a, const Matrix4<T>& b) {
  Matrix4<T> result;
  for (int r = 0; r < 4; ++r) {
    for (int c = 0; c < 4; ++c) {
      const Cplx<T> sum = MulAdd(a(r, 2), b(2, c), MulAdd(a(r, 1), b(1, c), Cplx<T>(a(r, 0) * b(0, c))));
      result(r, c) = MulAdd(a(r, 3), b(3, c), sum);
    }
  }
  return result;
}

/// The inverse as adjugate over determinant, both from the 2×2 minors of the upper and of the lower two rows
/// (Laplace expansion). A singular matrix gives values that are not finite.
template <class T>
void InvertInto(const Matrix4<T>& m, Matrix4<T>& result) {
  const auto minor = [&m](int row, int i, int j) -> Cplx<T> {
    return NegMulAdd(m(row, j), m(row + 1, i), Cplx<T>(m(row, i) * m(row + 1, j)));
  };
  // Upper and lower minors of the columns (i, j); complementary pairs share the letter's place in the
  // expansion.
  const Cplx<T> u01 = minor(0, 0, 1), u02 = minor(0, 0, 2), u03 = minor(0, 0, 3);
  const Cplx<T> u12 = minor(0, 1, 2), u13 = minor(0, 1, 3), u23 = minor(0, 2, 3);
  const Cplx<T> l01 = minor(2, 0, 1), l02 = minor(2, 0, 2), l03 = minor(2, 0, 3);
  const Cplx<T> l12 = minor(2, 1, 2), l13 = minor(2, 1, 3), l23 = minor(2, 2, 3);
  const auto sum3 = [](const Cplx<T>& a, const Cplx<T>& x, const Cplx<T>& b, const Cplx<T>& y,
                       const Cplx<T>& c, const Cplx<T>& z) -> Cplx<T> {
    return MulAdd(c, z, NegMulAdd(b, y, Cplx<T>(a * x)));  // a x - b y + c z
  };
  const auto less2 = [](const Cplx<T>& a, const Cplx<T>& x, const Cplx<T>& b, const Cplx<T>& y,
                        const Cplx<T>& c, const Cplx<T>& z) -> Cplx<T> {
    return NegMulAdd(c, z, NegMulAdd(b, y, Cplx<T>(a * x)));  // a x - b y - c z
  };
  const Cplx<T> determinant =
      MulAdd(u23, l01, NegMulAdd(u13, l02, MulAdd(u12, l03, sum3(u01, l23, u02, l13, u03, l12))));
  const Cplx<T> scale = T(1.0) / determinant;

  result(0, 0) = sum3(m(1, 1), l23, m(1, 2), l13, m(1, 3), l12) * scale;
  result(0, 1) = less2(m(0, 2), l13, m(0, 1), l23, m(0, 3), l12) * scale;
  result(0, 2) = sum3(m(3, 1), u23, m(3, 2), u13, m(3, 3), u12) * scale;
  result(0, 3) = less2(m(2, 2), u13, m(2, 1), u23, m(2, 3), u12) * scale;
  result(1, 0) = less2(m(1, 2), l03, m(1, 0), l23, m(1, 3), l02) * scale;
  result(1, 1) = sum3(m(0, 0), l23, m(0, 2), l03, m(0, 3), l02) * scale;
  result(1, 2) = less2(m(3, 2), u03, m(3, 0), u23, m(3, 3), u02) * scale;
  result(1, 3) = sum3(m(2, 0), u23, m(2, 2), u03, m(2, 3), u02) * scale;
  result(2, 0) = sum3(m(1, 0), l13, m(1, 1), l03, m(1, 3), l01) * scale;
  result(2, 1) = less2(m(0, 1), l03, m(0, 0), l13, m(0, 3), l01) * scale;
  result(2, 2) = sum3(m(3, 0), u13, m(3, 1), u03, m(3, 3), u01) * scale;
  result(2, 3) = less2(m(2, 1), u03, m(2, 0), u13, m(2, 3), u01) * scale;
  result(3, 0) = less2(m(1, 1), l02, m(1, 0), l12, m(1, 2), l01) * scale;
  result(3, 1) = sum3(m(0, 0), l12, m(0, 1), l02, m(0, 2), l01) * scale;
  result(3, 2) = less2(m(3, 1), u02, m(3, 0), u12, m(3, 2), u01) * scale;
  result(3, 3) = sum3(m(2, 0), u12, m(2, 1), u02, m(2, 2), u01) * scale;
}

template <class T>
Matrix4<T> Inverse(const Matrix4<T>& m) {
  Matrix4<T> result;
  InvertInto(m, result);
  return result;
}

}  // namespace tolvik::engine
