// SPDX-License-Identifier: GPL-2.0-or-later
#include "engine/lanes/parratt.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <type_traits>

namespace tolvik::engine::lanes {

namespace {

// Limits of the kernels' sine (functions.h), halved: |w| stays below 2.
template <class T>
constexpr T kMaxPhase = std::is_same_v<T, double> ? T(5e5) : T(5e3);

template <class T>
constexpr T kMaxExponent = std::is_same_v<T, double> ? T(80) : T(10);

// Between bounds and no NaN.
template <class T>
bool IsWithin(T x, T low, T high) {
  return x >= low && x <= high;
}

// What lies above its limit is nothing for the fast way.
template <class T>
bool SetIndex(const CLayer<T>& layer, T sign, ParrattEntry<T>& entry) {
  entry.index_real = T(1.0) - layer.layer_delta;
  entry.index_imag = layer.layer_beta;
  if (!IsWithin(entry.index_real, T(0.5), T(1.5)) || !IsWithin(entry.index_imag, T(0.0), T(0.5)))
    return false;
  if (std::signbit(entry.index_imag)) return false;

  const T n = entry.index_real, k = entry.index_imag;
  entry.chi_real = (n - T(1.0)) * (n + T(1.0)) - k * k;
  entry.chi_imag = T(2.0) * n * k;
  const T real = entry.chi_real + T(1.0);
  const T scale = T(1.0) / (real * real + entry.chi_imag * entry.chi_imag);
  entry.inverse_real = real * scale;
  entry.inverse_imag = -(entry.chi_imag * scale);

  entry.ddelta = sign == T(0.0) ? T(0.0) : layer.layer_ddelta * sign;
  entry.dbeta = sign == T(0.0) ? T(0.0) : layer.layer_dbeta * sign;
  entry.shifted = entry.ddelta != T(0.0) || entry.dbeta != T(0.0);
  return IsWithin(entry.ddelta, T(-0.1), T(0.1)) && IsWithin(entry.dbeta, T(-0.1), T(0.1));
}

template <class T>
bool IsSameWave(const ParrattEntry<T>& a, const ParrattEntry<T>& b) {
  return a.index_real == b.index_real && a.index_imag == b.index_imag && a.ddelta == b.ddelta &&
         a.dbeta == b.dbeta;
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
bool ParrattLanes<T>::Prepare(const Profile<T>& profile, T k0, T sign) {
  const std::int32_t n = profile.size;
  if (n < 2 || !IsWithin(k0, T(1e-5), T(1e5))) return false;
  entries_.resize(static_cast<std::size_t>(n));
  T largest_chi(0.0), largest_roughness(0.0);
  for (std::int32_t j = 0; j < n; ++j) {
    const CLayer<T>& layer = profile[j];
    ParrattEntry<T>& entry = entries_[static_cast<std::size_t>(j)];
    entry = ParrattEntry<T>();
    if (!SetIndex(layer, sign, entry)) return false;
    const T shift = std::abs(entry.ddelta) + std::abs(entry.dbeta);
    largest_chi = std::max(largest_chi, std::hypot(entry.chi_real, entry.chi_imag) + T(4.0) * shift);
    if (j + 1 < n) {
      const T sigma_k0 = layer.layer_sigma * k0;
      entry.rough = layer.layer_sigma != T(0.0);
      entry.roughness = T(2.0) * sigma_k0 * sigma_k0;
      if (!IsWithin(entry.roughness, T(0.0), T(1e20))) return false;
      largest_roughness = std::max(largest_roughness, entry.roughness);
      entry.phase = j > 0 ? T(2.0) * k0 * layer.layer_d : T(0.0);
      if (!IsWithin(entry.phase, T(0.0), kMaxPhase<T>)) return false;
    }
  }
  // |w|² <= 1 + |n² - 1|, and the real part of a product of two w is at least -|n² - 1|.
  stack_.tame = largest_roughness * (T(1.0) + largest_chi) < kMaxPhase<T> &&
                largest_roughness * largest_chi < kMaxExponent<T>;
  near_vacuum_ = largest_chi < T(0.2);
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
void ParrattLanes<T>::Calculate(const Kernels& kernels, const T* s, std::int32_t count, T sigma_share,
                                T pi_share, T* intensity) {
  const auto size = static_cast<std::size_t>(count);
  // A polarisation without a share adds 0 unless it is not a number, and no coefficient of ordinary matter
  // near vacuum is infinite on its own: u_upper and u_lower lie in the same quarter of the plane or nearly
  // so.
  stack_.wants_sigma = sigma_share != T(0.0) || !near_vacuum_;
  stack_.wants_pi = pi_share != T(0.0) || !near_vacuum_;
  sigma_.resize(size);
  pi_.resize(size);
  if (!stack_.wants_sigma) std::fill(sigma_.begin(), sigma_.end(), T(0.0));
  if (!stack_.wants_pi) std::fill(pi_.begin(), pi_.end(), T(0.0));
  if constexpr (std::is_same_v<T, float>) {
    kernels.parratt_float(stack_, s, count, sigma_.data(), pi_.data());
  } else {
    kernels.parratt_double(stack_, s, count, sigma_.data(), pi_.data());
  }
  for (std::size_t i = 0; i < size; ++i) intensity[i] = sigma_[i] * sigma_share + pi_[i] * pi_share;
}

template class ParrattLanes<float>;
template class ParrattLanes<double>;

}  // namespace tolvik::engine::lanes
