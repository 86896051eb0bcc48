// SPDX-License-Identifier: GPL-2.0-or-later
#include "server/connection.h"

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <fstream>
#include <string>
#include <thread>

#include "optics/energy.h"
#include "support/sanitized.h"

namespace tolvik {
namespace {

constexpr char kHeader[] =
    "HTTP/1.0 200 OK\nContent-type: text/xml; charset=UTF-8\nCache-Control:no-cache\n\n";

CState TwoLayers() {
  CState state;
  state.lambda = LambdaFromEnergy(800);
  state.disablescript = 1;
  return state;
}

// A client and a server end of one connection.
struct Line {
  Line() {
    int ends[2];
    EXPECT_EQ(socketpair(AF_UNIX, SOCK_STREAM, 0, ends), 0);
    client = ends[0];
    server = ends[1];
  }
  ~Line() {
    if (client >= 0) close(client);
  }
  void Send(const std::string& text) const {
    EXPECT_EQ(send(client, text.data(), text.size(), MSG_NOSIGNAL), static_cast<ssize_t>(text.size()));
  }
  std::string ReadAll() const {
    std::string all;
    char buffer[4096];
    for (ssize_t count; (count = recv(client, buffer, sizeof buffer, 0)) > 0;) {
      all.append(buffer, static_cast<std::size_t>(count));
    }
    return all;
  }
  int client = -1;
  int server = -1;
};

std::string Ask(ServedState& served, const std::string& request) {
  const Line line;
  line.Send(request);
  ::testing::internal::CaptureStdout();
  EXPECT_EQ(ServeConnection(line.server, served), Served::done);
  ::testing::internal::GetCapturedStdout();
  return line.ReadAll();
}

bool Shows(const std::string& page, const std::string& name, const std::string& value) {
  return page.find("name=\"" + name + "\" type=\"text\" size=\"30\" maxlength=\"30\" value=\"" + value +
                   "\"") != std::string::npos;
}

TEST(Connection, AnswersWithTheHeaderAndAWholePage) {
  ServedState served(TwoLayers());
  const std::string answer = Ask(served, "GET / HTTP/1.0\r\n\r\n");
  ASSERT_EQ(sizeof kHeader - 1, 78u);
  EXPECT_EQ(answer.substr(0, 78), kHeader);
  EXPECT_TRUE(answer.ends_with("</table>\n</body>\n</html>\n"));
}

TEST(Connection, EnergyAndToleranceStayAndQzDoesNot) {
  ServedState served(TwoLayers());
  const std::string first = Ask(served, "GET /?qz=0.2&energy=700&epsilon=0.001 HTTP/1.0\r\n\r\n");
  EXPECT_TRUE(Shows(first, "qz", "0.2"));
  EXPECT_TRUE(Shows(first, "energy", "700"));
  EXPECT_TRUE(Shows(first, "epsilon", "0.001"));
  const std::string second = Ask(served, "GET / HTTP/1.0\r\n\r\n");
  EXPECT_TRUE(Shows(second, "qz", "0.1"));
  EXPECT_TRUE(Shows(second, "energy", "700"));
  EXPECT_TRUE(Shows(second, "epsilon", "0.001"));
}

TEST(Connection, OtherRequestsGetThePageOfTheDefaults) {
  ServedState served(TwoLayers());
  EXPECT_TRUE(Shows(Ask(served, "POST /?qz=0.3 HTTP/1.0\r\n\r\n"), "qz", "0.1"));
  EXPECT_TRUE(Shows(Ask(served, "GET /qz=0.2 HTTP/1.0\r\n\r\n"), "qz", "0.1"));
  EXPECT_TRUE(Shows(Ask(served, std::string("\0\0\xff", 3)), "qz", "0.1"));
}

TEST(Connection, PrintsTheRequest) {
  ServedState served(TwoLayers());
  const Line line;
  line.Send("GET / HTTP/1.0\r\n\r\n");
  ::testing::internal::CaptureStdout();
  ServeConnection(line.server, served);
  EXPECT_EQ(::testing::internal::GetCapturedStdout(),
            "Server: \n-------------------\nGET / HTTP/1.0\r\n\r\n-------------------\n");
}

TEST(Connection, AClientThatIsGoneDoesNotEndTheProgram) {
  ServedState served(TwoLayers());
  Line line;
  close(line.client);  // nothing sent, and the answer has no reader: would be SIGPIPE
  line.client = -1;
  ::testing::internal::CaptureStdout();
  EXPECT_EQ(ServeConnection(line.server, served), Served::done);
  ::testing::internal::GetCapturedStdout();
}

TEST(Connection, LongRequestsAreReadOnce) {
  ServedState served(TwoLayers());
  EXPECT_TRUE(Shows(Ask(served, "GET /?qz=0.3&" + std::string(65535 - 13, 'x')), "qz", "0.3"));

  const Line line;
  std::thread sender([&] {
    const std::string megabyte = "GET /?qz=0.4&" + std::string(1 << 20, 'y');
    send(line.client, megabyte.data(), megabyte.size(), MSG_NOSIGNAL);
  });
  ::testing::internal::CaptureStdout();
  EXPECT_EQ(ServeConnection(line.server, served), Served::done);
  ::testing::internal::GetCapturedStdout();
  sender.join();
}

TEST(Connection, FailsWhenNothingCanBeRead) {
  ServedState served(TwoLayers());
  ::testing::internal::CaptureStderr();
  EXPECT_EQ(ServeConnection(-1, served), Served::failed);
  EXPECT_EQ(::testing::internal::GetCapturedStderr().rfind("recv() failed", 0), 0u);
}

TEST(ServedState, ANewModelWinsOverAPageInWork) {
  ServedState served(TwoLayers());
  std::uint64_t generation = 0;
  CState page = served.Copy(generation);
  page.lambda = 1;
  CState fresh = TwoLayers();
  fresh.lambda = 2;
  served.Replace(fresh);
  served.Keep(std::move(page), generation);
  EXPECT_EQ(served.Copy(generation).lambda, 2);
}

TEST(ServedState, APageKeepsWhatItChanged) {
  ServedState served(TwoLayers());
  std::uint64_t generation = 0;
  CState page = served.Copy(generation);
  page.lambda = 1;
  served.Keep(std::move(page), generation);
  EXPECT_EQ(served.Copy(generation).lambda, 1);
}

long ResidentPages() {
  long total = 0, resident = 0;
  std::ifstream("/proc/self/statm") >> total >> resident;
  return resident;
}

TEST(Connection, MemoryStaysFlat) {
  // The sanitizers keep freed blocks, so resident memory proves nothing there; leaks are reported at the end.
  const int requests = testing::kSanitized ? 100 : 10000;
  const long allowed_pages = testing::kSanitized ? 1 << 20 : 256;  // 256 pages are 1 MB
  ServedState served(TwoLayers());
  for (int i = 0; i < 100; ++i) Ask(served, "GET /?qz=0.2 HTTP/1.0\r\n\r\n");
  const long before = ResidentPages();
  for (int i = 0; i < requests; ++i) Ask(served, "GET /?qz=0.2&energy=700 HTTP/1.0\r\n\r\n");
  EXPECT_LT(ResidentPages() - before, allowed_pages);
}

}  // namespace
}  // namespace tolvik
