// SPDX-License-Identifier: GPL-2.0-or-later
#include "engine/lanes/kernels.h"

#include <atomic>
#include <cstdlib>
#include <cstring>

namespace tolvik::engine::lanes {

namespace {

const Kernels* AddressOf(LaneSet set) {
  switch (set) {
#if defined(__x86_64__)
    case LaneSet::kSse:
      return &kSseKernels;
    case LaneSet::kAvx2:
      return &kAvx2Kernels;
    case LaneSet::kAvx512:
      return &kAvx512Kernels;
#elif defined(__aarch64__)
    case LaneSet::kNeon:
      return &kNeonKernels;
#endif
    default:
      return nullptr;
  }
}

LaneSet SetOfEnvironment() {
  const char* wish = std::getenv("TOLVIK_LANES");
  LaneSet widest = LaneSet::kPlain;
  for (const LaneSet set : kAllLaneSets) {
    if (wish != nullptr && std::strcmp(wish, NameOf(set)) == 0) return set;
    if (IsSupported(set)) widest = set;
  }
  return widest;
}

std::atomic<const Kernels*>& Choice() {
  static std::atomic<const Kernels*> choice{KernelsOf(SetOfEnvironment())};
  return choice;
}

}  // namespace

const char* NameOf(LaneSet set) {
  switch (set) {
    case LaneSet::kSse:
      return "sse";
    case LaneSet::kAvx2:
      return "avx2";
    case LaneSet::kAvx512:
      return "avx512";
    case LaneSet::kNeon:
      return "neon";
    default:
      return "plain";
  }
}

bool IsSupported(LaneSet set) {
  switch (set) {
    case LaneSet::kPlain:
      return true;
#if defined(__x86_64__)
    case LaneSet::kSse:
      return __builtin_cpu_supports("sse4.2") && __builtin_cpu_supports("popcnt");
    case LaneSet::kAvx2:
      return __builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma") &&
             __builtin_cpu_supports("bmi2");
    case LaneSet::kAvx512:
      return IsSupported(LaneSet::kAvx2) && __builtin_cpu_supports("avx512f") &&
             __builtin_cpu_supports("avx512cd") && __builtin_cpu_supports("avx512bw") &&
             __builtin_cpu_supports("avx512dq") && __builtin_cpu_supports("avx512vl");
#elif defined(__aarch64__)
    case LaneSet::kNeon:  // every processor of the architecture has it
      return true;
#endif
    default:
      return false;
  }
}

const Kernels* KernelsOf(LaneSet set) {
  return IsSupported(set) ? AddressOf(set) : nullptr;
}

const Kernels* ChosenKernels() {
  return Choice().load(std::memory_order_relaxed);
}

void ChooseLanes(LaneSet set) {
  Choice().store(KernelsOf(set), std::memory_order_relaxed);
}

}  // namespace tolvik::engine::lanes
