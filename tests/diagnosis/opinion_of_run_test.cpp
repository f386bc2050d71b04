// What is said of a whole run, by the kinds of its rows.

#include "diagnosis/views/opinion_of_run.h"

#include <CL/cl.h>
#include <gtest/gtest.h>

#include <cmath>
#include <ostream>
#include <string>

#include "tests/diagnosis/made_up_device.h"

namespace diagnosis {

namespace {

struct Rows {
  int passedRight;
  int failedWrong;
  int passedWrong;
  int failedRight;
  std::uint64_t config;
  const char* text;
};

std::ostream& operator<<(std::ostream& out, const Rows& rows) { return out << rows.text; }

constexpr std::uint64_t keeps = CL_FP_ROUND_TO_NEAREST | CL_FP_DENORM;
constexpr std::uint64_t flushes = CL_FP_ROUND_TO_NEAREST;

const Rows runs[] = {
    {0, 0, 0, 0, keeps, ""},
    {1, 0, 0, 0, keeps, "1 row passed, and is right by OpenCL's rules too.\n"},
    {3, 0, 0, 0, keeps, "3 rows passed, and all are right by OpenCL's rules too.\n"},
    {1, 2, 0, 0, keeps,
     "2 rows failed; both are wrong by OpenCL's rules too, a fault of the device.\n"
     "Suspects: negated (2 of 2 wrong rows).\n"},
    {2, 0, 1, 0, keeps,
     "1 of 3 rows that passed is wrong by OpenCL's rules, a fault that the suite's rule hides.\n"
     "Suspects: negated (1 of 1 wrong row).\n"},
    {0, 0, 1, 0, keeps,
     "The row that passed is wrong by OpenCL's rules, a fault that the suite's rule hides.\n"
     "Suspects: negated (1 of 1 wrong row).\n"},
    {2, 0, 0, 2, keeps,
     "2 rows failed; both are right by OpenCL's rules: the device keeps denormals, as it "
     "reports.\n"},
    {0, 0, 0, 1, flushes,
     "1 row failed; it is right by OpenCL's rules: the device keeps denormals, as it may without "
     "a report.\n"},
    {5, 1, 2, 3, keeps,
     "By OpenCL's rules:  right  wrong\n"
     "  passed                 5      2\n"
     "  failed                 3      1\n"
     "3 rows failed but right: the device keeps denormals, as it reports.\n"
     "Suspects: negated (3 of 3 wrong rows).\n"},
};

class OpinionsOnRuns : public testing::TestWithParam<Rows> {};

TEST_P(OpinionsOnRuns, CountKinds) {
  const Rows& rows = GetParam();
  diagnosis::Run run;
  run.info.device.singleFpConfig = rows.config;
  const auto add = [&run](int count, const char* name, bool right, int value) {
    MadeUpDevice device(name);
    if (!right) device.bitsOf = [old = device.bitsOf](float x) { return old(-x); };
    for (int n = 0; n < count; ++n) {
      run.records.push_back(device.Run());
      run.records.back().ending.value = value;
    }
  };
  add(rows.passedRight, "copy_union_vector4_1", true, 1);
  add(rows.failedWrong, "copy_union_vector4_1", false, 0);
  add(rows.passedWrong, "add_union_vector4_1", false, 1);
  add(rows.failedRight, "multiply_union_vector16_3", true, 0);  // a row with denormals
  EXPECT_EQ(OpinionOnRun(AnalysisOf(run, {})), rows.text);
  // Where the second opinion judges, a ledger that says otherwise stands above.
  Expectations strict;
  strict.strict = true;
  const bool isOverruled = rows.passedWrong + rows.failedRight > 0;
  const bool isTable = rows.failedWrong > 0;
  EXPECT_EQ(OpinionOnRun(AnalysisOf(run, strict)),
            (isOverruled && !isTable ? "The suite alone: " : "") + std::string(rows.text));
}

INSTANTIATE_TEST_SUITE_P(Runs, OpinionsOnRuns, testing::ValuesIn(runs));

}  // namespace

}  // namespace diagnosis
