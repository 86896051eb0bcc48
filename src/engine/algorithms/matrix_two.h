// SPDX-License-Identifier: GPL-2.0-or-later
// Algorithm 2: the 4×4 transfer matrix of a stack with scalar indices and a magnetisation to first order.
#pragma once

#include "engine/algorithms/matrix_context.h"

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

}  // namespace tolvik::engine
