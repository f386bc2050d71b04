#include "exploration/features/features.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <regex>
#include <set>
#include <string>
#include <utility>

#include "exploration/generator/generator.h"
#include "exploration/model/model.h"
#include "exploration/program/check.h"

namespace exploration {
namespace {

Options Everything() {
  Options options;
  options.hasDouble = options.hasHalf = options.hasAnonymousMembers = true;
  return options;
}

/// What stands in the text of every program that uses it.
const std::map<std::string_view, std::string> texts = {
    {"members", R"([.>][a-z])"},
    {"arrays", R"( [a-z]\[\d\])"},
    {"constant-indices", R"(\[\d\])"},
    {"run-time-indices", R"(\[(in\[\d+\]|[ix]\d+)\])"},
    {"nested-structs", R"(\n  +struct )"},
    {"nested-unions", R"(\n  +union )"},
    {"anonymous-members", R"(\n  +(struct|union) (__attribute__\(\(packed\)\) )?\{)"},
    {"packed", R"(__attribute__\(\(packed\)\))"},
    {"aligned", R"(__attribute__\(\(aligned\(\d+\)\)\))"},
    {"floats", R"(float)"},
    {"doubles", R"(cl_khr_fp64[\s\S]*double)"},
    {"halves", R"(cl_khr_fp16[\s\S]*half)"},
    {"vectors", R"((2|4|8|16) [a-z])"},
    {"three-components", R"(3 [a-z])"},
    {"components", R"(\.([xyzw]|s[0-9a-f])\b)"},
    {"swizzles", R"(\.([xyzw]{2,4}|s[0-9a-f]{2,16})\b)"},
    {"vector-halves", R"(\.(lo|hi|even|odd)\b)"},
    {"arithmetic", R"( (\+|-|\*|&|\||\^|<<|>>) )"},
    {"conversions", R"(convert_|\((u?(char|short|int|long)|float|double)\))"},
    {"as-type", R"(as_[a-z]+\d*\()"},
    {"bytes", R"(\(\(__[a-z]+ uchar \*\)&)"},
    {"vector-loads", R"(vload(2|3|4|8|16)\(\d+, [^i])"},
    {"vector-stores", R"(vstore(2|3|4|8|16)\()"},
    {"half-storage", R"(v(load|store)_half(2|3|4|8)?(_rt[ezpn])?\()"},
    {"whole-unions", R"([a-z0-9\])] = [^;\n]*[a-z0-9\])];)"},
    {"whole-structs", R"([a-z0-9\])] = [^;\n]*[a-z0-9\])];)"},
    {"initializers", R"((union|struct) [US]\d+ w\d+ = )"},
    {"parameters", R"(\(.*(union|struct) [US]\d+ v\d+)"},
    {"results", R"(\n(union|struct) [US]\d+ f\d+\()"},
    {"member-pointers", R"( \*p\d+ = )"},
    {"pointer-parameters", R"(f\d+\(.* \*p\d+)"},
    {"conditionals", R"(if \()"},
    {"loops", R"(for \(int i\d+ = 0; i\d+ < )"},
    {"work-items", R"()"},
    {"private-memory", R"(  (union|struct) [US]\d+ [usw]\d+)"},
    {"local-memory", R"(__local (union|struct) [US]\d+ l\d+\[\d\];)"},
    {"global-memory", R"(__global (union|struct) [US]\d+ \*g\d+)"},
    {"constant-memory", R"(__constant (union|struct) [US]\d+ \*k\d+)"},
    {"constant-data", R"(\n__constant .* c\d+(\[\d\])? = \{)"},
    {"barriers", R"(barrier\()"},
    {"async-copies", R"(async_work_group_copy\(.*\n  +wait_group_events\(1, &)"},
    {"atomics", R"(atomic_(add|sub|and|or|xor)\(&)"},
};

TEST(Features, EachIsDrawnPrintedAndExecuted) {
  std::map<std::string, int> count;
  for (std::uint64_t number = 0; number < 600; ++number) {
    const RunnableProgram program = MakeRunnable(Draw(3, number, Everything()));
    for (const std::string& feature : program.features) {
      ++count[feature];
      ASSERT_TRUE(texts.contains(feature)) << feature;
      EXPECT_TRUE(std::regex_search(program.text, std::regex(texts.at(feature))))
          << feature << " in 3:" << number;
    }
  }
  for (const Feature* feature : Features())
    EXPECT_GE(count[std::string(feature->name)], 5) << feature->name;
}

TEST(Features, NamesAreDifferentAndFound) {
  std::set<std::string_view> names;
  for (const Feature* feature : Features()) {
    EXPECT_TRUE(names.insert(feature->name).second) << feature->name;
    EXPECT_EQ(FeatureNamed(feature->name), feature);
    EXPECT_FALSE(feature->says.empty());
  }
  EXPECT_EQ(FeatureNamed("no-such"), nullptr);
}

// A fault that two features make together is only found if they meet.
TEST(Features, EveryTwoMeetInOneOfAThousand) {
  constexpr int programs = 4000;
  std::map<std::pair<const Feature*, const Feature*>, int> together;
  for (std::uint64_t number = 0; number < programs; ++number) {
    const std::vector<const Feature*> used = FeaturesOf(Draw(1, number, Everything()));
    for (const Feature* one : used)
      for (const Feature* other : used) ++together[{one, other}];
  }
  for (const Feature* one : Features()) {
    for (const Feature* other : Features()) {
      const int meetings = together[{one, other}];
      EXPECT_GE(meetings, programs / 1000) << one->name << " and " << other->name;
    }
  }
}

TEST(Features, ThoseThatMayNotBeUsedAreNot) {
  Options options = Everything();
  options.only = {"vectors", "swizzles", "private-memory", "loops"};
  options.without = {"loops"};
  const std::set<std::string> allowed = {"vectors", "swizzles", "private-memory", "members",
                                         "constant-indices"};
  for (std::uint64_t number = 0; number < 50; ++number)
    for (const std::string& feature : MakeRunnable(Draw(1, number, options)).features)
      EXPECT_TRUE(allowed.contains(feature)) << feature;
}

TEST(Features, OfEachAddressSpaceAlone) {
  for (const Space space :
       {Space::privateSpace, Space::localSpace, Space::globalSpace, Space::constantSpace}) {
    Options options = Everything();
    options.space = space;
    for (std::uint64_t number = 0; number < 40; ++number) {
      const Program program = Draw(2, number, options);
      for (const Variable& variable : program.variables) {
        const bool isUnion =
            variable.role != Variable::Role::parameter && program.types[variable.type].IsRecord();
        EXPECT_TRUE(!isUnion || variable.space == space) << variable.name;
      }
    }
  }
}

// What makes a program smaller takes out anything: what is left is valid, or Invalid says why not.
TEST(Features, AnyStatementCanBeTakenOut) {
  int valid = 0;
  int invalid = 0;
  for (std::uint64_t number = 0; number < 60; ++number) {
    const Program program = Draw(4, number, Everything());
    for (std::size_t i = 0; i < program.body.parts.size(); ++i) {
      Program smaller = program;
      smaller.body.parts.erase(smaller.body.parts.begin() + static_cast<std::ptrdiff_t>(i));
      try {
        smaller = WithoutUnused(smaller);
        EXPECT_LT(WeightOf(smaller), WeightOf(program));
        EXPECT_FALSE(Modelled(smaller).text.empty());
        ++valid;
      } catch (const Invalid&) {
        ++invalid;
      }
    }
  }
  EXPECT_GT(valid, invalid);
  EXPECT_GT(invalid, 0);
}

// The number of a program is how it is found again, on other machines too.
TEST(Generator, DrawsTheSameEverywhere) {
  std::uint64_t hash = 0xCBF29CE484222325U;
  const auto add = [&hash](std::uint8_t byte) { hash = (hash ^ byte) * 0x100000001B3U; };
  for (std::uint64_t number = 0; number < 20; ++number) {
    const RunnableProgram program = MakeRunnable(Draw(1, number, Options()));
    for (const char character : program.text) add(static_cast<std::uint8_t>(character));
    for (const RunnableBuffer& buffer : program.buffers) {
      for (const std::uint8_t byte : buffer.bytes) add(byte);
      for (const std::uint8_t byte : buffer.expected) add(byte);
      for (const std::uint8_t byte : buffer.known) add(byte);
    }
  }
  EXPECT_EQ(hash, 18069673550191462970U);
}

}  // namespace
}  // namespace exploration
