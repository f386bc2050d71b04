#pragma once

#include "harness/rows.h"

/// The rows that a run takes, in their order. All draw from one stream, so the place of a row
/// decides its data.
inline constexpr int (*schedule[])() = {
    RunTest_add_union_arrays_1,
};
