#pragma once

#include <string>
#include <utility>
#include <vector>

#include "common/outputs/case.h"

namespace outputs {

/// What is true of all the cases.
struct SuiteInfo {
  std::string name;         // "union conformance suite"
  std::string classPrefix;  // of each case's class, before a point and its group
  std::string start;        // UTC, ISO 8601
  std::vector<std::pair<std::string, std::string>> properties;
};

/// A run in the form that CI servers read: a suite a group. The cause of what did not pass stands
/// in `type`, its line in `message`; what is as expected of it counts as skipped. XML 1.0 in UTF-8,
/// whatever the texts hold.
std::string JUnitOf(const SuiteInfo& info, const std::vector<Case>& cases);

}  // namespace outputs
