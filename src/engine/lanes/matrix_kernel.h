// SPDX-License-Identifier: GPL-2.0-or-later
// The matrix algorithms for several angles at once.
//
// The waves of an entry come from the templates of the plain path (modes.tpp, first_order_modes.tpp), and the
// formulas of the rays too. The walk through the stack differs: it starts at the substrate and carries two
// rows of the matrix (matrix_rows.h).
//
// Fallback: an angle whose growing waves may overflow, whose wavevector or whose matrix of the waves down is
// mere rounding error, or whose result is not finite is recomputed by the plain algorithm.
#pragma once

#include "engine/algorithms/amplitudes.tpp"
#include "engine/lanes/limits.h"
#include "engine/lanes/matrix_rows.h"

namespace tolvik::engine::lanes {

template <class V>
class MatrixWalk : private MatrixRows<V> {
  using Base = MatrixRows<V>;
  using typename Base::L, typename Base::Modes, typename Base::Z;

 public:
  static void Run(const MatrixStack& stack, const double* s, std::int32_t count, double* first,
                  double* second) {
    for (std::int32_t begin = 0; begin < count; begin += L::size) {
      const int used = count - begin < L::size ? count - begin : L::size;
      MatrixWalk walk(stack, Angles(s + begin, used));
      walk.Walk();
      walk.StoreRay(stack.polarisation, used, first + begin);
      if (second != nullptr) walk.StoreRay(stack.polarisation + 4, used, second + begin);
    }
  }

 private:
  using Base::angles_, Base::growth_, Base::rows_, Base::stack_;
  using Base::Cross, Base::PassFirstOrder, Base::Propagate;

  // Number of entries whose waves are kept: three are needed, and a power of two makes the index cheap.
  static constexpr int kKept = 4;

  MatrixWalk(const MatrixStack& stack, L s) : Base(stack, s), smallest2_(1.0) {}

  // Places past the last angle repeat it: that costs little and does no harm.
  static L Angles(const double* s, int used) {
    alignas(64) double values[L::size];
    for (int i = 0; i < L::size; ++i) values[i] = s[i < used ? i : used - 1];
    return L::Load(values);
  }

  void Walk() {
    const std::int32_t last = stack_.entries - 1;
    CalcModes(0);
    for (std::int32_t j = 0; j < last; ++j) {
      if (j % 2 == 0) CalcModesOfTwo(j + 1, j + 2);
      Pass(j);
    }
  }

  // Through entry j, of which the substrate has no thickness, and the interface above it.
  TOLVIK_INLINE void Pass(std::int32_t j) {
    const MatrixEntry& entry = stack_.entry[j];
    const MatrixEntry& above = stack_.entry[j + 1];
    const Modes& lower = ModesOf(j);
    Modes& upper = ModesOf(j + 1);
    const bool scalar = Base::IsScalar(entry) && Base::IsScalar(above);
    if (stack_.first_order && !scalar) return PassFirstOrder(entry, lower, upper);
    upper.Invert(above);
    if (j > 0) Propagate(entry, lower);
    Cross(entry, above, lower, upper);
  }

  Modes& ModesOf(std::int32_t j) { return modes_[static_cast<std::uint32_t>(j) % kKept]; }

  void CalcModes(std::int32_t j) {
    ModesOf(j).Calculate(stack_, stack_.entry[j], angles_);
    GuardModes(j);
  }

  void CalcModesOfTwo(std::int32_t i, std::int32_t j) {
    if (j >= stack_.entries) return CalcModes(i);
    Modes::CalculateTwo(stack_, {stack_.entry[i], ModesOf(i)}, {stack_.entry[j], ModesOf(j)}, angles_);
    GuardModes(i);
    GuardModes(j);
  }

  void GuardModes(std::int32_t j) {
    const MatrixEntry& entry = stack_.entry[j];
    if (!entry.guarded) return;
    for (int r = 0; r < (Base::IsTensor(entry) ? 4 : 1); ++r) {
      smallest2_ = Min(smallest2_, norm(ModesOf(j).kappa[r]));
    }
  }

  void StoreRay(const double* ray, int used, double* out) const {
    const L intensity = CalcRayIntensity<L>(rows_, stack_.transmission, ray);
    const Z product = rows_(0, 0) * rows_(1, 1);
    const Z delta = NegMulAdd(rows_(0, 1), rows_(1, 0), product);
    const Mask<V> sure = smallest2_ > L(kSmallestKappa2) && growth_ <= L(stack_.largest_growth) &&
                         norm(delta) > L(kSmallestDelta2) * norm(product);
    alignas(64) double values[L::size];
    Select(sure, intensity, L(std::numeric_limits<double>::quiet_NaN())).Store(values);
    for (int i = 0; i < used; ++i) out[i] = values[i];
  }

  L smallest2_;
  Modes modes_[kKept];
};

}  // namespace tolvik::engine::lanes
