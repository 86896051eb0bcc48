// SPDX-License-Identifier: GPL-2.0-or-later
// The server of the consistency page: one port, one page, one connection at a time.
#pragma once

#include "server/connection.h"
#include "tolvik/state.h"

namespace tolvik {

/// The state that the server thread works on. Null until the thread has started; it then stays set, even
/// after the server has ended.
extern CState* currentwebserver;

/// Listens on a TCP port of all local addresses and serves connections one after the other until one cannot
/// be read. A failure of the set-up is reported through perror and ends the loop.
void RunAcceptLoop(std::uint16_t port, ServedState& served);

}  // namespace tolvik
