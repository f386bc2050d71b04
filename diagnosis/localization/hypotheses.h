#pragma once

#include <string>
#include <vector>

#include "diagnosis/localization/fault.h"

namespace diagnosis {

/// What is told first where several explain a row.
enum class Rank {
  named,    // a fault that says what every answer is
  general,  // one of a great many of its kind, so it may fit by chance
  fitted,   // one that is made of the answers themselves
  vague,    // one that says only how far off the answers are
};

/// A fault by its name. Several of one name are several ways to have it.
struct Hypothesis {
  std::string name;
  std::string meaning;  // one sentence
  std::string detail;   // what the sentence leaves open, in this row; often empty
  Rank rank;
  Fault fault;
};

/// All that a wrong row may suffer from, the simplest first.
std::vector<Hypothesis> HypothesesOn(const RowData& data);

}  // namespace diagnosis
