// SPDX-License-Identifier: GPL-2.0-or-later
// The messages of the return codes.
#pragma once

#include <cstdint>

#include "tolvik/return_code.h"

namespace tolvik {

/// The message of a code, without a line end; empty for success and for a code without a message.
const char* StatusMessage(std::int32_t code);

}  // namespace tolvik
