// Explanations as a person reads them, against golden files. With UPDATE_GOLDEN in the
// environment they are written anew, for a person to look through.

#include "diagnosis/views/explain.h"

#include <CL/cl.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <ostream>
#include <sstream>
#include <string>

#include "diagnosis/localization/analysis.h"
#include "tests/diagnosis/made_up_device.h"

namespace diagnosis {

namespace {

/// A row on a device that was spoilt, or whose record was.
struct Explained {
  const char* file;
  const char* row;
  std::function<void(MadeUpDevice&)> spoil;
  std::function<void(Record&)> spoilRecord = [](Record&) {};
  int repetitions = 2;
};

std::ostream& operator<<(std::ostream& out, const Explained& explained) {
  return out << explained.file;
}

/// As a row writes it that found a mismatch in each repetition.
void Fail(Record& record) {
  for (Repetition& repetition : record.repetitions) {
    repetition.out = "  c:1 ocl:2\nRUN 1: FAILED!\n";
    record.out += repetition.out;
  }
}

const Explained explanations[] = {
    // A fault of the device in a mosaic of stores.
    {"failed_and_wrong", "add_union_arrays_3",
     [](MadeUpDevice& device) {
       device.placeOfB = [old = device.placeOfB](int item, int lane) {
         return old(item, lane) + 16;
       };
     },
     Fail},
    // One right lane in an element is enough for the suite.
    {"passed_but_wrong", "copy_union_vector2_6",
     [](MadeUpDevice& device) {
       device.placeOfA = [old = device.placeOfA](int item, int) { return old(item, 0); };
     },
     [](Record& record) { record.ending.value = 1; }},
    // Denormals that the device keeps as it reports, where the reference takes them as zero.
    {"failed_but_right", "multiply_union_vector8_3", [](MadeUpDevice&) {}, Fail, 10},
    {"wrong_power", "power_union_scalar_5",
     [](MadeUpDevice& device) {
       device.compute = [](float a, float, int n) {
         return a < 0 && n > 1 ? std::nanf("") : static_cast<float>(std::pow(double{a}, n));
       };
     },
     [](Record& record) { record.ending.value = 1; }},
    {"build_error", "floor_union_vector4_2", [](MadeUpDevice&) {},
     [](Record& record) {
       record.repetitions.clear();
       record.failedCalls = {{"clBuildProgram", -11, 0}};
       record.buildLog = "kernel.cl:12: error: expected ';'\n\x1B[1mstopped\x1B[0m\n";
       record.ending.value = 1;
     }},
    {"crash", "floor_union_vector4_2", [](MadeUpDevice&) {},
     [](Record& record) {
       record.repetitions.back().result.clear();
       record.driver = "assertion failed\n";
       record.ending = {Ending::Kind::signalled, 6, ""};
     }},
};

class Explanations : public testing::TestWithParam<Explained> {};

TEST_P(Explanations, ReadAsTheGoldenFilesDo) {
  const Explained& explained = GetParam();
  MadeUpDevice device(explained.row);
  explained.spoil(device);
  diagnosis::Run run;
  run.info.device = device.reported;
  run.records.push_back(device.Run(explained.repetitions));
  explained.spoilRecord(run.records.back());
  const std::string text =
      TextOf(Explain(run.records.back(), run.info.device, AnalysisOf(run, {}).suspects), 5);

  const std::string path = std::string(GOLDEN_FILES) + "/explain_" + explained.file + ".txt";
  if (std::getenv("UPDATE_GOLDEN") != nullptr) std::ofstream(path) << text;
  std::ifstream file(path);
  ASSERT_TRUE(file) << path;
  std::stringstream golden;
  golden << file.rdbuf();
  EXPECT_EQ(text, golden.str());
}

INSTANTIATE_TEST_SUITE_P(Rows, Explanations, testing::ValuesIn(explanations));

}  // namespace

}  // namespace diagnosis
