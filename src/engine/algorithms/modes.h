// SPDX-License-Identifier: GPL-2.0-or-later
// The four plane waves of one slab at one angle: normal wavevectors, fields and propagation.
//
// Axes: x perpendicular to the plane of incidence (the sigma field), y in the surface along the beam, z into
// the sample; time exp(-iωt), n = 1 - delta + i beta.
//
//   kappa   four normal wavevectors in units of k0; a wave of mode r goes as exp(i k0 kappa_r z)
//   D       field matrix: row r holds (ex, ey, hx, hy) of mode r, with c = cos θ,
//           hx = c ez - kappa ey and hy = kappa ex
//   P       propagation matrix across the thickness d, from the lower to the upper face
//
// Order of modes: downward first (+, +, -, -) from the isotropic and the general case, but (+, -, +, -) from
// the tetragonal one. Inside a stack the order has no effect; a tetragonal substrate or ambient confuses the
// waves that run up and down.
#pragma once

#include "engine/number/matrix4.h"

namespace tolvik::engine {

/// Classes of a dielectric tensor.
enum TensorClass : int { kIsotropic = 0, kAnisotropic = 1, kTetragonal = 2 };

/// Dielectric tensor, row major: xx, xy, xz, yx, ...
template <class T>
using Tensor = Cplx<T>[9];

/// kAnisotropic when an off-diagonal element reaches the tolerance in modulus or is NaN; otherwise kIsotropic
/// when the diagonal elements differ by less than the tolerance, else kTetragonal.
template <class T>
int ClassifyTensor(T tolerance, const Tensor<T>& tensor);

/// Modes of a slab of thickness d, Å, from its tensor, by its class. An isotropic tensor counts as the index
/// sqrt(exx). theta: grazing angle in the vacuum above, rad; k0: wavenumber, Å⁻¹. The scalar index n is not
/// used.
template <class T>
void CalcLayerMatrices(Matrix4<T>& P, Matrix4<T>& D, Cplx<T> (&kappa)[4], T theta, T k0, T d,
                       const Cplx<T>& n, const Tensor<T>& tensor, T tolerance);

/// Modes of a slab of index n, in the order sigma down, pi down, sigma up, pi up. Angles below 1e-4 rad count
/// as 1e-4. A thickness of exactly 0 does not change P.
template <class T>
void CalcIsotropicMatrices(Matrix4<T>& P, Matrix4<T>& D, Cplx<T> (&kappa)[4], T theta, T k0, T d,
                           const Cplx<T>& n);

/// Modes of a slab whose tensor is diagonal, in the order sigma down, sigma up, pi down, pi up.
template <class T>
void CalcTetragonalMatrices(Matrix4<T>& P, Matrix4<T>& D, Cplx<T> (&kappa)[4], T theta, T k0, T d,
                            const Tensor<T>& tensor);

/// The results for a slab: propagation matrix, field matrix, wavevectors.
template <class T>
struct LayerMatrices {
  Matrix4<T>&P, &D;
  Cplx<T> (&kappa)[4];
};

/// Modes of a slab of any tensor, in the order of SolveModes; the electric vector of each is normalised. A
/// tensor without off-diagonal elements has modes whose vector vanishes here, and gives NaN.
template <class T>
void CalcGeneralMatrices(const LayerMatrices<T>& layer, T theta, T k0, T d, const Tensor<T>& tensor);

}  // namespace tolvik::engine
