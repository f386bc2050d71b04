// A context for all rows of a process: what the driver is asked for, and what the rows see.

#include "diagnosis/capture/shared_context.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <iterator>
#include <map>
#include <string>
#include <vector>

#include "diagnosis/capture/boundary.h"
#include "tests/diagnosis/rows_in_workers.h"

namespace diagnosis {
namespace {

// A driver that counts what it is asked for.
std::map<std::string, int> calls;
cl_int contextError = CL_SUCCESS;
cl_int infoError = CL_SUCCESS;

cl_icd_dispatch Driver() {
  cl_icd_dispatch driver = libraryOpenCl;
  driver.clCreateContextFromType = [](const cl_context_properties*, cl_device_type,
                                      void(CL_CALLBACK*)(const char*, const void*, size_t, void*),
                                      void*, cl_int* code) -> cl_context {
    *code = contextError;
    const auto made = static_cast<std::uintptr_t>(++calls["create"]);
    return contextError == CL_SUCCESS ? reinterpret_cast<cl_context>(made << 4) : nullptr;
  };
  driver.clRetainContext = [](cl_context) -> cl_int { return ++calls["retain"], CL_SUCCESS; };
  driver.clReleaseContext = [](cl_context) -> cl_int { return ++calls["release"], CL_SUCCESS; };
  driver.clGetDeviceInfo = [](cl_device_id, cl_device_info, size_t size, void* value,
                              size_t* returned) -> cl_int {
    ++calls["device"];
    if (infoError != CL_SUCCESS) return infoError;
    constexpr char name[] = "device";
    if (value != nullptr) std::memcpy(value, name, std::min(size, sizeof name));
    if (returned != nullptr) *returned = sizeof name;
    return CL_SUCCESS;
  };
  driver.clGetPlatformIDs = [](cl_uint room, cl_platform_id* platforms, cl_uint* count) -> cl_int {
    ++calls["platforms"];
    for (cl_uint i = 0; platforms != nullptr && i < std::min(room, 2U); ++i)
      platforms[i] = reinterpret_cast<cl_platform_id>(std::uintptr_t{i} + 1);
    if (count != nullptr) *count = 2;
    return CL_SUCCESS;
  };
  return driver;
}

class SharedContext : public testing::Test {
 protected:
  SharedContext() {
    calls.clear();
    contextError = infoError = CL_SUCCESS;
  }
  ~SharedContext() override { ReleaseSharedContext(); }

  cl_context Create(cl_context_properties platform = 7) {
    const cl_context_properties properties[] = {CL_CONTEXT_PLATFORM, platform, 0};
    code = -1;
    return shared.clCreateContextFromType(properties, CL_DEVICE_TYPE_GPU, nullptr, nullptr, &code);
  }

  const cl_icd_dispatch driver = Driver();
  const cl_icd_dispatch& shared = WithSharedContext(driver);
  cl_int code = -1;
};

TEST_F(SharedContext, IsTheSameForWhoAsksWithTheSame) {
  const cl_context first = Create();
  EXPECT_EQ(code, CL_SUCCESS);
  shared.clReleaseContext(first);
  EXPECT_EQ(Create(), first);
  EXPECT_EQ(code, CL_SUCCESS);
  shared.clReleaseContext(first);
  EXPECT_EQ(calls["create"], 1);
  EXPECT_NE(Create(8), first);
  EXPECT_EQ(calls["create"], 2);
  // Whoever gets it has a reference of his own, and one keeps it.
  EXPECT_EQ(calls["retain"], 2);
  EXPECT_EQ(calls["release"], 2);
  ReleaseSharedContext();
  EXPECT_EQ(calls["release"], 3);
  ReleaseSharedContext();
  EXPECT_EQ(calls["release"], 3);
}

TEST_F(SharedContext, IsNotOneThatCouldNotBeCreated) {
  contextError = CL_OUT_OF_HOST_MEMORY;
  EXPECT_EQ(Create(), nullptr);
  EXPECT_EQ(code, CL_OUT_OF_HOST_MEMORY);
  EXPECT_EQ(calls["retain"], 0);
  contextError = CL_SUCCESS;
  const cl_context made = Create();
  EXPECT_EQ(Create(), made);
  EXPECT_EQ(calls["create"], 2);
}

TEST_F(SharedContext, AnswersAQuestionAsItWasAnsweredOnce) {
  for (int time = 0; time < 3; ++time) {
    size_t size = 0;
    EXPECT_EQ(shared.clGetDeviceInfo(nullptr, CL_DEVICE_NAME, 0, nullptr, &size), CL_SUCCESS);
    EXPECT_EQ(size, sizeof "device");
    char name[9] = "--------";
    EXPECT_EQ(shared.clGetDeviceInfo(nullptr, CL_DEVICE_NAME, 8, name, &size), CL_SUCCESS);
    EXPECT_EQ(std::string(name, 9), std::string("device\0-\0", 9));
    EXPECT_EQ(shared.clGetDeviceInfo(nullptr, CL_DEVICE_NAME, 3, name, nullptr), CL_SUCCESS);
    cl_uint count = 0;
    EXPECT_EQ(shared.clGetPlatformIDs(0, nullptr, &count), CL_SUCCESS);
    EXPECT_EQ(count, 2U);
    cl_platform_id platforms[3] = {};
    EXPECT_EQ(shared.clGetPlatformIDs(3, platforms, nullptr), CL_SUCCESS);
    EXPECT_EQ(shared.clGetPlatformIDs(1, platforms + 2, nullptr), CL_SUCCESS);
    EXPECT_EQ(platforms[1], reinterpret_cast<cl_platform_id>(std::uintptr_t{2}));
    EXPECT_EQ(platforms[2], platforms[0]);
  }
  EXPECT_EQ(calls["device"], 3);
  EXPECT_EQ(calls["platforms"], 3);
  // Another may succeed where one failed.
  infoError = CL_INVALID_DEVICE;
  const auto ask = [this] {
    return shared.clGetDeviceInfo(nullptr, CL_DEVICE_VENDOR, 0, nullptr, nullptr);
  };
  EXPECT_EQ(ask(), CL_INVALID_DEVICE);
  infoError = CL_SUCCESS;
  EXPECT_EQ(ask(), CL_SUCCESS);
  EXPECT_EQ(calls["device"], 5);
}

// A right device whose contexts are counted, and a fault before it.
class RowsThatShare : public RowsInWorkers {
 protected:
  RowsThatShare() {
    Set("OCL_ICD_VENDORS", NULL_DRIVER);
    Set("OPENCL_LAYERS", std::string(RIGHT_DEVICE) + ":" + BAD_DRIVER);
    Set("CONTEXT_LOG", folder_ / "contexts");
    options_.shareContext = true;
  }

  std::ptrdiff_t Contexts(const std::string& what) const {
    std::ifstream file(folder_ / "contexts");
    std::vector<std::string> lines;
    for (std::string line; std::getline(file, line);) lines.push_back(line);
    return std::ranges::count_if(lines,
                                 [&](const std::string& line) { return line.starts_with(what); });
  }

  const std::vector<std::string> names_ = {"add_union_arrays_1", "copy_union_vector3_3",
                                           "floor_union_scalar_6", "multiply_union_vector16_2",
                                           "power_union_vector2_4"};
};

TEST_F(RowsThatShare, HaveOneContextAWorker) {
  for (const int workers : {1, 2}) {
    options_.workers = workers;
    std::filesystem::remove(folder_ / "contexts");
    const Told told = RunAll(JobsOf(names_));
    for (const std::string& name : names_) {
      EXPECT_EQ(told.Only(name).ending.value, 1) << name;
      EXPECT_TRUE(told.Only(name).sharedContext) << name;
      EXPECT_TRUE(told.Only(name).inShared.empty()) << name;
    }
    EXPECT_GE(Contexts("created"), 1);
    EXPECT_LE(Contexts("created"), workers);
    EXPECT_EQ(Contexts("gone"), Contexts("created"));
  }
  options_.shareContext = false;
  std::filesystem::remove(folder_ / "contexts");
  const Told told = RunAll(JobsOf(names_));
  EXPECT_FALSE(told.Only(names_[0]).sharedContext);
  EXPECT_EQ(Contexts("created"), std::ssize(names_));
}

struct Trouble {
  std::string fault;
  bool once;
  Ending::Kind kind;
  bool differs;
};

TEST_F(RowsThatShare, AreRunAgainInAContextOfTheirOwnIfTheyAreNotRight) {
  const std::string bad = names_[1];
  Set("BAD_DRIVER_TEXT", " copy(& short3 a;");
  const Trouble troubles[] = {
      {"abort@clBuildProgram", false, Ending::Kind::signalled, false},
      {"abort@clBuildProgram", true, Ending::Kind::returned, true},
      {"error@clCreateKernel", false, Ending::Kind::returned, false},
      {"error@clCreateKernel", true, Ending::Kind::returned, true},
  };
  for (const Trouble& trouble : troubles) {
    SCOPED_TRACE(trouble.fault + (trouble.once ? " once" : ""));
    std::filesystem::remove(folder_ / "contexts");
    std::filesystem::remove(folder_ / "once");
    Set("BAD_DRIVER", trouble.fault);
    if (trouble.once) {
      SetFaultOnce();
    } else {
      unsetenv("BAD_DRIVER_ONCE");
    }
    const Told told = RunAll(JobsOf(names_));
    const Record& record = told.Only(bad);
    EXPECT_EQ(record.ending.kind, trouble.kind);
    EXPECT_FALSE(record.sharedContext);
    ASSERT_EQ(record.inShared.size(), trouble.differs ? 1U : 0U);
    if (trouble.differs) {
      EXPECT_TRUE(record.inShared[0].sharedContext);
      EXPECT_FALSE(IsSameOutcome(record, record.inShared[0]));
    }
    EXPECT_EQ(std::ranges::count(told.started, bad), 2);
    for (const std::string& name : names_) {
      if (name != bad) {
        EXPECT_EQ(told.Only(name).ending.value, 1) << name;
      }
    }
    // The first, the row's own, and one behind it.
    EXPECT_LE(Contexts("created"), 4);
  }
}

// Where the caller says what is right.
TEST_F(RowsThatShare, AreNotRunTwiceWhereMuchIsWrong) {
  std::vector<RowJob> jobs = JobsOf(names_);
  std::vector<Record> records;
  std::size_t started = 0;
  RowsListener listener;
  listener.started = [&](const RowJob&) { ++started; };
  listener.ended = [&](const RowJob&, Record record) { records.push_back(std::move(record)); };
  listener.isRight = [](const Record&) { return false; };
  RunRows(jobs, options_, listener);
  EXPECT_EQ(records.size(), names_.size());
  EXPECT_EQ(started, names_.size() + 1);
  EXPECT_TRUE(std::ranges::none_of(records, &Record::sharedContext));
}

TEST_F(RowsThatShare, OfSeveralRunsInAProcessOrAFreshOneDoNot) {
  std::vector<RowJob> jobs = JobsOf({names_[0], names_[1]});
  jobs[0].passes = 2;
  jobs[1].freshWorker = true;
  const Told told = RunAll(jobs);
  for (const char* const name : {"add_union_arrays_1", "copy_union_vector3_3"})
    EXPECT_FALSE(told.Only(name).sharedContext);
  EXPECT_EQ(Contexts("created"), 3);
}

}  // namespace
}  // namespace diagnosis
