// SPDX-License-Identifier: GPL-2.0-or-later
// Replacing the content of a file that no other file can take the place of.
#pragma once

#include <cstddef>
#include <string>

namespace tolvik {

/// Writes all of the text where the descriptor stands. False when the kernel takes less.
bool WriteAll(int fd, const char* text, std::size_t count);

/// A nameless file in memory to read and write; -1 when there is none to be had.
int OpenInMemory();

/// Gives the regular file of that name the content of another one, of which `from` is a readable descriptor;
/// the file is made where there is none. For a file in a folder that takes no new ones, a mount point, or a
/// file of someone else in a folder like /tmp.
///
/// False when the file cannot be opened or the disk is full. The old content is left then: the space is
/// reserved before any of it is touched, and it is written back should the disk refuse all the same. Only a
/// kill in the middle leaves a half of each.
bool OverwriteFile(int from, const std::string& file_name);

}  // namespace tolvik
