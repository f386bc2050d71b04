#include "diagnosis/views/results.h"

#include <fmt/format.h>

#include <filesystem>
#include <iterator>
#include <string_view>
#include <system_error>

#include "common/outputs/junit.h"
#include "diagnosis/record/run_folder.h"
#include "diagnosis/verdict/account.h"
#include "diagnosis/views/cases.h"
#include "diagnosis/views/report.h"
#include "diagnosis/views/report_parts.h"

namespace diagnosis {

namespace {

// A field of comma-separated values.
std::string Field(const std::string& text) {
  if (text.find_first_of(",\"\n") == std::string::npos) return text;
  std::string quoted = "\"";
  for (const char c : text) quoted += c == '"' ? "\"\"" : std::string(1, c);
  return quoted + '"';
}

// The last line of a table that is not of all rows.
std::string LineOfIncomplete(const Totals& totals) {
  const std::string incomplete = Incomplete(totals);
  return incomplete.empty() ? "" : "# incomplete: " + incomplete + "\n";
}

std::string ResultsOf(const Analysis& analysis) {
  std::string text = "test,status,seconds,suite,opinion,detail\n";
  for (const RowResult& row : analysis.rows)
    fmt::format_to(std::back_inserter(text), "{},{},{:.4f},{},{},{}\n", row.record->row,
                   NameOf(row.verdict), row.record->seconds, NameOf(row.status),
                   NameOf(row.opinion.verdict), Field(row.detail));
  return text + LineOfIncomplete(analysis.totals);
}

std::string FailuresOf(const Analysis& analysis) {
  std::string text = "test,status\n";
  for (const RowResult& row : analysis.rows) {
    const Status expect = ToExpect(row.verdict);
    if (expect != Status::pass)
      fmt::format_to(std::back_inserter(text), "{},{}\n", row.record->row, NameOf(expect));
  }
  return text + LineOfIncomplete(analysis.totals);
}

std::string JUnitOfRun(const Analysis& analysis) {
  const RunInfo& info = analysis.run->info;
  outputs::SuiteInfo suite;
  suite.name = "union conformance suite";
  suite.classPrefix = "union_suite";
  suite.start = info.start;
  suite.properties = {{"result", SentenceOf(analysis.totals)}};
  if (const std::string incomplete = Incomplete(analysis.totals); !incomplete.empty())
    suite.properties.emplace_back("incomplete", incomplete);
  for (const RunFact& fact : FactsOf(info))
    if (!fact.value.empty()) suite.properties.emplace_back(fact.name, fact.value);
  std::vector<outputs::Case> cases;
  for (const RowResult& row : analysis.rows)
    TakeAsCutShort(cases.emplace_back(FullCaseOf(row)), row, analysis.runsOfEach);
  return outputs::JUnitOf(suite, cases);
}

struct Result {
  const char* file;
  std::string (*of)(const Analysis& analysis);
};

// What others take for the whole result stands last.
constexpr Result results[] = {
    {"results.csv", ResultsOf},
    {"failures.csv", FailuresOf},
    {"report.html", [](const Analysis& analysis) { return ReportOf(analysis); }},
    {"junit.xml", JUnitOfRun},
};

constexpr const char* others[] = {results[0].file, results[1].file, results[2].file,
                                  results[3].file, "run.json"};
static_assert(std::size(others) == std::size(results) + 1);

}  // namespace

outputs::Files FilesOfRun() { return {.journal = "records.jsonl", .others = others}; }

std::unique_ptr<outputs::Folder> FolderOfRun(const std::string& path) {
  std::error_code ignored;
  if (!std::filesystem::exists(path + "/run.json", ignored)) OpenRun(path);
  return std::make_unique<outputs::Folder>(path, FilesOfRun(), outputs::Folder::Old::kept);
}

std::string LinesOf(const Record& record) {
  std::string lines = ToJson(record) + "\n";
  for (const Record& again : record.again) lines += ToJson(again) + "\n";
  for (const Record& asked : record.experiments) lines += ToJson(asked) + "\n";
  return lines;
}

void WriteResults(outputs::Folder& folder, const Analysis& analysis) {
  for (const Result& result : results) folder.Write(result.file, result.of(analysis));
}

}  // namespace diagnosis
