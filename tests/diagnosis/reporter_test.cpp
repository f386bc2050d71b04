// What a run says while it lasts and at its end, at times that are given, against golden files.
// UPDATE_GOLDEN in the environment writes them anew.

#include "common/outputs/reporter.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

#include "diagnosis/record/listing.h"
#include "diagnosis/record/select.h"
#include "diagnosis/verdict/account.h"
#include "diagnosis/views/cases.h"
#include "made_up_records.h"

namespace diagnosis {
namespace {

void ExpectGolden(const std::string& name, const std::string& text) {
  const std::string path = std::string(GOLDEN_FILES) + "/" + name;
  if (std::getenv("UPDATE_GOLDEN") != nullptr) std::ofstream(path) << text;
  std::ifstream file(path);
  EXPECT_EQ(text, std::string(std::istreambuf_iterator<char>(file), {})) << path;
}

// A run of a dozen rows, a second and a half each, of which one hangs and two are run again.
std::string Said(std::unique_ptr<outputs::Reporter> (*make)(const outputs::Console&),
                 bool isTerminal) {
  std::string said;
  double now = 1000;
  const std::unique_ptr<outputs::Reporter> reporter =
      make({.write = [&said](const std::string& text) { said += text; },
            .clock = [&now] { return now; },
            .isTerminal = isTerminal,
            .columns = 72,
            .colour = isTerminal});
  const Baseline baseline = {{"add_union_arrays_3", Status::fail},
                             {"add_union_arrays_4", Status::fail},
                             {"copy_union_arrays_2", Status::crash},
                             {"multiply_union_vector16_1", Status::flake}};
  const std::pair<const char*, Status> rows[] = {
      {"add_union_arrays_1", Status::pass},         {"add_union_arrays_2", Status::skip},
      {"add_union_arrays_3", Status::fail},         {"add_union_arrays_4", Status::pass},
      {"add_union_arrays_5", Status::timeout},      {"copy_union_arrays_1", Status::fail},
      {"copy_union_arrays_2", Status::crash},       {"copy_union_arrays_3", Status::crash},
      {"multiply_union_scalar_1", Status::error},   {"multiply_union_scalar_2", Status::buildError},
      {"multiply_union_vector16_1", Status::crash}, {"power_union_vector8_6", Status::missing}};

  reporter->Begin({.heading = "A GPU on A platform", .cases = std::size(rows)});
  std::vector<Record> records;
  records.reserve(std::size(rows));
  std::vector<RowResult> results;
  double seconds = 1.25;
  for (const auto& [name, status] : rows) {
    Record& record = records.emplace_back(MadeUp(name, status));
    if (status != Status::skip && status != Status::missing) {
      reporter->Started(name);
      for (int i = 0; i < (status == Status::timeout ? 7 : 1); ++i) {
        now += 1.5;
        reporter->Tick();
      }
      record.seconds = seconds += 0.125;
      record.buildSeconds = 0.5;
    }
    results.push_back(ResultOf(record, {}, {baseline}));
    const bool again = record.row == "copy_union_arrays_1" || record.row == "copy_union_arrays_3";
    reporter->Ended(CaseOf(results.back()), again);
  }
  for (const std::size_t i : {5U, 7U}) {
    reporter->Started(rows[i].first);
    now += 3;
    records[i].again = {MadeUp(rows[i].first, i == 5 ? Status::pass : Status::crash)};
    TakeLastRun(results[i], {}, {baseline});
    reporter->Ended(CaseOf(results[i]), false);
  }
  reporter->End({.table = LedgerOf(results),
                 .result = SentenceOf(TotalsOf(results)),
                 .isGood = false,
                 .remarks = "And this is to be said of it.\n"});
  return said;
}

TEST(Reporter, TellsPeopleByLines) {
  ExpectGolden("progress.txt", Said(outputs::ProgressReporter, false));
}

TEST(Reporter, TellsPeopleOnATerminal) {
  ExpectGolden("progress_on_terminal.txt", Said(outputs::ProgressReporter, true));
}

TEST(Reporter, TellsTestLabs) { ExpectGolden("ktap.txt", Said(outputs::KtapReporter, false)); }

TEST(Reporter, TableOfRows) {
  ExpectGolden("list_long.txt",
               TableOf(Select({"*_arrays_1", "copy_*_vector3_6", "*_vector16_4"})));
}

}  // namespace
}  // namespace diagnosis
