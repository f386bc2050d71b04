#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string>

#include "common/outputs/case.h"

namespace outputs {

/// What is to be run.
struct Plan {
  std::string heading;       // a line without its end; empty for none
  std::string noun = "row";  // what a case is called
  std::size_t cases = 0;
  std::size_t runs = 0;  // of all of them, where a case is run more often than once
};

/// What a run came to.
struct Summary {
  std::string table;    // lines
  std::string result;   // the sentence that it comes to, without a line end
  bool isGood = false;  // whether that is what was hoped for
  std::string remarks;  // lines
};

/// What standard output says of a run while it lasts. One is for people and one for test labs.
class Reporter {
 public:
  Reporter() = default;
  Reporter(const Reporter&) = delete;
  Reporter& operator=(const Reporter&) = delete;
  virtual ~Reporter() = default;

  /// Before any case.
  virtual void Begin(const Plan& plan) = 0;
  virtual void Started(const std::string& name) = 0;
  /// A case ended. If it is to be run again what became of it may still change, and comes once
  /// more.
  virtual void Ended(const Case& one, bool runAgain) = 0;
  /// From time to time.
  virtual void Tick() {}
  virtual void End(const Summary& summary) = 0;
};

/// Where a reporter writes, and how.
struct Console {
  std::function<void(const std::string&)> write;
  std::function<double()> clock;  // seconds
  bool isTerminal = false;        // the progress line is redrawn
  std::size_t columns = 80;
  bool colour = false;
};

/// Lines for a person: how far the run is, each case that is news, the summary.
std::unique_ptr<Reporter> ProgressReporter(const Console& console);

/// KTAP, version 1. A case's line comes when what became of it is final.
std::unique_ptr<Reporter> KtapReporter(const Console& console);

}  // namespace outputs
