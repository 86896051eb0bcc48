// SPDX-License-Identifier: GPL-2.0-or-later
#include "server/mathml.h"

namespace tolvik {

void WriteTensor(std::ostream& out, const std::complex<double> (&tensor)[9]) {
  out << "     <math xmlns=\"http://www.w3.org/1998/Math/MathML\">\n"
         "     &epsilon; = <mfenced>\n<mtable>\n";
  for (int row = 0; row < 3; ++row) {
    out << "     <mtr>\n";
    for (int column = 0; column < 3; ++column) {
      const std::complex<double>& element = tensor[3 * row + column];
      out << "          <mtd> <mn>" << element.real() << "</mn><mo>+</mo><mn>" << element.imag()
          << "</mn><mo/><mi>i</mi> </mtd>\n";
    }
    out << "     </mtr>\n";
  }
  out << "</mtable> \n     </mfenced>\n     </math>\n";
}

}  // namespace tolvik
