#pragma once

#include <string>

#include "diagnosis/record/record.h"
#include "diagnosis/verdict/ledger.h"

namespace diagnosis {

/// A record whose status by itself is this one, with nothing more in it than that takes.
Record MadeUp(const std::string& row, Status status);

}  // namespace diagnosis
