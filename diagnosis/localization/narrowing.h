#pragma once

#include <vector>

#include "diagnosis/localization/candidate.h"
#include "diagnosis/localization/suspects.h"
#include "diagnosis/record/record.h"

namespace diagnosis {

/// Takes away the suspects that the experiments on these rows refute: in the row that was asked,
/// and in every other where one stands that the same experiment has left. Where an experiment
/// leaves none of those that it was made for, none of these stays anywhere. Nothing is added.
std::vector<Decision> Narrow(std::vector<Question>& questions, const Device& device);

}  // namespace diagnosis
