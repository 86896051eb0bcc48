// SPDX-License-Identifier: GPL-2.0-or-later
// The command that converts the tables of one material to tensors.
#pragma once

namespace tolvik {

/// -convert: writes NAME.e, the dielectric tensor at each energy of NAME.db, with the magneto-optical
/// constants of NAME.m for a magnetisation at gamma = phi = 90 degrees. Reports in messages only, without a
/// return value.
void ConvertOpticalFile(const char* name);

}  // namespace tolvik
