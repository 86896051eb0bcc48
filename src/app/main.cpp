// SPDX-License-Identifier: GPL-2.0-or-later
#include "app/driver.h"

int main(int argc, char** argv) {
  return tolvik::RunProgram(argc, argv);
}
