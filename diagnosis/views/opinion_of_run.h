#pragma once

#include <string>

#include "diagnosis/judgement/opinion.h"
#include "diagnosis/record/record.h"

namespace diagnosis {

/// The second opinion on a whole run for a person: a sentence or two, or a table where rows are of
/// more than two kinds, with the fewest suspects behind it. Line ends included; empty if there is
/// no opinion on any row.
std::string OpinionOnRun(const Run& run);

/// Whether a row is good where the second opinion counts: one that is right by OpenCL's rules,
/// whether it passed or failed, and one that is wrong only if it failed as it was expected to. The
/// rows that have no kind are good if they ended as expected.
bool IsGoodByOpinion(Kind kind, bool asExpected);

}  // namespace diagnosis
