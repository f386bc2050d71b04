// Reproducers, compiled by two compilers and run against a scripted OpenCL.

#include "diagnosis/views/reproduce.h"

#include <CL/cl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

#include "common/reproducer/reproducer.h"
#include "diagnosis/record/row.h"
#include "diagnosis/record/row_facts.h"

namespace diagnosis {
namespace {

namespace fs = std::filesystem;

const Device flushes{"a platform", "a device", "a vendor",
                     "OpenCL 1.2", "1.0",      CL_FP_ROUND_TO_NEAREST};

void WriteFile(const fs::path& path, const std::string& bytes) {
  std::ofstream(path, std::ios::binary) << bytes;
}

std::string ReadFile(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

struct Ended {
  int status;
  std::string output;
};

Ended Shell(const std::string& command) {
  FILE* pipe = popen((command + " 2>&1").c_str(), "r");
  std::string output;
  std::array<char, 4096> part;
  while (const std::size_t size = std::fread(part.data(), 1, part.size(), pipe))
    output.append(part.data(), size);
  const int status = pclose(pipe);
  return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, output};
}

class Reproduce : public testing::Test {
 protected:
  void SetUp() override {
    std::string name = (fs::temp_directory_path() / "reproduce.XXXXXX").string();
    ASSERT_NE(mkdtemp(name.data()), nullptr);
    folder_ = name;
  }
  void TearDown() override { fs::remove_all(folder_); }

  /// Compiles the reproducer with both compilers; the program that the one or the other makes
  /// stays, by turns.
  void Compile(const std::string& text) {
    WriteFile(folder_ / "row.c", text);
    std::size_t longest = 0;
    for (std::size_t at = 0; at < text.size(); at = text.find('\n', at) + 1)
      longest = std::max(longest, text.find('\n', at) - at);
    EXPECT_LE(longest, 100U);
    std::ranges::reverse(compilers_);
    for (const std::string& compiler : compilers_) {
      const Ended ended = Shell(compiler + " -std=c99 -Wall -Wextra -Wpedantic -Werror -o '" +
                                Path("row") + "' '" + Path("row.c") + "' " SCRIPTED_OPENCL);
      ASSERT_EQ(ended.status, 0) << ended.output;
    }
  }

  Ended Run(const std::string& environment = "") {
    return Shell(environment + " SCRIPTED_TEXT='" + Path("text") + "' '" + Path("row") + "'");
  }
  /// Runs it with these bytes as the device's answer.
  Ended RunWith(const Bytes& answers, const std::string& environment = "") {
    WriteFile(folder_ / "answers", {answers.begin(), answers.end()});
    return Run(environment + "SCRIPTED_ANSWERS='" + Path("answers") + "'");
  }

  std::string Path(const char* name) const { return (folder_ / name).string(); }

  fs::path folder_;
  std::vector<std::string> compilers_ = {"gcc", "clang"};
};

Record RecordOf(const std::string& row) {
  Record record;
  record.row = row;
  record.ending = {Ending::Kind::returned, 1, ""};
  return record;
}

void Put(Bytes& bytes, std::size_t at, std::uint32_t value) {
  for (std::size_t n = 0; n < 4; ++n) bytes[at + n] = static_cast<std::uint8_t>(value >> (8 * n));
}

Bytes Zeros(const Row& row) { return Bytes(row.stride * elementsOfRow); }

TEST_F(Reproduce, TakesAnyTextThatADriverGives) {
  const std::string hostile = std::string("*/ int x = 1; /* // ?\?/ ?\?' \\") +
                              "\n\" %s %n \x80\xFF\x1B[2J \xC2\xAE" + '\0' + "**//**/ */";
  Record record = RecordOf("add_union_scalar_2");
  record.buildOptions = "-D X=\"a b\" ?\?/ %d \x80";
  record.failedCalls = {{hostile, -5, 1}};
  record.out = "  c:1 ocl:" + hostile;
  record.ending.reason = hostile;
  Suspects suspects;
  suspects.byRow[record.row] = {{hostile, hostile + hostile + hostile}, {"unexplained", ""}};
  Compile(ReproducerOf(record, {hostile, hostile, hostile, hostile, hostile, 0}, suspects));
  EXPECT_NE(Run().output.find("options: " + record.buildOptions + "\n"), std::string::npos);
}

TEST_F(Reproduce, BreaksWhatItSaysBetweenWords) {
  Record record = RecordOf("add_union_scalar_2");
  std::string words;
  for (int i = 0; i < 60; ++i)
    words += "word" + std::string(static_cast<std::size_t>(i % 5), 's') + " ";
  Device device = flushes;
  device.name = words + "end";
  const std::string program = ReproducerOf(record, device, {});
  std::string said;
  std::istringstream lines(program.substr(0, program.find("*/")));
  for (std::string line; std::getline(lines, line);) {
    EXPECT_LE(line.size(), 100U) << line;
    if (line.starts_with(" *             ")) said += " " + line.substr(15);
  }
  EXPECT_NE(said.find(words.substr(words.size() / 2)), std::string::npos) << said;
  EXPECT_EQ(said.find("  "), std::string::npos) << said;
}

TEST_F(Reproduce, HandsOverTheTextAndMakesTheSuitesCallsInTheirOrder) {
  for (const char* row : {"power_union_arrays_6", "multiply_union_vector16_1"}) {
    SCOPED_TRACE(row);
    const RowFacts& facts = *FactsOf(row);
    const bool twoInputs = RowNamed(row)->twoInputs;
    Record record = RecordOf(row);
    record.localSize = 64;
    Compile(ReproducerOf(record, flushes, {}));
    std::string calls;
    const auto call = [&calls](const char* name, int times = 1) {
      while (times-- > 0) calls += std::string("> ") + name + "\n";
    };
    call("clGetPlatformIDs");
    call("clCreateContextFromType");
    call("clGetContextInfo");
    call("clGetDeviceInfo", 2);
    call("clCreateProgramWithSource");
    call("clBuildProgram");
    call("clCreateKernel");
    call("clCreateBuffer", twoInputs ? 3 : 2);
    call("clSetKernelArg", twoInputs ? 4 : 3);
    call("clCreateCommandQueue");
    call("clEnqueueWriteBuffer", twoInputs ? 2 : 1);
    call("clEnqueueNDRangeKernel");
    call("clEnqueueReadBuffer");
    call("clReleaseCommandQueue");
    call("clReleaseMemObject", twoInputs ? 3 : 2);
    call("clReleaseKernel");
    call("clReleaseProgram");
    call("clReleaseContext");
    EXPECT_EQ(
        Shell("SCRIPTED_TEXT='" + Path("text") + "' '" + Path("row") + "' | grep '^>'").output,
        calls);
    EXPECT_EQ(ReadFile(folder_ / "text"), KernelTextOf(facts.row));
    EXPECT_EQ(Run("SCRIPTED_PROCESSOR=1").output, Run().output);
    const std::string output = Run().output;
    EXPECT_NE(output.find("kernel: " + std::string(facts.kernel) + "\n"), std::string::npos);
    EXPECT_NE(output.find("local size: 64\n"), std::string::npos);
    EXPECT_NE(output.find("buffer: " + std::to_string(256 * facts.row.stride) + "\n"),
              std::string::npos);
  }
}

TEST_F(Reproduce, EndsWith2IfACallFails) {
  Compile(ReproducerOf(RecordOf("copy_union_vector3_5"), flushes, {}));
  for (const char* call :
       {"clGetPlatformIDs", "clCreateContextFromType", "clGetContextInfo", "clGetDeviceInfo",
        "clCreateProgramWithSource", "clBuildProgram", "clCreateKernel", "clCreateBuffer",
        "clSetKernelArg", "clCreateCommandQueue", "clEnqueueWriteBuffer", "clEnqueueNDRangeKernel",
        "clEnqueueReadBuffer", "clReleaseCommandQueue"}) {
    const Ended ended = Run(std::string("SCRIPTED_FAILURE=") + call);
    EXPECT_EQ(ended.status, 2) << call;
    EXPECT_NE(ended.output.find(std::string("ERROR: ") + call + "(-5)\n"), std::string::npos)
        << ended.output;
    EXPECT_EQ(ended.output.find("the build log") != std::string::npos,
              call == std::string("clBuildProgram"));
  }
}

/// An answer to lane 0 of element 9 of a row whose inputs are zero but there.
struct Judged {
  const char* row;
  std::uint64_t config;
  std::uint32_t a;
  std::uint32_t b;
  std::vector<std::uint32_t> right;
  std::vector<std::uint32_t> wrong;
};

const Judged judged[] = {
    {"copy_union_scalar_1", CL_FP_ROUND_TO_NEAREST, 0xFFFFFFFF, 0, {0xBF800000}, {0x3F800000, 0}},
    // A zero has a sign, and a NaN has none.
    {"add_union_scalar_1", CL_FP_ROUND_TO_NEAREST, 0, 0, {0}, {0x80000000, 1, 0x7FC00000}},
    {"add_union_vector2_1",
     CL_FP_ROUND_TO_NEAREST,
     5,
     0xFFC00000,
     {0x7FC00000, 0xFF800001, 0x7FFFFFFF},
     {0x7F800000, 0xFF800000, 0}},
    // A denormal may be flushed to either zero, or must not be.
    {"multiply_union_scalar_2",
     CL_FP_ROUND_TO_NEAREST,
     2,
     0x80000001,
     {0x80000002, 0, 0x80000000},
     {2, 0x80000001}},
    {"multiply_union_scalar_2",
     CL_FP_ROUND_TO_NEAREST | CL_FP_DENORM,
     2,
     0x80000001,
     {0x80000002},
     {0, 0x80000000, 2}},
    // 2^9 and (-2)^9 with 16 units around them, where the unit below is half of that above.
    {"power_union_scalar_1",
     CL_FP_ROUND_TO_NEAREST,
     2,
     0,
     {0x44000000, 0x44000008, 0x43FFFFF0},
     {0x44000011, 0x43FFFFEF, 0xC4000000}},
    {"power_union_scalar_3",
     CL_FP_ROUND_TO_NEAREST,
     0xFFFE,
     0,
     {0xC4000000, 0xC4000008, 0xC3FFFFF0},
     {0xC4000011, 0xC3FFFFEF, 0x44000000}},
};

TEST_F(Reproduce, TakesTheAnswersThatAreRight) {
  for (const Judged& one : judged) {
    SCOPED_TRACE(one.row);
    const Row row = *RowNamed(one.row);
    const std::size_t place = 9 * row.stride;
    Record record = RecordOf(one.row);
    Repetition& repetition = record.repetitions.emplace_back();
    repetition.inputA = Zeros(row);
    Put(repetition.inputA, place, one.a);
    if (row.twoInputs) {
      repetition.inputB = Zeros(row);
      Put(repetition.inputB, place, one.b);
    }
    Device device = flushes;
    device.singleFpConfig = one.config;
    const std::string floats = "SCRIPTED_FLOATS=" + std::to_string(one.config) + " ";
    Compile(ReproducerOf(record, device, {}));
    Bytes answers = Zeros(row);
    if (row.operation == Operation::power) Put(answers, 0, 0x3F800000);
    for (const std::uint32_t answer : one.right) {
      Put(answers, place, answer);
      const Ended ended = RunWith(answers, floats);
      EXPECT_EQ(ended.status, 0) << ended.output;
    }
    for (const std::uint32_t answer : one.wrong) {
      Put(answers, place, answer);
      const Ended ended = RunWith(answers, floats);
      EXPECT_EQ(ended.status, 1) << std::hex << answer;
      EXPECT_NE(ended.output.find("element 9, lane 0: the answer is 0x"), std::string::npos);
      EXPECT_NE(ended.output.find("\n1 of "), std::string::npos) << ended.output;
    }
  }
}

// What the device reports where the program is run, and what it ends with there.
TEST_F(Reproduce, JudgesNoDeviceForWhichTheAnswersAreNotMade) {
  constexpr std::uint64_t nearest = CL_FP_ROUND_TO_NEAREST | CL_FP_INF_NAN;
  constexpr std::uint64_t zero = CL_FP_ROUND_TO_ZERO | CL_FP_INF_NAN;
  const struct {
    const char* row;
    std::uint64_t madeOn;  // 0: that device does not tell
    std::uint32_t a, b;    // of each element
    std::uint32_t right;
    std::uint64_t runOn;
    const char* refusal;  // empty: the device is right
  } cases[] = {
      // Neither a denormal nor anything to round: right is the same everywhere.
      {"multiply_union_scalar_2", nearest, 2, 0x40400000, 0x40C00000, nearest | CL_FP_DENORM, ""},
      {"multiply_union_scalar_2", nearest, 2, 0x40400000, 0x40C00000, zero, ""},
      {"multiply_union_scalar_2", nearest, 2, 0x40400000, 0x40C00000, 0, ""},
      // A denormal.
      {"multiply_union_scalar_2", nearest, 2, 1, 2, nearest, ""},
      {"multiply_union_scalar_2", nearest, 2, 1, 2, nearest | CL_FP_FMA, ""},
      {"multiply_union_scalar_2", nearest, 2, 1, 2, 0, ""},
      {"multiply_union_scalar_2", 0, 2, 1, 2, nearest, ""},
      {"multiply_union_scalar_2", nearest, 2, 1, 2, nearest | CL_FP_DENORM,
       "ERROR: this device reports CL_FP_DENORM, and the right answers here are for one that does "
       "not\n"},
      {"multiply_union_scalar_2", nearest | CL_FP_DENORM, 2, 1, 2, nearest,
       "ERROR: this device reports no CL_FP_DENORM, and the right answers here are for one that "
       "does\n"},
      // An integer of more than 24 bits.
      {"copy_union_scalar_1", nearest, 0x1000003, 0, 0x4B800002, nearest | CL_FP_DENORM, ""},
      {"copy_union_scalar_1", nearest, 0x1000003, 0, 0x4B800002, zero,
       "ERROR: this device reports no CL_FP_ROUND_TO_NEAREST, and the right answers here are for "
       "one that does\n"},
      {"copy_union_scalar_1", zero, 0x1000003, 0, 0x4B800001, zero, ""},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::Message() << c.row << " " << c.madeOn << " " << c.runOn);
    const Row row = *RowNamed(c.row);
    Record record = RecordOf(c.row);
    Repetition& repetition = record.repetitions.emplace_back();
    repetition.inputA = Zeros(row);
    if (row.twoInputs) repetition.inputB = Zeros(row);
    Bytes answers = Zeros(row);
    for (std::size_t at = 0; at < answers.size(); at += row.stride) {
      Put(repetition.inputA, at, c.a);
      if (row.twoInputs) Put(repetition.inputB, at, c.b);
      Put(answers, at, c.right);
    }
    Device device = flushes;
    device.singleFpConfig = c.madeOn;
    Compile(ReproducerOf(record, device, {}));
    const std::string floats =
        c.runOn == 0 ? "" : "SCRIPTED_FLOATS=" + std::to_string(c.runOn) + " ";
    const Ended ended = RunWith(answers, floats);
    EXPECT_EQ(ended.status, *c.refusal == '\0' ? 0 : 2) << ended.output;
    EXPECT_NE(ended.output.find(c.refusal), std::string::npos) << ended.output;
  }
}

// The frame by itself, with its example in it.
TEST_F(Reproduce, HasAFrameThatIsAProgram) {
  Compile(reproducer::frame);
  Bytes answers(8);
  Put(answers, 0, 0x3F800000);
  Put(answers, 4, 0xBF800000);
  const Ended right = RunWith(answers);
  EXPECT_EQ(right.status, 0) << right.output;
  const std::string text = ReadFile(folder_ / "text");
  EXPECT_EQ(text.size(), 140U);
  EXPECT_EQ(text.substr(text.size() - 3), "\n}\n");
  Put(answers, 4, 0x3F800000);
  EXPECT_EQ(RunWith(answers).status, 1);
}

// Of another kind than rows: no input, no count, integers for answers, other sizes.
TEST_F(Reproduce, IsMadeOfOtherKernelsToo) {
  reproducer::Case made;
  made.head = {{"Program:", "7:1"}, reproducer::HowToCompile("faults/x y.c")};
  made.source = "__kernel void f(__global uint* out) { out[get_global_id(0)] = 7; }\n";
  made.kernel = "f";
  made.elements = 3;
  made.lanes = 2;
  made.stride = 12;
  made.countArgument = made.floatAnswers = false;
  for (int element = 0; element < 3; ++element) {
    for (int lane = 0; lane < 2; ++lane) made.right.push_back({element, lane, 7, 7, "7"});
  }
  const std::string text = reproducer::ProgramOf(made);
  EXPECT_NE(text.find(" * Compile:    cc -std=c99 -o 'x y' 'x y.c' -lOpenCL\n"), std::string::npos);
  Compile(text);
  Bytes answers(36);
  for (const std::size_t at : {0U, 4U, 12U, 16U, 24U, 28U}) Put(answers, at, 7);
  EXPECT_EQ(RunWith(answers).status, 0);
  EXPECT_EQ(ReadFile(folder_ / "text"), made.source);
  Put(answers, 28, 8);
  const Ended ended = RunWith(answers);
  EXPECT_EQ(ended.status, 1);
  EXPECT_NE(ended.output.find(
                "element 2, lane 1: the answer is 0x00000008, right is 0x00000007\n1 of 6 lanes"),
            std::string::npos)
      << ended.output;
  EXPECT_EQ(ended.output.find("clEnqueueWriteBuffer"), std::string::npos);
}

TEST(HowToCompile, NamesTheFileThatIsWritten) {
  const struct {
    const char* file;
    const char* command;
  } cases[] = {
      {"fault.c", "cc -std=c99 -o fault fault.c -lOpenCL"},
      {"/tmp/out/fault.c", "cc -std=c99 -o fault fault.c -lOpenCL"},
      {"fault", "cc -std=c99 -o fault.out -x c fault -lOpenCL"},
      {".c", "cc -std=c99 -o .c.out -x c .c -lOpenCL"},
      {"-c.c", "cc -std=c99 -o ./-c ./-c.c -lOpenCL"},
  };
  for (const auto& c : cases) EXPECT_EQ(reproducer::HowToCompile(c.file).text, c.command);
}

// Which of three repetitions goes into the reproducer. Each has its number in its first byte.
struct Choice {
  const char* what;
  void (*spoil)(Record& record);
  int first;   // byte of the inputs
  int rounds;  // as often as it is run at most
};

const Choice choices[] = {
    {"all is right", [](Record&) {}, 3, 3},
    {"the device is wrong in the second",
     [](Record& record) { record.repetitions[1].result[0] ^= 1; }, 2, 2},
    {"the suite rejects the second",
     [](Record& record) { record.repetitions[1].out = "  c:1 ocl:2\nRUN 2: FAILED!\n"; }, 2, 2},
    {"a crash in the third behind a wrong second",
     [](Record& record) {
       record.repetitions[1].result[0] ^= 1;
       record.repetitions[2].result.clear();
       record.ending = {Ending::Kind::signalled, 11, ""};
     },
     3, 3},
    {"a crash before the third had its inputs",
     [](Record& record) {
       record.repetitions[2] = {};
       record.ending = {Ending::Kind::signalled, 11, ""};
     },
     2, 2},
    {"a build that fails",
     [](Record& record) {
       record.repetitions.clear();
       record.failedCalls = {{"clBuildProgram", -11, 0}};
     },
     0x11, 1},
};

TEST(ReproducerOf, TakesTheRepetitionThatShowsTheFault) {
  const Row row = *RowNamed("copy_union_scalar_6");
  for (const Choice& choice : choices) {
    SCOPED_TRACE(choice.what);
    Record record = RecordOf(row.name);
    for (int i = 1; i <= 3; ++i) {
      Repetition& repetition = record.repetitions.emplace_back();
      repetition.inputA = repetition.result = Zeros(row);
      repetition.inputA[0] = static_cast<std::uint8_t>(i);
      Put(repetition.result, 0, std::bit_cast<std::uint32_t>(static_cast<float>(i)));
    }
    choice.spoil(record);
    const std::string text = ReproducerOf(record, flushes, {});
    EXPECT_NE(text.find("  repetitions = " + std::to_string(choice.rounds) + ","),
              std::string::npos);
    char first[8];
    std::snprintf(first, sizeof first, "0x%02X", choice.first);
    EXPECT_NE(text.find(std::string("    /* element 0 */\n    ") + first), std::string::npos);
  }
}

}  // namespace
}  // namespace diagnosis
