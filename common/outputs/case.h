#pragma once

#include <string>
#include <utility>
#include <vector>

namespace outputs {

/// What a status means to those who read outputs.
enum class Kind {
  passed,
  failed,
  knownFailure,  // failed, as it was expected to
  noted,         // passed where a failure was expected, or came to several ends
  error,         // came to no answer
  timedOut,
  skipped,
  notReached,  // on a terminal such cases are told together, by their lines
};

/// A named case and what became of it.
struct Case {
  std::string name;
  std::string group = {};   // the suite that it is in, for JUnit
  std::string status = {};  // the word: "Fail", "Flake"
  Kind kind = Kind::passed;
  bool asExpected = true;
  bool isNews = false;      // named on a terminal when it has ended
  std::string line = {};    // what stands behind the status; empty if nothing does
  std::string remark = {};  // what else a reader should know of it, one line
  double seconds = 0;

  // For JUnit alone.
  std::vector<std::pair<std::string, std::string>> properties = {};
  std::string cause = {};  // in full, where the line is its beginning
  std::string out = {};    // may be anything, of any size
  std::string err = {};
};

}  // namespace outputs
