// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include "tolvik/state_file.h"
