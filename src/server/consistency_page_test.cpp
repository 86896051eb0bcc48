// SPDX-License-Identifier: GPL-2.0-or-later
#include "server/consistency_page.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <complex>

#include "optics/energy.h"
#include "support/sanitized.h"
#include "support/scratch.h"

namespace tolvik {
namespace {

constexpr char kForm[] =
    "<!DOCTYPE html PUBLIC \"-//W3C//DTD XHTML 1.0 Strict//EN\" "
    "\"http://www.w3.org/TR/xhtml1/DTD/xhtml1-strict.dtd\">\n"
    "<html xmlns=\"http://www.w3.org/1999/xhtml\">\n"
    "<head>\n<title>Consistency check</title>\n</head>\n<body>\n"
    "<form action=\"/\" method=\"get\">\n"
    "<table border=\"0\" cellpadding=\"5\" cellspacing=\"0\" bgcolor=\"#E0E0E0\">\n"
    "  <tr>\n   <td align=\"right\">qz:</td>\n"
    "   <td><input name=\"qz\" type=\"text\" size=\"30\" maxlength=\"30\" value=\"0.1\"/></td>\n   </tr>\n"
    "  <tr>\n   <td align=\"right\">epsilon:</td>\n"
    "   <td><input name=\"epsilon\" type=\"text\" size=\"30\" maxlength=\"30\" value=\"5e-05\"/></td>\n   "
    "</tr>\n"
    "  <tr>\n   <td align=\"right\">energy:</td>\n"
    "   <td><input name=\"energy\" type=\"text\" size=\"30\" maxlength=\"30\" value=\"800\"/></td>\n   "
    "</tr>\n"
    "  <tr>\n   <td align=\"right\">Submit:</td>\n"
    "   <td><input type=\"submit\" value=\" Update \"/></td>   </tr>\n"
    "</table>\n</form>\n";

CState Stack(int layers) {
  CState state;
  state.layers.Clear();
  for (int i = 0; i < layers; ++i) state.layers.Append(CLayer());
  state.lambda = LambdaFromEnergy(800);
  state.disablescript = 1;
  return state;
}

std::string Page(CState& state, double qz) {
  std::string page;
  BuildConsistencyPage(state, page, qz);
  return page;
}

bool Has(const std::string& page, const std::string& text) {
  return page.find(text) != std::string::npos;
}

TEST(ConsistencyPage, OneVacuumLayerByteForByte) {
  CState state = Stack(1);
  // qz of 2 k0 / 2: sin θ = 0.5, so the wavevectors of vacuum are ±0.5 twice.
  const double qz = 2 * 3.141592653589793 / state.lambda;
  std::string page = Page(state, qz);
  const std::size_t body = page.find("<br/><br/>");
  ASSERT_NE(body, std::string::npos);
  std::string rest = page.substr(body);
  for (std::size_t at; (at = rest.find("-0i")) != std::string::npos;) rest.replace(at, 3, "0i");
  const std::string zero = "          <mtd> <mn>0</mn><mo>+</mo><mn>0</mn><mo/><mi>i</mi> </mtd>\n";
  const std::string one = "          <mtd> <mn>1</mn><mo>+</mo><mn>0</mn><mo/><mi>i</mi> </mtd>\n";
  EXPECT_EQ(rest,
            "<br/><br/>\n<table border=\"0\" frame=\"box\" style=\"border-spacing:0px\">\n"
            "<tr height=\"0\">\n <td bgcolor=\"#FFFFFF\">0 </td>\n"
            " <td bgcolor=\"#E0E0E0\" style=\"border:medium solid black\" >\n"
            " vacuum<br/>d = 0A\n<br/>ISOTROPIC\n </td>\n"
            " <td bgcolor=\"#FFFFFF\">\n </td>\n <td bgcolor=\"#FFFFFF\">\n"
            "     <math xmlns=\"http://www.w3.org/1998/Math/MathML\">\n"
            "     &epsilon; = <mfenced>\n<mtable>\n"
            "     <mtr>\n" +
                one + zero + zero +
                "     </mtr>\n"
                "     <mtr>\n" +
                zero + one + zero +
                "     </mtr>\n"
                "     <mtr>\n" +
                zero + zero + one +
                "     </mtr>\n"
                "</mtable> \n     </mfenced>\n     </math>\n </td>\n"
                " <td bgcolor=\"#FFFFFF\">\n </td>\n <td bgcolor=\"#FFFFFF\">\n"
                "k<sub>z1</sub> = 0.5 + 0i<br/>\nk<sub>z2</sub> = 0.5 + 0i<br/>\n"
                "k<sub>z3</sub> = -0.5 + 0i<br/>\nk<sub>z4</sub> = -0.5 + 0i<br/>\n"
                " </td>\n</tr>\n</table>\n</body>\n</html>\n");
}

TEST(ConsistencyPage, BeginsWithTheForm) {
  CState state = Stack(1);
  EXPECT_TRUE(Page(state, 0.1).starts_with(kForm));
}

TEST(ConsistencyPage, RowsRunFromTheTopAndDigitsGrowAfterTheFirst) {
  CState state = Stack(3);
  state.layers[1].layer_d = 12.3456789;
  state.layers[2].layer_d = 3.14159265;
  state.layers[1].layer_db = "film";
  const std::string page = Page(state, 0.1);
  EXPECT_TRUE(Has(page, "<tr height=\"31\">\n <td bgcolor=\"#FFFFFF\">2 </td>"));
  EXPECT_TRUE(Has(page, " vacuum<br/>d = 3.14159A\n"));
  EXPECT_TRUE(Has(page, "<tr height=\"123\">\n <td bgcolor=\"#FFFFFF\">1 </td>"));
  EXPECT_TRUE(Has(page, " film<br/>d = 12.3456789A\n"));
  EXPECT_LT(page.find("3.14159A"), page.find("12.3456789A"));
}

// The wavevector of a slab of index n: sqrt(n² - cos²θ), in units of k0 (Snell's law).
TEST(ConsistencyPage, WavevectorsOfAnAbsorber) {
  CState state = Stack(2);
  state.layers[0].layer_delta = 0.01;
  state.layers[0].layer_beta = 0.002;
  const std::string page = Page(state, 0.2);
  const double s = 0.2 / (2 * 6.283185307179586 / state.lambda);
  const std::complex<double> n(0.99, 0.002);
  const std::complex<double> kappa = std::sqrt(n * n - (1 - s * s));
  const std::size_t row = page.find("<td bgcolor=\"#FFFFFF\">0 </td>");
  double re = 0, im = 0;
  ASSERT_EQ(std::sscanf(page.c_str() + page.find("k<sub>z1</sub> = ", row), "k<sub>z1</sub> = %lf + %lfi",
                        &re, &im),
            2);
  EXPECT_NEAR(re, kappa.real(), 1e-7);  // two equal roots: half of the digits are lost
  EXPECT_NEAR(im, kappa.imag(), 1e-7);
  EXPECT_FALSE(Has(page, "WARNING!"));
}

TEST(ConsistencyPage, WarnsOfGrowingWaves) {
  CState state = Stack(2);
  state.layers[0].layer_beta = -0.002;
  EXPECT_TRUE(
      Has(Page(state, 0.2),
          "<center><abcd style=\"text-decoration:blink;color:red;\">WARNING!</abcd></center><br/>\n"));
}

// At sin θ = 0.5 the product of the two parts of kz is half of Im ε, which is 2 beta: beta itself.
TEST(ConsistencyPage, AGrowthOfNearlyNothingIsNoWarning) {
  CState state = Stack(1);
  const double qz = 2 * 3.141592653589793 / state.lambda;
  state.layers[0].layer_beta = -8e-9;
  EXPECT_FALSE(Has(Page(state, qz), "WARNING!"));
  state.layers[0].layer_beta = -1.2e-8;
  EXPECT_TRUE(Has(Page(state, qz), "WARNING!"));
}

TEST(ConsistencyPage, TheScriptChangesTheTensorThatIsShown) {
  CState state = Stack(1);
  state.disablescript = 0;
  state.scriptlines.Append(CCharArray("exx_r[0] = exx_r[0] + 1"));
  EXPECT_TRUE(Has(Page(state, 0.1), "<mtd> <mn>2</mn><mo>+</mo>"));
}

TEST(ConsistencyPage, NamesTheClassOfTheTensor) {
  CState state = Stack(2);
  state.magnetizationmode = MagnetizationMode::kLayers;
  state.layers[0].layer_ddelta = 0.01;
  const std::string page = Page(state, 0.1);
  EXPECT_TRUE(Has(page, "<br/>ANISOTROPIC\n"));
  EXPECT_TRUE(Has(page, "<br/>ISOTROPIC\n"));  // the vacuum above has no magnetic constants
}

TEST(ConsistencyPage, OutOfReachIsShownWithoutAWarning) {
  CState state = Stack(2);
  state.layers[0].layer_beta = -0.002;
  const std::string page = Page(state, 10.0);
  EXPECT_TRUE(Has(page, "nan"));
  EXPECT_FALSE(Has(page, "WARNING!"));
  EXPECT_TRUE(page.ends_with("</html>\n"));
}

TEST(ConsistencyPage, SlicesAreNamedZero) {
  CState state = Stack(2);
  state.layersegmentationmode = LayerSegmentationMode::kSlices;
  state.minlayerthickness = 5;
  state.maxlayerthickness = 5;
  const std::string page = Page(state, 0.1);
  EXPECT_TRUE(Has(page, " 0<br/>d = 5A\n"));
  EXPECT_FALSE(Has(page, "vacuum"));
}

TEST(ConsistencyPage, ThePageShowsLayersInElementModeToo) {
  CState state = Stack(2);
  state.mode = Mode::kElement;
  EXPECT_TRUE(Has(Page(state, 0.1), " vacuum<br/>"));
  EXPECT_EQ(state.mode, Mode::kElement);
}

class ConsistencyPageTables : public ::testing::Test {
 protected:
  ConsistencyPageTables() : state_(Stack(1)) {
    state_.ocautomatic = 1;
    state_.layers[0].layer_db.Set(folder_.Path("film"));
  }
  testing::ScratchFolder folder_;
  CState state_;
};

TEST_F(ConsistencyPageTables, MissingTablesEndThePage) {
  EXPECT_EQ(Page(state_, 0.1),
            std::string(kForm) + "Error: You need .db-files or .e-files for all layers<br></body></html>");
}

TEST_F(ConsistencyPageTables, MissingMagneticTablesEndThePage) {
  folder_.Write("film.db", "700 0.001 0.0002\n900 0.001 0.0002\n");
  state_.magnetizationmode = MagnetizationMode::kLayers;
  EXPECT_EQ(Page(state_, 0.1),
            std::string(kForm) + "Error: You need .m-files or .e files for all layers<br></body></html>");
}

TEST_F(ConsistencyPageTables, AnEnergyOutsideTheTableEndsThePage) {
  folder_.Write("film.db", "700 0.001 0.0002\n750 0.001 0.0002\n");
  EXPECT_EQ(Page(state_, 0.1),
            std::string(kForm) + "Error: Check if you choosed the right energy!<br></body></html>");
}

TEST_F(ConsistencyPageTables, TablesGiveTheConstants) {
  folder_.Write("film.db", "700 0.5 0\n900 0.5 0\n");
  EXPECT_TRUE(Has(Page(state_, 0.1), "<mn>0.25</mn>"));  // n² of n = 1 - 0.5
}

TEST(ConsistencyPage, AHundredLayersAreQuick) {
  CState state = Stack(100);
  const auto start = std::chrono::steady_clock::now();
  Page(state, 0.1);
  const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - start;
  const double limit = testing::kSanitized ? 1.0 : 0.02;  // seconds
  EXPECT_LT(taken.count(), limit);
}

}  // namespace
}  // namespace tolvik
