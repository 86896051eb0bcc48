// SPDX-License-Identifier: GPL-2.0-or-later
// Errors of the analysis, each with a message of one line that names the value and a remedy.
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

namespace tolvik::analysis {

/// Base of all errors of this room.
class AnalysisError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// A measurement, a bound or an argument that cannot be used.
class DataError : public AnalysisError {
 public:
  using AnalysisError::AnalysisError;
};

/// The script of the state does not compile (code 3) or ended in an error (code 4, model/status.h).
class ScriptError : public AnalysisError {
 public:
  ScriptError(std::int32_t error_code, const std::string& message)
      : AnalysisError(message), code(error_code) {}
  std::int32_t code;
};

/// Tables of optical constants are missing.
class TablesError : public AnalysisError {
 public:
  TablesError(const std::string& message, std::vector<std::string> names)
      : AnalysisError(message), files(std::move(names)) {}
  std::vector<std::string> files;  ///< the missing files
};

/// A point of the parameters has no curve: a node out of reach, a table that does not reach the energy.
class CalculationError : public AnalysisError {
 public:
  CalculationError(std::int32_t error_code, const std::string& message)
      : AnalysisError(message), code(error_code) {}
  std::int32_t code;  ///< of model/status.h
};

}  // namespace tolvik::analysis
