// Records and runs as they are written and read: whatever a driver said comes back as it was, and
// a file that is not what was written is told from one that is.

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <limits>
#include <string>

#include "diagnosis/record/record.h"
#include "diagnosis/verdict/ledger.h"

namespace diagnosis {
namespace {

// Every byte there is, so also what is neither text nor UTF-8.
std::string AllBytes() {
  std::string bytes;
  for (int byte = 0; byte < 256; ++byte) bytes += static_cast<char>(byte);
  return bytes;
}

Record FullRecord() {
  const std::string all = AllBytes();
  Record record;
  record.row = "add_union_vector3_6";
  record.seed = 4294967295;
  record.buildOptions = "-cl-opt-disable";
  record.localSize = 18446744073709551615U;
  record.source = "__kernel void sum() {} // \"\\\t\n";
  record.kernel = "sum";
  record.buildLog = "warning: \xC3\xA9\xF0\x9F\x92\xA5 \xED\xA0\x80";
  record.repetitions = {{Bytes(all.begin(), all.end()), {0}, true, {0xFF, 0xFE}, "RUN 1: PASSED\n"},
                        {}};
  record.behindA = {1, 2, 3, 4};
  record.behindB = {1, 2, 3, 4, 5};
  record.behindResult = {1, 2, 3, 4, 5, 6};
  record.launches = 2;
  record.randDrawn = true;
  record.failedCalls = {{"clReleaseKernel", std::numeric_limits<std::int32_t>::min(), 2}};
  record.out = all;
  record.driver = std::string("\0", 1);
  record.ending = {Ending::Kind::signalled, 11, "\x80"};
  record.seconds = 0.1;
  record.buildSeconds = 5e-324;
  record.again = {record};
  return record;
}

void ExpectSame(const Record& a, const Record& b) {
  // Written alike is alike: what is not written shows in the members compared here.
  EXPECT_EQ(ToJson(a), ToJson(b));
  EXPECT_EQ(a.out, b.out);
  EXPECT_EQ(a.buildLog, b.buildLog);
  EXPECT_EQ(a.driver, b.driver);
  EXPECT_EQ(a.localSize, b.localSize);
  ASSERT_EQ(a.repetitions.size(), b.repetitions.size());
  for (std::size_t i = 0; i < a.repetitions.size(); ++i) {
    EXPECT_EQ(a.repetitions[i].inputA, b.repetitions[i].inputA);
    EXPECT_EQ(a.repetitions[i].result, b.repetitions[i].result);
    EXPECT_EQ(a.repetitions[i].launched, b.repetitions[i].launched);
  }
  EXPECT_EQ(a.ending.kind, b.ending.kind);
  EXPECT_EQ(a.ending.value, b.ending.value);
  EXPECT_EQ(a.buildSeconds, b.buildSeconds);
}

class Folder : public testing::Test {
 protected:
  Folder() {
    info.device.platform = "P\xFF";
    info.device.singleFpConfig = 0x86;
    info.expected = {{"floor_union_scalar_1", "Fail"}};
    info.selected = {"add_union_vector3_6", "copy_union_scalar_1", "floor_union_scalar_1"};
    std::filesystem::create_directory(path);
  }
  ~Folder() override { std::filesystem::remove_all(path); }

  void Write(const std::string& name, const std::string& text) const {
    std::ofstream(path + "/" + name, std::ios::binary) << text;
  }

  // What ReadRun says of the folder, without the folder; empty if it is content.
  std::string Complaint() const {
    try {
      ReadRun(path);
    } catch (const std::runtime_error& error) {
      const std::string line = error.what();
      EXPECT_EQ(line.find('\n'), std::string::npos) << line;
      return line.starts_with(path + "/") ? line.substr(path.size() + 1) : line;
    }
    return "";
  }

  RunInfo info;
  std::string path = testing::TempDir() + "record_json_test." + std::to_string(getpid());
};

TEST_F(Folder, GivesBackWhatWasWritten) {
  Record other = FullRecord();
  other.row = "copy_union_scalar_1";
  other.again.clear();
  Write("run.json", ToJson(info));
  // Rows end in any order.
  Write("records.jsonl", ToJson(other) + "\n" + ToJson(FullRecord()) + "\n");
  const diagnosis::Run run = ReadRun(path);
  EXPECT_EQ(ToJson(run.info), ToJson(info));
  EXPECT_EQ(run.info.device.platform, "P\xFF");
  ASSERT_EQ(run.records.size(), 3U);
  ExpectSame(run.records[0], FullRecord());
  ASSERT_EQ(run.records[0].again.size(), 1U);
  ExpectSame(run.records[0].again[0], FullRecord().again[0]);
  ExpectSame(run.records[1], other);
  EXPECT_EQ(StatusOf(run.records[2]), Status::missing);
}

TEST_F(Folder, ReadsARunThatWasCutOff) {
  info.running = {"copy_union_scalar_1"};
  Write("run.json", ToJson(info));
  const std::string line = ToJson(FullRecord()) + "\n";
  Write("records.jsonl", line + line.substr(0, line.size() - 1));
  const diagnosis::Run run = ReadRun(path);
  ASSERT_EQ(run.records.size(), 3U);
  EXPECT_EQ(run.records[1].ending.reason, "the run was cut off in mid-row");
  EXPECT_EQ(run.records[2].ending.reason, "the run was cut off");
}

TEST_F(Folder, SaysInOneLineWhatIsWrongAndWhere) {
  const auto replaced = [](std::string text, const std::string& from, const std::string& to) {
    const std::size_t position = text.find(from);
    EXPECT_NE(position, std::string::npos) << from;
    return text.replace(position, from.size(), to);
  };
  const std::string infoText = ToJson(info);
  const std::string line = ToJson(FullRecord()) + "\n";

  EXPECT_EQ(Complaint(), "run.json: there is no such file, or it cannot be read");
  struct {
    std::string info, records, complaint;
  } const cases[] = {
      {"", line, "run.json: this is not a whole JSON object"},
      {infoText.substr(0, 50), line, "run.json: this is not a whole JSON object"},
      {"[1]", line, "run.json: this is not a whole JSON object"},
      {replaced(infoText, "\"format\": 1", "\"format\": 2"), line,
       "run.json: this is of format 2, and only 1 can be read"},
      {replaced(infoText, "\"host\"", "\"ghost\""), line, "run.json: host is missing"},
      {replaced(infoText, "\"copy_union_scalar_1\"", "7"), line,
       "run.json: selected[1] is not a text"},
      {replaced(infoText, "copy_union_scalar_1", "floor_union_scalar_1"), line,
       "run.json: selected names a row twice: floor_union_scalar_1"},
      {infoText, line + "{\n", "records.jsonl:2: this is not a whole JSON object"},
      {infoText, "\n", "records.jsonl:1: this is not a whole JSON object"},
      {infoText, replaced(line, "\"format\":1", "\"format\":0"),
       "records.jsonl:1: this is of format 0, and only 1 can be read"},
      {infoText, replaced(line, "\"inputB\":\"AA==\"", "\"inputB\":\"AB==\""),
       "records.jsonl:1: repetitions[0].inputB is not base64"},
      {infoText, replaced(line, "\"signalled\"", "\"vanished\""),
       "records.jsonl:1: ending.kind is not a kind of end"},
      {infoText, replaced(line, "\"seed\":4294967295", "\"seed\":4294967296"),
       "records.jsonl:1: seed is not an integer in range"},
      {infoText, replaced(line, "\"code\":-2147483648", "\"code\":1.5"),
       "records.jsonl:1: failedCalls[0].code is not an integer in range"},
      {infoText, replaced(line, "\"launched\":true", "\"launched\":1"),
       "records.jsonl:1: repetitions[0].launched is not true or false"},
      {infoText, replaced(line, "\"kernel\"", "\"colonel\""), "records.jsonl:1: kernel is missing"},
      {infoText, replaced(line, "add_union_vector3_6", "sub_union_vector3_6"),
       "records.jsonl:1: run.json does not name this row: sub_union_vector3_6"},
      {infoText, line + line, "records.jsonl:2: line 1 is of the same row, add_union_vector3_6"},
  };
  for (const auto& c : cases) {
    Write("run.json", c.info);
    Write("records.jsonl", c.records);
    EXPECT_EQ(Complaint(), c.complaint);
  }
  Write("run.json", infoText);
  std::filesystem::remove(path + "/records.jsonl");
  EXPECT_EQ(Complaint(), "records.jsonl: there is no such file, or it cannot be read");
  std::filesystem::create_directory(path + "/records.jsonl");
  EXPECT_EQ(Complaint(), "records.jsonl: there is no such file, or it cannot be read");
}

}  // namespace
}  // namespace diagnosis
