// SPDX-License-Identifier: GPL-2.0-or-later
// Common functions of the commands that run for hours.
#pragma once

#include <string>

namespace tolvik {

/// To be called before a long command: a result file beyond the file size limit of the process becomes a
/// write that fails, like one on a full disk, instead of the end of the process. Flushes standard output, so
/// that a reader has the lines printed so far.
void BeginLongRun();

/// Replaces a result file by text, as a whole or not at all; a pipe or a device is written in place. A file
/// that cannot be written keeps its content: the command continues, and the next result may find room again.
void ReplaceResultFile(const std::string& path, const std::string& text);

}  // namespace tolvik
