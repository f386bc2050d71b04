#include "diagnosis/record/run_folder.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdio>
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
      const auto [first, isFirst] =
          lines.records.try_emplace(record.row, number, std::move(record));
      if (!isFirst)
        name(fmt::format("line {} is of the same row, {}", first->second.first,
                         text::PrintableLine(first->first)));
    } catch (const std::runtime_error& damage) {
      // That which was being written when the run was cut off.
      name(isCutOff ? fmt::format("the line is cut off: {}", damage.what()) : damage.what());
    }
  }
  if (file.bad()) throw std::runtime_error(path + ": it cannot be read");
  return lines;
}

Record NotReached(const RunInfo& info, const std::string& row, bool isDamaged) {
  Record record;
  record.row = row;
  const bool isRunning = std::ranges::find(info.running, row) != info.running.end();
  record.ending.reason = isRunning          ? "the run was cut off in mid-row"
                         : info.end.empty() ? "the run was cut off"
                         : isDamaged        ? "its record is damaged"
                                            : "its record is missing";
  return record;
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
  for (const std::string& row : run.info.selected) {
    const auto found = lines.records.find(row);
    if (found == lines.records.end()) {
      run.records.push_back(NotReached(run.info, row, !run.damages.empty()));
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

Run OpenRun(const std::string& folder) {
  try {
    Run run = ReadRun(folder);
    constexpr std::size_t most = 20;
    const std::size_t shown = std::min(run.damages.size(), most);
    for (std::size_t i = 0; i < shown; ++i)
      fmt::print(stderr, "triage: {}\n", text::PrintableLine(run.damages[i], 1000));
    if (shown < run.damages.size())
      fmt::print(stderr, "triage: {}: {} more damages\n", text::PrintableLine(folder),
                 run.damages.size() - shown);
    return run;
  } catch (const std::runtime_error& error) {
    throw text::BadUse(error.what());
  }
}

}  // namespace diagnosis
