// SPDX-License-Identifier: GPL-2.0-or-later
#include "server/web_server.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <cmath>
#include <string>
#include <thread>
#include <vector>

#include "fit/multi_fit.h"
#include "optics/energy.h"
#include "support/http_client.h"

namespace tolvik {
namespace {

using testing::ConnectTo;
using testing::Request;

constexpr char kGet[] = "GET / HTTP/1.0\r\n\r\n";

// A port without a listener at the moment.
std::uint16_t FreePort() {
  const int probe = socket(AF_INET, SOCK_STREAM, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t length = sizeof address;
  EXPECT_EQ(bind(probe, reinterpret_cast<const sockaddr*>(&address), length), 0);
  EXPECT_EQ(getsockname(probe, reinterpret_cast<sockaddr*>(&address), &length), 0);
  close(probe);
  return ntohs(address.sin_port);
}

CState Film() {
  CState state;
  state.layers.Append(CLayer());
  state.layers[0].layer_delta = 7.6e-6;
  state.layers[0].layer_beta = 1.7e-7;
  state.layers[1].layer_delta = 2e-5;
  state.layers[1].layer_d = 100;
  state.lambda = LambdaFromEnergy(8000);
  state.disablescript = 1;
  return state;
}

// Closes a connection with a reset instead of an end.
void Reset(int client) {
  const linger now{1, 0};
  setsockopt(client, SOL_SOCKET, SO_LINGER, &now, sizeof now);
  close(client);
}

class WebServer : public ::testing::Test {
 protected:
  WebServer() : port_(FreePort()), served_(Film()) {
    ::testing::internal::CaptureStdout();
    ::testing::internal::CaptureStderr();
    server_ = std::thread([this] {
      RunAcceptLoop(port_, served_);
      ended_ = true;
    });
    Request(port_, kGet);
  }
  ~WebServer() override {
    if (server_.joinable()) Stop();
  }
  void Stop() {
    // Either the loop still listens and a reset ends it, or it has ended and does not answer.
    for (int attempt = 0; attempt < 1000 && !ended_; ++attempt) {
      const int client = socket(AF_INET, SOCK_STREAM, 0);
      sockaddr_in address{};
      address.sin_family = AF_INET;
      address.sin_port = htons(port_);
      address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
      if (connect(client, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0) {
        Reset(client);
      } else {
        close(client);
      }
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    server_.join();
    out_ = ::testing::internal::GetCapturedStdout();
    err_ = ::testing::internal::GetCapturedStderr();
  }

  std::uint16_t port_;
  ServedState served_;
  std::atomic<bool> ended_ = false;
  std::thread server_;
  std::string out_, err_;
};

TEST_F(WebServer, SaysWhereItListensAndWhoComes) {
  Stop();
  EXPECT_TRUE(out_.starts_with(
      "Listening on Port " + std::to_string(port_) +
      ". You can access the program via the URL http://localhost:" + std::to_string(port_) + "\n"));
  EXPECT_NE(out_.find("Connection from 127.0.0.1\n"), std::string::npos);
}

TEST_F(WebServer, EndsWhenAConnectionCannotBeRead) {
  Stop();
  EXPECT_TRUE(err_.starts_with("recv() failed"));
}

TEST_F(WebServer, ServesOneAfterTheOther) {
  for (int i = 0; i < 20; ++i) EXPECT_TRUE(Request(port_, kGet).ends_with("</html>\n"));
}

TEST_F(WebServer, SurvivesClientsThatSayNothingOrTooMuch) {
  close(ConnectTo(port_));
  Request(port_, std::string(65535, 'a'));
  Request(port_, std::string(1 << 20, 'b'));
  EXPECT_TRUE(Request(port_, kGet).ends_with("</html>\n"));
}

TEST_F(WebServer, AModelThatIsHandedOverShowsWhole) {
  std::atomic<bool> stop = false;
  std::thread front_end([&] {
    CState many = Film();
    while (many.layers.size < 40) many.layers.Append(CLayer());
    while (!stop) {
      served_.Replace(many);
      served_.Replace(Film());
    }
  });
  for (int i = 0; i < 50; ++i) {
    const std::string page = Request(port_, kGet);
    std::size_t rows = 0;
    for (std::size_t at = 0; (at = page.find("<tr height", at)) != std::string::npos; ++at) ++rows;
    EXPECT_TRUE(rows == 3 || rows == 40) << rows;
  }
  stop = true;
  front_end.join();
}

TEST_F(WebServer, AndAFitRunSideBySide) {
  CState state = Film();
  CDataset data;
  for (int i = 1; i <= 20; ++i) {
    data.dataset_qz.Append(0.01 * i);
    data.dataset_R0.Append(std::exp(-0.5 * i));
  }
  data.datasetenergy = 8000;
  data.datasetactive = 1;
  state.datasets.Append(data);
  CFitVariable thickness;
  thickness.fit_additional_id = 1;
  thickness.fit_value = 100;
  thickness.fit_delta = 5;
  state.fitvariables.Append(thickness);
  CMultiFit fit(state);
  fit.RestartFit();
  std::atomic<bool> stop = false;
  std::thread pages([&] {
    while (!stop) Request(port_, "GET /?qz=0.2&energy=7900 HTTP/1.0\r\n\r\n");
  });
  for (int i = 0; i < 50; ++i) {
    fit.Iterate();
    served_.Replace(fit.state);
  }
  stop = true;
  pages.join();
  EXPECT_TRUE(std::isfinite(fit.lasterror));
}

TEST(WebServerSetUp, APortInUseEndsTheLoopWithAReport) {
  const int holder = socket(AF_INET, SOCK_STREAM, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_ANY);
  socklen_t length = sizeof address;
  ASSERT_EQ(bind(holder, reinterpret_cast<const sockaddr*>(&address), length), 0);
  ASSERT_EQ(listen(holder, 1), 0);
  ASSERT_EQ(getsockname(holder, reinterpret_cast<sockaddr*>(&address), &length), 0);
  ServedState served(Film());
  ::testing::internal::CaptureStderr();
  RunAcceptLoop(ntohs(address.sin_port), served);
  EXPECT_TRUE(::testing::internal::GetCapturedStderr().starts_with("bind() failed"));
  close(holder);
}

}  // namespace
}  // namespace tolvik
