// SPDX-License-Identifier: GPL-2.0-or-later
#include "app/convert_command.h"

namespace tolvik {

void ConvertOpticalFile(const char*) {}

}  // namespace tolvik
