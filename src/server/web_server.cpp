// SPDX-License-Identifier: GPL-2.0-or-later
#include "server/web_server.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <pthread.h>
#include <signal.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdio>
#include <future>
#include <memory>
#include <mutex>

#include "optics/energy.h"
#include "tolvik/tolvik.h"

namespace tolvik {

CState* currentwebserver = nullptr;

namespace {

constexpr std::uint16_t kPort = 8080;
constexpr int kQueue = 3;

std::mutex start_mutex;  // two starts at once must not make two threads
ServedState* served_state = nullptr;

// A listening socket, or -1 after a report of the failure.
int Listen(std::uint16_t port) {
  const int listener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  if (listener < 0) {
    std::perror("socket() failed");
    return -1;
  }
  const int reuse = 1;
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_ANY);
  address.sin_port = htons(port);
  const char* failure = nullptr;
  if (setsockopt(listener, SOL_SOCKET, SO_REUSEADDR, &reuse, sizeof reuse) != 0) {
    failure = "setsockopt";
  } else if (bind(listener, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
    failure = "bind() failed";
  } else if (listen(listener, kQueue) != 0) {
    failure = "listen () failed";
  }
  if (failure == nullptr) return listener;
  std::perror(failure);
  close(listener);
  return -1;
}

struct ThreadStart {
  CState state;
  std::promise<void> started;
};

// The served state lives to the end of the process: a front end may pass a new model at any time.
void* ServerThread(void* argument) {
  // The host handles signals: none may interrupt a read of the server and so end it.
  sigset_t all;
  sigfillset(&all);
  pthread_sigmask(SIG_BLOCK, &all, nullptr);
  const std::unique_ptr<ThreadStart> start(static_cast<ThreadStart*>(argument));
  try {
    served_state = new ServedState(start->state);
    currentwebserver = served_state->Address();
  } catch (const std::exception&) {
    start->started.set_value();
    return nullptr;
  }
  start->started.set_value();
  RunAcceptLoop(kPort, *served_state);
  return nullptr;
}

void StartThread(const CState& state) {
  auto start = std::make_unique<ThreadStart>();
  start->state = state;
  std::future<void> started = start->started.get_future();
  pthread_t thread;
  if (pthread_create(&thread, nullptr, ServerThread, start.get()) != 0) return;
  pthread_detach(thread);
  start.release();  // the thread owns it now
  started.wait();
}

void PrintSummary(const CState& state) {
  std::printf("energy = %lf\n", EnergyFromLambda(state.lambda));
  std::printf("epsilon = %lf\n", state.epsilon);
  std::printf("segmentation model = %i\n", state.segmentationmodel);
  std::printf("layer segmentation mode = %i\n", state.layersegmentationmode);
  std::printf("magnetization mode = %i\n", state.magnetizationmode);
  std::printf("number of code lines = %i\n", state.scriptlines.size);
  std::printf("number of default code lines = %i\n", state.defaultscriptlines.size);
  for (std::int32_t i = 0; i < state.scriptlines.size; ++i) {
    std::printf("code %i = %s\n", i, state.scriptlines[i].CStr());
  }
  for (std::int32_t i = 0; i < state.defaultscriptlines.size; ++i) {
    std::printf("defaultcode %i = %s\n", i, state.defaultscriptlines[i].CStr());
  }
  for (std::int32_t i = 0; i < state.layers.size; ++i) {
    std::printf("layer %i = d=%lf b=%lf\n", i, state.layers[i].layer_delta, state.layers[i].layer_beta);
  }
}

}  // namespace

void RunAcceptLoop(std::uint16_t port, ServedState& served) {
  const int listener = Listen(port);
  if (listener < 0) return;
  std::printf("Listening on Port %i. You can access the program via the URL http://localhost:%i\n", port,
              port);
  std::fflush(stdout);
  Served last = Served::done;
  while (last == Served::done) {
    sockaddr_in peer{};
    socklen_t length = sizeof peer;
    // A failed accept makes the following read fail.
    const int client = accept(listener, reinterpret_cast<sockaddr*>(&peer), &length);
    char text[INET_ADDRSTRLEN] = "";
    inet_ntop(AF_INET, &peer.sin_addr, text, sizeof text);
    std::printf("Connection from %s\n", text);
    last = ServeConnection(client, served);
    std::fflush(stdout);
  }
  if (close(listener) != 0) std::perror("close() failed");
}

}  // namespace tolvik

extern "C" std::int32_t StartWebserver(tolvik::CState* state) {
  using namespace tolvik;
  try {
    PrintSummary(*state);
    const std::lock_guard lock(start_mutex);
    std::puts(currentwebserver != nullptr ? "webserver not null" : "webserver null");
    if (currentwebserver == nullptr) {
      StartThread(*state);
    } else {
      served_state->Replace(*state);
    }
  } catch (const std::exception&) {
    // Out of memory: the server continues with its old model.
  }
  std::fflush(stdout);
  return 0;
}
