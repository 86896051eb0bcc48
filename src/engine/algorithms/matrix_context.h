// SPDX-License-Identifier: GPL-2.0-or-later
// The input of both matrix algorithms.
#pragma once

#include "engine/profile/layer.h"

namespace tolvik::engine {

/// The depth profile, and whether the transmitted intensity is requested.
template <class T>
struct MatrixContext {
  const Profile<T>& profile;
  bool transmission;
};

}  // namespace tolvik::engine
