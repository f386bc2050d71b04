#pragma once

#include <string>

#include "diagnosis/record/provenance.h"

namespace diagnosis {

/// Of the first OpenCL platform, which is there, as this process sees it. `layers` is OPENCL_LAYERS
/// before OpenCL was first called: the loader takes the variable's own text to pieces.
Provenance ProvenanceHere(const std::string& layers);

/// What file `path` is: its build ID, or else its checksum. Both are empty if it cannot be read.
Library LibraryAt(const std::string& path);

}  // namespace diagnosis
