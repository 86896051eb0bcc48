// SPDX-License-Identifier: GPL-2.0-or-later
// Algorithm 2: the 4×4 transfer matrix of a stack with scalar indices and a magnetisation to first order.
#pragma once

#include "engine/algorithms/matrix_one.h"

namespace tolvik::engine {

/// Intensities of both rays at one grazing angle theta, rad, to first order in the magnetic strength
/// Q = -2 layer_ddelta + 2i layer_dbeta of each entry, after Zak, Moog, Liu and Bader, J. Magn. Magn. Mater.
/// 89, 107 (1990), and Phys. Rev. B 43, 6423 (1991).
///
/// maggamma, magphi: direction of the magnetisation, degrees; magphi against z, magphi 90 with maggamma 0
/// along x. With magnetic false there is no magnetism. Tensors are not read. The rest as in CalcMatrixOne.
template <class T>
void CalcMatrixTwo(const MatrixContext<T>& context, T theta, T maggamma, T magphi, T k0, bool magnetic,
                   T& out2, T& out1, const double* polarisation);

/// Field matrix D and propagation matrix P of an entry with index n, magnetic strength Q and thickness d, Å,
/// for a magnetisation along the angles gamma and phi, rad. kappa[0] becomes the normal wavevector in units
/// of k0; the rest of kappa does not change. Angles theta below 1e-4 rad count as 1e-4; a thickness of
/// exactly 0 does not change P.
template <class T>
void CalcMagneticMatrices(Matrix4<T>& P, Matrix4<T>& D, Cplx<T> (&kappa)[4], T theta, T gamma, T phi, T k0,
                          T d, const Cplx<T>& n, const Cplx<T>& Q);

}  // namespace tolvik::engine
