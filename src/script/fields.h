// SPDX-License-Identifier: GPL-2.0-or-later
// The numbers of a state and a curve that a script uses as arrays.
#pragma once

#include <cstdint>
#include <span>

#include "script/host.h"

namespace tolvik {

/// The list whose length bounds an array.
enum class ArrayLength { kLayers, kSolution, kGaussFunctions, kParameters, kElements };

/// One array of a script: a member of all records of a list.
struct ScriptField {
  const char* name;    ///< of the global
  std::int32_t code;   ///< the second argument of array.new
  ArrayLength length;  ///< the list
  /// The number at an index in the live records of host; null where there is none.
  double* (*find)(CScriptPointer& host, std::int32_t index);
  bool of_tensor = false;  ///< an element of the dielectric tensor of a layer
};

/// All fields in the order of their codes, which is also the order of their definition for scripts.
std::span<const ScriptField> ScriptFields();

/// The field of a code; null when the code has none.
const ScriptField* FindScriptField(std::int32_t code);

/// Highest valid index of an array for this state; -1 for the solution and for an empty list.
std::int32_t HighestIndex(ArrayLength length, const CState& state);

}  // namespace tolvik
