// Suspects on the records of made-up devices: each fault is named, and none by another's name.

#include <CL/cl.h>
#include <fmt/format.h>
#include <fnmatch.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cfenv>
#include <cmath>
#include <cstdint>
#include <functional>
#include <ostream>
#include <string>
#include <vector>

#include "diagnosis/localization/analysis.h"
#include "diagnosis/localization/glossary.h"
#include "tests/diagnosis/made_up_device.h"

namespace diagnosis {
namespace {

using Names = std::vector<std::string>;

Names NamesIn(const Suspects& suspects, const std::string& row) {
  Names names;
  for (const NamedSuspect& suspect : suspects.Of(row)) names.push_back(suspect.name);
  return names;
}
using Device_ = MadeUpDevice&;

/// A fault, the rows that it is tried on, and the names that each of them is to get.
struct Fault_ {
  Names names;
  std::vector<const char*> rows;
  std::function<void(MadeUpDevice&)> set;
  int repetitions = 10;
};

std::ostream& operator<<(std::ostream& out, const Fault_& fault) {
  return out << testing::PrintToString(fault.names);
}

bool Tiny(float x) { return std::fpclassify(x) == FP_SUBNORMAL; }
float Flushed(float x) { return Tiny(x) ? std::copysign(0.0F, x) : x; }

/// `compute` in a rounding mode of its own.
template <class Function>
auto InMode(int mode, Function function) {
  return [mode, function](auto... arguments) {
    const int before = std::fegetround();
    std::fesetround(mode);
    const auto result = function(arguments...);
    std::fesetround(before);
    return result;
  };
}

void MoveLanes(MadeUpDevice& device, const std::function<int(int)>& source) {
  device.placeOfA = [old = device.placeOfA, source](int item, int lane) {
    return old(item, source(lane));
  };
  device.placeOfB = [old = device.placeOfB, source](int item, int lane) {
    return old(item, source(lane));
  };
}

std::function<std::size_t(int, int)> Moved(const std::function<std::size_t(int, int)>& place,
                                           std::size_t offset) {
  return [place, offset](int item, int lane) { return place(item, lane) + offset; };
}

const std::vector<Fault_>& Faults() {
  static const std::vector<Fault_> faults = {
      {{"denormals-flushed"},
       {"multiply_union_vector8_3", "multiply_union_vector16_3"},
       [](Device_ d) {
         d.compute = [old = d.compute](float a, float b, int n) {
           return Flushed(old(a, Flushed(b), n));
         };
       }},
      // Integers of 32 bits are those of a positive float, which can't tell these two.
      {{"rounds-toward-zero", "rounds-down"},
       {"copy_union_scalar_1", "copy_union_vector8_2", "floor_union_arrays_2",
        "add_union_arrays_2"},
       [](Device_ d) { d.convert = InMode(FE_TOWARDZERO, d.convert); }},
      {{"rounds-up"},
       {"copy_union_vector16_1", "multiply_union_vector4_1"},
       [](Device_ d) { d.convert = InMode(FE_UPWARD, d.convert); }},
      {{"rounds-toward-zero", "rounds-down"},
       {"copy_union_vector16_1", "multiply_union_vector4_1"},
       [](Device_ d) { d.convert = InMode(FE_DOWNWARD, d.convert); }},
      {{"rounds-arithmetic-toward-zero"},
       {"add_union_vector16_5", "multiply_union_scalar_3", "multiply_union_vector4_3"},
       [](Device_ d) { d.compute = InMode(FE_TOWARDZERO, d.compute); }},
      {{"rounds-arithmetic-up"},
       {"add_union_vector16_5", "multiply_union_scalar_3"},
       [](Device_ d) { d.compute = InMode(FE_UPWARD, d.compute); }},
      {{"rounds-arithmetic-down"},
       {"add_union_vector16_5", "multiply_union_scalar_3"},
       [](Device_ d) { d.compute = InMode(FE_DOWNWARD, d.compute); }},
      {{"element-as-signed"},
       {"copy_union_scalar_4", "add_union_vector8_6", "multiply_union_arrays_4",
        "power_union_vector4_6"},
       [](Device_ d) {
         d.integer = [&d](const std::uint8_t* bytes) -> std::int64_t {
           const auto number = NumberAt(bytes, d.row.width);
           return d.row.width == 2   ? static_cast<std::int16_t>(number)
                  : d.row.width == 1 ? static_cast<std::int8_t>(number)
                                     : static_cast<std::int32_t>(number);
         };
       }},
      {{"element-as-unsigned"},
       {"copy_union_scalar_3", "add_union_vector8_5", "multiply_union_arrays_3"},
       [](Device_ d) {
         d.integer = [&d](const std::uint8_t* bytes) {
           return static_cast<std::int64_t>(NumberAt(bytes, d.row.width));
         };
       }},
      {{"float-view-of-a"},
       {"add_union_arrays_1", "multiply_union_vector3_5", "copy_union_vector8_3",
        "add_union_scalar_6"},
       [](Device_ d) {
         d.placeOfA = d.placeOfB;
         d.operandA = [](const Bytes& a, std::size_t at) { return FloatAtBytes(&a.at(at)); };
       }},
      {{"integer-stored"},
       {"copy_union_arrays_1", "floor_union_vector4_3", "add_union_scalar_5"},
       [](Device_ d) {
         d.bitsOf = [](float x) {
           return std::fabs(x) < 0x1p63F ? static_cast<std::uint32_t>(static_cast<std::int64_t>(x))
                                         : 0;
         };
       }},
      {{"b-at-16"},
       {"add_union_arrays_1", "multiply_union_vector4_2", "add_union_vector3_1"},
       [](Device_ d) { d.placeOfB = Moved(d.placeOfB, 16); }},
      {{"b-at-8"},
       {"add_union_arrays_3", "multiply_union_vector2_1"},
       [](Device_ d) { d.placeOfB = Moved(d.placeOfB, 8); }},
      {{"a-at-16"},
       {"copy_union_arrays_3", "multiply_union_vector4_1"},
       [](Device_ d) { d.placeOfA = Moved(d.placeOfA, 16); }},
      {{"result-at-16"},
       {"add_union_arrays_1", "copy_union_vector4_2"},
       [](Device_ d) {
         d.placeOfResult = [old = d.placeOfResult](int item, int lane) {
           return old(item, lane) + 16;
         };
       }},
      {{"result-at-1"},
       {"copy_union_scalar_5", "add_union_scalar_6"},
       [](Device_ d) {
         d.placeOfResult = [old = d.placeOfResult](int item, int lane) {
           return old(item, lane) + 1;
         };
       }},
      // A struct that does not fit where the union does.
      {{"result-at-32"},
       {"copy_union_vector8_1", "multiply_union_vector8_1"},
       [](Device_ d) {
         d.placeOfResult = [](int item, int lane) { return 64 * item + 32 + 4 * lane; };
       }},
      {{"stride-16-of-a"},
       {"copy_union_vector2_3", "add_union_arrays_6"},
       [](Device_ d) {
         d.placeOfA = [&d](int item, int lane) {
           return 16 * static_cast<std::size_t>(item) +
                  d.row.width * static_cast<std::size_t>(lane);
         };
       }},
      {{"stride-64-of-b"},
       {"multiply_union_vector2_3", "add_union_arrays_6"},
       [](Device_ d) {
         d.placeOfB = [](int item, int lane) {
           return 64 * static_cast<std::size_t>(item) + 4 * static_cast<std::size_t>(lane);
         };
       }},
      {{"stride-16-of-result"},
       {"copy_union_arrays_2", "add_union_vector4_1"},
       [](Device_ d) {
         d.placeOfResult = [](int item, int lane) { return 16 * item + 4 * lane; };
       }},
      {{"stride-16"},
       {"power_union_vector4_1", "power_union_scalar_3"},
       [](Device_ d) {
         d.placeOfA = [&d](int item, int lane) {
           return 16 * static_cast<std::size_t>(item) +
                  d.row.width * static_cast<std::size_t>(lane);
         };
         d.placeOfB = [](int item, int lane) {
           return 16 * static_cast<std::size_t>(item) + 4 * static_cast<std::size_t>(lane);
         };
         d.placeOfResult = [](int item, int lane) { return 16 * item + 4 * lane; };
       }},
      {{"byte-order"},
       {"copy_union_scalar_1", "add_union_vector4_3", "multiply_union_vector8_2"},
       [](Device_ d) {
         d.integer = [&d, old = d.integer](const std::uint8_t* bytes) {
           std::uint8_t reversed[4] = {};
           for (std::size_t n = 0; n < d.row.width; ++n) reversed[n] = bytes[d.row.width - 1 - n];
           return old(reversed);
         };
         d.real = [](const std::uint8_t* bytes) {
           const std::uint8_t reversed[4] = {bytes[3], bytes[2], bytes[1], bytes[0]};
           return FloatAtBytes(reversed);
         };
         d.bitsOf = [old = d.bitsOf](float x) { return __builtin_bswap32(old(x)); };
       }},
      {{"byte-order"},
       {"copy_union_vector2_3", "add_union_arrays_2"},
       [](Device_ d) {
         d.bitsOf = [old = d.bitsOf](float x) { return __builtin_bswap32(old(x)); };
       }},
      {{"lane-0-for-all"},
       {"copy_union_vector4_1", "add_union_vector16_3", "power_union_vector3_2"},
       [](Device_ d) { MoveLanes(d, [](int) { return 0; }); }},
      {{"lane-2-for-all"},
       {"multiply_union_vector3_1", "copy_union_vector8_5"},
       [](Device_ d) { MoveLanes(d, [](int) { return 2; }); }},
      {{"lanes-reversed"},
       {"copy_union_vector4_1", "add_union_vector16_3"},
       [](Device_ d) { MoveLanes(d, [&d](int lane) { return d.row.lanes - 1 - lane; }); }},
      // Two lanes can't tell.
      {{"lanes-reversed", "lanes-shifted"},
       {"copy_union_vector2_1"},
       [](Device_ d) { MoveLanes(d, [](int lane) { return 1 - lane; }); }},
      {{"lanes-shifted"},
       {"copy_union_vector4_1", "add_union_vector16_3"},
       [](Device_ d) { MoveLanes(d, [&d](int lane) { return (lane + 1) % d.row.lanes; }); }},
      {{"lanes-shifted"},
       {"multiply_union_vector8_4"},
       [](Device_ d) {
         MoveLanes(d, [&d](int lane) { return (lane + d.row.lanes - 3) % d.row.lanes; });
       }},
      {{"element-shifted-1"},
       {"copy_union_scalar_1", "add_union_vector16_5", "power_union_scalar_3"},
       [](Device_ d) {
         d.compute = [&d, old = d.compute](float a, float b, int n) {
           return old(a, b, d.row.shape == Shape::arrays ? n : n + 1);
         };
         d.placeOfA = [old = d.placeOfA](int item, int lane) { return old(item + 1, lane); };
         d.placeOfB = [old = d.placeOfB](int item, int lane) { return old(item + 1, lane); };
       }},
      {{"element-shifted--2"},
       {"copy_union_scalar_1", "multiply_union_arrays_2"},
       [](Device_ d) {
         d.placeOfResult = [old = d.placeOfResult](int item, int lane) {
           return old(item + 2, lane);
         };
       }},
      // What nobody wrote, or wrote without a look at the inputs: where it is one thing, who can
      // tell?
      {{"elements-unwritten", "answers-0xCDCDCDCD"},
       {"copy_union_scalar_1", "add_union_vector8_3"},
       [](Device_ d) {
         d.placeOfResult = [old = d.placeOfResult](int item, int lane) {
           return item == 3 || item >= 8 ? -1 : old(item, lane);
         };
       }},
      {{"elements-unwritten", "answers-0xCDCDCDCD"},
       {"copy_union_scalar_1", "add_union_vector8_3"},
       [](Device_ d) { d.placeOfResult = [](int, int) { return -1; }; },
       1},
      {{"lanes-unwritten", "answers-0xCDCDCDCD"},
       {"copy_union_vector4_1", "add_union_vector3_5"},
       [](Device_ d) {
         d.placeOfResult = [&d, old = d.placeOfResult](int item, int lane) {
           return lane == d.row.lanes - 1 ? -1 : old(item, lane);
         };
       }},
      // A stale lane of the row before is no constant; a constant that no buffer holds is not
      // stale.
      {{"answers-0x3FC00000"},
       {"copy_union_vector4_1", "add_union_vector3_5"},
       [](Device_ d) { d.bitsOf = [](float) { return 0x3FC00000U; }; }},
      {{"negated"},
       {"copy_union_scalar_3", "add_union_vector16_5", "power_union_arrays_6"},
       [](Device_ d) { d.bitsOf = [old = d.bitsOf](float x) { return old(-x); }; }},
      {{"off-by-ulps-3"},
       {"copy_union_vector4_1", "multiply_union_scalar_1"},
       [](Device_ d) { d.bitsOf = [old = d.bitsOf](float x) { return old(x) + 3; }; }},
      // Not always, but never farther.
      {{"off-by-ulps-5"},
       {"copy_union_vector4_1"},
       [](Device_ d) { d.bitsOf = [old = d.bitsOf](float x) { return old(x) + old(x) % 6; }; }},
      {{"truncates-to-24-bits"},
       {"copy_union_vector4_2", "add_union_arrays_2"},
       [](Device_ d) {
         d.convert = [](std::int64_t x) { return static_cast<float>(x & 0xFFFFFF); };
       }},
      {{"unexplained"},
       {"copy_union_vector4_2", "add_union_arrays_3"},
       [](Device_ d) { d.bitsOf = [old = d.bitsOf](float x) { return old(x) * 2654435761U; }; }},

      // The low 13 bits of the significand are cut off.
      {{"off-by-ulps-8191"},
       {"copy_union_vector4_1", "multiply_union_scalar_3", "power_union_vector8_6"},
       [](Device_ d) { d.bitsOf = [old = d.bitsOf](float x) { return old(x) & ~0x1FFFU; }; }},
      // A struct aligned as its float16 is.
      {{"a-at-64"},
       {"copy_union_vector16_5", "add_union_vector16_1"},
       [](Device_ d) {
         d.placeOfA = [&d](int item, int lane) {
           return 128 * static_cast<std::size_t>(item) + 64 +
                  d.row.width * static_cast<std::size_t>(lane);
         };
       }},

      // Faults without a name of their own in every account of such devices.
      {{"element-as-char"},
       {"copy_union_scalar_3", "add_union_scalar_4"},
       [](Device_ d) {
         d.integer = [](const std::uint8_t* bytes) -> std::int64_t {
           return static_cast<std::int8_t>(*bytes);
         };
       }},
      {{"saturates-to-short"},
       {"copy_union_vector4_1", "multiply_union_arrays_2"},
       [](Device_ d) {
         d.convert = [](std::int64_t x) {
           return static_cast<float>(std::clamp<std::int64_t>(x, -32768, 32767));
         };
       }},
      {{"conversion-left-out"},
       {"multiply_union_vector4_6", "multiply_union_arrays_4"},
       [](Device_ d) {
         d.convert = [](std::int64_t x) {
           return std::bit_cast<float>(static_cast<std::uint32_t>(x));
         };
       }},
      {{"a-of-repetition-before"},
       {"add_union_vector4_1", "add_union_scalar_3"},
       [](Device_ d) {
         d.operandA = [old = d.operandA, last = Bytes(), now = Bytes()](const Bytes& a,
                                                                        std::size_t at) mutable {
           if (a != now) {
             last = now.empty() ? Bytes(a.size()) : now;
             now = a;
           }
           return old(last, at);
         };
       }},
      {{"lane-pairs-exchanged"},
       {"copy_union_vector8_1"},
       [](Device_ d) { MoveLanes(d, [](int lane) { return lane ^ 1; }); }},
      {{"lanes-permuted"},
       {"copy_union_vector4_1", "add_union_vector4_3"},
       [](Device_ d) {
         MoveLanes(d, [](int lane) {
           return std::array{0, 2, 1, 3}.at(static_cast<std::size_t>(lane));
         });
       }},
      {{"element-as-bool"},
       {"add_union_vector4_3", "multiply_union_vector3_6"},
       [](Device_ d) { d.convert = [](std::int64_t x) { return x != 0 ? 1.0F : 0.0F; }; }},
      {{"integer-complemented"},
       {"copy_union_vector4_3", "copy_union_vector4_5"},
       [](Device_ d) { d.convert = [](std::int64_t x) { return static_cast<float>(~x); }; }},
      {{"b-truncated"},
       {"add_union_vector16_5", "multiply_union_vector16_3"},
       [](Device_ d) {
         d.real = [old = d.real](const std::uint8_t* bytes) { return std::trunc(old(bytes)); };
       }},
      {{"power-by-logarithm"},
       {"power_union_vector4_3", "power_union_scalar_3"},
       [](Device_ d) {
         d.compute = [old = d.compute](float a, float b, int n) {
           return a < 0 && n != 0 ? std::nanf("") : old(a, b, n);
         };
       }},
      {{"converts-through-half"},
       {"add_union_scalar_4", "add_union_scalar_3"},
       [](Device_ d) {
         d.convert = [](std::int64_t x) {
           const auto half = [](float value) {
             int exponent = 0;
             const float fraction = std::frexp(value, &exponent);
             return std::ldexp(std::nearbyint(std::ldexp(fraction, 11)), exponent - 11);
           };
           const float value = half(static_cast<float>(x));
           return std::fabs(value) > 65504 ? std::copysign(INFINITY, value) : value;
         };
       }},
  };
  return faults;
}

class Suspects_ : public testing::TestWithParam<Fault_> {};

TEST_P(Suspects_, AreNamed) {
  diagnosis::Run run;
  for (const char* row : GetParam().rows) {
    MadeUpDevice device(row);
    GetParam().set(device);
    run.info.device = device.reported;
    run.records.push_back(device.Run(GetParam().repetitions));
  }
  const Suspects suspects = AnalysisOf(run, {}).suspects;
  for (const char* row : GetParam().rows) {
    SCOPED_TRACE(row);
    ASSERT_TRUE(suspects.byRow.contains(row));
    EXPECT_EQ(NamesIn(suspects, row), GetParam().names);
  }
  ASSERT_EQ(suspects.fewest.size(), 1U);
  EXPECT_EQ(suspects.fewest.front().name, GetParam().names.front());
  EXPECT_EQ(suspects.fewest.front().rows.size(), GetParam().rows.size());
}

INSTANTIATE_TEST_SUITE_P(Faults, Suspects_, testing::ValuesIn(Faults()));

// Two faults at once, of which one shows alone in another row.
TEST(Suspects, AreNamedInPairs) {
  diagnosis::Run run;
  for (const char* row : {"copy_union_scalar_3", "copy_union_vector4_6"}) {
    MadeUpDevice device(row);
    device.bitsOf = [old = device.bitsOf](float x) { return old(-x); };
    if (!device.row.isSigned) {
      device.integer = [](const std::uint8_t* bytes) -> std::int64_t {
        return static_cast<std::int8_t>(*bytes);
      };
    }
    run.info.device = device.reported;
    run.records.push_back(device.Run());
  }
  const Suspects suspects = AnalysisOf(run, {}).suspects;
  EXPECT_EQ(NamesIn(suspects, "copy_union_scalar_3"), Names{"negated"});
  EXPECT_EQ(NamesIn(suspects, "copy_union_vector4_6"), Names{"negated+element-as-signed"});
}

// One that fits a row here and there is not named where the rows beside them speak against it.
TEST(Suspects, MustHoldInTheRowsBesideTheirs) {
  diagnosis::Run run;
  const auto add = [&run](const std::string& row, const std::function<void(MadeUpDevice&)>& set) {
    MadeUpDevice device(row);
    set(device);
    run.info.device = device.reported;
    run.records.push_back(device.Run());
  };
  for (const char* shape : {"arrays", "vector4", "vector8"}) {
    for (const char* type : {"1", "3", "5"}) {
      const std::string row = fmt::format("copy_union_{}_{}", shape, type);
      const bool isNegated = row.ends_with("vector4_1") || row.ends_with("vector8_3");
      add(row, [isNegated](MadeUpDevice& device) {
        device.bitsOf = [old = device.bitsOf, isNegated](float x) {
          return isNegated ? old(-x) : old(x) * 2654435761U;
        };
      });
    }
  }
  const Suspects suspects = AnalysisOf(run, {}).suspects;
  for (const auto& [row, named] : suspects.byRow)
    EXPECT_EQ(NamesIn(suspects, row), Names{unexplained}) << row;
}

// The glossary says which rows can show a fault: those that it is named on are among them.
TEST(Suspects, AreNamedOnRowsOfTheirs) {
  for (const Fault_& fault : Faults()) {
    for (const std::string& name : fault.names) {
      if (name == unexplained) continue;
      for (const Term& term : TermsOf(name)) {
        for (const char* row : fault.rows) {
          const auto fits = [row](const std::string& glob) {
            return fnmatch(glob.c_str(), row, 0) == 0;
          };
          EXPECT_TRUE(std::ranges::any_of(term.rows, fits)) << name << ' ' << row;
        }
      }
      EXPECT_FALSE(TermsOf(name).empty()) << name;
    }
  }
}

// A member lies elsewhere at another byte in each layout, and that is one fault.
TEST(Suspects, AreOneKindInWhateverLayouts) {
  diagnosis::Run run;
  for (const char* row : {"add_union_vector2_1", "add_union_vector4_1", "add_union_vector8_1"}) {
    MadeUpDevice device(row);
    device.placeOfB = Moved(device.placeOfB, 4 * static_cast<std::size_t>(device.row.lanes));
    run.info.device = device.reported;
    run.records.push_back(device.Run());
    // By itself, a member behind the union is that of the next element.
    if (device.row.lanes < 8) continue;
    diagnosis::Run alone = run;
    alone.records.erase(alone.records.begin(), alone.records.end() - 1);
    EXPECT_EQ(NamesIn(AnalysisOf(alone, {}).suspects, row),
              (Names{"element-shifted-1", "b-at-32"}));
  }
  const Suspects suspects = AnalysisOf(run, {}).suspects;
  EXPECT_EQ(NamesIn(suspects, "add_union_vector2_1"), Names{"b-at-8"});
  EXPECT_EQ(NamesIn(suspects, "add_union_vector4_1"), Names{"b-at-16"});
  EXPECT_EQ(NamesIn(suspects, "add_union_vector8_1"), Names{"b-at-32"});
  EXPECT_EQ(suspects.fewest.size(), 3U);
}

// A run of several faults is explained by the fewest suspects, each with all rows that it explains.
TEST(Suspects, AreTheFewestThatExplainAll) {
  diagnosis::Run run;
  const auto add = [&run](const char* row, const std::function<void(MadeUpDevice&)>& set) {
    MadeUpDevice device(row);
    set(device);
    run.info.device = device.reported;
    run.records.push_back(device.Run());
  };
  const auto reverse = [](MadeUpDevice& device) {
    MoveLanes(device, [&device](int lane) { return device.row.lanes - 1 - lane; });
  };
  const auto spoil = [](MadeUpDevice& device) {
    device.bitsOf = [old = device.bitsOf](float x) { return old(x) * 2654435761U; };
  };
  add("copy_union_vector2_1", reverse);
  add("copy_union_vector4_1", reverse);
  add("copy_union_scalar_1", spoil);
  add("copy_union_scalar_2", [](MadeUpDevice&) {});
  const Suspects suspects = AnalysisOf(run, {}).suspects;
  EXPECT_FALSE(suspects.byRow.contains("copy_union_scalar_2"));
  ASSERT_EQ(suspects.fewest.size(), 2U);
  EXPECT_EQ(suspects.fewest[0].name, "lanes-reversed");
  EXPECT_EQ(suspects.fewest[0].rows, (Names{"copy_union_vector2_1", "copy_union_vector4_1"}));
  EXPECT_EQ(suspects.fewest[1].name, unexplained);
  EXPECT_EQ(suspects.fewest[1].rows, Names{"copy_union_scalar_1"});
}

}  // namespace
}  // namespace diagnosis
