#include "diagnosis/verdict/baseline_update.h"

#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <optional>

namespace diagnosis {
namespace {

struct TextLine {
  std::string text;  // with its end
  std::optional<BaselineEntry> entry;
  bool hasComment = false;
};

std::vector<TextLine> LinesIn(std::string_view text) {
  std::vector<TextLine> lines;
  bool mayBeHead = true;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find('\n'), text.size() - 1) + 1;
    TextLine line{std::string(text.substr(0, end)), {}, false};
    text.remove_prefix(end);
    line.hasComment = line.text.find('#') != std::string::npos;
    std::string_view said = line.text;
    said = said.substr(0, said.find('#'));
    constexpr std::string_view blanks = " \t\r\n";
    said.remove_prefix(std::min(said.find_first_not_of(blanks), said.size()));
    said = said.substr(0, said.find_last_not_of(blanks) + 1);
    const bool isHead = mayBeHead && said == "test,status";
    if (!said.empty()) mayBeHead = false;
    if (!said.empty() && !isHead) line.entry = EntryOf(said);
    lines.push_back(std::move(line));
  }
  return lines;
}

// What all lines but the one expect of the row.
Status ExpectedWithout(const std::vector<TextLine>& lines, const TextLine* left,
                       const std::string& row) {
  Status status = Status::pass;
  for (const TextLine& line : lines) {
    if (&line != left && line.entry && std::ranges::count(line.entry->rows, row) > 0)
      status = line.entry->status;
  }
  return status;
}

void ReplaceStatus(TextLine& line, Status status) {
  const std::size_t comma = line.text.find(',');
  const std::size_t begin = line.text.find_first_not_of(" \t", comma + 1);
  const std::size_t end = line.text.find_first_of(" \t\r\n#", begin);
  line.text.replace(begin, std::min(end, line.text.size()) - begin, NameOf(status));
  line.entry->status = status;
}

}  // namespace

std::string Updated(const std::string& text, const std::vector<RowResult>& rows) {
  std::vector<TextLine> lines = LinesIn(text);
  std::string added;
  for (const RowResult& result : rows) {
    const Status now = ToExpect(result.verdict);
    if (now == Status::skip || now == Status::missing) continue;
    const std::string& row = result.record->row;
    if (ExpectedWithout(lines, nullptr, row) == now) continue;
    const auto own = std::ranges::find_if(lines, [&row](const TextLine& line) {
      return line.entry && line.entry->isName && line.entry->rows.front() == row;
    });
    if (own == lines.end()) {
      added += fmt::format("{},{}\n", row, NameOf(now));
    } else if (ExpectedWithout(lines, &*own, row) == now && !own->hasComment) {
      lines.erase(own);
    } else {
      ReplaceStatus(*own, now);
      // A later glob would still have the last word.
      if (ExpectedWithout(lines, nullptr, row) == now) continue;
      added += fmt::format("{},{}\n", row, NameOf(now));
      lines.erase(own);
    }
  }
  std::string updated;
  for (const TextLine& line : lines) updated += line.text;
  if (!added.empty() && !updated.empty() && updated.back() != '\n') updated += '\n';
  return updated + added;
}

}  // namespace diagnosis
