// An OpenCL layer that breaks a device's compiler: it edits the kernel texts on their way to the
// driver, so that the device does what it would if its compiler had the fault that BROKEN_COMPILER
// names. "help" lists the faults and ends the process; a name that is no fault's ends it with one
// line on standard error.

#include <cstdio>
#include <cstdlib>
#include <string>

#include "layers/edited_source.h"
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
  return layer::CreateEdited(context, count, strings, lengths, error,
                             [](const std::string& text) { return Edited(text, *broken); });
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
