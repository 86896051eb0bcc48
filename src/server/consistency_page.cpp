// SPDX-License-Identifier: GPL-2.0-or-later
#include "server/consistency_page.h"

#include <cmath>
#include <complex>
#include <locale>
#include <sstream>
#include <string_view>
#include <utility>

#include "engine/algorithms/modes.h"
#include "engine/algorithms/quartic.h"
#include "engine/curve/grazing.h"
#include "engine/profile/profile.h"
#include "optics/energy.h"
#include "optics/layer_constants.h"
#include "optics/material.h"
#include "optics/tensor.h"
#include "script/host.h"
#include "server/mathml.h"

namespace tolvik {
namespace {

using Complex = std::complex<double>;
using Entry = engine::CLayer<double>;

// A wave that grows along its way: the product of real and imaginary part of its wavevector is negative.
constexpr double kGrowingWave = -1e-08;
constexpr int kDigitsOfTensor = 10;

void WriteHead(std::ostream& out) {
  out << "<!DOCTYPE html PUBLIC \"-//W3C//DTD XHTML 1.0 Strict//EN\" "
         "\"http://www.w3.org/TR/xhtml1/DTD/xhtml1-strict.dtd\">\n"
         "<html xmlns=\"http://www.w3.org/1999/xhtml\">\n"
         "<head>\n<title>Consistency check</title>\n</head>\n<body>\n";
}

void WriteInput(std::ostream& out, std::string_view name, double value) {
  out << "  <tr>\n   <td align=\"right\">" << name << ":</td>\n   <td><input name=\"" << name
      << "\" type=\"text\" size=\"30\" maxlength=\"30\" value=\"" << value << "\"/></td>\n   </tr>\n";
}

void WriteForm(std::ostream& out, const CState& state, double qz) {
  out << "<form action=\"/\" method=\"get\">\n"
         "<table border=\"0\" cellpadding=\"5\" cellspacing=\"0\" bgcolor=\"#E0E0E0\">\n";
  WriteInput(out, "qz", qz);
  WriteInput(out, "epsilon", state.epsilon);
  WriteInput(out, "energy", EnergyFromLambda(state.lambda));
  out << "  <tr>\n   <td align=\"right\">Submit:</td>\n   <td><input type=\"submit\" value=\" Update "
         "\"/></td>"
         "   </tr>\n</table>\n</form>\n";
}

// Takes the optical constants from the tables. False after a message that ends the page early.
bool RefreshConstants(std::ostream& out, CState& state) {
  switch (PrepareLayerConstants(state, TablesToLoad::kMissing)) {
    case LayerConstantsStatus::kReady:
      return true;
    case LayerConstantsStatus::kMissingTables:
      out << "Error: You need .db-files or .e-files for all layers";
      break;
    case LayerConstantsStatus::kMissingMagneticTables:
      out << "Error: You need .m-files or .e files for all layers";
      break;
    case LayerConstantsStatus::kEnergyOutOfRange:
      out << "Error: Check if you choosed the right energy!";
      break;
  }
  out << "<br></body></html>";
  return false;
}

// The four normal wavevectors in units of k0 for c = cos θ: roots of det(wave equation) = 0, a quartic in
// kappa.
void CalcNormalWavevectors(const engine::Tensor<double>& e, double c, Complex (&kappa)[4]) {
  const Complex xx = e[0], xy = e[1], xz = e[2], yx = e[3], yy = e[4], yz = e[5], zx = e[6], zy = e[7],
                zz = e[8];
  const Complex x = xx - c * c, z = zz - c * c, sum = yz + zy;
  const Complex p = xz * yx, q = xy * zx, r = yz * zy, s = xy * yx, t = xz * zx, w = z * x - t;
  engine::SolveModes<double>(zz, c * sum, t + r - zz * x - z * yy, c * (p + q - x * sum),
                             w * yy - z * s + q * yz + p * zy - r * x, kappa);
}

bool HasGrowingWave(const Complex (&kappa)[4]) {
  for (const Complex& k : kappa) {
    if (k.real() * k.imag() < kGrowingWave) return true;
  }
  return false;
}

const char* ClassName(int tensor_class) {
  switch (tensor_class) {
    case engine::kAnisotropic:
      return "ANISOTROPIC";
    case engine::kIsotropic:
      return "ISOTROPIC";
    default:
      return "TETRAGONAL";
  }
}

// Height of a row in the unit of the page; the integer conversion truncates, and a number out of range
// becomes the smallest one.
int RowHeight(double thickness) {
  const double height = 10 * thickness;
  return std::abs(height) < 2147483648.0 ? static_cast<int>(height) : INT32_MIN;
}

void WriteRow(std::ostream& out, const Entry& slice, int index, std::string_view name, double c,
              double tolerance) {
  Complex kappa[4];
  CalcNormalWavevectors(slice.epsilon, c, kappa);
  out << "<tr height=\"" << RowHeight(slice.layer_d) << "\">\n"
      << " <td bgcolor=\"#FFFFFF\">" << index << " </td>\n"
      << " <td bgcolor=\"#E0E0E0\" style=\"border:medium solid black\" >\n";
  if (HasGrowingWave(kappa)) {
    out << "<center><abcd style=\"text-decoration:blink;color:red;\">WARNING!</abcd></center><br/>\n";
  }
  out << " " << name << "<br/>d = " << slice.layer_d << "A\n"
      << "<br/>" << ClassName(engine::ClassifyTensor<double>(tolerance, slice.epsilon)) << "\n"
      << " </td>\n <td bgcolor=\"#FFFFFF\">\n </td>\n";
  out.precision(kDigitsOfTensor);  // stays for the rows below
  out << " <td bgcolor=\"#FFFFFF\">\n";
  WriteTensor(out, slice.epsilon);
  out << " </td>\n <td bgcolor=\"#FFFFFF\">\n </td>\n <td bgcolor=\"#FFFFFF\">\n";
  for (int n = 0; n < 4; ++n) {
    out << "k<sub>z" << n + 1 << "</sub> = " << kappa[n].real() << " + " << kappa[n].imag() << "i<br/>\n";
  }
  out << " </td>\n</tr>\n";
}

// One row per slice, the top of the stack first.
void WriteStack(std::ostream& out, CState& state, double qz) {
  const double k0 = engine::WavevectorFromLambda(state.lambda);
  const double c = std::cos(engine::GrazingAngle(engine::GrazingSine(qz, k0)));
  engine::Profile<double> profile;
  const std::int32_t mode =
      std::exchange(state.mode, Mode::kMaterial);  // the page shows the layers in element mode too
  engine::PrepareProfile<double>(state, profile);
  state.mode = mode;
  const bool sliced = state.layersegmentationmode != LayerSegmentationMode::kRoughInterfaces;
  out << "<br/><br/>\n<table border=\"0\" frame=\"box\" style=\"border-spacing:0px\">\n";
  for (std::int32_t i = profile.size - 1; i >= 0; --i) {
    WriteRow(out, profile[i], i, sliced ? "0" : state.layers[i].layer_db.View(), c, state.epsilon);
  }
  out << "</table>\n</body>\n</html>\n";
}

void WritePage(std::ostream& out, CState& state, double qz) {
  WriteHead(out);
  WriteForm(out, state, qz);
  if (state.ocautomatic != 0 && !RefreshConstants(out, state)) return;
  BuildAllEpsilonTensors(state);  // replaces what a table of tensors gave
  ScriptSession script(state);
  script.Run();
  WriteStack(out, state, qz);
}

}  // namespace

void BuildConsistencyPage(CState& state, std::string& out, double qz) {
  std::ostringstream stream;
  stream.imbue(std::locale::classic());
  WritePage(stream, state, qz);
  out = std::move(stream).str();
}

}  // namespace tolvik
