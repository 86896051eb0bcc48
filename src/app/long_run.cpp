// SPDX-License-Identifier: GPL-2.0-or-later
#include "app/long_run.h"

#include <csignal>
#include <cstdio>

#include "model/safe_file.h"

namespace tolvik {

void BeginLongRun() {
  std::signal(SIGXFSZ, SIG_IGN);
  std::fflush(stdout);
}

void ReplaceResultFile(const std::string& path, const std::string& text) {
  SafeFile file(path);
  if (!file.IsOpen()) return;
  file.Stream().write(text.data(), static_cast<std::streamsize>(text.size()));
  file.Commit();
}

}  // namespace tolvik
