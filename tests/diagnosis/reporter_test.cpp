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
std::string Said(std::unique_ptr<Reporter> (*make)(const Console&), bool isTerminal) {
  std::string said;
  double now = 1000;
  const std::unique_ptr<Reporter> reporter =
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

  Device device;
  device.name = "A GPU\x1B[2J";
  device.platform = "A platform";
  device.driverVersion = "1.0";
  reporter->Begin(device, std::size(rows));
  std::vector<AccountedRow> account;
  double seconds = 1.25;
  for (const auto& [name, status] : rows) {
    Record record = MadeUp(name, status);
    if (status != Status::skip && status != Status::missing) {
      reporter->Started(name);
      for (int i = 0; i < (status == Status::timeout ? 7 : 1); ++i) {
        now += 1.5;
        reporter->Tick();
      }
      record.seconds = seconds += 0.125;
      record.buildSeconds = 0.5;
    }
    account.push_back(AccountOf(ResultOf(record, {}, {baseline})));
    const bool again = record.row == "copy_union_arrays_1" || record.row == "copy_union_arrays_3";
    reporter->Ended(account.back(), again);
  }
  for (const std::size_t i : {5U, 7U}) {
    reporter->Started(rows[i].first);
    now += 3;
    Record record = MadeUp(rows[i].first, rows[i].second);
    record.again = {MadeUp(rows[i].first, i == 5 ? Status::pass : Status::crash)};
    account[i] = AccountOf(ResultOf(record, {}, {baseline}));
    reporter->Ended(account[i], false);
  }
  reporter->End(account, "And this is to be said of it.\n");
  return said;
}

TEST(Reporter, TellsPeopleByLines) { ExpectGolden("people.txt", Said(ReporterForPeople, false)); }

TEST(Reporter, TellsPeopleOnATerminal) {
  ExpectGolden("people_on_terminal.txt", Said(ReporterForPeople, true));
}

TEST(Reporter, TellsTestLabs) { ExpectGolden("ktap.txt", Said(ReporterInKtap, false)); }

TEST(Reporter, TableOfRows) {
  ExpectGolden("list_long.txt",
               TableOf(Select({"*_arrays_1", "copy_*_vector3_6", "*_vector16_4"})));
}

}  // namespace
}  // namespace diagnosis
