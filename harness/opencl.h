#pragma once

// The one way the suite includes the OpenCL C++ bindings: failing calls throw, nothing newer than
// OpenCL 1.2 is called (so a queue comes from clCreateCommandQueue), a device of a platform older
// than that is neither retained nor released, which came with 1.2, and a program's sources are
// pairs of pointer and length, which go to the driver without a copy.
#define CL_HPP_ENABLE_EXCEPTIONS
#define CL_HPP_TARGET_OPENCL_VERSION 120
#define CL_HPP_MINIMUM_OPENCL_VERSION 110
#define CL_HPP_ENABLE_PROGRAM_CONSTRUCTION_FROM_ARRAY_COMPATIBILITY
#include <CL/opencl.hpp>
