// Records and runs as they are written and read: whatever a driver said comes back as it was, and
// a file that is not what was written is told from one that is.

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <limits>
#include <string>

#include "common/text/text.h"
#include "diagnosis/record/run_folder.h"
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
  Bytes elements(all.begin(), all.end());
  elements.resize(320, 0x7F);
  record.repetitions = {{elements, Bytes(320, 0), true, Bytes(320, 0xFE), "RUN 1: PASSED\n"}, {}};
  record.behindA = Bytes(7872, 1);
  record.behindB = Bytes(7872, 2);
  record.launches = 2;
  record.randDrawn = true;
  record.failedCalls = {{"clReleaseKernel", std::numeric_limits<std::int32_t>::min(), 2}};
  record.out = all;
  record.driver = std::string("\0", 1);
  record.ending = {Ending::Kind::signalled, 11, "\x80", "the cable"};
  record.seconds = 0.1;
  record.buildSeconds = 5e-324;
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
  EXPECT_EQ(a.sharedContext, b.sharedContext);
  ASSERT_EQ(a.inShared.size(), b.inShared.size());
  for (std::size_t i = 0; i < a.inShared.size(); ++i) ExpectSame(a.inShared[i], b.inShared[i]);
  EXPECT_EQ(a.ending.kind, b.ending.kind);
  EXPECT_EQ(a.ending.value, b.ending.value);
  EXPECT_EQ(a.ending.lostFirst, b.ending.lostFirst);
  EXPECT_EQ(a.buildSeconds, b.buildSeconds);
}

class Folder : public testing::Test {
 protected:
  Folder() {
    info.device.platform = "P\xFF";
    info.device.singleFpConfig = 0x86;
    info.expected = {{"floor_union_scalar_1", "Fail"}};
    info.selected = {"add_union_vector3_6", "add_union_vector3_5", "floor_union_scalar_1"};
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
  other.row = "add_union_vector3_5";
  Write("run.json", ToJson(info));
  // Rows end in any order, and may be run again; a run that was not reached tells nothing.
  Record again = FullRecord();
  again.ending.value = 77;
  again.inShared = {FullRecord()};
  again.inShared[0].sharedContext = true;
  Record asked = FullRecord();
  asked.experiment.kind = "filled-result";
  asked.experiment.predicted = {{"lanes-unwritten", "0xA53CC35A"}, {"\xFF", "anything"}};
  asked.experiment.repetition = 2;
  asked.experiment.element = 9;
  asked.experiment.lane = 2;
  asked.experiment.result = {0xA5};
  asked.experiment.behind = {1, 2};
  asked.experiment.inputA = Bytes(320, 3);
  asked.experiment.inputB = Bytes(320, 4);
  asked.experiment.swapped = true;
  asked.experiment.passes = 2;
  Record notRun;
  notRun.row = other.row;
  Write("records.jsonl", ToJson(notRun) + "\n" + ToJson(other) + "\n" + ToJson(FullRecord()) +
                             "\n" + ToJson(again) + "\n" + ToJson(asked) + "\n" + ToJson(notRun) +
                             "\n");
  const diagnosis::Run run = ReadRun(path);
  EXPECT_EQ(ToJson(run.info), ToJson(info));
  EXPECT_EQ(run.info.device.platform, "P\xFF");
  ASSERT_EQ(run.records.size(), 3U);
  ExpectSame(run.records[0], FullRecord());
  ASSERT_EQ(run.records[0].again.size(), 1U);
  ExpectSame(run.records[0].again[0], again);
  ASSERT_EQ(run.records[0].experiments.size(), 1U);
  ExpectSame(run.records[0].experiments[0], asked);
  const Experiment& experiment = run.records[0].experiments[0].experiment;
  EXPECT_EQ(experiment.predicted.at(1).suspect, "\xFF");
  EXPECT_EQ(experiment.inputB, asked.experiment.inputB);
  EXPECT_EQ(experiment.lane, 2);
  ExpectSame(run.records[1], other);
  EXPECT_TRUE(run.records[1].again.empty());
  EXPECT_EQ(StatusOf(run.records[2]), Status::missing);
}

std::string Replaced(std::string text, const std::string& from, const std::string& to) {
  const std::size_t position = text.find(from);
  EXPECT_NE(position, std::string::npos) << from;
  return text.replace(position, from.size(), to);
}

// A run that was killed, and one that lost the end of its last line alone.
TEST_F(Folder, ReadsARunThatWasCutOff) {
  info.options = {{"jobs", "1"}};
  Write("run.json", ToJson(info));
  const std::string line = ToJson(FullRecord());
  const std::string next = Replaced(line, "add_union_vector3_6", "add_union_vector3_5");
  Write("records.jsonl", line + "\n" + next.substr(0, 100));
  const diagnosis::Run run = ReadRun(path);
  ASSERT_EQ(run.records.size(), 3U);
  ExpectSame(run.records[0], FullRecord());
  EXPECT_EQ(run.records[1].ending.reason, "the run was cut off, most likely in this row");
  EXPECT_EQ(run.records[2].ending.reason, "the run was cut off");
  EXPECT_EQ(run.damages, std::vector<std::string>{
                             path + "/records.jsonl:2: the line is cut off: byte 101: this is not "
                                    "a whole JSON object"});

  Write("records.jsonl", line);
  const diagnosis::Run whole = ReadRun(path);
  EXPECT_EQ(whole.damages, std::vector<std::string>());
  ExpectSame(whole.records[0], FullRecord());
}

// What cannot be read of a run's files, and how many records can.
TEST_F(Folder, ReadsWhatIsGoodAndNamesTheRest) {
  info.end = "then";
  const std::string infoText = ToJson(info);
  const std::string good = ToJson(FullRecord()) + "\n";
  Record copied;
  copied.row = "add_union_vector3_5";
  const std::string other = ToJson(copied) + "\n";
  const auto damaged = [&good](const std::string& from, const std::string& to) {
    return Replaced(good, from, to);
  };
  Record nested = FullRecord();
  nested.inShared = {FullRecord()};
  Record deep = nested;
  deep.inShared = {nested};
  nested.inShared[0].row = "add_union_vector3_4";
  const std::string bytes320 = text::ToBase64(Bytes(320, 0xFE));
  struct {
    std::string info, records, damage;
    std::size_t read = 1;  // beside a damaged line is a good one
  } const cases[] = {
      {infoText, good + other, "", 2},
      {infoText, "{\n" + other, "records.jsonl:1: byte 2: this is not a whole JSON object"},
      {infoText, "\n" + other, "records.jsonl:1: byte 1: this is not a whole JSON object"},
      {infoText, other + "[]\n", "records.jsonl:2: byte 1: this is not a whole JSON object"},
      {infoText, other + std::string(100, '\0'),
       "records.jsonl:2: the line is cut off: byte 1: this is not a whole JSON object"},
      {infoText, other + damaged("\"source\":", "\"source\";"),
       "records.jsonl:2: byte 133: this is not a whole JSON object"},
      {infoText, damaged("\"format\":1", "\"format\":0") + other,
       "records.jsonl:1: this is of format 0, and only 1 can be read"},
      {infoText, damaged("\"inputB\":\"AA", "\"inputB\":\"*A") + other,
       "records.jsonl:1: repetitions[0].inputB is not base64"},
      {infoText, damaged("\"signalled\"", "\"vanished\"") + other,
       "records.jsonl:1: ending.kind is not a kind of end"},
      {infoText, damaged("\"seed\":4294967295", "\"seed\":4294967296") + other,
       "records.jsonl:1: seed is not an integer in range"},
      {infoText, damaged("\"code\":-2147483648", "\"code\":1.5") + other,
       "records.jsonl:1: failedCalls[0].code is not an integer in range"},
      {infoText, damaged("\"launched\":true", "\"launched\":1") + other,
       "records.jsonl:1: repetitions[0].launched is not true or false"},
      {infoText, damaged("\"kernel\"", "\"colonel\"") + other,
       "records.jsonl:1: kernel is missing"},
      // Of the right type, but not what a row leaves.
      {infoText, damaged(bytes320, text::ToBase64(Bytes(319, 0xFE))) + other,
       "records.jsonl:1: repetitions[0].result has 319 bytes in place of 320"},
      {infoText, damaged("\"repetition\":2", "\"repetition\":3") + other,
       "records.jsonl:1: failedCalls[0].repetition is none of those that there are"},
      {infoText, damaged("\"seconds\":0.1", "\"seconds\":-1") + other,
       "records.jsonl:1: seconds is no length of time"},
      {infoText, ToJson(deep) + "\n" + other, "records.jsonl:1: inShared[0] holds another"},
      {infoText, ToJson(nested) + "\n" + other,
       "records.jsonl:1: inShared holds more than a run of the row"},
      {infoText, damaged("\"passes\":1", "\"passes\":0") + other,
       "records.jsonl:1: experiment is of no lane, or no pass"},
      // Two files that do not tell of the same rows.
      {Replaced(infoText, "add_union_vector3_6", "copy_union_vector3_6"), good + other,
       "records.jsonl:1: run.json does not name this row: add_union_vector3_6"},
      {Replaced(infoText, "\"host\"", "\"ghost\""), good + other, "run.json: host is missing", 2},
      {Replaced(infoText, "\"add_union_vector3_5\"", "7"), good + other,
       "run.json: selected[1] is not a text", 2},
      {Replaced(infoText, "\"seconds\": 0.0", "\"seconds\": 1e308"), good + other,
       "run.json: seconds is no length of time", 2},
      {Replaced(infoText, "add_union_vector3_5", "floor_union_scalar_1"), good,
       "run.json: selected names a row twice: floor_union_scalar_1"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.damage);
    Write("run.json", c.info);
    Write("records.jsonl", c.records);
    const diagnosis::Run run = ReadRun(path);
    EXPECT_EQ(run.damages, c.damage.empty() ? std::vector<std::string>()
                                            : std::vector<std::string>{path + "/" + c.damage});
    std::size_t read = 0;
    for (const Record& record : run.records)
      read += record.ending.reason.find("its record is") == std::string::npos ? 1 : 0;
    EXPECT_EQ(read, c.read);
  }
}

TEST_F(Folder, RefusesWhereNothingIsLeft) {
  const std::string infoText = ToJson(info);
  const std::string line = ToJson(FullRecord()) + "\n";
  EXPECT_EQ(Complaint(), "run.json: there is no such file, or it cannot be read");
  struct {
    std::string info, records, complaint;
  } const cases[] = {
      {"", line, "run.json: byte 1: this is not a whole JSON object"},
      {infoText.substr(0, 50), line, "run.json: byte 51: this is not a whole JSON object"},
      {"[1]", line, "run.json: byte 1: this is not a whole JSON object"},
      {Replaced(infoText, "\"format\": 1", "\"format\": 2"), line,
       "run.json: this is of format 2, and only 1 can be read"},
      {Replaced(infoText, "\"singleFpConfig\"", "\"doubleFpConfig\""), line,
       "run.json: device.singleFpConfig is missing"},
      {infoText, "{\n[",
       "records.jsonl:1: byte 2: this is not a whole JSON object; no record is whole"},
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
