// What a run leaves, as data and as what is made of it.

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "common/text/bad_use.h"
#include "exploration/record/run_record.h"
#include "exploration/views/cases.h"
#include "exploration/views/page.h"
#include "exploration/views/report.h"

namespace exploration {
namespace {

FaultRecord Swizzles() {
  FaultRecord fault;
  fault.name = "wrong-answer-swizzles-0001";
  fault.title = "wrong answer: swizzles";
  fault.kind = "wrong answer";
  fault.how = "zero";
  fault.told = "wrong answer";
  fault.features = {"members", "swizzles"};
  fault.text = "__kernel void test() <b>&\n";
  fault.original = fault.text;
  fault.isComplete = true;
  fault.answers = {{"out", {1, 2}, {0xFF, 0}, {3, 4}}};
  fault.log = "]]> \x1b[31m";
  fault.settings = {{"-cl-opt-disable", "goes away"}};
  fault.findings = {"1:4", "1:9"};
  return fault;
}

RunRecord RunOf(const char* seed) {
  RunRecord run;
  run.version = "1";
  run.command = "./explore";
  run.host = "one";
  run.start = "2026-01-02T00:00:00Z";
  run.end = "2026-01-02T01:00:00Z";
  run.ending = finished;
  run.options = {{"seed", seed}, {"shard", "1/1"}, {"space", "any"}};
  run.device.platform = "P";
  run.device.name = "D";
  run.device.driverVersion = "7";
  run.device.cVersion = "OpenCL C 1.2";
  run.right = 10;
  run.wrong = 2;
  run.pairs = PairCounts({"members", "swizzles"});
  run.pairs.Add({"members", "swizzles"}, true);
  run.pairs.Add({"members"}, false);
  run.faults = {Swizzles()};
  return run;
}

class Folder {
 public:
  Folder() {
    std::string name = (std::filesystem::temp_directory_path() / "record.XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("no folder for a record");
    path = name;
  }
  Folder(const Folder&) = delete;
  Folder& operator=(const Folder&) = delete;
  ~Folder() { std::filesystem::remove_all(path); }

  std::string Write(const std::string& bytes) const {
    const std::string file = path / "run.json";
    std::ofstream(file) << bytes;
    return file;
  }

  std::filesystem::path path;
};

TEST(RunRecord, IsReadAsItWasWritten) {
  const Folder folder;
  const std::string written = ToJson(RunOf("1"));
  EXPECT_EQ(ToJson(RunFromFile(folder.Write(written))), written);
}

TEST(RunRecord, IsRefusedByNameIfItIsDamaged) {
  const Folder folder;
  const std::string whole = ToJson(RunOf("1"));
  const auto changed = [&whole](const char* from, const char* to) {
    std::string bytes = whole;
    const std::size_t at = bytes.find(from);
    EXPECT_NE(at, std::string::npos) << from;
    return bytes.replace(at, std::string(from).size(), to);
  };
  for (const std::string& bytes :
       {std::string(), whole.substr(0, whole.size() / 2), std::string("{}"), std::string("[1]"),
        changed("\"wrong\": 2", "\"wrong\": \"two\""), changed("\"pairs\"", "\"pears\"")}) {
    const std::string file = folder.Write(bytes);
    try {
      RunFromFile(file);
      ADD_FAILURE() << bytes.substr(0, 80);
    } catch (const text::BadUse& error) {
      EXPECT_NE(std::string(error.what()).find(file), std::string::npos) << error.what();
    }
  }
}

TEST(RunRecord, OfSeveralRunsNamesAllDevices) {
  RunRecord second = RunOf("2");
  second.device.name = "E";
  second.host = "two";
  second.right = 5;
  second.faults[0].features = {"swizzles", "loops"};
  second.faults[0].findings = {"2:3"};
  FaultRecord loops = Swizzles();
  loops.features = {"loops"};
  loops.kind = "crash";
  second.faults.push_back(loops);
  RunRecord third = RunOf("3");
  third.faults.clear();
  third.ending = "interrupted";
  const RunRecord merged = Merged({RunOf("1"), second, third});
  EXPECT_EQ(merged.device.name, "D, E");
  EXPECT_EQ(merged.device.platform, "P");
  EXPECT_EQ(merged.host, "one, two");
  EXPECT_EQ(merged.ending, "interrupted");
  EXPECT_EQ(merged.right, 25U);
  EXPECT_EQ(merged.wrong, 6U);
  EXPECT_EQ(merged.pairs.programs[0][0], 6U);
  EXPECT_EQ(merged.pairs.wrong[1][0], 3U);
  EXPECT_EQ(merged.options.at("space"), "any");
  ASSERT_EQ(merged.faults.size(), 2U);
  EXPECT_EQ(merged.faults[0].findings, (std::vector<std::string>{"1:4", "1:9", "2:3"}));
  EXPECT_EQ(TotalsOf(merged), "31 programs: 25 right, 6 wrong; 2 faults");
}

TEST(Views, TellAFaultAndWhatNobodyMayTakeForCode) {
  const RunRecord run = RunOf("1");
  const std::string report = ReportOf(run.faults[0], run, "");
  for (const char* told : {"wrong answer: swizzles", "D on P, driver version 7, OpenCL C 1.2",
                           "-cl-opt-disable", "goes away", "__kernel void test() <b>&"})
    EXPECT_NE(report.find(told), std::string::npos) << told;
  const std::string page = PageOf(run);
  EXPECT_EQ(page.find("<b>"), std::string::npos);
  EXPECT_NE(page.find("__kernel void test() &lt;b&gt;&amp;"), std::string::npos);
  EXPECT_LT(page.find("id=\"faults\""), page.find("id=\"features\""));
}

// A fault fails, and a run that did not come to its end is an error: neither is green.
TEST(Views, AsCasesAreGreenOnlyIfNothingWasFound) {
  RunRecord run = RunOf("1");
  EXPECT_NE(JUnitOf(run).find("failures=\"1\""), std::string::npos);
  run.faults.clear();
  run.wrong = 0;
  EXPECT_NE(JUnitOf(run).find("failures=\"0\""), std::string::npos);
  EXPECT_NE(JUnitOf(run).find("errors=\"0\""), std::string::npos);
  run.ending = "interrupted";
  EXPECT_NE(JUnitOf(run).find("errors=\"1\""), std::string::npos);
}

}  // namespace
}  // namespace exploration
