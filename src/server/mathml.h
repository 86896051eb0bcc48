// SPDX-License-Identifier: GPL-2.0-or-later
// Mathematics on the page.
#pragma once

#include <complex>
#include <ostream>

namespace tolvik {

/// Writes a complex 3×3 tensor, row major, as a MathML equation with the number format of the stream.
void WriteTensor(std::ostream& out, const std::complex<double> (&tensor)[9]);

}  // namespace tolvik
