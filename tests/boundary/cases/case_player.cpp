// SPDX-License-Identifier: GPL-2.0-or-later
#include "boundary/cases/case_player.h"

#include <fstream>
#include <stdexcept>

#include "boundary/cases/captured_output.h"
#include "boundary/cases/record_path.h"
#include "fit/evolution.h"
#include "fit/fit_variables.h"
#include "optics/material.h"
#include "support/http_client.h"
#include "tolvik/state_file.h"
#include "tolvik/tolvik.h"

namespace tolvik::testing {
namespace {

using nlohmann::json;
using Calculation = std::int32_t (*)(CSolution*, CState*);

constexpr std::uint16_t kPort = 8080;
constexpr double kExactDraws = 1e-12;  // genes follow the random stream draw by draw

const std::map<std::string, Calculation> kCalculations = {
    {"CalcReflectivityDLL", CalcReflectivityDLL},
    {"CalcAsymmetryDLL", CalcAsymmetryDLL},
    {"CalcEScanDLL", CalcEScanDLL},
    {"CalcDicEScanDLL", CalcDicEScanDLL},
    {"CalcEScanParallelDLL", CalcEScanParallelDLL},
};

template <class Record>
json GetAll(Record& record, const json& paths) {
  json values = json::object();
  for (const std::string path : paths) values[path] = GetByPath(record, path);
  return values;
}

template <class T>
json ToList(const CArray<T>& array) {
  json list = json::array();
  for (const T& value : array) {
    if constexpr (std::is_floating_point_v<T>) {
      CDataset holder;
      holder.datasetenergy = value;
      list.push_back(GetByPath(holder, "datasetenergy"));
    } else {
      list.push_back(value);
    }
  }
  return list;
}

json FitValues(const CArray<CFitVariable>& variables) {
  CArray<double> values;
  for (const CFitVariable& variable : variables) values.Append(variable.fit_value);
  return ToList(values);
}

void FillTable(CColumnTable& table, const json& rows) {
  table = CColumnTable(2);
  for (const json& row : rows) {
    CColumnRow filled;
    filled.energy = row.at(0);
    filled.values.Append(row.at(1).get<double>());
    filled.values.Append(row.at(2).get<double>());
    table.Append(std::move(filled));
  }
}

// Lines that the server's own thread may print before the call returns.
std::string WithoutThreadLines(const std::string& text) {
  const std::size_t at = text.find("Listening on Port");
  return at == std::string::npos ? text : text.substr(0, at) + text.substr(text.find('\n', at) + 1);
}

json DescribeEvolution() {
  CEvolution* evolution = nullptr;
  EvolutionGetEvolutionDLL(&evolution);
  json genes = json::array();
  for (const CState& individual : evolution->population) genes.push_back(FitValues(individual.fitvariables));
  return {{"genes", genes},
          {"errors", ToList(evolution->errors)},
          {"ranking", ToList(evolution->ranking)},
          {"besthistory", ToList(evolution->besthistory)},
          {"meanhistory", ToList(evolution->meanhistory)},
          {"worsthistory", ToList(evolution->worsthistory)},
          {"generation", evolution->generation}};
}

}  // namespace

CasePlayer::CasePlayer(const Json& plan)
    : plan_(plan), tolerance_{plan.at("tolerance").at("rel"), plan.at("tolerance").at("abs")} {}

std::optional<std::string> CasePlayer::Play() {
  const Json files = plan_.value("files", Json::object());
  for (const auto& [name, text] : files.items()) {
    std::ofstream(name, std::ios::binary) << text.get<std::string>();
  }
  int number = 0;
  for (const Json& step : plan_.at("steps")) {
    const std::string place =
        "step " + std::to_string(++number) + " (" + step.at("call").get<std::string>() + ")";
    try {
      const auto difference = Compare(step.value("expect", Json::object()), Call(step));
      if (difference) return place + ": " + *difference;
    } catch (const std::exception& error) {
      return place + ": " + error.what();
    }
  }
  return std::nullopt;
}

CasePlayer::Json CasePlayer::Call(const Json& step) {
  const std::string call = step.at("call");
  CState& state = states_[step.value("state", "s")];
  if (call == "request") return SendRequest(step);
  if (call.starts_with("Fit")) return CallFit(call, step);
  if (call.starts_with("Evolution")) return CallEvolution(call, state);
  if (kCalculations.contains(call)) return CallCalculation(call, step, state);
  if (call == "solution") {
    CSolution& solution = solutions_[step.value("solution", "solution")] = CSolution();
    const Json arrays = step.value("arrays", Json::object()), values = step.value("values", Json::object());
    for (const auto& [name, value] : arrays.items()) SetByPath(solution, name, value);
    for (const auto& [name, value] : values.items()) SetByPath(solution, name, value);
    return Json::object();
  }
  return CallOnState(call, step, state);
}

CasePlayer::Json CasePlayer::CallOnState(const std::string& call, const Json& step, CState& state) {
  if (call == "LoadState") {
    state = CState();
    return {{"result", LoadState(state, step.at("file").get<std::string>())}};
  }
  if (call == "LoadOpticalTables") return {{"result", LoadOpticalTables(state)}};
  if (call == "kktable") {
    FillTable(state.kktable, step.at("rows"));
    return Json::object();
  }
  if (call == "set") {
    for (const auto& [path, value] : step.at("values").items()) SetByPath(state, path, value);
    return Json::object();
  }
  if (call == "get") return {{"values", GetAll(state, step.at("paths"))}};
  if (call == "ApplyFitVariables") {
    ApplyFitVariables(state);
    return {{"fit_values", FitValues(state.fitvariables)}};
  }
  if (call == "ReadFitVariables") {
    ReadFitVariables(state, step.value("onlyoptical", false));
    return {{"fit_values", FitValues(state.fitvariables)}};
  }
  if (call == "StartScriptDLL") return {{"result", StartScriptDLL(&state)}};
  if (call == "StartWebserver") {
    CapturedOutput output;
    const std::int32_t result = StartWebserver(&state);
    return {{"result", result}, {"stdout", WithoutThreadLines(output.Take())}};
  }
  throw std::runtime_error("unknown call");
}

CasePlayer::Json CasePlayer::CallFit(const std::string& call, const Json& step) {
  if (call == "FitNewDLL") return {{"result", FitNewDLL(&states_[step.value("state", "s")])}};
  if (call == "FitIterateDLL") {
    CArray<double> errors;
    std::int32_t result = 0;
    for (int i = 0; i < step.value("times", 1); ++i) {
      result = FitIterateDLL();
      errors.Append(FitGetLastErrorDLL());
    }
    return {{"result", result}, {"lasterrors", ToList(errors)}};
  }
  if (call == "FitGetFitStateDLL") {
    CState* state = nullptr;
    const std::int32_t result = FitGetFitStateDLL(&state);
    return {{"result", result}, {"values", GetAll(*state, step.value("paths", Json::array()))}};
  }
  if (call == "FitGetFitDataDLL") {
    CSolution* solution = nullptr;
    const std::int32_t result = FitGetFitDataDLL(&solution);
    return {{"result", result}, {"values", GetAll(*solution, step.value("arrays", Json::array()))}};
  }
  throw std::runtime_error("unknown call");
}

CasePlayer::Json CasePlayer::CallEvolution(const std::string& call, CState& state) {
  CapturedOutput output;
  const std::int32_t result = call == "EvolutionNewDLL" ? EvolutionNewDLL(&state) : EvolutionIterateDLL();
  const std::string printed = output.Take();
  Json found = DescribeEvolution();
  found["result"] = result;
  found["stdout"] = printed;
  return found;
}

CasePlayer::Json CasePlayer::CallCalculation(const std::string& call, const Json& step, CState& state) {
  CSolution& solution = solutions_[step.value("solution", "solution")];
  const std::int32_t result = kCalculations.at(call)(&solution, &state);
  return {{"result", result}, {"values", GetAll(solution, step.value("arrays", Json::array()))}};
}

CasePlayer::Json CasePlayer::SendRequest(const Json& step) {
  CapturedOutput quiet;
  const std::string answer = Request(kPort, step.at("text"));
  const std::size_t end = std::min(answer.find("\n\n"), answer.size());
  return {{"header", answer.substr(0, end + 2)}, {"body", answer.substr(std::min(end + 2, answer.size()))}};
}

std::optional<std::string> CasePlayer::Compare(const Json& expect, const Json& found) const {
  for (const auto& [name, want] : expect.items()) {
    if (!found.contains(name)) return name + ": nothing of that name is known";
    std::optional<std::string> difference;
    if (name == "values") {
      for (const auto& [path, value] : want.items()) {
        if (!difference) difference = FindDifference(value, found.at(name).at(path), tolerance_, path);
      }
    } else if (name == "body") {
      difference = FindPageDifference(want, found.at(name), tolerance_);
    } else {
      const Tolerance tolerance = name == "genes" ? Tolerance{kExactDraws, kExactDraws} : tolerance_;
      difference = FindDifference(want, found.at(name), tolerance, name);
    }
    if (difference) return difference;
  }
  return std::nullopt;
}

}  // namespace tolvik::testing
