#pragma once

#include <cstring>
#include <string>

#include "layers/layer.h"

namespace layer {

/// clCreateProgramWithSource on what `edit` makes of the whole text. What the driver must refuse,
/// it gets as it is.
template <class Edit>
cl_program CreateEdited(cl_context context, cl_uint count, const char** strings,
                        const size_t* lengths, cl_int* error, Edit edit) {
  std::string text;
  for (cl_uint i = 0; i < count && strings != nullptr && strings[i] != nullptr; ++i) {
    const bool hasLength = lengths != nullptr && lengths[i] != 0;
    text.append(strings[i], hasLength ? lengths[i] : std::strlen(strings[i]));
  }
  if (text.empty())
    return below->clCreateProgramWithSource(context, count, strings, lengths, error);
  text = edit(text);
  const char* pointer = text.c_str();
  const size_t length = text.size();
  return below->clCreateProgramWithSource(context, 1, &pointer, &length, error);
}

}  // namespace layer
