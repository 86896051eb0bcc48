// SPDX-License-Identifier: GPL-2.0-or-later
#include "engine/lanes/parratt.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <type_traits>

#include "engine/algorithms/modes.tpp"
#include "engine/lanes/ordinary_matter.h"

namespace tolvik::engine::lanes {

namespace {

// Limits of the kernels' sine (functions.h), halved: |w| stays below 2.
template <class T>
constexpr T kMaxPhase = std::is_same_v<T, double> ? T(5e5) : T(5e3);

// |w²|² of the vacuum is s⁴, which must not underflow.
template <class T>
constexpr T kSmallestSine = std::is_same_v<T, double> ? T(1e-75) : T(1e-9);

template <class T>
constexpr T kMaxExponent = std::is_same_v<T, double> ? T(80) : T(10);

template <class T>
void SetSusceptibility(T real, T imag, ParrattEntry<T>& entry) {
  entry.chi_real = real;
  entry.chi_imag = imag;
  const T n2 = real + T(1.0);
  const T scale = T(1.0) / (n2 * n2 + imag * imag);
  entry.inverse_real = n2 * scale;
  entry.inverse_imag = -(imag * scale);
}

// The functions below give false for what is not ordinary matter.

template <class T>
bool SetIndex(const CLayer<T>& layer, ParrattEntry<T>& entry) {
  const T n = entry.index_real = T(1.0) - layer.layer_delta;
  const T k = entry.index_imag = layer.layer_beta;
  if (!IsRefraction(n) || !IsAbsorption(k)) return false;
  SetSusceptibility((n - T(1.0)) * (n + T(1.0)) - k * k, T(2.0) * n * k, entry);
  return true;
}

template <class T>
bool SetTensorIndex(const std::complex<T>& exx, ParrattEntry<T>& entry) {
  const T real = entry.index_real = exx.real();
  const T imag = entry.index_imag = exx.imag();
  if (!IsRefraction(real) || !IsAbsorption(imag)) return false;
  SetSusceptibility(real - T(1.0), imag, entry);
  return true;
}

template <class T>
bool SetShift(const CLayer<T>& layer, ParrattEntry<T>& entry) {
  entry.ddelta = layer.layer_ddelta;
  entry.dbeta = layer.layer_dbeta;
  entry.shifted = entry.ddelta != T(0.0) || entry.dbeta != T(0.0);
  return IsWithin(entry.ddelta, T(-0.1), T(0.1)) && IsWithin(entry.dbeta, T(-0.1), T(0.1));
}

// Largest |n² - 1| of an entry at any angle.
template <class T>
T LargestContrast(const ParrattEntry<T>& entry) {
  const T shift = std::abs(entry.ddelta) + std::abs(entry.dbeta);
  return std::hypot(entry.chi_real, entry.chi_imag) + T(4.0) * shift;
}

// Whether no absorption keeps w away from 0 at all angles: Im w² = 2 Re n Im n.
template <class T>
bool MayVanish(const ParrattEntry<T>& entry) {
  T imag = entry.chi_imag;
  if (entry.shifted) {
    imag = T(2.0) * (entry.index_real - std::abs(entry.ddelta)) * (entry.index_imag - std::abs(entry.dbeta));
  }
  return imag <= T(0.0) || imag * imag < T(2.0) * kSmallestModulus2<T>;
}

// In float the plain form drowns vacuum already at 0.03 degrees. It reflects nearly all there whatever its w,
// provided that the next wave does not vanish with it and the roughness factor stays near 1.
template <class T>
bool MayVanishOnTop(const ParrattEntry<T>& below, const ParrattEntry<T>& ambient) {
  if (!std::is_same_v<T, float> || below.shifted || ambient.shifted) return true;
  const T step = std::hypot(ambient.chi_real - below.chi_real, ambient.chi_imag - below.chi_imag);
  return step * step < T(16.0) * kSmallestModulus2<T> || below.roughness * below.roughness * step > T(100.0);
}

template <class T>
bool IsSameWave(const ParrattEntry<T>& a, const ParrattEntry<T>& b) {
  return a.index_real == b.index_real && a.index_imag == b.index_imag && a.chi_real == b.chi_real &&
         a.chi_imag == b.chi_imag && a.ddelta == b.ddelta && a.dbeta == b.dbeta;
}

// The number of the first of up to kMaxShared earlier items that equals this one; a new number if none does;
// kMaxShared when there are too many different ones.
template <class Equals>
int NumberOf(int item, int& different, std::int32_t (&first)[kMaxShared], Equals equals) {
  for (int number = 0; number < different; ++number) {
    if (equals(first[number])) return number;
  }
  if (different < kMaxShared)
    first[different++] = item;
  else
    return kMaxShared;
  return different - 1;
}

}  // namespace

template <class T>
bool ParrattLanes<T>::Prepare(const Profile<T>& profile, T k0, bool magnetic) {
  entries_.assign(static_cast<std::size_t>(std::max(profile.size, 0)), ParrattEntry<T>());
  for (std::int32_t j = 0; j < profile.size; ++j) {
    ParrattEntry<T>& entry = entries_[static_cast<std::size_t>(j)];
    if (!SetIndex(profile[j], entry)) return false;
    if (magnetic && !SetShift(profile[j], entry)) return false;
  }
  stack_.largest_growth = std::numeric_limits<T>::infinity();
  stack_.smallest_sine = kSmallestSine<T>;
  if (!PrepareEntries(profile, k0)) return false;
  ParrattEntry<T>& ambient = entries_.back();
  if (!MayVanishOnTop(entries_[entries_.size() - 2], ambient)) ambient.guarded = false;
  return true;
}

template <class T>
bool ParrattLanes<T>::PrepareMatrix(const Profile<T>& profile, T k0, bool tensors, T tolerance) {
  entries_.assign(static_cast<std::size_t>(std::max(profile.size, 0)), ParrattEntry<T>());
  for (std::int32_t j = 0; j < profile.size; ++j) {
    const CLayer<T>& layer = profile[j];
    ParrattEntry<T>& entry = entries_[static_cast<std::size_t>(j)];
    if (tensors && layer.magnetic != 0) {
      if (ClassifyTensor<T>(tolerance, layer.epsilon) != kIsotropic) return false;
      if (!SetTensorIndex(layer.epsilon[0], entry)) return false;
    } else if (!SetIndex(layer, entry)) {
      return false;
    }
    if (j > 0 && j + 1 < profile.size && layer.layer_d == T(0.0)) return false;
  }
  if (!PrepareEntries(profile, k0)) return false;
  // Neither the growing waves nor the roughness factors of a whole stack may come near the range of T.
  const T range = std::is_same_v<T, double> ? T(100.0) : T(10.0);
  T roughness(0.0);
  for (const ParrattEntry<T>& entry : entries_) roughness += entry.roughness;
  stack_.largest_growth = T(2.0) * range;
  stack_.smallest_sine = T(1.001e-4);  // the matrix algorithms bound the angle by 1e-4
  return stack_.tame && near_vacuum_ && roughness * largest_chi_ < range;
}

template <class T>
bool ParrattLanes<T>::PrepareEntries(const Profile<T>& profile, T k0) {
  const std::int32_t n = profile.size;
  if (n < 2 || !IsWithin(k0, T(1e-5), T(1e5))) return false;
  T largest_roughness(0.0), contrast_below(0.0);
  largest_chi_ = T(0.0);
  stack_.shifted = false;
  for (std::int32_t j = 0; j < n; ++j) {
    const CLayer<T>& layer = profile[j];
    ParrattEntry<T>& entry = entries_[static_cast<std::size_t>(j)];
    const T contrast = LargestContrast(entry);
    largest_chi_ = std::max(largest_chi_, contrast);
    entry.guarded = MayVanish(entry);
    stack_.shifted |= entry.shifted;
    if (j > 0) {
      ParrattEntry<T>& below = entries_[static_cast<std::size_t>(j - 1)];
      below.short_phase = below.roughness * (contrast_below + contrast) < T(kShortRoughnessPhase);
    }
    contrast_below = contrast;
    if (j + 1 == n) continue;
    const T sigma_k0 = layer.layer_sigma * k0;
    entry.rough = layer.layer_sigma != T(0.0);
    entry.roughness = T(2.0) * sigma_k0 * sigma_k0;
    entry.phase = j > 0 ? T(2.0) * k0 * layer.layer_d : T(0.0);
    if (!IsWithin(entry.roughness, T(0.0), T(1e20)) || !IsWithin(entry.phase, T(0.0), kMaxPhase<T>))
      return false;
    largest_roughness = std::max(largest_roughness, entry.roughness);
  }
  // |w|² <= 1 + |n² - 1|, and the real part of a product of two w is at least -|n² - 1|.
  stack_.tame = largest_roughness * (T(1.0) + largest_chi_) < kMaxPhase<T> &&
                largest_roughness * largest_chi_ < kMaxExponent<T>;
  near_vacuum_ = largest_chi_ < T(0.2);
  stack_.entry = entries_.data();
  stack_.entries = n;
  ShareEqualEntries();
  return true;
}

template <class T>
void ParrattLanes<T>::ShareEqualEntries() {
  const auto at = [this](std::int32_t j) -> ParrattEntry<T>& {
    return entries_[static_cast<std::size_t>(j)];
  };
  std::int32_t wave[kMaxShared], passage[kMaxShared], interface[kMaxShared];
  int waves = 0, passages = 0, interfaces = 0;
  stack_.shared = false;
  if (stack_.entries < 6) return;
  for (std::int32_t j = 0; j < stack_.entries; ++j) {
    ParrattEntry<T>& entry = at(j);
    const int number =
        NumberOf(j, waves, wave, [&](std::int32_t first) { return IsSameWave(at(first), entry); });
    if (number == kMaxShared) return;
    entry.wave = static_cast<std::int8_t>(number);
  }
  for (std::int32_t j = 0; j + 1 < stack_.entries; ++j) {
    ParrattEntry<T>& entry = at(j);
    const int through = j == 0 ? 0 : NumberOf(j, passages, passage, [&](std::int32_t first) {
      return at(first).wave == entry.wave && at(first).phase == entry.phase;
    });
    const int over = NumberOf(j, interfaces, interface, [&](std::int32_t first) {
      return at(first).wave == entry.wave && at(first + 1).wave == at(j + 1).wave &&
             at(first).roughness == entry.roughness;
    });
    if (through == kMaxShared || over == kMaxShared) return;
    entry.passage = static_cast<std::int8_t>(through);
    entry.interface = static_cast<std::int8_t>(over);
  }
  stack_.shared = 2 * interfaces <= stack_.entries;
}

template <class T>
bool ParrattLanes<T>::Calculate(const Kernels& kernels, const T* s, std::int32_t count, RayShares<T> ray,
                                T* intensity) {
  const ParrattRay<T> rays[] = {{ray.sigma, ray.pi, intensity}};
  return CalcRays(kernels, s, count, rays);
}

template <class T>
bool ParrattLanes<T>::CalculateBoth(const Kernels& kernels, const T* s, std::int32_t count, RayShares<T> one,
                                    T* first, RayShares<T> two, T* second) {
  const ParrattRay<T> rays[] = {{one.sigma, one.pi, first}, {two.sigma, two.pi, second}};
  return CalcRays(kernels, s, count, rays);
}

template <class T>
void ParrattLanes<T>::SetWanted(std::span<const ParrattRay<T>> rays) {
  // A polarisation without a share adds 0 unless it is not a number, and no coefficient of ordinary matter
  // near vacuum is infinite on its own: u_upper and u_lower lie in the same quarter of the plane or nearly
  // so.
  for (std::int32_t sense = 0; sense < stack_.senses; ++sense) {
    bool& sigma = stack_.wants_sigma[sense];
    bool& pi = stack_.wants_pi[sense];
    sigma = pi = !near_vacuum_;
    for (std::size_t r = 0; r < rays.size(); ++r) {
      if (stack_.senses == 2 && r != static_cast<std::size_t>(sense)) continue;
      sigma |= rays[r].sigma != T(0.0);
      pi |= rays[r].pi != T(0.0);
    }
    // Where neither has a share one of them still tells whether the angle has an intensity.
    if (!sigma && !pi) sigma = true;
  }
}

template <class T>
bool ParrattLanes<T>::CalcRays(const Kernels& kernels, const T* s, std::int32_t count,
                               std::span<const ParrattRay<T>> rays) {
  stack_.senses = stack_.shifted && rays.size() == 2 ? 2 : 1;
  SetWanted(rays);
  const auto ray_count = static_cast<std::int32_t>(rays.size());
  if constexpr (std::is_same_v<T, float>) {
    return kernels.parratt_float(stack_, s, count, rays.data(), ray_count);
  } else {
    return kernels.parratt_double(stack_, s, count, rays.data(), ray_count);
  }
}

template class ParrattLanes<float>;
template class ParrattLanes<double>;

}  // namespace tolvik::engine::lanes
