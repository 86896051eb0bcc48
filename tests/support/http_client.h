// SPDX-License-Identifier: GPL-2.0-or-later
// A client of the page's server.
#pragma once

#include <cstdint>
#include <string>

namespace tolvik::testing {

/// Connects to a port of the local machine, waiting up to ten seconds for a server to listen. Returns the
/// socket, or throws std::runtime_error.
int ConnectTo(std::uint16_t port);

/// Sends a text and reads the answer to its end.
std::string Request(std::uint16_t port, const std::string& text);

}  // namespace tolvik::testing
