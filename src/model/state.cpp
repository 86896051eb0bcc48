// SPDX-License-Identifier: GPL-2.0-or-later
#include "tolvik/state.h"

// The layout of the records is the contract with a front end: offsets and sizes are pinned here.
