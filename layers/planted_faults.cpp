// An OpenCL layer that breaks a device's compiler where it meets the programs of union_explore: it
// edits their texts on their way to the driver, as if the compiler had the faults that
// PLANTED_FAULTS names, with commas between them. "help" lists the faults and ends the process; a
// name that is no fault's ends it with one line on standard error.

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <regex>
#include <string>
#include <string_view>
#include <vector>

#include "layers/edited_source.h"
#include "layers/layer.h"

namespace {

/// A search and replacement in a text, as std::regex has them, wherever it matches. `^` and `$`
/// stand for the beginning and the end of a line.
struct Edit {
  const char* find = "";
  const char* with = "";
};

struct Fault {
  std::string_view name;
  std::string_view meaning;
  Edit edits[3];           // in their order; the rest is empty
  const char* where = "";  // Only in texts that hold this.
};

// How places are written: brackets, in which there may be others, and what stands before a member.
#define INDEX R"(\[(?:[^\[\]\n]|\[[^\[\]\n]*\])*\])"
#define OBJECT R"((?:\w+|\(\*\w+\))(?:)" INDEX ")?"
#define PLACE R"((?:\w|\.|->|\(\*\w+\)|)" INDEX ")+"
// Ahead of a place that is no answer's.
#define NO_ANSWER R"((?!out\b))"
// What the first byte of an object is.
#define BYTES(space, object) "((" space " uchar *)&" object ")"

constexpr Fault table[] = {
    {"packed-dropped",
     "Does not see the attribute packed.",
     {{R"(__attribute__\(\(packed\)\) )", ""}}},
    {"aligned-dropped",
     "Does not see the attribute aligned.",
     {{R"( __attribute__\(\(aligned\(\d+\)\)\))", ""}}},
    {"nested-struct-unaligned",
     "Aligns a struct in another to a byte.",
     {{R"(^( +struct S\d+ [a-z](?:\[\d+\])*);$)", "$1 __attribute__((packed));"}}},
    {"eight-bytes-aligned-to-four",
     "Aligns members of eight bytes to four, as 32-bit machines do.",
     {{R"(^( +(?:u?long|double) [a-z](?:\[\d+\])*);$)",
       "$1 __attribute__((packed, aligned(4)));"}}},
    {"like-members-swapped",
     "Lays two members of one type, one behind another, in the other order.",
     {{R"(^( +\w+ )([a-z]);\n\1([a-z]);$)", "$1$3;\n$1$2;"}}},

    {"store-before-store-lost",
     "Holds a store dead if another member of its object is stored next.",
     {{"^( +)(" OBJECT R"()\.[^=;\n]* = [^;\n]*;\n(?=\1\2\.[^=;\n]* = ))", ""}}},
    {"store-before-copy-lost",
     "Holds a store dead if its object is copied next.",
     {{"^( +)(" OBJECT R"()\.[^=;\n]* = [^;\n]*;\n(?=\1[^=;\n]* = \2;$))", ""}},
     "union"},
    {"whole-assignment-lost",
     "Loses the assignment of a whole union or struct.",
     {{"^( +)" NO_ANSWER OBJECT R"( = [a-z]\d+(?:)" INDEX ")?;$", "$1;"}},
     "union"},
    {"private-copy-short",
     "Loses the last byte where a union in private memory is assigned whole.",
     {{R"(^( +)([uw]\d+) = ([a-z]\d+(?:)" INDEX ")?);$",
       "$1{ uchar last = " BYTES("__private", "$2") "[sizeof($2) - 1]; $2 = $3; " BYTES(
           "__private", "$2") "[sizeof($2) - 1] = last; }"}},
     "union"},
    {"global-copy-short",
     "Loses the first byte where a union in global memory is assigned whole.",
     {{R"(^( +)(g\d+)" INDEX R"() = ([a-z]\d+(?:)" INDEX ")?);$",
       "$1{ uchar first = " BYTES("__global", "$2") "[0]; $2 = $3; " BYTES("__global",
                                                                           "$2") "[0] = first; }"}},
     "union"},

    {"argument-byte-lost",
     "Loses the first byte of a union that is passed by value.",
     {{R"(^(.* f\d+\(union U\d+ (v\d+)[^\n]*\)\n\{)$)",
       "$1\n  " BYTES("__private", "$2") "[0] = 0;"}}},
    {"result-byte-lost",
     "Loses the first byte of a union that is returned.",
     {{R"(^( +)return ([vw]\d+);$)", "$1" BYTES("__private", "$2") "[0] = 0;\n$1return $2;"}}},
    {"store-through-parameter-lost",
     "Loses what a function stores into a member through a pointer.",
     {{R"(^( +)p\d+->[^=\n]* = [^\n]*;$)", "$1;"}}},
    {"store-through-member-pointer-lost",
     "Loses what is stored through a pointer to a member.",
     {{R"(^( +)\(\*p\d+\) = [^\n]*;$)", "$1;"}}},

    {"run-time-index-one-too-far",
     "Takes a run-time index for the next element, or the first if that was the last.",
     {{"(" PLACE R"()\[(in\[\d+\]|[xi]\d+)\])", "$1[($2 + 1) % (sizeof($1) / sizeof($1[0]))]"}}},
    {"run-time-index-ignored",
     "Takes the first element whatever a run-time index says.",
     {{R"(\.([a-z])\[(?:in\[\d+\]|[xi]\d+)\])", ".$1[0]"}}},
    {"constant-index-stores-first",
     "Stores into the first element whatever a constant index says.",
     {{"^( +" NO_ANSWER R"([^=\n]*\.[a-z])\[[1-9]\d*\]([^=\n]* = ))", "$1[0]$2"}}},
    {"byte-before",
     "Takes the byte before the one that a pointer to uchar is indexed for.",
     {{R"((uchar \*\)&)" PLACE R"(\)\[)([1-9]\d*)\])", "$1$2 - 1]"}}},

    {"loop-one-short",
     "Ends a loop one turn early.",
     {{R"(; (i\d+) < ([^;\n]+); )", "; $1 < $2 - 1; "}}},
    {"condition-inverted", "Takes the other branch.", {{R"(if \(([^\n]*)\) \{$)", "if (!($1)) {"}}},
    {"else-lost", "Never takes an else.", {{R"(\} else \{$)", "} else if (0) {"}}},

    {"even-for-odd", "Takes the odd components for the even ones.", {{R"(\.even\b)", ".odd"}}},
    {"low-for-high", "Takes a vector's upper half for its lower one.", {{R"(\.hi\b)", ".lo"}}},
    {"two-components-swapped",
     "Takes the two components of a swizzle in the other order.",
     {{R"(\.([xyzw])([xyzw])\b)", ".$2$1"}}},
    {"numbered-components-swapped",
     "Takes the first two components of a swizzle by numbers in the other order.",
     {{R"(\.s([0-9a-f])([0-9a-f]))", ".s$2$1"}}},
    {"component-stored-to-x", "Stores to x what belongs to y.", {{R"(\.y = )", ".x = "}}},
    {"component-y-loaded-for-z", "Loads y where z is meant.", {{R"(\.z\b(?! =))", ".y"}}},
    {"third-component-lost",
     "Loses the third component where three are assigned.",
     {{"^( +" NO_ANSWER R"([^=\n]+) = ((?:(?:as_|convert_)\w+3|\(u?\w+3\))\([^\n]*\));$)",
       "$1.xy = $2.xy;"}}},
    {"third-component-not-stored",
     "Loses the third component of a vstore3.",
     {{"^( +)vstore3\\(([^\\n]*), (\\d+), (" NO_ANSWER "[^\\n]*)\\);$",
       "$1vstore2(($2).xy, 0, 3 * $3 + $4);"}}},
    {"second-half-not-stored",
     "Splits a vstore4, vstore8 or vstore16, and loses the second half.",
     {{"vstore4\\(([^\\n]*), (\\d+), (" NO_ANSWER "[^\\n]*)\\);$", "vstore2(($1).lo, 2 * $2, $3);"},
      {"vstore8\\(([^\\n]*), (\\d+), (" NO_ANSWER "[^\\n]*)\\);$", "vstore4(($1).lo, 2 * $2, $3);"},
      {"vstore16\\(([^\\n]*), (\\d+), (" NO_ANSWER "[^\\n]*)\\);$",
       "vstore8(($1).lo, 2 * $2, $3);"}}},
    {"vload-offset-ignored",
     "Takes no notice of the offset of a vload.",
     {{R"(vload(\d+)\([1-9]\d*, )", "vload$1(0, "}}},
    {"vload-offset-in-elements",
     "Takes the offset of a vload in elements rather than in vectors.",
     {{R"(vload(\d+)\(([1-9]\d*), )", "vload$1(0, $2 + "}}},

    {"uchar-sign-extended",
     "Extends members of type uchar with a sign.",
     {{R"(^( +)uchar ([a-z]);$)", "$1char $2;"}}},
    {"short-zero-extended",
     "Extends members of type short with zeros.",
     {{R"(^( +)short ([a-z]);$)", "$1ushort $2;"}}},
    {"long-store-cut",
     "Stores the lower half of a long, extended with zeros.",
     {{"^( +" NO_ANSWER R"([^=\n]* = )((?:as_ulong\()?in\[\d+\]\)?);$)", "$1(uint)$2;"}}},
    {"long-constant-cut",
     "Keeps 32 bits of a constant of 64.",
     {{R"(\b(\d{10,}U?L)\b)", "(uint)$1"}}},
    {"as-type-converts",
     "Converts where as_float is to keep the bits.",
     {{R"(as_float(\d*)\((\(int\1\)))", "convert_float$1($2"}}},
    {"exclusive-or-inclusive", "Takes ^ for |.", {{R"( \^ )", " | "}}},

    {"constant-data-last-zero",
     "Leaves the last element of a __constant initializer zero.",
     {{R"(^(__constant [^\n]*, )(?:\(\w+\))?[^,{}()\n]+(\)*\}+;)$)", "$1 0$2"}}},
    {"constant-element-first",
     "Loads the first element of a buffer in constant memory whatever the index.",
     {{R"(\b(k\d+))" INDEX, "$1[0]"}}},
    {"initializer-lost",
     "Fills with zeros what an initializer in braces fills.",
     {{R"(^( +(?:union|struct) [^\n=]*) = \{[^\n]*\};$)", "$1 = {0};"}}},

    {"group-forgotten",
     "Counts the work-items of each group from zero where the global number is asked for.",
     {{R"(\bget_global_id\(0\)\])", "get_local_id(0)]"}}},
    {"neighbour-is-self",
     "Loads a work-item's own element of local memory for a neighbour's.",
     {{R"(\(get_local_id\(0\) \+ \d+\) % \d+)", "get_local_id(0)"}}},
    {"barrier-dropped", "Does not wait at a barrier.", {{R"(^( +)barrier\([^\n]*\);$)", "$1;"}}},
    {"async-copy-short",
     "Ends async_work_group_copy one byte early.",
     {{R"((\d+ \* sizeof\([^)\n]*\)), 0\))", "$1 - 1, 0)"}}},
    {"atomic-lost", "Loses an atomic function.", {{R"(^( +)atomic_\w+\([^\n]*\);$)", "$1;"}}},
    {"atomic-sub-adds", "Adds where atomic_sub subtracts.", {{R"(\batomic_sub\()", "atomic_add("}}},
};

cl_program CL_API_CALL CreateProgramWithSource(cl_context, cl_uint, const char**, const size_t*,
                                               cl_int*);

consteval cl_icd_dispatch Hooks() {
  cl_icd_dispatch hooks{};
  hooks.clCreateProgramWithSource = CreateProgramWithSource;
  return hooks;
}

struct Replacement {
  std::regex find;
  const char* with;
  const char* where;
};
std::vector<Replacement> planted;

void Plant(const Fault& fault) {
  for (const Edit& edit : fault.edits)
    if (*edit.find != '\0')
      planted.push_back({std::regex(edit.find, std::regex::ECMAScript | std::regex::multiline |
                                                   std::regex::optimize),
                         edit.with, fault.where});
}

// What the driver is given in place of the text that it must compile.
cl_program CL_API_CALL CreateProgramWithSource(cl_context context, cl_uint count,
                                               const char** strings, const size_t* lengths,
                                               cl_int* error) {
  return layer::CreateEdited(context, count, strings, lengths, error, [](std::string text) {
    for (const Replacement& replacement : planted)
      if (text.find(replacement.where) != std::string::npos)
        text = std::regex_replace(text, replacement.find, replacement.with);
    return text;
  });
}

[[noreturn]] void List() {
  for (const Fault& fault : table)
    std::printf("%-35.*s%.*s\n", static_cast<int>(fault.name.size()), fault.name.data(),
                static_cast<int>(fault.meaning.size()), fault.meaning.data());
  std::_Exit(std::fflush(stdout) == 0 ? 0 : 1);
}

}  // namespace

const char* const layer::name = "planted faults";
constinit const cl_icd_dispatch layer::hooks = Hooks();

void layer::Start() {
  const char* variable = std::getenv("PLANTED_FAULTS");
  const std::string wanted = variable == nullptr ? "" : variable;
  if (wanted == "help") List();
  for (std::size_t begin = 0; begin <= wanted.size();) {
    const std::size_t end = std::min(wanted.find(',', begin), wanted.size());
    const std::string_view called = std::string_view(wanted).substr(begin, end - begin);
    bool isKnown = false;
    for (const Fault& fault : table) {
      if (fault.name != called) continue;
      Plant(fault);
      isKnown = true;
    }
    if (!isKnown) {
      std::fprintf(stderr, "planted_faults: no fault is called '%.*s' ('help' lists them)\n",
                   static_cast<int>(called.size()), called.data());
      std::_Exit(2);
    }
    begin = end + 1;
  }
}
