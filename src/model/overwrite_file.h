// SPDX-License-Identifier: GPL-2.0-or-later
// Replaces the content of a file that cannot be replaced by a rename.
#pragma once

#include <cstddef>
#include <string>

namespace tolvik {

/// Writes all of the text at the position of the descriptor. False when the kernel writes less.
bool WriteAll(int fd, const char* text, std::size_t count);

/// A nameless file in memory to read and write; -1 when the kernel gives none.
int OpenInMemory();

/// Gives the regular file of that name the content of another one, of which `from` is a readable descriptor;
/// a missing file is made. For a file in a folder that permits no new ones, a mount point, or a file of
/// another user in a folder like /tmp.
///
/// False when the file cannot be opened or the disk is full. The old content then stays: the space is
/// reserved before any of it is overwritten, and it is written back should the disk refuse all the same. Only
/// a kill in the middle leaves a mixture of both.
bool OverwriteFile(int from, const std::string& file_name);

}  // namespace tolvik
