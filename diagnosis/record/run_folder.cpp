#include "diagnosis/record/run_folder.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <istream>
#include <iterator>
#include <map>
#include <set>
#include <stdexcept>
#include <utility>
#include <vector>

#include "common/text/bad_use.h"
#include "common/text/complaint.h"
#include "common/text/folder_lock.h"
#include "common/text/text.h"
#include "diagnosis/record/row_facts.h"

namespace diagnosis {

namespace {

std::ifstream Opened(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  // A folder can be opened, but not read.
  if (!file || !std::filesystem::is_regular_file(path))
    throw std::runtime_error(path + ": there is no such file, or it cannot be read");
  return file;
}

/// What can be read of records.jsonl, by the line on which it stands.
struct Lines {
  std::map<std::string, std::pair<int, Record>> records;  // by row
  std::vector<std::string> damages;
};

Lines ReadLines(std::istream& file, const std::string& path) {
  Lines lines;
  std::string line;
  for (int number = 1; std::getline(file, line); ++number) {
    const bool isCutOff = file.eof();
    const auto name = [&](std::string_view what) {
      lines.damages.push_back(fmt::format("{}:{}: {}", path, number, what));
    };
    try {
      Record record = RecordFromJson(line);
      const auto [place, isFirst] = lines.records.try_emplace(record.row, number, Record());
      Record& first = place->second.second;
      // A row has a line for each of its runs; one that was not reached tells nothing.
      if (!record.experiment.kind.empty()) {
        if (isFirst) first.row = record.row;
        first.experiments.push_back(std::move(record));
      } else if (isFirst || first.ending.kind == Ending::Kind::notRun) {
        first = std::move(record);
      } else if (record.ending.kind != Ending::Kind::notRun) {
        first.again.push_back(std::move(record));
      }
    } catch (const std::runtime_error& damage) {
      // That which was being written when the run was cut off.
      name(isCutOff ? fmt::format("the line is cut off: {}", damage.what()) : damage.what());
    }
  }
  if (file.bad()) throw std::runtime_error(path + ": it cannot be read");
  return lines;
}

Record NotReached(const std::string& row, const char* reason) {
  Record record;
  record.row = row;
  record.ending.reason = reason;
  return record;
}

/// How many rows were under way at a time, which are the first of those without a record: rows are
/// begun in their order.
std::size_t JobsOf(const RunInfo& info) {
  const auto isSet = [&info](const char* name) {
    const auto found = info.options.find(name);
    return found != info.options.end() && !found->second.empty();
  };
  if (isSet("shuffle") || !isSet("jobs")) return 0;
  return std::strtoul(info.options.at("jobs").c_str(), nullptr, 10);
}

/// The rows of which there are records, in the order of the matrix, and others behind them.
std::vector<std::string> RowsOf(const Lines& lines) {
  std::vector<std::string> rows;
  for (const RowFacts& facts : FactsOfRows()) {
    if (lines.records.contains(facts.row.name)) rows.push_back(facts.row.name);
  }
  for (const auto& [row, record] : lines.records) {
    if (FactsOf(row) == nullptr) rows.push_back(row);
  }
  return rows;
}

/// Leaves each row once.
void DropTwice(std::vector<std::string>& rows, const std::string& path,
               std::vector<std::string>& damages) {
  std::set<std::string> seen;
  std::erase_if(rows, [&](const std::string& row) {
    if (seen.insert(row).second) return false;
    damages.push_back(path + ": selected names a row twice: " + text::PrintableLine(row));
    return true;
  });
}

}  // namespace

Run ReadRun(std::string_view info, std::istream& records, const std::string& folder) {
  const std::string infoPath = folder + "/run.json";
  const std::string path = folder + "/records.jsonl";
  Run run;
  try {
    run.info = RunInfoFromJson(info, run.damages);
  } catch (const std::runtime_error& damage) {
    throw std::runtime_error(infoPath + ": " + damage.what());
  }
  for (std::string& damage : run.damages) damage.insert(0, infoPath + ": ");

  Lines lines = ReadLines(records, path);
  if (lines.records.empty() && !lines.damages.empty())
    throw std::runtime_error(lines.damages.front() + "; no record is whole");
  std::ranges::move(lines.damages, std::back_inserter(run.damages));
  if (run.info.selected.empty()) run.info.selected = RowsOf(lines);
  DropTwice(run.info.selected, infoPath, run.damages);
  std::size_t underWay = run.info.end.empty() ? JobsOf(run.info) : 0;
  for (const std::string& row : run.info.selected) {
    const auto found = lines.records.find(row);
    if (found == lines.records.end()) {
      const char* reason = !run.info.end.empty() ? (run.damages.empty() ? "its record is missing"
                                                                        : "its record is damaged")
                           : underWay > 0        ? "the run was cut off, most likely in this row"
                                                 : "the run was cut off";
      if (underWay > 0) --underWay;
      run.records.push_back(NotReached(row, reason));
    } else {
      run.records.push_back(std::move(found->second.second));
      lines.records.erase(found);
    }
  }
  for (const auto& [row, record] : lines.records)
    run.damages.push_back(fmt::format("{}:{}: run.json does not name this row: {}", path,
                                      record.first, text::PrintableLine(row)));
  return run;
}

Run ReadRun(const std::string& folder) {
  std::ifstream info = Opened(folder + "/run.json");
  const std::string text(std::istreambuf_iterator<char>(info), {});
  std::ifstream records = Opened(folder + "/records.jsonl");
  return ReadRun(text, records, folder);
}

Run OpenRun(const std::string& folder, InUse inUse) {
  if (inUse != InUse::isOurs && text::IsLocked(folder)) {
    const std::string line = "another run is writing into " + folder;
    if (inUse == InUse::refused) throw text::BadUse(line);
    text::Complain("triage", line + "; what is there so far is read");
  }
  try {
    Run run = ReadRun(folder);
    constexpr std::size_t most = 20;
    const std::size_t shown = std::min(run.damages.size(), most);
    for (std::size_t i = 0; i < shown; ++i) text::Complain("triage", run.damages[i]);
    if (shown < run.damages.size())
      text::Complain("triage",
                     fmt::format("{}: {} more damages", folder, run.damages.size() - shown));
    return run;
  } catch (const std::runtime_error& error) {
    throw text::BadUse(error.what());
  }
}

}  // namespace diagnosis
