#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "exploration/execution/device.h"
#include "exploration/faults/fault.h"

// What a run leaves, as data: pages and reports are functions of it alone.

namespace exploration {

/// A buffer that a program has answered in, as HexOf writes it.
struct AnswerRecord {
  std::string buffer;
  std::vector<std::uint8_t> expected;
  std::vector<std::uint8_t> known;  ///< 0 where a byte may be anything.
  std::vector<std::uint8_t> actual;
};

struct FaultRecord {
  std::string name;
  std::string title;
  std::string kind;  ///< As NameOf(Outcome::Kind) has it.
  std::string how;   ///< Of the symptom.
  std::string told;  ///< What it is in a few words.
  std::vector<std::string> features;
  std::string text;      ///< The shrunken program.
  std::string original;  ///< That as it was drawn.
  bool isComplete = false;
  std::vector<AnswerRecord> answers;  ///< Of a wrong answer.
  std::string log;
  std::vector<Setting> settings;
  std::vector<std::string> findings;  ///< The programs' names, the first one first.
};

/// With the finding that it was found with.
FaultRecord RecordOf(const Fault& fault);

/// A program that went wrong, a line of findings.jsonl.
struct FindingRecord {
  std::string program;  ///< "1:17"
  std::string kind;
  std::string told;
  std::vector<std::string> features;
  std::string log;
  std::vector<std::string> differences;  ///< The first ones, a line each.
};

/// Of each pair of features how many programs had both; of one with itself, how many had it.
struct PairCounts {
  std::vector<std::string> features;
  std::vector<std::vector<std::uint64_t>> programs;
  std::vector<std::vector<std::uint64_t>> wrong;

  explicit PairCounts(std::vector<std::string> ofFeatures = {});
  void Add(const std::vector<std::string>& used, bool isWrong);
  /// Throws text::BadUse if the other one's features are not the same.
  void Add(const PairCounts& other);
};

/// The ending of a run that came to its end.
inline constexpr const char* finished = "finished";

struct RunRecord {
  std::string version;
  std::string command;
  std::string host;
  std::string start;
  std::string end;
  std::string ending;  ///< "finished", or why it ended before that.
  std::map<std::string, std::string> options;
  Device device;
  std::uint64_t right = 0;
  std::uint64_t wrong = 0;
  std::uint64_t notRun = 0;    ///< The worker was lost.
  std::uint64_t leftOut = 0;   ///< The device lacks what they need.
  std::uint64_t vanished = 0;  ///< Of the wrong ones those that went right when run again.
  std::uint64_t open = 0;      ///< Of the wrong ones those that were not looked into.
  PairCounts pairs;
  std::vector<FaultRecord> faults;

  bool IsFinished() const { return ending == finished; }
  std::uint64_t Programs() const { return right + wrong + notRun; }
};

/// run.json, and back. The latter throws text::BadUse, which names the file, if it is none.
std::string ToJson(const RunRecord& run);
RunRecord RunFromFile(const std::string& path);

/// The lines of a run's findings.jsonl, at `path`. Throws text::BadUse, which names the file, if
/// they are not one for each of the run's findings.
std::vector<std::string> FindingLinesOf(const RunRecord& run, const std::string& path);

/// A line of JSON, whatever the driver has printed.
std::string ToJsonLine(const FindingRecord& finding);

/// The runs as one: programs are counted together, and what is the same fault is one. Its options
/// are those that they have in common, and its host and device say what all of them were.
RunRecord Merged(const std::vector<RunRecord>& runs);

/// "1500 programs: 1468 right, 32 wrong; 2 faults", and what else there is to say.
std::string TotalsOf(const RunRecord& run);

}  // namespace exploration
