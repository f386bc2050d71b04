#include "diagnosis/record/provenance.h"

#include <fmt/format.h>

#include <algorithm>

namespace diagnosis {

namespace {

// What ocl-icd's loader reads, then drivers, then layers of this project.
const std::vector<Variable> variables = {
    {"OCL_ICD_VENDORS"},
    {"OCL_ICD_FILENAMES"},
    {"OCL_ICD_PLATFORM_SORT"},
    {"OCL_ICD_ASSUME_ICD_EXTENSION"},
    {"OCL_ICD_DEFAULT_PLATFORM"},
    {"OPENCL_VENDOR_PATH"},
    {"OPENCL_LAYERS"},
    {"OPENCL_LAYER_PATH"},

    {"POCL_DEVICES"},
    {"POCL_WORK_GROUP_METHOD"},
    {"POCL_MAX_PTHREAD_COUNT"},
    {"POCL_CPU_MAX_CU_COUNT"},
    {"POCL_AFFINITY"},
    {"POCL_KERNEL_CACHE"},
    {"POCL_DEBUG"},
    {"RUSTICL_ENABLE"},
    {"RUSTICL_DEVICE_TYPE"},
    {"RUSTICL_FEATURES"},
    {"RUSTICL_CL_VERSION"},
    {"RUSTICL_DEBUG"},
    {"CLOVER_DEVICE_TYPE"},
    {"CLOVER_EXTRA_BUILD_OPTIONS"},
    {"CLOVER_EXTRA_COMPILE_OPTIONS"},
    {"MESA_LOADER_DRIVER_OVERRIDE"},
    {"MESA_SHADER_CACHE_DISABLE"},
    {"GALLIUM_DRIVER"},
    {"LP_NATIVE_VECTOR_WIDTH"},
    {"LP_NUM_THREADS"},
    {"LIBGL_ALWAYS_SOFTWARE"},
    {"INTEL_DEBUG"},
    {"AMD_DEBUG"},
    {"ZINK_DEBUG"},
    {"NIR_DEBUG"},
    {"PAN_MESA_DEBUG"},
    {"FD_MESA_DEBUG"},
    {"NEOReadDebugKeys"},
    {"IGC_ShaderDumpEnable"},
    {"CL_CONFIG_USE_VECTORIZER"},
    {"CL_CONFIG_CPU_VECTORIZER_MODE"},
    {"CL_CONFIG_CPU_TARGET_ARCH"},
    {"AMD_OCL_BUILD_OPTIONS"},
    {"AMD_OCL_BUILD_OPTIONS_APPEND"},
    {"GPU_ENABLE_WGP_MODE"},
    {"HSA_OVERRIDE_GFX_VERSION"},
    {"CUDA_CACHE_DISABLE"},
    {"OCLGRIND_CHECK_API"},
    {"OCLGRIND_DATA_RACES"},
    {"OCLGRIND_QUICK"},
    {"OCLGRIND_BUILD_OPTIONS"},
    {"OCLGRIND_DISABLE_PCH"},
    {"OCLGRIND_NUM_THREADS"},
    {"OCLGRIND_PLUGINS"},
    {"CUDA_VISIBLE_DEVICES", true},
    {"CUDA_DEVICE_ORDER", true},
    {"GPU_DEVICE_ORDINAL", true},
    {"HIP_VISIBLE_DEVICES", true},
    {"ROCR_VISIBLE_DEVICES", true},
    {"ONEAPI_DEVICE_SELECTOR", true},
    {"ZE_AFFINITY_MASK", true},
    {"DRI_PRIME", true},

    {"BROKEN_COMPILER"},
    {"ONE_DEVICE"},
    {"SIMULATED_GPU_KEEP_DENORMALS"},
};

// Those that do not merely pick one of several devices alike.
std::map<std::string, std::string> Deciding(std::map<std::string, std::string> environment) {
  for (const Variable& variable : variables)
    if (variable.picksDevice) environment.erase(std::string(variable.name));
  return environment;
}

std::string OrNone(std::string text) { return text.empty() ? "none" : text; }

}  // namespace

std::string NameOf(const Library& library) {
  if (!library.buildId.empty())
    return fmt::format("{} (build ID {})", library.file, library.buildId);
  if (!library.checksum.empty())
    return fmt::format("{} (cksum {})", library.file, library.checksum);
  return library.file;
}

const std::vector<Variable>& VariablesThatMatter() { return variables; }

std::string WithoutFolders(std::string_view value) {
  constexpr std::string_view between = ":;,=\t\n\"'";
  constexpr std::size_t most = 200;
  std::string kept;
  while (!value.empty() && kept.size() < most) {
    // A folder's name may have a blank in it: what follows is of one word unless it is an option.
    const std::size_t end =
        std::min({value.find_first_of(between), value.find(" -"), value.size()});
    std::string_view word = value.substr(0, end);
    while (word.size() > 1 && word.ends_with('/')) word.remove_suffix(1);
    kept += word.substr(word.rfind('/') + 1);
    if (end < value.size()) kept += value[end];
    value.remove_prefix(std::min(end + 1, value.size()));
  }
  if (kept.size() > most) kept.resize(most);
  return kept;
}

std::string ListOf(const std::map<std::string, std::string>& environment) {
  std::string list;
  for (const auto& [name, value] : environment)
    list += fmt::format("{}{}={}", list.empty() ? "" : ", ", name, value);
  return list;
}

std::string ListOf(const std::vector<Library>& layers) {
  std::string list;
  for (const Library& layer : layers) list += (list.empty() ? "" : ", ") + NameOf(layer);
  return list;
}

std::vector<ProvenanceDifference> DifferencesBetween(const Provenance& one,
                                                     const Provenance& other) {
  std::vector<ProvenanceDifference> differences;
  if (one.system.empty() || other.system.empty()) return differences;  // no worker came up
  const auto compare = [&differences](std::string_view what, std::string first, std::string second,
                                      bool mayDiffer) {
    if (first != second) differences.push_back({what, first, second, mayDiffer});
  };
  compare("another driver library", NameOf(one.driver), NameOf(other.driver), false);
  compare("other layers", OrNone(ListOf(one.layers)), OrNone(ListOf(other.layers)), false);
  compare("another environment", OrNone(ListOf(Deciding(one.environment))),
          OrNone(ListOf(Deciding(other.environment))), false);
  compare("another system", one.system, other.system, true);
  compare("another processor", one.processor, other.processor, true);
  compare("another build of the suite", one.build, other.build, true);
  return differences;
}

}  // namespace diagnosis
