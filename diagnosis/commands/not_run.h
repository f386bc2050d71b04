#pragma once

#include <string>

#include "diagnosis/record/record.h"

namespace diagnosis {

/// Whether the row was run, so that there is something to be made of its record.
bool WasRun(const Record& record);

/// Throws text::BadUse with the reason if the record is from `folder`, and std::runtime_error if
/// that is empty and the row should have been run now.
[[noreturn]] void RefuseRowNotRun(const Record& record, const std::string& folder);

}  // namespace diagnosis
