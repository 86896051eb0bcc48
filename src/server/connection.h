// SPDX-License-Identifier: GPL-2.0-or-later
// One request and its answer.
#pragma once

#include <cstdint>
#include <mutex>

#include "tolvik/state.h"

namespace tolvik {

/// The state of the server, with a lock that protects a page from a new model that replaces the state. A page
/// is built on a copy, so a slow one never holds the lock.
class ServedState {
 public:
  explicit ServedState(const CState& state) : state_(state) {}

  /// Replaces the whole model; a page in progress ends with its old model.
  void Replace(const CState& state);
  /// Begins a page: a private copy of the state.
  CState Copy(std::uint64_t& generation);
  /// Ends a page: its changes stay for the next request, unless a new model came meanwhile.
  void Keep(CState&& changed, std::uint64_t generation);

  CState* Address() { return &state_; }

 private:
  std::mutex mutex_;
  CState state_;
  std::uint64_t generation_ = 0;
};

/// The outcome of a connection for the accept loop.
enum class Served { done, failed };

/// Reads one request with one recv, answers it with the consistency page and closes the socket. Energy and
/// epsilon of the request stay in the state, qz does not. Fails when nothing can be read. Never raises
/// SIGPIPE.
Served ServeConnection(int client, ServedState& served);

}  // namespace tolvik
