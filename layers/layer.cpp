#include "layers/layer.h"

#include <cstring>

const cl_icd_dispatch* layer::below = nullptr;

cl_int CL_API_CALL clGetLayerInfo(cl_layer_info name, size_t size, void* value,
                                  size_t* sizeReturned) {
  constexpr cl_layer_api_version version = CL_LAYER_API_VERSION_100;
  const bool wantsName = name == CL_LAYER_NAME;
  if (!wantsName && name != CL_LAYER_API_VERSION) return CL_INVALID_VALUE;
  const void* answer = wantsName ? static_cast<const void*>(layer::name) : &version;
  const size_t answerSize = wantsName ? std::strlen(layer::name) + 1 : sizeof version;
  if (value != nullptr && size < answerSize) return CL_INVALID_VALUE;
  if (value != nullptr) std::memcpy(value, answer, answerSize);
  if (sizeReturned != nullptr) *sizeReturned = answerSize;
  return CL_SUCCESS;
}

cl_int CL_API_CALL clInitLayer(cl_uint numEntries, const cl_icd_dispatch* target,
                               cl_uint* numEntriesReturned, const cl_icd_dispatch** layer) {
  constexpr cl_uint entries = sizeof(cl_icd_dispatch) / sizeof(void*);
  if (target == nullptr || layer == nullptr || numEntriesReturned == nullptr ||
      numEntries < entries)
    return CL_INVALID_VALUE;
  layer::below = target;
  *layer = &layer::hooks;
  *numEntriesReturned = entries;
  layer::Start();
  return CL_SUCCESS;
}
