#include "exploration/views/rules.h"

#include <algorithm>

namespace exploration {
namespace {

constexpr std::string_view attributes = "OpenCL C 1.2, 6.11.1";
constexpr std::string_view structs = "C99, 6.2.6.1p6 and 6.5.16.1";
constexpr std::string_view vectors = "OpenCL C 1.2, 6.1.7";

// The paragraphs are named from memory: the standards' texts could not be looked up when this was
// written. Whoever sends a report looks them up.
constexpr Rule rules[] = {
    {"",
     "A union that is read through another member than it was stored through gives the bytes "
     "that are there, as values of that member's type.",
     "OpenCL C 1.2, 6.2.4.1; C99, 6.5.2.3"},
    {"", "Sizes and alignments of all types are given, so where each byte of a member lies is too.",
     "OpenCL C 1.2, 6.1.1, 6.1.2 and 6.1.5"},
    {"arrays", "Elements of an array follow one another without a gap.", "C99, 6.2.5p20"},
    {"run-time-indices",
     "An element is the same one by whatever expression its number comes about.", "C99, 6.5.2.1"},
    {"nested-structs", "Members of a struct lie in their order, each at its alignment.",
     "C99, 6.7.2.1p13"},
    {"nested-unions", "Every member of a union begins where the union does.", "C99, 6.7.2.1p14"},
    {"anonymous-members", "An anonymous member's members are the outer type's.",
     "C11, 6.7.2.1p13, which compilers take as an extension"},
    {"packed", "The members of a packed type have no padding between them.", attributes},
    {"aligned", "An aligned type or member lies at a multiple of that number of bytes.",
     attributes},
    {"doubles", "The device has double.", "OpenCL C 1.2, 6.1.1"},
    {"halves", "The device has cl_khr_fp16.", "OpenCL 1.2 extensions, 9.5"},
    {"vectors", "A vector's components lie in their order, and it is aligned to its size.",
     "OpenCL C 1.2, 6.1.5"},
    {"three-components",
     "Vectors of three components have the size and the alignment of four; what the fourth's bytes "
     "are is not asked for.",
     "OpenCL C 1.2, 6.1.5"},
    {"components", "A component of a vector in memory is an lvalue, and a store changes it alone.",
     vectors},
    {"swizzles", "A swizzle names components in any order, in a store each once.", vectors},
    {"vector-halves", ".lo, .hi, .even and .odd name half of a vector's components.", vectors},
    {"arithmetic", "No operation overflows a signed type, and none rounds.", "C99, 6.5p5"},
    {"conversions", "Each number that is converted is one that the other type has.",
     "OpenCL C 1.2, 6.2.3"},
    {"as-type", "as_T gives the same bits another type of the same size.", "OpenCL C 1.2, 6.2.4.2"},
    {"bytes", "Any object may be read and written by bytes, through a pointer to uchar.",
     "C99, 6.5p7"},
    {"vector-loads", "vloadN reads from an address that is aligned as an element.",
     "OpenCL C 1.2, 6.12.7"},
    {"vector-stores", "vstoreN writes to an address that is aligned as an element.",
     "OpenCL C 1.2, 6.12.7"},
    {"half-storage",
     "vload_half and vstore_half need no other support of half; each number is one that half has.",
     "OpenCL C 1.2, 6.12.7"},
    {"whole-unions",
     "Assignment of a union carries the bytes of the member that was stored last; no others are "
     "asked for.",
     "C99, 6.2.6.1p7 and 6.5.16.1"},
    {"whole-structs",
     "Assignment of a struct carries the values of all members; its padding is not asked for.",
     structs},
    {"initializers", "What an initializer does not name is zero, but for the rest of a union.",
     "C99, 6.7.8"},
    {"parameters", "A parameter is the function's own object, with the argument's value.",
     "C99, 6.5.2.2p4"},
    {"results", "A function's result may be a struct or union.", "C99, 6.8.6.4"},
    {"member-pointers",
     "A pointer to a member is used for objects of the type that it points to, and as the member "
     "that was stored last.",
     "C99, 6.5p7"},
    {"pointer-parameters", "A pointer that is passed keeps its address space.",
     "OpenCL C 1.2, 6.5"},
    {"work-items", "No work-item stores to what another uses without a barrier between them.",
     "OpenCL 1.2, 3.3.1"},
    {"local-memory", "Local memory is declared at the kernel's outermost level.",
     "OpenCL C 1.2, 6.5.2"},
    {"constant-memory", "A __constant buffer holds what the host has written.",
     "OpenCL C 1.2, 6.5.3"},
    {"constant-data", "__constant data at file scope has its initializer's value.",
     "OpenCL C 1.2, 6.5.3"},
    {"barriers", "All work-items of a group come to each barrier, which orders their accesses.",
     "OpenCL C 1.2, 6.12.8"},
    {"async-copies", "What async_work_group_copy writes is read behind wait_group_events.",
     "OpenCL C 1.2, 6.12.10"},
    {"atomics", "An atomic function's operand is an int or uint in local or global memory.",
     "OpenCL C 1.2, 6.12.11"},
};

}  // namespace

std::vector<Rule> RulesFor(const std::vector<std::string>& features) {
  std::vector<Rule> found;
  for (const Rule& rule : rules)
    if (rule.feature.empty() || std::ranges::find(features, rule.feature) != features.end())
      found.push_back(rule);
  return found;
}

}  // namespace exploration
