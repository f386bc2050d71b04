#include "diagnosis/verdict/baseline_update.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <optional>
#include <set>
#include <system_error>

#include "common/text/whole_file.h"
#include "harness/rows.h"

namespace diagnosis {
namespace {

struct TextLine {
  std::string text;  // with its end
  std::optional<BaselineEntry> entry;
  bool hasComment = false;
};

using Lines = std::vector<TextLine>;

Lines LinesIn(std::string_view text) {
  Lines lines;
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

std::string TextOf(const Lines& lines) {
  std::string text;
  for (const TextLine& line : lines) {
    if (!text.empty() && text.back() != '\n') text += '\n';
    text += line.text;
  }
  return text;
}

// Of all rows, by name: what is expected, and the line that says so.
struct Expected {
  Status status = Status::pass;
  const TextLine* by = nullptr;
};
using AllExpected = std::map<std::string, Expected, std::less<>>;

AllExpected ExpectedBy(const Lines& lines) {
  AllExpected expected;
  for (const NamedRunner& row : rows) expected[std::string(row.name)];
  for (const TextLine& line : lines) {
    if (!line.entry) continue;
    for (const std::string& row : line.entry->rows) expected[row] = {line.entry->status, &line};
  }
  return expected;
}

using Wanted = std::map<std::string, Status, std::less<>>;

Wanted WantedAfter(const Lines& lines, const std::vector<RowResult>& results) {
  Wanted wanted;
  for (const auto& [row, expected] : ExpectedBy(lines)) wanted[row] = expected.status;
  for (const RowResult& result : results) {
    const Status now = ToExpect(result.verdict);
    const auto known = wanted.find(result.record->row);
    if (known != wanted.end() && now != Status::skip && now != Status::missing) known->second = now;
  }
  return wanted;
}

// Puts another status into the line; "!GLOB" gets one, or what has one loses it.
void ReplaceStatus(TextLine& line, Status status) {
  if (const std::size_t mark = line.text.find('!'); mark < line.text.find_first_of(",#")) {
    line.text.erase(mark, 1);
    const std::size_t end = line.text.find_first_of(" \t\r\n#", mark);
    line.text.insert(std::min(end, line.text.size()), fmt::format(",{}", NameOf(status)));
  } else {
    const std::size_t comma = line.text.find(',');
    const std::size_t begin = line.text.find_first_not_of(" \t", comma + 1);
    const std::size_t end = line.text.find_first_of(" \t\r\n#", begin);
    line.text.replace(begin, std::min(end, line.text.size()) - begin, NameOf(status));
  }
  line.entry->status = status;
}

TextLine LineOf(const std::string& test, Status status) {
  const bool isGlob = test.find('*') != std::string::npos;
  const std::string said =
      isGlob && status == Status::pass ? "!" + test : fmt::format("{},{}", test, NameOf(status));
  return {said + "\n", EntryOf(said), false};
}

// The part of a name in front of the element type's number, "copy_union_vector3", and so on.
struct Parts {
  std::string operation;
  std::string shape;
  std::string type;
};

Parts PartsOf(const std::string& row) {
  constexpr std::string_view middle = "_union_";
  const std::size_t shape = row.find(middle) + middle.size();
  return {row.substr(0, row.find(middle)), row.substr(shape, row.size() - 2 - shape),
          row.substr(row.size() - 1)};
}

// Globs that the row is of, by one, two and three of its parts.
std::vector<std::string> GlobsOf(const std::string& row) {
  const Parts parts = PartsOf(row);
  std::vector<std::string> globs;
  std::set<std::string> shapes = {parts.shape, "*"};
  if (parts.shape.starts_with("vector")) shapes.insert("vector*");
  for (const std::string& operation : {parts.operation, std::string("*")}) {
    for (const std::string& shape : shapes) {
      for (const std::string& type : {parts.type, std::string("*")}) {
        const std::string glob = fmt::format("{}_union_{}_{}", operation, shape, type);
        if (glob.find('*') != std::string::npos) globs.push_back(glob);
      }
    }
  }
  return globs;
}

// Adds lines so that all is as wanted. What a glob said of several rows is told in globs again,
// what stood alone, or nowhere, in a line each.
void AddWhatIsWanted(Lines& lines, const Wanted& wanted) {
  const AllExpected expected = ExpectedBy(lines);
  std::set<std::string> left;  // rows of which a glob speaks
  Lines added;
  for (const NamedRunner& named : rows) {
    const std::string row(named.name);
    const auto& [status, by] = expected.at(row);
    if (wanted.at(row) == status) continue;
    if (by != nullptr && !by->entry->isName) {
      left.insert(row);
    } else {
      added.push_back(LineOf(row, wanted.at(row)));
    }
  }
  const auto isWanted = [&wanted](const std::vector<std::string>& members, Status status) {
    return std::ranges::all_of(
        members, [&](const std::string& member) { return wanted.at(member) == status; });
  };
  while (!left.empty()) {
    std::string best = *left.begin();
    std::size_t most = 1;
    std::size_t least = 1;  // rows that so many are of: the fewer the clearer
    const Status status = wanted.at(best);
    for (const std::string& glob : GlobsOf(best)) {
      const std::vector<std::string> members = EntryOf("!" + glob).rows;
      const auto count = static_cast<std::size_t>(std::ranges::count_if(
          members, [&left](const std::string& member) { return left.contains(member); }));
      const bool isBetter = count > most || (count == most && members.size() < least);
      if (!isBetter || !isWanted(members, status)) continue;
      best = glob;
      most = count;
      least = members.size();
    }
    added.push_back(LineOf(best, status));
    for (const std::string& member : added.back().entry->rows) left.erase(member);
  }
  // A row has one line of its own, and what is said beside it goes with it.
  for (TextLine& line : added) {
    const auto own = std::ranges::find_if(lines, [&line](const TextLine& known) {
      return line.entry->isName && known.entry && known.entry->isName &&
             known.entry->rows == line.entry->rows;
    });
    if (own == lines.end()) continue;
    if (own->hasComment) {
      const Status status = line.entry->status;
      line = *own;
      if (!line.text.ends_with('\n')) line.text += '\n';
      ReplaceStatus(line, status);
    }
    lines.erase(own);
  }
  std::ranges::move(added, std::back_inserter(lines));
}

// How many lines would have to be added, or moved.
std::size_t CostOf(Lines lines, const Wanted& wanted) {
  const std::size_t before = lines.size();
  AddWhatIsWanted(lines, wanted);
  return std::max(lines.size(), before) - before;
}

// Changes a row's own line where it has the last word, or takes it away where nobody needs it.
void MendOwnLine(Lines& lines, std::size_t number, const Wanted& wanted) {
  const std::string& row = lines[number].entry->rows.front();
  const Status status = wanted.at(row);
  const AllExpected expected = ExpectedBy(lines);
  if (expected.at(row).status == status || expected.at(row).by != &lines[number]) return;
  Lines without = lines;
  without.erase(without.begin() + static_cast<std::ptrdiff_t>(number));
  if (ExpectedBy(without).at(row).status == status && !lines[number].hasComment) {
    lines = std::move(without);
  } else {
    ReplaceStatus(lines[number], status);
  }
}

// Takes a glob away, or gives it another status, where fewer lines change so than if it stayed.
void MendGlob(Lines& lines, std::size_t number, const Wanted& wanted) {
  const Status status = lines[number].entry->status;
  std::array<std::size_t, statuses> votes{};
  std::size_t changed = 0;
  for (const auto& [row, expected] : ExpectedBy(lines)) {
    if (expected.by != &lines[number]) continue;
    ++votes.at(static_cast<std::size_t>(wanted.at(row)));
    if (wanted.at(row) != status) ++changed;
  }
  const auto most = static_cast<Status>(std::ranges::max_element(votes) - votes.begin());
  if (changed == 0 || most == status) return;
  std::vector<Lines> others;
  if (!lines[number].hasComment) {
    Lines& without = others.emplace_back(lines);
    without.erase(without.begin() + static_cast<std::ptrdiff_t>(number));
  }
  // "!NAME" would become a row's own line, of which there may be another.
  if (lines[number].entry->rows.size() > 1) ReplaceStatus(others.emplace_back(lines)[number], most);
  std::size_t least = CostOf(lines, wanted);
  for (Lines& other : others) {
    const std::size_t cost = 1 + CostOf(other, wanted);
    if (cost > least || (cost == least && &other != &others.front())) continue;
    least = cost;
    lines = other;
  }
}

}  // namespace

std::string Updated(const std::string& text, const std::vector<RowResult>& results) {
  Lines lines = LinesIn(text);
  const Wanted wanted = WantedAfter(lines, results);
  // From the back: a line that is taken away moves none that is still to be looked at.
  for (std::size_t number = lines.size(); number-- > 0;)
    if (lines[number].entry && !lines[number].entry->isName) MendGlob(lines, number, wanted);
  for (std::size_t number = lines.size(); number-- > 0;)
    if (lines[number].entry && lines[number].entry->isName) MendOwnLine(lines, number, wanted);
  const std::size_t before = lines.size();
  AddWhatIsWanted(lines, wanted);
  return lines.size() == before && TextOf(lines) == text ? text : TextOf(lines);
}

bool IsBaselineThere(const std::string& file) {
  std::error_code error;
  return std::filesystem::status(file, error).type() != std::filesystem::file_type::not_found;
}

bool UpdateBaseline(const std::string& file, const std::vector<RowResult>& results) {
  const bool isNew = !IsBaselineThere(file);
  // Read once as every run reads it, for what there is to refuse.
  if (!isNew) ReadBaseline(file);
  std::ifstream stream(file, std::ios::binary);
  const std::string before =
      isNew ? "test,status\n" : std::string(std::istreambuf_iterator<char>(stream), {});
  const std::string after = Updated(before, results);
  if (!isNew && after == before) return false;
  text::WriteWhole(file, after);
  return true;
}

}  // namespace diagnosis
