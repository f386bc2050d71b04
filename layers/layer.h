#pragma once

// An OpenCL layer: a library that the loader puts between a program and the drivers because
// OPENCL_LAYERS names it. What every layer must say to the loader stands in layer.cpp; a layer
// itself says what is declared here.

// What the loader finds by name is all that can be seen from outside a layer: two layers in one
// process have the rest by the same names.
#pragma GCC visibility push(default)
#include <CL/cl_layer.h>
#pragma GCC visibility pop

namespace layer {

/// What the layer calls itself.
extern const char* const name;

/// What the layer stands before. The loader forwards every entry point that is null here.
extern const cl_icd_dispatch hooks;

/// What the layer stands on: the next layer, or the loader. Null until the loader has called
/// clInitLayer.
extern const cl_icd_dispatch* below;

/// Called once, as soon as `below` can be called, before any hook.
void Start();

}  // namespace layer
