// SPDX-License-Identifier: GPL-2.0-or-later
#include "support/http_client.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>
#include <stdexcept>
#include <thread>

namespace tolvik::testing {

int ConnectTo(std::uint16_t port) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(port);
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  for (int attempt = 0; attempt < 1000; ++attempt) {
    const int client = socket(AF_INET, SOCK_STREAM, 0);
    if (client < 0) break;
    if (connect(client, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0) return client;
    close(client);
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  throw std::runtime_error("no server on port " + std::to_string(port));
}

std::string Request(std::uint16_t port, const std::string& text) {
  const int client = ConnectTo(port);
  std::size_t sent = 0;
  while (sent < text.size()) {
    const ssize_t count = send(client, text.data() + sent, text.size() - sent, MSG_NOSIGNAL);
    if (count <= 0) break;
    sent += static_cast<std::size_t>(count);
  }
  std::string answer;
  char buffer[65536];
  for (ssize_t count; (count = recv(client, buffer, sizeof buffer, 0)) > 0;) {
    answer.append(buffer, static_cast<std::size_t>(count));
  }
  close(client);
  return answer;
}

}  // namespace tolvik::testing
