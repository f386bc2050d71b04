#pragma once

#include <map>
#include <string>
#include <vector>

#include "diagnosis/record.h"

namespace diagnosis {

/// What a device may do wrong with unions, and the rows that it explains.
struct Suspect {
  std::string name;     // "b-at-32", "lanes-reversed", ...
  std::string meaning;  // one sentence
  std::vector<std::string> rows;
};

/// The suspects of a run.
struct Suspects {
  /// For each wrong row the suspects that predict every one of its lanes, those that explain most
  /// rows of the run first, the simplest first among equals; "unexplained" where none does.
  std::map<std::string, std::vector<std::string>> byRow;
  /// The fewest suspects that explain all wrong rows; rows that none explains under "unexplained".
  std::vector<Suspect> fewest;
};

Suspects SuspectsOf(const Run& run);

}  // namespace diagnosis
