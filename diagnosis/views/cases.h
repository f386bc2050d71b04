#pragma once

#include "common/outputs/case.h"
#include "diagnosis/verdict/row_result.h"

namespace diagnosis {

/// A row as outputs tell of it while a run goes.
outputs::Case CaseOf(const RowResult& row);

/// The same with all that it wrote.
outputs::Case FullCaseOf(const RowResult& row);

}  // namespace diagnosis
