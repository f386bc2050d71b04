#include "diagnosis/capture/shared_context.h"

#include <algorithm>
#include <array>
#include <compare>
#include <cstddef>
#include <cstring>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "diagnosis/capture/boundary.h"

namespace diagnosis {
namespace {

using Entry = cl_icd_dispatch;
using Notify = void(CL_CALLBACK*)(const char*, const void*, size_t, void*);

// What a context is asked for with.
struct Arguments {
  std::vector<cl_context_properties> properties;
  cl_device_type type;
  Notify notify;
  void* data;
  bool operator==(const Arguments&) const = default;
};

// A question, down to the places that the answer is to be put in.
struct Question {
  const void* call;
  const void* object;
  cl_uint name;
  size_t size;
  std::array<bool, 2> wants;  // the value; its size
  auto operator<=>(const Question&) const = default;
};

struct Reply {
  std::string value;
  size_t size;
};

struct State {
  const cl_icd_dispatch* below = nullptr;
  cl_context context = nullptr;
  Arguments arguments{};
  std::map<Question, Reply> replies;
};

State& Own() {
  static State state;
  return state;
}

template <auto entryPoint>
constexpr char tag = 0;

// Puts the answer that is known to the question where it belongs; false if none is.
bool IsKnown(const Question& question, void* value, size_t* size) {
  const auto found = Own().replies.find(question);
  if (found == Own().replies.end()) return false;
  const Reply& reply = found->second;
  if (value != nullptr) std::memcpy(value, reply.value.data(), reply.value.size());
  if (size != nullptr) *size = reply.size;
  return true;
}

void Keep(const Question& question, const void* value, size_t room, const size_t* size) {
  Reply reply{.value = {}, .size = size != nullptr ? *size : 0};
  const size_t used = size != nullptr ? std::min(room, *size) : room;
  if (value != nullptr) reply.value.assign(static_cast<const char*>(value), used);
  Own().replies.emplace(question, std::move(reply));
}

template <auto entryPoint, class Object>
cl_int CL_API_CALL AskOnce(Object object, cl_uint name, size_t size, void* value,
                           size_t* returned) {
  const Question question{
      &tag<entryPoint>, object, name, size, {value != nullptr, returned != nullptr}};
  if (IsKnown(question, value, returned)) return CL_SUCCESS;
  const cl_int code = (Own().below->*entryPoint)(object, name, size, value, returned);
  if (code == CL_SUCCESS) Keep(question, value, size, returned);
  return code;
}

cl_int CL_API_CALL GetPlatformIds(cl_uint room, cl_platform_id* platforms, cl_uint* count) {
  const Question question{
      &tag<&Entry::clGetPlatformIDs>, nullptr, 0, room, {platforms != nullptr, count != nullptr}};
  size_t known = 0;
  if (IsKnown(question, platforms, &known)) {
    if (count != nullptr) *count = static_cast<cl_uint>(known);
    return CL_SUCCESS;
  }
  const cl_int code = Own().below->clGetPlatformIDs(room, platforms, count);
  if (code != CL_SUCCESS) return code;
  Reply reply{.value = {}, .size = count != nullptr ? *count : 0};
  const cl_uint used = count != nullptr ? std::min(room, *count) : room;
  if (platforms != nullptr)
    reply.value.assign(reinterpret_cast<const char*>(platforms), used * sizeof *platforms);
  Own().replies.emplace(question, std::move(reply));
  return code;
}

Arguments ArgumentsOf(const cl_context_properties* properties, cl_device_type type, Notify notify,
                      void* data) {
  Arguments arguments{{}, type, notify, data};
  // Pairs of a name and a value, behind which stands a 0.
  for (const auto* pair = properties; pair != nullptr && *pair != 0; pair += 2)
    arguments.properties.insert(arguments.properties.end(), {pair[0], pair[1]});
  return arguments;
}

cl_context CL_API_CALL CreateContextFromType(const cl_context_properties* properties,
                                             cl_device_type type, Notify notify, void* data,
                                             cl_int* code) {
  State& own = Own();
  const Arguments arguments = ArgumentsOf(properties, type, notify, data);
  if (own.context != nullptr && arguments == own.arguments &&
      own.below->clRetainContext(own.context) == CL_SUCCESS) {
    if (code != nullptr) *code = CL_SUCCESS;
    return own.context;
  }
  cl_int made = CL_SUCCESS;
  cl_context context = own.below->clCreateContextFromType(properties, type, notify, data, &made);
  if (code != nullptr) *code = made;
  if (made == CL_SUCCESS && own.context == nullptr &&
      own.below->clRetainContext(context) == CL_SUCCESS) {
    own.context = context;
    own.arguments = arguments;
  }
  return context;
}

// Another context may lie where one lay that is gone, so of those no answer is kept.
cl_int CL_API_CALL GetContextInfo(cl_context context, cl_context_info name, size_t size,
                                  void* value, size_t* returned) {
  if (context != Own().context)
    return Own().below->clGetContextInfo(context, name, size, value, returned);
  return AskOnce<&Entry::clGetContextInfo>(context, name, size, value, returned);
}

}  // namespace

const cl_icd_dispatch& WithSharedContext(const cl_icd_dispatch& below) {
  static cl_icd_dispatch entryPoints;
  if (Own().below != &below) {
    Own() = {};
    Own().below = &below;
    entryPoints = below;
    entryPoints.clGetPlatformIDs = GetPlatformIds;
    entryPoints.clGetPlatformInfo = AskOnce<&Entry::clGetPlatformInfo, cl_platform_id>;
    entryPoints.clGetDeviceInfo = AskOnce<&Entry::clGetDeviceInfo, cl_device_id>;
    entryPoints.clCreateContextFromType = CreateContextFromType;
    entryPoints.clGetContextInfo = GetContextInfo;
  }
  return entryPoints;
}

void ReleaseSharedContext() {
  const State former = std::exchange(Own(), {});
  if (former.context != nullptr) former.below->clReleaseContext(former.context);
}

}  // namespace diagnosis
