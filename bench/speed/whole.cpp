// SPDX-License-Identifier: GPL-2.0-or-later
// How long do whole calculations take, and how much of that is not the reflectivity kernel? The curve, the
// fit, the map and the program itself, for each instruction set of this processor.
#include <cstdio>
#include <cstdlib>
#include <string>

#include "bench/energy_map.h"
#include "bench/film.h"
#include "bench/film_fit.h"
#include "bench/run_program.h"
#include "bench/speed/turns.h"
#include "engine/threads/processors.h"
#include "tolvik/tolvik.h"

namespace {

using namespace tolvik;
using namespace tolvik::bench;
using engine::lanes::ChooseLanes;
using engine::lanes::LaneSet;
using engine::lanes::NameOf;

volatile double sink;  // keeps the results alive

/// The same call again and again; one run is long enough for the clock.
struct Repeated {
  int count;
  std::function<void()> call;

  void operator()() const {
    for (int i = 0; i < count; ++i) call();
  }
};

std::function<void()> With(LaneSet set, std::function<void()> work) {
  return [set, work = std::move(work)] {
    ChooseLanes(set);
    work();
  };
}

void PrintHead(const char* title, const char* measure) {
  std::string head = std::string("| ") + title + " |", line = "|---|";
  if (*measure != '\0') head += std::string(" ") + measure + " |", line += "---|";
  for (const LaneSet set : SetsHere()) {
    head += std::string(" ") + NameOf(set) + " |";
    line += "---|";
  }
  std::printf("\n%s\n%s\n", head.c_str(), line.c_str());
}

void PrintCurve(const char* title, const std::function<void()>& textbook, const std::function<void()>& work) {
  constexpr int kCalls = 10;
  std::vector<std::function<void()>> contestants = {textbook};
  for (const LaneSet set : SetsHere()) contestants.push_back(With(set, Repeated{kCalls, work}));
  const std::vector<double> times = ShortestTimes(contestants);
  std::printf("| %s | %.0f |", title, 1e6 * times[0]);
  for (std::size_t i = 1; i < times.size(); ++i) {
    const double seconds = times[i] / kCalls;
    std::printf(" %.1f µs, %.1f |", 1e6 * seconds, times[0] / seconds);
  }
  std::printf("\n");
  std::fflush(stdout);
}

void PrintCurves() {
  PrintHead("3 layers × 200 points × 9 samples, empty script", "textbook, µs");
  CState film = MakeFilm(), magnet = MakeFilm(true);
  CSolution curve;
  curve.dataset_qz = FilmPoints();
  const auto textbook = [&](const CState& state, double sign) {
    return TextbookCurve(state, curve.dataset_qz, sign);
  };
  PrintCurve(
      "a curve (`CalcReflectivityDLL`)", [&] { sink = textbook(film, 0); },
      [&] { CalcReflectivityDLL(&curve, &film); });
  PrintCurve(
      "with dichroism (`CalcAsymmetryDLL`)", [&] { sink = textbook(film, 0); },
      [&] { CalcAsymmetryDLL(&curve, &film); });
  PrintCurve(
      "with dichroism, magnetic layers", [&] { sink = textbook(magnet, 1) + textbook(magnet, -1); },
      [&] { CalcAsymmetryDLL(&curve, &magnet); });
}

// Two figures: the time when the work ends before its kernel, and the whole time.
void PrintShare(const char* title, double calls, const std::function<void()>& whole,
                const std::function<void()>& around) {
  std::vector<std::function<void()>> contestants;
  for (const LaneSet set : SetsHere()) {
    contestants.push_back(With(set, whole));
    contestants.push_back(With(set, around));
  }
  const std::vector<double> times = ShortestTimes(contestants);
  std::printf("| %s |", title);
  for (std::size_t i = 0; i < times.size(); i += 2) {
    std::printf(" %.2f of %.2f µs, %.0f %% |", 1e6 * times[i + 1] / calls, 1e6 * times[i] / calls,
                100 * times[i + 1] / times[i]);
  }
  std::printf("\n");
  std::fflush(stdout);
}

void PrintShares() {
  PrintHead("around the kernel", "");
  constexpr int kCalls = 10;
  CMultiFit fit(MakeFilmFit());
  CMultiFit unreachable(MakeFilmFit(kUnreachableEnergy));
  PrintShare("an evaluation in a fit of that curve", kCalls,
             Repeated{kCalls, [&] { sink = fit.CalcError(fit.fitvariables); }},
             Repeated{kCalls, [&] { sink = unreachable.CalcError(unreachable.fitvariables); }});

  const CState sample = MakeMapState();
  CSolution points = MakeMapPoints(), unreached = MakeMapPoints(kQzWithoutAngle);
  engine::ForceProcessorCount(1);
  const auto scan = [&sample](CSolution& solution) {
    CState state = sample;
    CalcEScanParallelDLL(&solution, &state);
  };
  PrintShare(
      "a point of a map, 200 × 500, 10 layers", kEnergies * kQz, [&] { scan(points); },
      [&] { scan(unreached); });
  engine::ForceProcessorCount(0);
}

// Real time, the instruction set by the environment.
bool PrintProgram() {
  PrintHead("the program, start to exit", "");
  bool well = true;
  for (const char* example : {"silicon.state", "mo_si_mirror.state"}) {
    std::vector<std::function<void()>> contestants;
    for (const LaneSet set : SetsHere()) {
      contestants.push_back([set, example, &well] {
        setenv("TOLVIK_LANES", NameOf(set), 1);
        well = RunProgram({TOLVIK_PROGRAM, "-refl", std::string(TOLVIK_EXAMPLES "/") + example}) == 0 && well;
      });
    }
    const std::vector<double> times = ShortestTimes(contestants, CLOCK_MONOTONIC);
    std::printf("| `-refl` on %s |", example);
    for (const double seconds : times) std::printf(" %.1f ms |", 1e3 * seconds);
    std::printf("\n");
    std::fflush(stdout);
  }
  return well;
}

}  // namespace

int main() {
  PrintCurves();
  PrintShares();
  if (PrintProgram()) return 0;
  std::fprintf(stderr, "the program failed\n");
  return 1;
}
