// SPDX-License-Identifier: GPL-2.0-or-later
// The loop through the stack that both matrix algorithms share. With row vectors of amplitudes a and field
// matrices D, continuity of (ex, ey, hx, hy) at an interface reads a_up D_up = a_lo D_lo, so a_up = a_lo T
// with T = D_lo D_up⁻¹.
#pragma once

#include "engine/number/matrix4.h"
#include "engine/profile/layer.h"

namespace tolvik::engine {

/// Modes of one entry: field matrix, propagation matrix, normal wavevectors in units of k0.
template <class T>
struct EntryModes {
  Matrix4<T> D;
  Matrix4<T> P;
  Cplx<T> kappa[4] = {};
};

/// The matrix M with a_ambient = a_substrate M; the identity for an empty profile.
///
/// Algorithm has CalcModes(modes, layer, d), Propagate(P, M) and Roughen(T, sigma, upper, lower), the last
/// two in place. For an entry whose thickness is exactly 0 CalcModes may leave P unchanged: it is then that
/// of the entry above, whose propagation is applied once more; directly below an ambient that wrote none P is
/// 0 and the result NaN. Users remove such layers from their stacks.
template <class T, class Algorithm>
Matrix4<T> CalcTransferMatrix(const Profile<T>& profile, const Algorithm& algorithm) {
  Matrix4<T> M = Matrix4<T>::Identity();
  if (profile.size <= 0) return M;
  const std::int32_t ambient = profile.size - 1;
  EntryModes<T> upper;
  EntryModes<T> modes;
  algorithm.CalcModes(upper, profile[ambient], T(0.0));
  Matrix4<T> A = Inverse(upper.D);
  modes.P = upper.P;  // 0, or the identity if the modes of the ambient set it
  for (std::int32_t i = ambient - 1; i >= 1; --i) {
    algorithm.CalcModes(modes, profile[i], profile[i].layer_d);
    Matrix4<T> interface = modes.D * A;
    algorithm.Roughen(interface, profile[i].layer_sigma, upper.kappa, modes.kappa);
    M = interface * M;
    algorithm.Propagate(modes.P, M);
    A = Inverse(modes.D);
    for (int r = 0; r < 4; ++r) upper.kappa[r] = modes.kappa[r];
  }
  algorithm.CalcModes(modes, profile[0], T(0.0));
  Matrix4<T> interface = modes.D * A;
  algorithm.Roughen(interface, profile[0].layer_sigma, upper.kappa, modes.kappa);
  return interface * M;
}

}  // namespace tolvik::engine
