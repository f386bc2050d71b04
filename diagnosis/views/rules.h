#pragma once

#include <string>

#include "diagnosis/views/lane.h"

namespace diagnosis {

/// Whether the suite's rule rejects the lane, if it looks at it.
bool IsRejected(const Lane& lane);

/// What the suite's rule and OpenCL's say of the lane: "passed: ...", "wrong: ...".
std::string SuiteRuleOn(const Lane& lane);
std::string OpenClRuleOn(const Lane& lane);

}  // namespace diagnosis
