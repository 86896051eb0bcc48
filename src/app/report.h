// SPDX-License-Identifier: GPL-2.0-or-later
// Reports a failed calculation.
#pragma once

#include <cstdint>

#include "model/status.h"

namespace tolvik {

/// Prints "#error" as a line of standard output, so that a reader of the results notices the failure, and the
/// message of the code to standard error. A code without a message prints none.
void ReportFailure(std::int32_t code);

}  // namespace tolvik
