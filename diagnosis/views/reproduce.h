#pragma once

#include <string>
#include <string_view>

#include "diagnosis/localization/suspects.h"
#include "diagnosis/record/record.h"

namespace diagnosis {

/// A C99 program that shows by itself what was seen in a row: the kernel text, one repetition's
/// inputs, the answers that are right for them, and the suite's calls in their order. It needs
/// CL/cl.h and -lOpenCL, and ends with 0 if the device is right, 1 if not and 2 if a call fails or
/// the device reports other floats than those on which the right answers depend. `file` is where it
/// goes, for the line that says how to compile it; ROW.c if empty.
///
/// The repetition is the one in flight where the row did not come to its end, else the first wrong
/// one, else the one that the suite rejected, else the last. Where no inputs were seen, they are
/// made up. Throws std::invalid_argument if the record is of no row of the matrix.
std::string ReproducerOf(const Record& record, const Device& device, const Suspects& suspects,
                         std::string_view file = {});

}  // namespace diagnosis
