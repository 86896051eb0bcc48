// SPDX-License-Identifier: GPL-2.0-or-later
// The objective of a fit: residuals, chi-square, likelihood, Jacobian, of one point or many.
#include "tolvik/analysis/objective.h"

#include <pybind11/numpy.h>
#include <pybind11/stl.h>

#include <algorithm>
#include <array>
#include <memory>
#include <optional>
#include <span>
#include <vector>

#include "analysis_call.h"
#include "measurements.h"
#include "parts.h"
#include "working_copy.h"

namespace tolvik::python {
namespace {

using Numbers = py::array_t<double, py::array::c_style | py::array::forcecast>;
using analysis::Objective;

std::span<const double> PointsOf(const Numbers& x) {
  return {x.data(), static_cast<std::size_t>(x.size())};
}

py::array_t<double> Column(const std::vector<double>& values) {
  return py::array_t<double>(static_cast<py::ssize_t>(values.size()), values.data());
}

py::array_t<double> Square(const analysis::Matrix& matrix) {
  const auto rows = static_cast<py::ssize_t>(matrix.rows), columns = static_cast<py::ssize_t>(matrix.columns);
  py::array_t<double> result({rows, columns});
  std::copy_n(matrix.values.data(), rows * columns, result.mutable_data());
  return result;
}

py::array_t<bool> Flags(const std::vector<bool>& flags) {
  py::array_t<bool> result(static_cast<py::ssize_t>(flags.size()));
  std::copy(flags.begin(), flags.end(), result.mutable_data());
  return result;
}

std::unique_ptr<Objective> Make(const PyState& state, const std::vector<py::dict>& given,
                                const analysis::ObjectiveOptions& options) {
  state.box->Refresh();
  const CState copy = state.get();
  std::vector<analysis::Measurement> measurements;
  for (const py::dict& each : given) measurements.push_back(TakeMeasurement(each, copy));
  return CallAnalysis([&] { return std::make_unique<Objective>(copy, std::move(measurements), options); });
}

py::list Parameters(const Objective& self) {
  py::list all;
  for (const analysis::Parameter& each : self.parameters()) {
    all.append(py::make_tuple(each.name, each.value, each.bounds.lower, each.bounds.upper, each.scale));
  }
  return all;
}

// chi-square, log-likelihood and log-prior of k points, (3, k).
py::array_t<double> Evaluate(Objective& self, const Numbers& x, bool only_allowed) {
  const auto values = CallAnalysis([&] { return self.Evaluate(PointsOf(x), only_allowed); });
  const auto count = static_cast<py::ssize_t>(values.size());
  py::array_t<double> result({py::ssize_t{3}, count});
  double* out = result.mutable_data();
  for (const analysis::RowValues& row : values) {
    out[0] = row.chi_square;
    out[count] = row.log_likelihood;
    out[2 * count] = row.log_prior;
    ++out;
  }
  return result;
}

py::tuple Jacobian(Objective& self, const Numbers& x) {
  const auto found = CallAnalysis([&] { return self.DerivativesAt(PointsOf(x)); });
  return py::make_tuple(Column(found.residuals), Square(found.jacobian), Flags(found.no_effect),
                        Flags(found.exact));
}

py::dict CovarianceAt(Objective& self, const Numbers& x) {
  const auto found = CallAnalysis([&] { return self.CovarianceAt(PointsOf(x)); });
  using py::operator""_a;
  return py::dict("covariance"_a = Square(found.covariance), "errors"_a = Column(found.errors),
                  "correlation"_a = Square(found.correlation), "at_bound"_a = Flags(found.at_bound),
                  "no_effect"_a = Flags(found.no_effect), "not_determined"_a = Flags(found.not_determined),
                  "chisqr"_a = found.chi_square, "reduced"_a = found.reduced);
}

py::tuple ModelAt(Objective& self, const Numbers& x, std::size_t measurement) {
  const auto found = CallAnalysis([&] { return self.ModelAt(PointsOf(x), measurement); });
  return py::make_tuple(found.points, Column(found.q), Column(found.values[0]), Column(found.values[1]));
}

// Places inside the priors, (k, m), of points of the unit cube.
py::array_t<double> PriorTransform(const Objective& self, const Numbers& u) {
  py::array_t<double> x(std::vector<py::ssize_t>(u.shape(), u.shape() + u.ndim()));
  const auto& parameters = self.parameters();
  for (py::ssize_t i = 0; i < u.size(); ++i) {
    const analysis::Parameter& each = parameters[static_cast<std::size_t>(i) % parameters.size()];
    x.mutable_data()[i] = PriorQuantile(each.prior, each.bounds, u.data()[i]);
  }
  return x;
}

}  // namespace

void DefineObjective(py::module_& module) {
  py::class_<Objective> cls(module, "Objective");
  cls.def(py::init([](const PyState& state, const std::vector<py::dict>& data, int weights, int resolution,
                      std::int32_t threads) {
    analysis::ObjectiveOptions options;
    options.weights = static_cast<analysis::Weights>(weights);
    options.resolution = static_cast<analysis::Resolution>(resolution);
    options.threads = threads;
    return Make(state, data, options);
  }));
  cls.def("_parameters", &Parameters);
  cls.def("_warnings", &Objective::warnings);
  cls.def("_size", &Objective::residual_count);
  cls.def("_residuals", [](Objective& self, const Numbers& x) {
    return Square(CallAnalysis([&] { return self.Residuals(PointsOf(x)); }));
  });
  cls.def("_residuals_at", [](Objective& self, const Numbers& x) {
    return Column(CallAnalysis([&] { return self.ResidualsAt(PointsOf(x)); }));
  });
  cls.def("_evaluate", &Evaluate);
  cls.def("_jacobian", &Jacobian);
  cls.def("_covariance", &CovarianceAt);
  cls.def("_model", &ModelAt);
  cls.def("_prior_transform", &PriorTransform);
  cls.def("_state_at", [](const Objective& self, const Numbers& x) {
    return PyState{std::make_shared<StateBox>(CallAnalysis([&] { return self.StateAt(PointsOf(x)); }))};
  });
}

}  // namespace tolvik::python
