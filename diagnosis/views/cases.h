#pragma once

#include <cstddef>

#include "common/outputs/case.h"
#include "diagnosis/verdict/row_result.h"

namespace diagnosis {

/// A row as outputs tell of it while a run goes.
outputs::Case CaseOf(const RowResult& row);

/// The same with all that it wrote.
outputs::Case FullCaseOf(const RowResult& row);

/// Makes a case of a row that was not run `runsOfEach` times one that is not as expected, since it
/// might have ended otherwise in a run that was not made; what has failed already has a better
/// reason. `isNews` stays.
void TakeAsCutShort(outputs::Case& one, const RowResult& row, std::size_t runsOfEach);

}  // namespace diagnosis
