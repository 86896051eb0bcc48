// SPDX-License-Identifier: GPL-2.0-or-later
#include "app/report.h"

#include <cstdio>

namespace tolvik {

void ReportFailure(std::int32_t code) {
  std::puts("#error");
  std::fputs(StatusMessage(code), stderr);
}

}  // namespace tolvik
