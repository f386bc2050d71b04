#include "exploration/record/run_record.h"

#include <fmt/format.h>

#include <algorithm>
#include <exception>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>
#include <utility>

#include "common/text/bad_use.h"
#include "common/text/list.h"
#include "common/text/text.h"
#include "exploration/record/share.h"

namespace exploration {

using nlohmann::json;

static void to_json(json& value, const Device& device) { value = json::parse(Packed(device)); }
static void from_json(const json& value, Device& device) { device = DeviceFrom(value.dump()); }
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(AnswerRecord, buffer, expected, known, actual)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(Setting, name, result)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(FaultRecord, name, title, kind, how, told, features, text,
                                   original, isComplete, answers, log, settings, findings)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(FindingRecord, program, kind, told, features, log, differences)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(PairCounts, features, programs, wrong)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(RunRecord, version, command, host, start, end, ending, options,
                                   device, right, wrong, notRun, leftOut, vanished, open, pairs,
                                   faults)

namespace {

std::string Dumped(const json& value, int indentation) {
  return value.dump(indentation, ' ', false, json::error_handler_t::replace);
}

void AddTo(std::vector<std::vector<std::uint64_t>>& sums,
           const std::vector<std::vector<std::uint64_t>>& more) {
  for (std::size_t i = 0; i < sums.size(); ++i)
    for (std::size_t j = 0; j < sums.size(); ++j) sums[i][j] += more.at(i).at(j);
}

// What IsSame looks at.
Fault ComparedBy(const FaultRecord& record) {
  Fault fault;
  for (int kind = 0; kind <= static_cast<int>(Outcome::Kind::notRun); ++kind)
    if (record.kind == NameOf(static_cast<Outcome::Kind>(kind)))
      fault.symptom.kind = static_cast<Outcome::Kind>(kind);
  fault.symptom.how = record.how;
  fault.features = record.features;
  return fault;
}

std::vector<AnswerRecord> AnswersOf(const Finding& finding) {
  std::vector<AnswerRecord> answers;
  std::size_t index = 0;
  for (const RunnableBuffer& buffer : finding.runnable.buffers) {
    if (!buffer.isAnswer || index == finding.outcome.answers.size()) continue;
    answers.push_back({buffer.name, buffer.expected, buffer.known, finding.outcome.answers[index]});
    ++index;
  }
  return answers;
}

}  // namespace

FaultRecord RecordOf(const Fault& fault) {
  FaultRecord record;
  record.name = fault.name;
  record.title = fault.title;
  record.kind = NameOf(fault.symptom.kind);
  record.how = fault.symptom.how;
  record.told = Told(fault.shrunken.outcome);
  record.features = fault.features;
  record.text = fault.shrunken.runnable.text;
  record.original = fault.first.runnable.text;
  record.isComplete = fault.isComplete;
  record.answers = AnswersOf(fault.shrunken);
  record.log = text::Printable(fault.shrunken.outcome.text);
  record.settings = fault.settings;
  record.findings = {fmt::format("{}:{}", fault.first.program.seed, fault.first.program.number)};
  return record;
}

PairCounts::PairCounts(std::vector<std::string> ofFeatures) : features(std::move(ofFeatures)) {
  programs.assign(features.size(), std::vector<std::uint64_t>(features.size()));
  wrong = programs;
}

void PairCounts::Add(const std::vector<std::string>& used, bool isWrong) {
  std::vector<std::size_t> indices;
  for (const std::string& feature : used)
    indices.push_back(
        static_cast<std::size_t>(std::ranges::find(features, feature) - features.begin()));
  for (const std::size_t i : indices) {
    for (const std::size_t j : indices) {
      ++programs.at(i).at(j);
      if (isWrong) ++wrong.at(i).at(j);
    }
  }
}

void PairCounts::Add(const PairCounts& other) {
  if (features != other.features)
    throw text::BadUse("the runs are of versions whose features are not the same");
  AddTo(programs, other.programs);
  AddTo(wrong, other.wrong);
}

std::string ToJson(const RunRecord& run) { return Dumped(json(run), 1) + "\n"; }

std::string ToJsonLine(const FindingRecord& finding) { return Dumped(json(finding), -1); }

RunRecord RunFromFile(const std::string& path) {
  std::ifstream file(path);
  if (!file) throw text::BadUse("cannot read " + path);
  try {
    RunRecord run = json::parse(file);
    const std::size_t size = run.pairs.features.size();
    for (const auto* counts : {&run.pairs.programs, &run.pairs.wrong}) {
      if (counts->size() != size ||
          !std::ranges::all_of(*counts, [size](const auto& line) { return line.size() == size; }))
        throw text::BadUse(path + " is not a run's: its table of features is damaged");
    }
    return run;
  } catch (const text::BadUse&) {
    throw;
  } catch (const json::parse_error&) {
    throw text::BadUse(path + " is not a run's: it is cut off, or no JSON at all");
  } catch (const std::exception&) {
    throw text::BadUse(path + " is not a run's: it lacks what a run says, or says it otherwise");
  }
}

std::vector<std::string> FindingLinesOf(const RunRecord& run, const std::string& path) {
  std::ifstream file(path);
  if (!file) throw text::BadUse("cannot read " + path);
  std::vector<std::string> lines;
  for (std::string line; std::getline(file, line); lines.push_back(line)) {
    const json value = json::parse(line, nullptr, false);
    if (!value.is_object() || !value.contains("program"))
      throw text::BadUse(
          fmt::format("{}, line {}: it is cut off, or not a finding's", path, lines.size() + 1));
  }
  if (lines.size() != run.wrong)
    throw text::BadUse(fmt::format("{} has {}, but {} programs of its run went wrong", path,
                                   text::Counted(lines.size(), "finding"), run.wrong));
  return lines;
}

RunRecord Merged(const std::vector<RunRecord>& runs) {
  RunRecord merged = runs.front();
  merged.options = MergedOptions(runs);
  for (auto run = std::next(runs.begin()); run != runs.end(); ++run) {
    merged.start = std::min(merged.start, run->start);
    merged.end = std::max(merged.end, run->end);
    merged.right += run->right;
    merged.wrong += run->wrong;
    merged.notRun += run->notRun;
    merged.leftOut += run->leftOut;
    merged.vanished += run->vanished;
    merged.open += run->open;
    merged.pairs.Add(run->pairs);
    if (!run->IsFinished()) merged.ending = run->ending;
    text::AddToList(merged.host, run->host);
    for (const auto part : {&Device::platform, &Device::name, &Device::vendor, &Device::version,
                            &Device::cVersion, &Device::driverVersion, &Device::il})
      text::AddToList(merged.device.*part, run->device.*part);
    for (const FaultRecord& fault : run->faults) {
      const auto same = std::ranges::find_if(merged.faults, [&fault](const FaultRecord& other) {
        return IsSame(ComparedBy(other), ComparedBy(fault));
      });
      if (same == merged.faults.end()) {
        merged.faults.push_back(fault);
      } else {
        same->findings.insert(same->findings.end(), fault.findings.begin(), fault.findings.end());
      }
    }
  }
  return merged;
}

std::string TotalsOf(const RunRecord& run) {
  std::string totals = fmt::format("{}: {} right, {} wrong",
                                   text::Counted(run.Programs(), "program"), run.right, run.wrong);
  if (run.notRun > 0) totals += fmt::format(", {} not run", run.notRun);
  totals += "; " + text::Counted(run.faults.size(), "fault");
  if (run.vanished > 0) totals += fmt::format("; {} right when run again", run.vanished);
  if (run.open > 0) totals += fmt::format("; {} not looked into", run.open);
  return totals;
}

}  // namespace exploration
