// Which accesses of several work-items to one int have an outcome that does not depend on who comes
// first: two groups of two work-items, 0 and 1, 2 and 3.

#include <gtest/gtest.h>

#include <cctype>
#include <string>

#include "exploration/model/machine.h"
#include "exploration/program/check.h"

namespace exploration {
namespace {

Program OneInt() {
  Program program;
  program.localSize = 2;
  program.groups = 2;
  program.inputs.resize(4);
  const TypeId array = program.types.ArrayOf(TypeOf(Scalar::intType), 1);
  program.variables.push_back({"g1", array, Space::globalSpace, Variable::Role::buffer});
  program.buffers.push_back({0, {1, 0, 0, 0}});
  return program;
}

/// "0=" is a store by work-item 0, "0r" a load, "0+" and "0&" are calls of two atomic functions,
/// "|" is a barrier.
bool IsValid(const std::string& accesses) {
  const Program program = OneInt();
  Machine machine(program);
  const Value one = {TypeOf(Scalar::intType), std::vector<Byte>(4, {0, Knowledge::known}), {}};
  try {
    for (const char access : accesses) {
      if (std::isdigit(static_cast<unsigned char>(access)) != 0) machine.SetItem(access - '0');
      Place place = machine.PlaceOf(0);
      place.type = TypeOf(Scalar::intType);
      const int atomic = access == '+' ? 0 : access == '&' ? 1 : notAtomic;
      if (access == '|') {
        machine.SetItem(0);
        machine.Barrier();
      }
      if (access == 'r' || atomic != notAtomic) machine.Load(place, atomic);
      if (access == '=' || atomic != notAtomic) machine.StoreTo(place, one, atomic);
    }
    return true;
  } catch (const Invalid&) {
    return false;
  }
}

TEST(Races, OnlyWhatIsOrderedOrTheSameAtomicFunctionIsValid) {
  for (const char* valid :
       {"0= 0r 0+ 0& 0=", "0r 1r 2r 3r", "0+ 1+ 2+ 3+", "0+ 1+ 0+", "0= | 1=", "0= | 1r 0r",
        "0= | 1+ 0+", "0+ 1+ | 0= | 1r", "0+ 1+ | 0& 1&", "0& | 0+ 1+ | 1r"})
    EXPECT_TRUE(IsValid(valid)) << valid;
  for (const char* invalid :
       {"0= 1r",    "0r 1=",      "0= 1=",      "0= | 2r",    "0r | 2=",    "0= | 2=",   "0= 1+",
        "0r 1+",    "0+ 1r",      "0= 0+ 1+",   "0+ 0= 1+",   "0+ 1+ 0=",   "0+ 1&",     "0+ 0& 1&",
        "0& 0+ 1+", "0= | 0+ 2+", "0+ | 0& 2&", "0+ 2+ | 0r", "0+ 2+ | 0=", "2+ 0+ | 1&"})
    EXPECT_FALSE(IsValid(invalid)) << invalid;
}

}  // namespace
}  // namespace exploration
