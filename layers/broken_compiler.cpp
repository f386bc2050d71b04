// An OpenCL layer that breaks a device's compiler: it edits the kernel texts on their way to the
// driver, so that the device does what it would if its compiler had the fault that BROKEN_COMPILER
// names. "help" lists the faults and ends the process; a name that is no fault's ends it with one
// line on standard error.

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "layers/kernel_edit.h"
#include "layers/layer.h"

namespace {

cl_program CL_API_CALL CreateProgramWithSource(cl_context, cl_uint, const char**, const size_t*,
                                               cl_int*);

consteval cl_icd_dispatch Hooks() {
  cl_icd_dispatch hooks{};
  hooks.clCreateProgramWithSource = CreateProgramWithSource;
  return hooks;
}

const Fault* broken = nullptr;

cl_program CL_API_CALL CreateProgramWithSource(cl_context context, cl_uint count,
                                               const char** strings, const size_t* lengths,
                                               cl_int* error) {
  std::string text;
  for (cl_uint i = 0; i < count && strings != nullptr && strings[i] != nullptr; ++i) {
    const bool hasLength = lengths != nullptr && lengths[i] != 0;
    text.append(strings[i], hasLength ? lengths[i] : std::strlen(strings[i]));
  }
  // What the driver must refuse, it gets as it is.
  if (text.empty())
    return layer::below->clCreateProgramWithSource(context, count, strings, lengths, error);
  text = Edited(text, *broken);
  const char* pointer = text.c_str();
  const size_t length = text.size();
  return layer::below->clCreateProgramWithSource(context, 1, &pointer, &length, error);
}

}  // namespace

const char* const layer::name = "broken compiler";
constinit const cl_icd_dispatch layer::hooks = Hooks();

void layer::Start() {
  const char* variable = std::getenv("BROKEN_COMPILER");
  const std::string wanted = variable == nullptr ? "" : variable;
  for (const Fault& fault : faults)
    if (fault.name == wanted) broken = &fault;
  if (broken != nullptr) return;
  if (wanted == "help") std::_Exit(ListFaults() ? 0 : 1);
  std::fprintf(stderr, "broken_compiler: no fault is called '%s' ('help' lists them)\n",
               wanted.c_str());
  std::_Exit(2);
}
