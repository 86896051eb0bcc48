// SPDX-License-Identifier: GPL-2.0-or-later
#include "server/connection.h"

#include <sys/socket.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <exception>
#include <string>
#include <string_view>
#include <utility>

#include "optics/energy.h"
#include "server/consistency_page.h"
#include "server/query.h"

namespace tolvik {
namespace {

constexpr std::size_t kBufferSize = 65536;
constexpr char kHeader[] =
    "HTTP/1.0 200 OK\nContent-type: text/xml; charset=UTF-8\nCache-Control:no-cache\n\n";

// The client may be gone; that must not end the program that hosts the server.
void Send(int client, std::string_view text) {
  static_cast<void>(send(client, text.data(), text.size(), MSG_NOSIGNAL));
}

// The page of a request; changes of the state by the request and the page are kept. A page that does not fit
// into memory is empty.
std::string AnswerRequest(std::string_view request, ServedState& served) {
  try {
    std::uint64_t generation = 0;
    CState state = served.Copy(generation);
    PageQuery query;
    query.energy = EnergyFromLambda(state.lambda);
    query.epsilon = state.epsilon;
    ReadQuery(request, query);
    state.lambda = LambdaFromEnergy(query.energy);
    state.epsilon = query.epsilon;
    std::string page;
    BuildConsistencyPage(state, page, query.qz);
    served.Keep(std::move(state), generation);
    return page;
  } catch (const std::exception&) {
    return {};
  }
}

}  // namespace

void ServedState::Replace(const CState& state) {
  CState copy = state;
  const std::lock_guard lock(mutex_);
  state_ = std::move(copy);
  ++generation_;
}

CState ServedState::Copy(std::uint64_t& generation) {
  const std::lock_guard lock(mutex_);
  generation = generation_;
  return state_;
}

void ServedState::Keep(CState&& changed, std::uint64_t generation) {
  const std::lock_guard lock(mutex_);
  if (generation == generation_) state_ = std::move(changed);
}

Served ServeConnection(int client, ServedState& served) {
  char buffer[kBufferSize];
  const ssize_t count = recv(client, buffer, kBufferSize - 1, 0);
  if (count < 0) {
    std::perror("recv() failed");
    if (client >= 0) close(client);
    return Served::failed;
  }
  buffer[count] = '\0';
  std::printf("Server: \n-------------------\n%s", buffer);
  std::puts("-------------------");

  // A request ends at its first zero byte, as a C string does.
  const std::string page = AnswerRequest(std::string_view(buffer), served);
  Send(client, kHeader);
  Send(client, std::string_view(page).substr(0, page.find('\0')));
  close(client);
  return Served::done;
}

}  // namespace tolvik
