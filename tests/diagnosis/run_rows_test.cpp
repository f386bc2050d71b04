// Rows in worker processes on the simulated GPU: the data that they get, and what they leave.

#include <CL/cl.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <random>
#include <string>

#include "diagnosis/record/row_facts.h"
#include "diagnosis/verdict/ledger.h"
#include "harness/rows.h"
#include "tests/diagnosis/rows_in_workers.h"
#include "tests/rows.h"

namespace diagnosis {
namespace {

std::string Contents(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

// The suite's own run, copied down by a layer, against every row by itself in another order.
TEST_F(RowsInWorkers, GivesEveryRowTheBytesOfAFullRun) {
  Set("OPENCL_LAYERS", std::string(SIMULATED_GPU) + ":" + RECORD_WRITES_LAYER);
  Set("RECORD_WRITES", folder_ / "writes");
  const std::string command =
      std::string(EMULATOR) + " " + UNION_SUITE + " >" + (folder_ / "out").string();
  ASSERT_EQ(std::system(command.c_str()), 0);
  const std::string writes = Contents(folder_ / "writes");

  Set("OPENCL_LAYERS", SIMULATED_GPU);
  std::vector<RowJob> jobs;
  for (std::size_t row = 0; row < schedule.size(); ++row) jobs.push_back({.row = row});
  std::shuffle(jobs.begin(), jobs.end(), std::minstd_rand(4));
  options_.workers = 2;
  const Told told = RunAll(jobs);

  std::string out;
  std::size_t at = 0;
  for (const ::Row& row : Rows()) {
    if (row.operation == "power") break;
    const Record& record = told.Only(row.name);
    out += record.out;
    ASSERT_EQ(record.repetitions.size(), static_cast<std::size_t>(Runs(row))) << row.name;
    ASSERT_EQ(record.launches, Runs(row)) << row.name;
    for (const Repetition& repetition : record.repetitions) {
      for (const Bytes* const input : {&repetition.inputA, &repetition.inputB}) {
        if (input == &repetition.inputB && !row.twoInputs) continue;
        // What no store reaches is the heap's, which no run has as another.
        for (std::size_t element = 0; element < 10; ++element) {
          const std::size_t from = element * row.stride;
          const std::size_t size = static_cast<std::size_t>(row.lanes) * sizeof(float);
          const std::string bytes(input->begin(), input->end());
          ASSERT_EQ(bytes.substr(from, size), writes.substr(at + from, size)) << row.name;
        }
        at += 256 * row.stride;
      }
      ASSERT_EQ(repetition.result.size(), 10 * row.stride) << row.name;
    }
    EXPECT_EQ(record.behindA.size(), 246 * row.stride);
    EXPECT_EQ(record.behindB.size(), row.twoInputs ? 246 * row.stride : 0);
  }
  EXPECT_EQ(at, writes.size());
  out += "TOTAL : 210\nPASSED: 210\nFAILED: 0\n";
  EXPECT_EQ(out, Contents(folder_ / "out"));
}

// The float members of a buffer of vectors of three.
std::vector<std::uint32_t> FloatsOf(const Bytes& buffer) {
  std::vector<std::uint32_t> floats;
  for (std::size_t at = 0; at < buffer.size(); at += at % 32 == 8 ? 24 : 4) {
    floats.emplace_back();
    std::memcpy(&floats.back(), &buffer[at], 4);
  }
  return floats;
}

TEST_F(RowsInWorkers, KeepsWhatARowLeaves) {
  RowJob plain{.row = IndexOf("add_union_vector3_2")};
  RowJob other = plain;
  other.buildOptions = "-DNOTHING -cl-opt-disable";
  other.localSize = 64;
  other.passes = 3;
  const Told told = RunAll({plain, other});
  ASSERT_EQ(told.devices.size(), 1U);
  EXPECT_NE(told.devices[0].name, "");
  EXPECT_NE(told.devices[0].singleFpConfig, 0U);
  const std::vector<Record>& both = told.records.at("add_union_vector3_2");
  ASSERT_EQ(both.size(), 2U);
  for (const Record& record : both) {
    EXPECT_EQ(StatusOf(record), Status::pass) << DetailOf(record);
    EXPECT_EQ(record.source, KernelTextOf(FactsOfRows()[plain.row].row));
    EXPECT_EQ(record.kernel, "sum");
    EXPECT_GT(record.buildSeconds, 0);
    EXPECT_GT(record.seconds, record.buildSeconds);
    EXPECT_EQ(record.err, "");
    EXPECT_EQ(record.driver, "");
    ASSERT_EQ(record.repetitions.size(), 10U);
    EXPECT_EQ(record.repetitions[9].out, "RUN 10: PASSED\n");
    EXPECT_EQ(FloatsOf(record.repetitions[9].inputB), FloatsOf(both[0].repetitions[9].inputB));
  }
  EXPECT_EQ(both[1].buildOptions, other.buildOptions);
  EXPECT_EQ(both[1].localSize, 64U);

  options_.seed = 2;
  const Record seeded = RunAll({plain}).Only("add_union_vector3_2");
  EXPECT_EQ(StatusOf(seeded), Status::pass);
  EXPECT_NE(FloatsOf(seeded.repetitions[0].inputB), FloatsOf(both[0].repetitions[0].inputB));
}

// What is put in reaches the driver: an option that it does not know, a size that does not divide.
TEST_F(RowsInWorkers, PutsOptionsAndLocalSizeIn) {
  RowJob options{.row = 0, .buildOptions = "-DNOT=\"A) #error\" -include nothing.h"};
  RowJob size{.row = 1, .localSize = 7};
  const Told told = RunAll({options, size, {.row = 2}});
  const Record& refused = told.Only(std::string(rows[0].name));
  EXPECT_EQ(StatusOf(refused), Status::buildError);
  EXPECT_NE(refused.buildLog, "");
  const Record& divided = told.Only(std::string(rows[1].name));
  ASSERT_EQ(divided.failedCalls.size(), 1U);
  EXPECT_EQ(divided.failedCalls[0].name, "clEnqueueNDRangeKernel");
  EXPECT_EQ(divided.failedCalls[0].code, CL_INVALID_WORK_GROUP_SIZE);
  EXPECT_EQ(StatusOf(told.Only(std::string(rows[2].name))), Status::pass);
}

}  // namespace
}  // namespace diagnosis
