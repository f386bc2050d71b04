#pragma once

#include <CL/cl_icd.h>

#include <cstddef>
#include <cstdint>
#include <string>

#include "diagnosis/capture/journal.h"

namespace diagnosis {

/// What a row is run with.
struct Conditions {
  std::uint32_t seed = 1;
  std::size_t drawsBefore = 0;  // the row's place in the stream of random numbers
  std::size_t stride = 0;       // bytes of the row's unions
  std::string buildOptions;     // in place of the suite's, which are none
  std::uint64_t localSize = 0;  // in place of the suite's, which leaves it to the driver; 0: that
  Experiment experiment = {};   // what else is changed
};

/// Runs a row in this process on `below` and writes down what goes over the boundary between the
/// two, as it happens. What the row writes on standard output and standard error goes into the
/// journal; what others write there while the row is in one of its calls, or from another thread,
/// is left to file descriptors 1 and 2.
///
/// The journal is cleared first; its last event is `returned`.
void RunObserved(int (*row)(), const Conditions& conditions, const cl_icd_dispatch& below,
                 Journal& journal);

}  // namespace diagnosis
