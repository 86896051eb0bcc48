// SPDX-License-Identifier: GPL-2.0-or-later
// Algorithm 1: the 4×4 transfer matrix of a stack whose entries carry a scalar index or a full dielectric
// tensor.
#pragma once

#include "engine/algorithms/matrix_context.h"
#include "engine/number/matrix4.h"

namespace tolvik::engine {

/// Intensities of both rays at one grazing angle theta, rad, by 4×4 matrices after Berreman, J. Opt. Soc. Am.
/// 62, 502 (1972), and Yeh, Surf. Sci. 96, 41 (1980): reflected, or transmitted without the flux factor of
/// the substrate.
///
/// All magnetism is in the tensors of the magnetic entries; the angles maggamma and magphi and the flag
/// magnetic only match the signature of CalcMatrixTwo. k0: wavenumber, Å⁻¹. polarisation: eight numbers, per
/// ray sigma and pi as complex numbers. tolerance: smaller off-diagonal elements count as 0. Never fails; NaN
/// and infinity pass.
template <class T>
void CalcMatrixOne(const MatrixContext<T>& context, T theta, T maggamma, T magphi, T k0, bool magnetic,
                   T& out2, T& out1, const double* polarisation, T tolerance);

/// Multiplies the interface matrix interface(lower mode, upper mode) element by element by
/// exp(-½ sigma² k0² (upper - lower)²), the roughness factor of each pair of modes; wavevectors in units of
/// k0. Waves that run the same way have the difference of their wavevectors, opposite ones the sum: the ratio
/// of both factors is the factor of Névot and Croce, Rev. Phys. Appl. 15, 761 (1980). sigma 0 changes
/// nothing.
template <class T>
void ApplyRoughness(Matrix4<T>& interface, const T& sigma, const T& k0, const Cplx<T> (&upper)[4],
                    const Cplx<T> (&lower)[4]);

}  // namespace tolvik::engine
