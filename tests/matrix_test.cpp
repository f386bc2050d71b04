// What holds of every row, row by row, and the rows that differ from their neighbours.

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <map>
#include <set>

#include "tests/devices.h"
#include "tests/fixture.h"

namespace {

class Matrix : public SuiteTest {};

int CheckedElements(const Row& row) { return row.name == "power_union_vector3_3" ? 9 : 10; }

bool AnyLaneSuffices(const Row& row) {
  return (row.operation == "copy" || row.operation == "floor") && row.shape.starts_with("vector");
}

bool IsExact(const Row& row) { return row.operation == "copy" || row.operation == "floor"; }

TEST_F(Matrix, HoldsTwoHundredAndTenRowsWithTextsOfTheirOwn) {
  EXPECT_EQ(Rows().size(), 210U);
  EXPECT_EQ(RowsByText().size(), 210U);
}

TEST_F(Matrix, EveryRowAcceptsARightDevice) {
  const std::map<std::string, std::string> kernels = {{"add", "sum"},
                                                      {"copy", "copy"},
                                                      {"floor", "_floor"},
                                                      {"multiply", "multiply"},
                                                      {"power", "power"}};
  for (const int mode : {FE_TONEAREST, FE_TOWARDZERO, FE_UPWARD}) {
    ResetRand();
    for (const Row& row : Rows()) {
      SCOPED_TRACE(row.name);
      ResetMachine();
      std::fesetround(mode);
      Machine().device = DeviceFor(row);
      const int drawsBefore = Draws();
      const Outcome outcome = Collect(row.run);
      std::fesetround(FE_TONEAREST);
      EXPECT_EQ(outcome.out, Lines(Announcement(row), Words(RunLines(row), "PASSED")));
      EXPECT_EQ(outcome.err, "");
      EXPECT_EQ(outcome.result, 1);
      EXPECT_EQ(Draws() - drawsBefore, DrawsPerRun(row) * Runs(row));
      EXPECT_EQ(LiveObjects(), 0);
      ASSERT_EQ(Machine().launches.size(), static_cast<std::size_t>(Runs(row)));
      EXPECT_EQ(Machine().launches[0].kernel, kernels.at(row.operation));
      EXPECT_EQ(Machine().launches[0].globalSize, 256U);

      const std::string size = std::to_string(256 * row.stride);
      std::vector<std::string> buffers = {"clCreateBuffer flags 4 size " + size,
                                          "clCreateBuffer flags 2 size " + size};
      if (row.twoInputs) buffers.insert(buffers.begin(), buffers[0]);
      const auto calls = Machine().WorkCalls();
      const auto first = std::find_if(calls.begin(), calls.end(), [](const std::string& call) {
        return call.starts_with("clCreateBuffer");
      });
      ASSERT_GE(calls.end() - first, static_cast<std::ptrdiff_t>(buffers.size()));
      EXPECT_TRUE(std::equal(buffers.begin(), buffers.end(), first));
    }
  }
}

// Every single lane of the ten elements, spoiled in the first repetition.
TEST_F(Matrix, EveryRowLooksAtTheLanesItShould) {
  for (const Row& row : Rows()) {
    for (int element = 0; element < 10; ++element) {
      for (int lane = 0; lane < row.lanes; ++lane) {
        ResetMachine();
        ResetRand();
        float c = 0;
        Machine().device = DeviceFor(row, [&](int launch, int i, int j, float right) {
          if (launch != 1 || i != element || j != lane) return right;
          c = right;
          return 0.25F;
        });
        const Outcome outcome = Collect(row.run);
        const bool passes = AnyLaneSuffices(row)
                                ? row.lanes > 1
                                : !std::isfinite(c) || element >= CheckedElements(row);
        EXPECT_EQ(outcome.result, passes ? 1 : 0) << row.name << ": " << element << ", " << lane;
        EXPECT_EQ(outcome.out.find("ocl:0.25\n") == std::string::npos, passes) << outcome.out;
      }
    }
  }
}

// From lane 0 of element 3 on, and from its last lane on where that alone is a mismatch.
TEST_F(Matrix, EveryRowWritesTheLineOfTheFirstMismatch) {
  for (const Row& row : Rows()) {
    for (const int firstLane : std::set<int>{0, AnyLaneSuffices(row) ? 0 : row.lanes - 1}) {
      SCOPED_TRACE(row.name + ", lane " + std::to_string(firstLane));
      ResetMachine();
      ResetRand();
      float c = 0;
      float x = 0;
      int shownElement = -1;
      int shownLane = -1;
      Machine().device = [&](const Launch& launch) {
        DeviceFor(row, [&](int number, int element, int lane, float right) {
          if (number != 1 || element < 3 || (element == 3 && lane < firstLane)) return right;
          if (shownElement < 0 && std::isfinite(right)) {
            c = right;
            shownElement = element;
            shownLane = lane;
          }
          return -0.25F - static_cast<float>(lane + 16 * element);
        })(launch);
        if (Machine().launches.empty()) {
          const auto element = static_cast<std::size_t>(shownElement);
          x = IntegerLane(row, launch.buffers[0].subspan(element * row.stride), shownLane);
        }
      };
      const Outcome outcome = Collect(row.run);
      const float d = -0.25F - static_cast<float>(shownLane + 16 * shownElement);
      const std::string start = Announcement(row) + "\n" +
                                MismatchLine(row, x, shownElement, c, d) + "\nRUN 1: FAILED!\n";
      EXPECT_EQ(outcome.out.substr(0, start.size()), start);
      EXPECT_EQ(outcome.result, 0);
      // The words of the repetitions behind it tell the form.
      const bool eachForItself = row.operation == "power";
      const std::string behind = eachForItself ? "PASSED" : "FAILED!";
      std::string rest;
      for (int repetition = 2; repetition <= RunLines(row); ++repetition)
        rest += "RUN " + std::to_string(repetition) + ": " + behind + "\n";
      EXPECT_EQ(outcome.out.substr(start.size()), rest);
    }
  }
}

// A device value `steps` units in the last place further from zero than the right one.
float Stepped(float right, int steps) {
  return std::bit_cast<float>(static_cast<std::uint32_t>(
      static_cast<std::int64_t>(std::bit_cast<std::uint32_t>(right)) + steps));
}

TEST_F(Matrix, EveryRowHasItsToleranceAndNotOneUnitMore) {
  for (const Row& row : Rows()) {
    if (AnyLaneSuffices(row)) continue;
    const int n = static_cast<int>(Tolerance(row));
    for (const int steps : {n, -n, n + 1, -(n + 1)}) {
      for (const bool flipped : {false, true}) {
        ResetMachine();
        ResetRand();
        // Element 0 of power has finite references in every row; the last lane of the others holds
        // whole floats.
        const int element = row.operation == "power" ? 0 : 9;
        Machine().device = DeviceFor(row, [&](int launch, int i, int j, float right) {
          if (launch != 1 || i != element || j != row.lanes - 1) return right;
          return flipped ? -Stepped(right, steps) : Stepped(right, steps);
        });
        const bool passes = std::abs(steps) <= n && !(flipped && IsExact(row));
        EXPECT_EQ(Collect(row.run).result, passes ? 1 : 0)
            << row.name << ": " << steps << (flipped ? " flipped" : "");
      }
    }
  }
}

TEST_F(Matrix, AnyLaneSufficesInCopyAndFloorOverVectors) {
  for (const Row& row : Rows()) {
    if (!AnyLaneSuffices(row)) continue;
    // All lanes of element 4 off by one unit but lane `right`, if there is such a lane.
    for (int rightLane = 0; rightLane <= row.lanes; ++rightLane) {
      ResetMachine();
      ResetRand();
      Machine().device = DeviceFor(row, [&](int, int i, int j, float right) {
        return i != 4 || j == rightLane ? right : Stepped(right, right == 0 ? 1 : -1);
      });
      EXPECT_EQ(Collect(row.run).result, rightLane < row.lanes ? 1 : 0)
          << row.name << ": " << rightLane;
    }
  }
}

TEST_F(Matrix, NonFiniteDeviceValues) {
  constexpr float infinity = std::numeric_limits<float>::infinity();
  constexpr float nan = std::numeric_limits<float>::quiet_NaN();
  for (const Row& row : Rows()) {
    for (const float d : {infinity, -infinity, nan}) {
      ResetMachine();
      ResetRand();
      Machine().device = DeviceFor(row, [&](int, int i, int, float right) {
        return i == 0 && std::isfinite(right) ? d : right;
      });
      const bool passes = row.operation == "power" || (!IsExact(row) && std::isnan(d));
      EXPECT_EQ(Collect(row.run).result, passes ? 1 : 0) << row.name << ": " << d;
    }
  }
}

TEST_F(Matrix, ANegativeZeroEqualsAPositiveOne) {
  for (const char* name : {"copy_union_scalar_2", "copy_union_vector2_3", "floor_union_arrays_1",
                           "floor_union_vector4_6"}) {
    const Row& row = RowNamed(name);
    ResetMachine();
    ScriptRand({0}, 10 * DrawsPerRun(row));
    Machine().device = DeviceFor(row, [](int, int, int, float right) { return -right; });
    EXPECT_EQ(Collect(row.run).result, 1) << name;
  }
}

// The float operand of the narrow rows is what the later element stores made of it.
TEST_F(Matrix, FloatOperandsThatElementStoresMade) {
  // Draws for lanes 0 to 3 of arrays of char: a, h, k, b for each. The bytes of b[0] are the low
  // byte of its own float and k[1], k[2], k[3].
  const auto drawsOf = [](int b0, int k1, int k2, int k3) {
    return std::vector<int>{0, 65536, 0, b0, 5, 0, k1, 0, 6, 0, k2, 0, 7, 0, k3, 0};
  };
  const auto draws = [&](int k1, int k2, int k3) { return drawsOf(65536, k1, k2, k3); };
  constexpr int endsInFF = 8388608 + 0xFF;
  const struct {
    const char* description;
    std::vector<int> draws;
    float d;
    bool passes;
  } cases[] = {
      {"an infinity lets any answer pass", draws(0, 0x80, 0x7F), 42, true},
      {"a negative infinity too", draws(0, 0x80, 0xFF), 42, true},
      {"and a NaN", draws(1, 0x80, 0x7F), 42, true},
      {"and the last NaN, which has zero two units on", drawsOf(endsInFF, 0xFF, 0xFF, 0x7F), 42,
       true},
      {"the largest finite float does not", draws(0xFF, 0x7F, 0x7F), 42, false},
      {"a denormal counts as zero", draws(0xFF, 0x7F, 0), 0, true},
      {"a negative one too", draws(0xFF, 0x7F, 0x80), 0, true},
      {"of two units at most", draws(0xFF, 0x7F, 0), std::bit_cast<float>(2U), true},
      {"and not of three", draws(0xFF, 0x7F, 0), std::bit_cast<float>(3U), false},
      {"FLT_MIN is itself", draws(0, 0x80, 0), std::numeric_limits<float>::min(), true},
      {"and is not zero", draws(0, 0x80, 0), 0, false},
  };
  const Row& row = RowNamed("add_union_arrays_5");
  for (const auto& [description, script, d, passes] : cases) {
    ResetMachine();
    ResetRand();
    ScriptRand(script, 100);
    Machine().device = DeviceFor(
        row, [d = d](int, int i, int j, float right) { return i == 0 && j == 0 ? d : right; });
    EXPECT_EQ(Collect(row.run).result, passes ? 1 : 0) << description;
  }
}

TEST_F(Matrix, NarrowRowsFlushTheFloatOperand) {
  for (const Row& row : Rows()) {
    if (!row.twoInputs || row.shape == "scalar" || row.width == 4) continue;
    // b[0] is what k[1] makes of a float of 0, a denormal. Beside it a sum shows whether it was
    // flushed if a[0] is 0, and a product if a[0] is not, which is the low end of 1234567's float.
    const int h = row.operation == "add" ? 0 : 1234567;
    std::vector<int> element;
    for (int lane = 0; lane < row.lanes; ++lane) {
      element.insert(element.end(), {0x35, h, lane == 1 ? 1 : 0, 0});
    }
    for (const Denormals denormals : {Denormals::kept, Denormals::flushed}) {
      ResetMachine();
      ResetRand();
      ScriptRand(element, 100);
      Machine().device = DeviceFor(row, denormals);
      EXPECT_EQ(Collect(row.run).result, denormals == Denormals::flushed ? 1 : 0) << row.name;
    }
  }
}

TEST_F(Matrix, SumsAreOfTheFlushedOperand) {
  // a[0] is 1, the low end of 8388609's float, and k[1] makes b[0] a negative denormal. Rounded
  // toward zero, a sum of the two would be below 1, and what is two units above 1 too far from it.
  const Row& row = RowNamed("add_union_vector2_3");
  ScriptRand({0, 8388609, 0, 0, 0, 0, 0x8001, 0}, 100);
  std::fesetround(FE_TOWARDZERO);
  Machine().device = DeviceFor(row, [](int, int, int lane, float right) {
    return lane == 0 ? 1 + 2 * std::numeric_limits<float>::epsilon() : right;
  });
  EXPECT_EQ(Collect(row.run).result, 1);
  std::fesetround(FE_TONEAREST);
}

TEST_F(Matrix, WholeFloatsAreNeverDenormal) {
  // A device that keeps denormals passes where the float operand is always whole, and fails some
  // row of narrow elements.
  int failed = 0;
  for (const Row& row : Rows()) {
    if (!row.twoInputs) continue;
    ResetMachine();
    ResetRand();
    Machine().device = DeviceFor(row, Denormals::kept);
    const int result = Collect(row.run).result;
    if (row.shape == "scalar" || row.variant <= 2) {
      EXPECT_EQ(result, 1) << row.name;
    }
    failed += 1 - result;
  }
  EXPECT_GT(failed, 0);
}

TEST_F(Matrix, TheHostsRoundingModeDecidesTheReference) {
  // The float with these bits is drawn, and its bits are read as an integer that no float equals.
  constexpr std::uint32_t bits = 0x4D813E67;
  const int draw = static_cast<int>(std::bit_cast<float>(bits));
  for (const char* name :
       {"floor_union_arrays_1", "floor_union_scalar_1", "copy_union_vector4_2"}) {
    const Row& row = RowNamed(name);
    for (const auto& [mode, expected] :
         {std::pair{FE_TONEAREST, 1300315776.0F}, {FE_TOWARDZERO, 1300315648.0F}}) {
      ResetMachine();
      ResetRand();
      ScriptRand({draw}, 10 * DrawsPerRun(row));
      std::fesetround(mode);
      Machine().device = DeviceFor(row, [d = expected](int, int, int, float) { return d; });
      EXPECT_EQ(Collect(row.run).result, 1) << name << ", " << mode;
      std::fesetround(FE_TONEAREST);
    }
  }
}

}  // namespace
