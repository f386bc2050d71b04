// The table of variations, on made-up records.

#include "diagnosis/views/vary.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <string_view>

#include "diagnosis/record/row.h"

namespace diagnosis {
namespace {

constexpr std::string_view rowName = "copy_union_scalar_1";

/// A row of zeros with one repetition.
Record Right() {
  const Row row = *RowNamed(rowName);
  Record record;
  record.row = rowName;
  record.ending = {Ending::Kind::returned, 1, ""};
  const Bytes zeros(row.stride * elementsOfRow);
  record.repetitions = {{zeros, {}, true, zeros, "RUN 1: PASSED\n"}};
  return record;
}

Record Wrong() {
  Record record = Right();
  record.repetitions.front().result[3] = 0x40;
  record.repetitions.front().result[35] = 0x40;
  record.out = "  c:0 ocl:2\nRUN 1: FAILED!\n";
  record.ending.value = 0;
  return record;
}

Record Refused() {
  Record record = Right();
  record.repetitions.front().result.clear();
  record.failedCalls = {{"clEnqueueNDRangeKernel", -54, 1}};
  return record;
}

std::string TableWith(const std::function<Record(const Variation&)>& ended) {
  Run run;
  const std::vector<Variation> variations = Variations({}, {});
  for (const Variation& variation : variations) run.records.push_back(ended(variation));
  return TableOfVariations(variations, run);
}

TEST(Vary, SaysWhetherItGoesAway) {
  EXPECT_EQ(TableWith([](const Variation& variation) {
              return std::string_view(variation.buildOptions) == "-cl-opt-disable" ||
                             variation.localSize == 1
                         ? Right()
                         : Wrong();
            }),
            "                          status      opinion  wrong lanes\n"
            "copy_union_scalar_1\n"
            "  as it is                Fail        wrong    2 of 10\n"
            "  -cl-opt-disable         Pass        right    0 of 10\n"
            "  -cl-denorms-are-zero    Fail        wrong    2 of 10\n"
            "  -cl-std=CL1.2           Fail        wrong    2 of 10\n"
            "  -cl-mad-enable          Fail        wrong    2 of 10\n"
            "  -cl-fast-relaxed-math   Fail        wrong    2 of 10\n"
            "  local size 1            Pass        right    0 of 10\n"
            "  local size 2            Fail        wrong    2 of 10\n"
            "  local size 64           Fail        wrong    2 of 10\n"
            "  local size 256          Fail        wrong    2 of 10\n"
            "  a second time           Fail        wrong    2 of 10\n"
            "  goes away with: -cl-opt-disable, local size 1\n");

  const std::string refused = TableWith(
      [](const Variation& variation) { return variation.localSize == 256 ? Refused() : Right(); });
  EXPECT_NE(refused.find("  local size 256          Error       unseen                 "
                         "clEnqueueNDRangeKernel(-54) in repetition 1\n"),
            std::string::npos)
      << refused;
  EXPECT_TRUE(refused.ends_with("\n  goes wrong with: local size 256\n")) << refused;

  EXPECT_TRUE(
      TableWith([](const Variation&) { return Wrong(); }).ends_with("\n  stays in all of them\n"));
  EXPECT_TRUE(
      TableWith([](const Variation&) { return Right(); }).ends_with("\n  right in all of them\n"));
}

// What the suite passes may be wrong, and of what was not run nothing is known.
TEST(Vary, HoldsWhatIsOtherwiseAgainstHowItIs) {
  Record notRun;
  notRun.row = "copy_union_scalar_1";
  Record hidden = Wrong();
  hidden.out = Right().out;
  hidden.ending = Right().ending;
  struct {
    Record asItIs;
    Record alone;   // with a local size of 1
    Record others;  // with all else
    const char* verdict;
  } const cases[] = {
      {hidden, Right(), hidden, "goes away with: local size 1"},
      {Right(), hidden, Right(), "goes wrong with: local size 1"},
      {hidden, Wrong(), hidden, "stays in all of them"},
      {notRun, notRun, notRun, "was not run"},
      {notRun, Right(), Right(), "was not run as it is"},
      {Wrong(), notRun, Wrong(), "stays in all that were run; not run with: local size 1"},
      {Right(), notRun, Right(), "right in all that were run; not run with: local size 1"},
  };
  for (const auto& c : cases) {
    const std::string table = TableWith([&c](const Variation& variation) {
      if (variation.name == "as it is") return c.asItIs;
      return variation.localSize == 1 ? c.alone : c.others;
    });
    EXPECT_TRUE(table.ends_with(std::string("\n  ") + c.verdict + "\n")) << table;
  }
}

}  // namespace
}  // namespace diagnosis
