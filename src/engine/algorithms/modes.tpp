// SPDX-License-Identifier: GPL-2.0-or-later
// Field and propagation matrices in the manner of Zak, Moog, Liu and Bader, J. Magn. Magn. Mater. 89, 107
// (1990), with the exact normal wavevectors of the tensor (quartic of Booker, Phil. Trans. R. Soc. A 237, 411
// (1938)) in place of first-order ones.
#pragma once

#include "engine/algorithms/modes.h"
#include "engine/algorithms/quartic.tpp"
#include "engine/number/select.h"

namespace tolvik::engine {
namespace modes {

// cos θ of the isotropic case: an angle below 1e-4 rad, or NaN, counts as 1e-4.
template <class T>
T BoundedCosine(T theta) {
  const T bounded = Select(theta >= T(1e-4), theta, T(1e-4));
  return sin(T(1.5707963267948966) - bounded);
}

// exp(-i k0 d kappa), the amplitude at the upper face over that at the lower one.
template <class T>
Cplx<T> PropagationFactor(const T& k0, const T& d, const Cplx<T>& kappa) {
  const T length = k0 * d;
  return exp(Cplx<T>(length * kappa.imag(), -(length * kappa.real())));
}

template <class T>
void FillPropagation(Matrix4<T>& P, const T& k0, const T& d, const Cplx<T> (&kappa)[4]) {
  P = Matrix4<T>();
  for (int r = 0; r < 4; ++r) P(r, r) = PropagationFactor<T>(k0, d, kappa[r]);
}

// Four elements of a row, or the fields (ex, ey, hx, hy) of a wave.
template <class T>
struct RowOfFour {
  const Cplx<T>&m0, &m1, &m2, &m3;
};

template <class T>
inline void SetRow(Matrix4<T>& matrix, int row, const RowOfFour<T>& m) {
  matrix(row, 0) = m.m0;
  matrix(row, 1) = m.m1;
  matrix(row, 2) = m.m2;
  matrix(row, 3) = m.m3;
}

// The cases below use the cosine c of the grazing angle, not the angle itself.

template <class T>
void FillTetragonal(Matrix4<T>& D, Cplx<T> (&kappa)[4], const T& c, const Tensor<T>& tensor) {
  const Cplx<T>&exx = tensor[0], &eyy = tensor[4], &ezz = tensor[8];
  const Cplx<T> zero, one(T(1.0));
  const T c2 = c * c;
  const Cplx<T> b = ezz - c2;
  kappa[0] = sqrt(exx - c2);
  kappa[1] = -kappa[0];
  kappa[2] = sqrt(b * (T(4.0) * eyy * ezz)) / (T(2.0) * ezz);
  kappa[3] = -kappa[2];

  SetRow<T>(D, 0, {one, zero, zero, kappa[0]});
  SetRow<T>(D, 1, {one, zero, zero, kappa[1]});
  SetRow<T>(D, 2, {zero, b, -kappa[2] * (c2 + b), zero});
  SetRow<T>(D, 3, {zero, b, -kappa[3] * (c2 + b), zero});
}

template <class T>
struct ElectricVector {
  const Cplx<T>&x, &y, &z;
};

// Row r of D from the electric vector of its wave; hx and hy follow from Faraday's law.
template <class T>
inline void SetFields(Matrix4<T>& D, int r, const Cplx<T>& kappa, const T& c, const ElectricVector<T>& e) {
  SetRow<T>(D, r, {e.x, e.y, NegMulAdd(kappa, e.y, Cplx<T>(c * e.z)), kappa * e.x});
}

// The quartic of the wavevectors.
template <class T>
quartic::MonicQuartic<T> GeneralQuartic(const T& c, const Tensor<T>& tensor) {
  const auto& [exx, exy, exz, eyx, eyy, eyz, ezx, ezy, ezz] = tensor;
  const Cplx<T> a = exx - c * c;
  const Cplx<T> b = ezz - c * c;
  const Cplx<T> yz = eyz + ezy;
  return quartic::MonicOf<T>(
      ezz, c * yz, ezx * exz + eyz * ezy - eyy * b - a * ezz, c * (exz * eyx + ezx * exy - a * yz),
      ezx * exy * eyz + exz * eyx * ezy - a * eyz * ezy + eyy * (a * b - ezx * exz) - b * exy * eyx);
}

// The modes from the polished roots. unit: electric vectors of length 1; otherwise they are not normalised.
template <bool unit, class T>
void SetGeneralFields(Matrix4<T>& D, const Cplx<T> (&kappa)[4], const T& c, const Tensor<T>& tensor) {
  const auto& [exx, exy, exz, eyx, eyy, eyz, ezx, ezy, ezz] = tensor;
  const Cplx<T> a = exx - c * c;
  const Cplx<T> b = ezz - c * c;
  for (int r = 0; r < 4; ++r) {
    // The electric vector of the mode solves the x and z rows of the wave equation.
    const Cplx<T> u = c * kappa[r] + ezy;
    const Cplx<T> h = a - kappa[r] * kappa[r];
    const Cplx<T> e1 = exz * u - exy * b;
    const Cplx<T> e2 = h * b - exz * ezx;
    const Cplx<T> e3 = exy * ezx - h * u;
    if constexpr (unit) {
      const T scale = T(1.0) / sqrt(norm(e1) + norm(e2) + norm(e3));
      SetFields<T>(D, r, kappa[r], c, {scale * e1, scale * e2, scale * e3});
    } else {
      SetFields<T>(D, r, kappa[r], c, {e1, e2, e3});
    }
  }
}

}  // namespace modes

template <class T>
int ClassifyTensor(T tolerance, const Tensor<T>& tensor) {
  const auto& [exx, exy, exz, eyx, eyy, eyz, ezx, ezy, ezz] = tensor;
  for (const Cplx<T>& element : {exy, exz, eyx, eyz, ezx, ezy}) {
    // Written so that a NaN modulus travels into the curve instead of vanishing.
    if (!(abs(element) < tolerance)) return kAnisotropic;
  }
  for (const Cplx<T>& difference : {exx - ezz, exx - eyy, eyy - ezz}) {
    if (!(abs(difference) < tolerance)) return kTetragonal;
  }
  return kIsotropic;
}

template <class T>
void CalcLayerMatrices(Matrix4<T>& P, Matrix4<T>& D, Cplx<T> (&kappa)[4], T theta, T k0, T d, const Cplx<T>&,
                       const Tensor<T>& tensor, T tolerance) {
  switch (ClassifyTensor<T>(tolerance, tensor)) {
    case kIsotropic:
      return CalcIsotropicMatrices<T>(P, D, kappa, theta, k0, d, sqrt(tensor[0]));
    case kTetragonal:
      return CalcTetragonalMatrices<T>(P, D, kappa, theta, k0, d, tensor);
    default:
      return CalcGeneralMatrices<T>({P, D, kappa}, theta, k0, d, tensor);
  }
}

template <class T>
void CalcIsotropicMatrices(Matrix4<T>& P, Matrix4<T>& D, Cplx<T> (&kappa)[4], T theta, T k0, T d,
                           const Cplx<T>& n) {
  const Cplx<T> zero, one(T(1.0));
  const Cplx<T> s = modes::BoundedCosine<T>(theta) / n;  // sine of the refracted angle against the normal
  const Cplx<T> q = sqrt(one - s * s);
  const Cplx<T> w = n * q;
  kappa[0] = kappa[1] = w;
  kappa[2] = kappa[3] = -w;

  modes::SetRow<T>(D, 0, {one, zero, zero, w});
  modes::SetRow<T>(D, 1, {zero, q, -n, zero});
  modes::SetRow<T>(D, 2, {one, zero, zero, -w});
  modes::SetRow<T>(D, 3, {zero, -q, -n, zero});

  if (d == T(0.0)) return;
  const Cplx<T> e = modes::PropagationFactor<T>(k0, d, w);
  P = Matrix4<T>();
  P(0, 0) = P(1, 1) = e;
  P(2, 2) = P(3, 3) = T(1.0) / e;
}

template <class T>
void CalcTetragonalMatrices(Matrix4<T>& P, Matrix4<T>& D, Cplx<T> (&kappa)[4], T theta, T k0, T d,
                            const Tensor<T>& tensor) {
  modes::FillTetragonal<T>(D, kappa, cos(theta), tensor);
  modes::FillPropagation<T>(P, k0, d, kappa);
}

template <class T>
void CalcGeneralMatrices(const LayerMatrices<T>& layer, T theta, T k0, T d, const Tensor<T>& tensor) {
  const T c = cos(theta);
  quartic::Solve<T>(modes::GeneralQuartic<T>(c, tensor), layer.kappa);
  modes::SetGeneralFields<true, T>(layer.D, layer.kappa, c, tensor);
  modes::FillPropagation<T>(layer.P, k0, d, layer.kappa);
}

}  // namespace tolvik::engine
