// SPDX-License-Identifier: GPL-2.0-or-later
// kz    normal wavevector, Å⁻¹            r, p   sigma and pi Fresnel coefficients, upper minus lower
// X, Y  pi and sigma amplitude ratios     d      slab thickness, Å;  index 0 = substrate, last = ambient
#pragma once

#include "engine/algorithms/parratt.h"

namespace tolvik::engine {

namespace parratt_detail {

template <class Value>
void SetSize(CArray<Value>& array, std::int32_t count) {
  if (array.size != count) array.Assign(count, Value());
}

/// exp(-2 σ² ka kb) of an interface between the wavevectors ka and kb.
template <Number T>
Cplx<T> NevotCroceFactor(const T& sigma, const Cplx<T>& ka, const Cplx<T>& kb) {
  return exp(T(-2.0) * sigma * sigma * (ka * kb));
}

/// exp(2 i kz d): down through a slab and up again.
template <Number T>
Cplx<T> RoundTripPhase(const Cplx<T>& kz, const T& d) {
  return exp(Cplx<T>(T(-2.0) * imag(kz) * d, T(2.0) * real(kz) * d));
}

/// Amplitude at a slab's upper interface r, from the amplitude below it through the slab.
template <Number T>
Cplx<T> AddInterface(const Cplx<T>& r, const Cplx<T>& below) {
  return (r + below) / (T(1.0) + r * below);
}

}  // namespace parratt_detail

template <Number T>
void CalcWavevectors(Profile<T>& profile, CArray<Cplx<T>>& kz, const T& k0, const T& theta, const T& sign) {
  parratt_detail::SetSize(kz, profile.size);
  const T c = cos(theta);
  const T c2 = c * c;
  const T m = c * sign;
  for (std::int32_t j = 0; j < profile.size; ++j) {
    CLayer<T>& layer = profile[j];
    Cplx<T> n = RefractiveIndex(layer);
    if (sign != T(0.0)) n = Cplx<T>(real(n) + layer.layer_ddelta * m, imag(n) - layer.layer_dbeta * m);
    layer.scalarindex = n;
    kz[j] = k0 * sqrt(n * n - c2);
    if constexpr (NumberTraits<T>::lifts_zero_kz) {
      if (real(kz[j]) == T(0.0)) kz[j] = Cplx<T>(T(1e-100), imag(kz[j]));
    }
  }
}

template <Number T>
void CalcFresnelCoefficients(const Profile<T>& profile, const CArray<Cplx<T>>& kz, CArray<Cplx<T>>& rpi,
                             CArray<Cplx<T>>& rsigma) {
  const std::int32_t interfaces = profile.size > 0 ? profile.size - 1 : 0;
  parratt_detail::SetSize(rpi, interfaces);
  parratt_detail::SetSize(rsigma, interfaces);
  const auto squared_index = [&](std::int32_t j) { return profile[j].scalarindex * profile[j].scalarindex; };
  Cplx<T> upper_n2 = interfaces > 0 ? squared_index(interfaces) : Cplx<T>();
  for (std::int32_t j = interfaces - 1; j >= 0; --j) {
    const Cplx<T>& upper = kz[j + 1];
    const Cplx<T>& lower = kz[j];
    rsigma[j] = (upper - lower) / (upper + lower);

    // Each wavevector is weighted by n² of the other side: continuity of kz/n² Hy.
    const Cplx<T> lower_n2 = squared_index(j);
    const Cplx<T> weighted_upper = lower_n2 * upper;
    const Cplx<T> weighted_lower = upper_n2 * lower;
    rpi[j] = (weighted_upper - weighted_lower) / (weighted_upper + weighted_lower);
    upper_n2 = lower_n2;

    const T& sigma = profile[j].layer_sigma;
    if (sigma != T(0.0)) {
      const Cplx<T> factor = parratt_detail::NevotCroceFactor(sigma, upper, lower);
      rsigma[j] *= factor;
      rpi[j] *= factor;
    }
  }
}

template <Number T>
T CalcParrattIntensity(const Profile<T>& profile, const CArray<Cplx<T>>& kz, const CArray<Cplx<T>>& rpi,
                       const CArray<Cplx<T>>& rsigma, const double* polarisation, int ray) {
  if (profile.size < 2) return T(0.0);
  Cplx<T> X = rpi[0];
  Cplx<T> Y = rsigma[0];
  for (std::int32_t m = 1; m + 1 < profile.size; ++m) {
    const Cplx<T> phase = parratt_detail::RoundTripPhase(kz[m], profile[m].layer_d);
    X = parratt_detail::AddInterface<T>(rpi[m], X * phase);
    Y = parratt_detail::AddInterface<T>(rsigma[m], Y * phase);
  }
  const double* part = ray == 1 ? polarisation : polarisation + 4;
  const T sigma_share = norm(Cplx<T>(T(part[0]), T(part[1])));
  const T pi_share = norm(Cplx<T>(T(part[2]), T(part[3])));
  return norm(Y) * sigma_share + norm(X) * pi_share;
}

}  // namespace tolvik::engine
