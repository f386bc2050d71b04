// What a device is asked where its answers fit several suspects, and what its answers leave of
// them.

#include "diagnosis/localization/experiment.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cfenv>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <iterator>
#include <ostream>
#include <span>
#include <string>
#include <vector>

#include "diagnosis/localization/analysis.h"
#include "diagnosis/views/experiments_of_run.h"
#include "tests/diagnosis/made_up_device.h"
#include "tests/diagnosis/rows_in_workers.h"

namespace diagnosis {
namespace {

using Names = std::vector<std::string>;

void RoundBy(MadeUpDevice& device, int mode) {
  device.convert = [old = device.convert, mode](std::int64_t value) {
    const int before = std::fegetround();
    std::fesetround(mode);
    const float rounded = old(value);
    std::fesetround(before);
    return rounded;
  };
}

void LeaveOut(MadeUpDevice& device, const std::function<bool(int, int)>& isLeftOut) {
  device.placeOfResult = [old = device.placeOfResult, isLeftOut](int item, int lane) {
    return isLeftOut(item, lane) ? std::ptrdiff_t{-1} : old(item, lane);
  };
}

struct Open {
  const char* what;
  std::vector<const char*> rows;
  std::function<void(MadeUpDevice&)> set;
  Names before;
  Names after;
  std::string kind;
  std::string told;
};

void PrintTo(const Open& open, std::ostream* out) { *out << open.what; }

Names NamesOf(const Suspects& suspects) {
  Names names;
  for (const Suspect& suspect : suspects.fewest) {
    names.push_back(suspect.name);
    names.insert(names.end(), suspect.alike.begin(), suspect.alike.end());
  }
  return names;
}

const Open cases[] = {
    {"lanes that are not written",
     {"copy_union_vector4_1", "floor_union_vector8_4", "add_union_vector16_2"},
     [](MadeUpDevice& device) {
       device.fresh = 0;
       LeaveOut(device, [lanes = device.row.lanes](int, int lane) { return lane >= lanes / 2; });
     },
     {"lanes-unwritten", "answers-0x00000000"},
     {"lanes-unwritten"},
     "filled-result",
     "Experiments: asked once: lanes-unwritten, not answers-0x00000000.\n"},
    {"elements that are not written, in a buffer that is not zero",
     {"copy_union_arrays_1", "multiply_union_scalar_2"},
     [](MadeUpDevice& device) {
       device.fresh = 0x7E;
       LeaveOut(device, [](int item, int) { return item % 3 == 1; });
     },
     {"elements-unwritten", "answers-0x7E7E7E7E"},
     {"elements-unwritten"},
     "filled-result",
     "Experiments: asked once: elements-unwritten, not answers-0x7E7E7E7E.\n"},
    {"answers that are cleared",
     {"copy_union_vector4_1", "floor_union_vector8_4"},
     [](MadeUpDevice& device) {
       device.fresh = 0;
       device.bitsOf = [](float) { return 0U; };
     },
     {"elements-unwritten", "answers-0x00000000"},
     {"answers-0x00000000"},
     "filled-result",
     "Experiments: asked once: answers-0x00000000, not elements-unwritten.\n"},
    {"conversions that round down",
     {"copy_union_vector4_1", "copy_union_arrays_1"},
     [](MadeUpDevice& device) { RoundBy(device, FE_DOWNWARD); },
     {"rounds-toward-zero", "rounds-down"},
     {"rounds-down"},
     "chosen-values",
     "Experiments: asked once: rounds-down, not rounds-toward-zero.\n"},
    {"conversions that round toward zero",
     {"copy_union_vector4_1", "copy_union_arrays_1"},
     [](MadeUpDevice& device) { RoundBy(device, FE_TOWARDZERO); },
     {"rounds-toward-zero", "rounds-down"},
     {"rounds-toward-zero"},
     "chosen-values",
     "Experiments: asked once: rounds-toward-zero, not rounds-down.\n"},
    {"what is plain without",
     {"copy_union_vector4_1"},
     [](MadeUpDevice& device) {
       device.bitsOf = [](float answer) { return std::bit_cast<std::uint32_t>(-answer); };
     },
     {"negated"},
     {"negated"},
     "",
     ""},
};

class Asking : public testing::TestWithParam<Open> {
 protected:
  void Answer(const Open& open) {
    for (const char* const row : open.rows) {
      devices_.emplace_back(row);
      open.set(devices_.back());
    }
    run_.info.device = devices_.front().reported;
    for (const MadeUpDevice& device : devices_) run_.records.push_back(device.Run());
  }

  // As the device answers.
  Record Made(const ToAsk& asked) const {
    const auto device = std::ranges::find(devices_, asked.row,
                                          [](const MadeUpDevice& one) { return one.row.name; });
    return device->Run(10, asked.experiment);
  }

  Record& RecordOf(const std::string& row) {
    return *std::ranges::find(run_.records, row, &Record::row);
  }

  std::deque<MadeUpDevice> devices_;
  diagnosis::Run run_;
};

TEST_P(Asking, LeavesTheSuspectThatItIs) {
  Answer(GetParam());
  const Analysis before = AnalysisOf(run_, {});
  EXPECT_EQ(NamesOf(before.suspects), GetParam().before);
  const std::vector<ToAsk> asked = ExperimentsFor(before, 3);
  ASSERT_EQ(asked.size(), GetParam().kind.empty() ? 0U : 1U);
  for (const ToAsk& one : asked) {
    EXPECT_EQ(one.experiment.kind, GetParam().kind);
    // What is predicted of the lane tells them apart.
    ASSERT_EQ(one.experiment.predicted.size(), 2U);
    EXPECT_NE(one.experiment.predicted[0].answer, one.experiment.predicted[1].answer);
    // Through the file and back.
    RecordOf(one.row).experiments.push_back(RecordFromJson(ToJson(Made(one))));
  }
  const Analysis after = AnalysisOf(run_, {});
  EXPECT_EQ(NamesOf(after.suspects), GetParam().after);
  EXPECT_EQ(ExperimentsOfRun(after.suspects), GetParam().told);
  EXPECT_TRUE(ExperimentsFor(after, 3).empty());
  for (std::size_t n = 0; n < before.rows.size(); ++n)
    EXPECT_EQ(after.rows[n].status, before.rows[n].status);
}

// A device that answers otherwise than any of them says is none of them.
TEST_P(Asking, NamesNothingNew) {
  Answer(GetParam());
  const Analysis before = AnalysisOf(run_, {});
  for (ToAsk& one : ExperimentsFor(before, 3)) {
    Record& asked = RecordOf(one.row).experiments.emplace_back(Made(one));
    for (Repetition& repetition : asked.repetitions) std::ranges::fill(repetition.result, 0x11);
  }
  const Names allowed = {"unexplained"};
  if (!GetParam().kind.empty()) {
    EXPECT_EQ(NamesOf(AnalysisOf(run_, {}).suspects), allowed);
  }
}

// One that did not come to an end says nothing.
TEST_P(Asking, TakesNothingFromARunThatFailed) {
  Answer(GetParam());
  for (ToAsk& one : ExperimentsFor(AnalysisOf(run_, {}), 3)) {
    Record& asked = RecordOf(one.row).experiments.emplace_back(Made(one));
    asked.ending.kind = Ending::Kind::timedOut;
  }
  const Analysis after = AnalysisOf(run_, {});
  EXPECT_EQ(NamesOf(after.suspects), GetParam().before);
  EXPECT_EQ(ExperimentsOfRun(after.suspects), "");
}

TEST_P(Asking, CostsNoMoreThanItMay) {
  Answer(GetParam());
  EXPECT_TRUE(ExperimentsFor(AnalysisOf(run_, {}), 0).empty());
  EXPECT_EQ(MostExperiments(210), 21U);
  EXPECT_EQ(MostExperiments(1), 3U);
}

INSTANTIATE_TEST_SUITE_P(Devices, Asking, testing::ValuesIn(cases),
                         [](const testing::TestParamInfo<Open>& open) {
                           std::string name = open.param.what;
                           std::erase_if(name, [](char c) { return c == ' ' || c == ','; });
                           return name;
                         });

// What a right device makes of a row in which something was changed is right, and the record shows
// what was changed.
class ChangedRow : public RowsInWorkers {};

TEST_F(ChangedRow, IsRunAsTheExperimentSays) {
  const char* const name = "add_union_vector3_3";
  const Row row = RowNamed(name).value();
  const std::size_t size = row.stride * elementsOfRow;
  std::vector<Experiment> experiments(5);
  experiments[0].result = {0xA5, 0x3C};
  experiments[1].behind = {1, 2, 3};
  experiments[2].inputA = Bytes(size, 0x11);
  experiments[2].inputB = Bytes(size, 0x41);
  experiments[3].swapped = true;
  experiments[4].passes = 2;
  std::vector<RowJob> jobs(experiments.size());
  for (std::size_t n = 0; n < jobs.size(); ++n) {
    experiments[n].kind = "a kind";
    jobs[n] = {.row = IndexOf(name), .experiment = experiments[n]};
  }
  jobs[0].seed = 7;
  const Told told = RunAll(jobs);
  const std::vector<Record>& records = told.records.at(name);
  ASSERT_EQ(records.size(), jobs.size());
  Device device = told.devices.front();
  for (std::size_t n = 0; n < records.size(); ++n) {
    SCOPED_TRACE(n);
    const Record& record = records[n];
    EXPECT_EQ(record.experiment.kind, "a kind");
    EXPECT_EQ(record.experiment.passes, experiments[n].passes);
    ASSERT_EQ(record.repetitions.size(), 10U);
    EXPECT_TRUE(record.failedCalls.empty());
    EXPECT_EQ(record.seed, n == 0 ? 7U : 1U);
    const Repetition& last = record.repetitions.back();
    EXPECT_EQ(last.inputA == Bytes(size, 0x11), n == 2);
    EXPECT_EQ(last.inputB == Bytes(size, 0x41), n == 2);
    const Bytes pattern = {1, 2, 3, 1};
    EXPECT_EQ(std::ranges::equal(std::span(record.behindB).first(4), pattern), n == 1);
    EXPECT_EQ(std::ranges::equal(std::span(record.behindA).first(4), pattern), n == 1);
    const Opinion opinion = OpinionOf(record, device);
    EXPECT_EQ(opinion.verdict, Opinion::Verdict::right);
    // What no kernel writes is what was put there.
    EXPECT_EQ(last.result[16] == 0xA5 && last.result[17] == 0x3C, n == 0);
  }
}

}  // namespace
}  // namespace diagnosis
